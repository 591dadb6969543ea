#pragma once
// Disk and CD images built by the tests: AmigaDOS floppies (any DOS type, with or without a
// bootable boot block or custom boot code), hard-disk images with a Rigid Disk Block or a
// single volume, and ISO 9660 images (plain and raw sectors).

#include <cstdint>
#include <string>
#include <vector>

namespace kq::test {

using Image = std::vector<std::byte>;

struct AmigaDateStamp {
    std::uint32_t days = 0, minutes = 0, ticks = 0;
};

struct FloppySpec {
    bool high_density = false;
    std::uint32_t first_long = 0x444F5300; // "DOS\0"
    bool boot_checksum = true;             // make the boot blocks bootable
    std::string boot_code;                 // from offset 12
    bool root = true;                      // write a root block
    std::string name = "Workbench";
    AmigaDateStamp created{16801, 720, 0}; // 2024-01-01 12:00:00
};
Image floppy_image(const FloppySpec& spec = {});

// An AmigaDOS volume of `blocks` 512-byte blocks (DOS\1), its root where it belongs.
Image amiga_volume(std::uint64_t blocks, const std::string& name, AmigaDateStamp created,
                   std::uint32_t dos_type = 0x444F5301);

struct PartitionSpec {
    std::string device; // "DH0"
    std::string volume;
    std::uint32_t low_cylinder, high_cylinder;
    bool bootable = true;
    AmigaDateStamp created{16000, 60, 50};
};
// A hard disk of `cylinders` × 1 head × 32 blocks: the RDB at block 0, PART blocks from block 1
// on, each partition an AmigaDOS volume.
Image rdb_hard_disk(std::uint32_t cylinders, const std::vector<PartitionSpec>& partitions);

// An ISO 9660 image with a primary volume descriptor; `raw` writes 2,352-byte MODE1 sectors
// (sync, header, user data) instead of 2,048-byte ones, after `lead_sectors` sectors of zeros.
struct IsoSpec {
    std::string volume = "CDROM";
    std::string created = "2006010516501900"; // YYYYMMDDhhmmsscc
    bool raw = false;
    std::uint32_t lead_sectors = 0;
};
Image iso_image(const IsoSpec& spec = {});

std::string as_string(const Image& image);

} // namespace kq::test
