#pragma once
// A CD image's volume identifier and creation date, from the primary volume descriptor of its
// ISO 9660 file system: 2,048-byte logical sectors, the descriptors from sector 16 on. A plain
// ISO image holds the user bytes only; a raw track (from a CUE sheet) holds 2,336 or 2,352
// bytes a sector with a header before the user bytes, and may start later in its file.

#include "media/analysis/image_bytes.h"
#include "media/analysis/medium_analysis.h"

#include <cstdint>

namespace kq::media {

struct IsoLayout {
    std::uint64_t track_start = 0; // the data track's first byte in the file
    std::uint32_t sector_bytes = 2048;
    std::uint32_t header_bytes = 0;
};

// Fills volume name, date and class (a readable CD does not boot as a floppy would).
void analyse_iso(ImageBytes& image, const IsoLayout& layout, MediumAnalysis& analysis);

// "YYYYMMDDhhmmsscc" and a UTC offset byte, as a local FileTime; nullopt for the all-zero "not
// specified" form or digits that do not make a date.
std::optional<platform::FileTime> iso_date(std::span<const std::byte, 17> field);

} // namespace kq::media
