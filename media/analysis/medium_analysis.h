#pragma once
// What a medium image holds, read from its contents: the module's one reader of disk images,
// behind volume names, content texts and auto-configuration. It knows floppy images (ADF,
// ADZ, DMS, extended ADF, IPF through the CAPSImg library), hard-disk images (HDF, HDZ; with a
// Rigid Disk Block or a single volume) and CD images (ISO, CUE). Compressed images are read
// only as far as needed.

#include "media/image_formats.h"
#include "media/medium_names.h"
#include "platform/clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq::media {

// How a medium starts the machine.
enum class AnalysisClass : std::uint32_t {
    unknown = 0,         // unreadable, or not recognised
    not_bootable = 1,    // readable, but no valid boot block, or not a floppy
    amigados_boot = 2,   // a floppy that boots AmigaDOS (OFS or FFS)
    custom_boot = 3,     // a floppy that boots its own code (no AmigaDOS volume)
    later_kickstart = 4, // a bootable floppy of a later file system (DOS\2 to DOS\7), or a hard
                         // disk with a bootable partition
};

struct PartitionFacts {
    std::u16string device_name; // "DH0"
    std::u16string volume_name;
    bool bootable = false;
    std::optional<platform::FileTime> created;
};

struct MediumAnalysis {
    MediumKind kind = MediumKind::floppy;
    AnalysisClass analysis_class = AnalysisClass::unknown;
    // A floppy's volume name; a hard disk's first partition's; a CD's volume identifier.
    std::u16string volume_name;
    std::optional<platform::FileTime> date; // the volume's creation date (local time)
    std::u16string_view conversion_label;   // "ADF from DMS" ... "Raw File"
    std::vector<PartitionFacts> partitions; // of a hard disk
};

enum class AnalysisFailure : std::uint32_t {
    none = 0,
    unreadable = 1,           // the file cannot be opened or read
    ipf_library_missing = 13, // an IPF image, and no CAPSImg library to read it
};

// Analyses the image at `path`; `geometry` lays out a hard-disk image without partition table
// (null: the defaults). An image whose content is not recognised is analysed as class unknown.
AnalysisFailure analyse_medium(std::u16string_view path, MediumAnalysis& analysis,
                               const HardDiskGeometry* geometry = nullptr);

} // namespace kq::media
