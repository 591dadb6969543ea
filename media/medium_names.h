#pragma once
// The names stored inside medium images, for the texts that describe drives: the volume name
// of a floppy, hard-disk or CD image, and the device and volume names that a hard-disk image
// holds for a given geometry.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::media {

// The volume name stored in the image at `path` (any kind the content analysis reads: ADF,
// ADZ, DMS, extended ADF, IPF, HDF, HDZ, ISO, CUE); nullopt when the image cannot be read or
// holds none.
std::optional<std::u16string> read_volume_name(std::u16string_view path);

// How a hard-disk image without partition table is laid out; zeros (and -1 reserved blocks)
// stand for "not given", when defaults apply.
struct HardDiskGeometry {
    std::uint32_t block_size = 0; // bytes
    std::uint32_t sectors = 0;    // blocks per track
    std::uint32_t surfaces = 0;   // heads
    std::int32_t reserved = -1;   // boot blocks at the start of the volume
};

struct HardDiskNames {
    std::u16string device_name; // from the partition table ("DH0"); empty when the image has none
    std::u16string volume_name; // empty when no volume could be read
};

// The device and volume names of the first partition of the hard-disk image at `path` (HDF or
// HDZ), or of its one volume when it has no partition table (laid out by `geometry`); nullopt
// when the image cannot be read.
std::optional<HardDiskNames> read_hard_disk_names(std::u16string_view path, const HardDiskGeometry& geometry);

} // namespace kq::media
