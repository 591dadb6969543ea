#pragma once
// An AmigaDOS volume inside an image: its DOS type (the first long of its boot block), and from
// its root block the volume name and creation date. The root lies in the middle of the volume:
// block (reserved + blocks - 1) / 2; where the geometry is only a guess, the blocks below it are
// tried too, down to a limit.

#include "media/amiga_blocks.h"
#include "media/analysis/image_bytes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kq::media {

inline constexpr std::uint32_t kDosTypeMask = 0xFFFFFF00, kDosTypeDos = 0x444F5300; // "DOS" and a flag byte

struct VolumeLayout {
    std::uint64_t start = 0;  // the volume's first byte in the image
    std::uint64_t blocks = 0; // its size in blocks
    std::uint32_t block_size = 512;
    std::uint32_t reserved = 2;  // boot blocks
    std::uint32_t step_down = 0; // how many blocks below the expected root may hold it
};

struct AmigaVolume {
    std::uint32_t dos_type = 0;
    bool is_dos = false;                       // DOS\0 to DOS\7
    bool has_root = false;                     // a valid root block was found
    std::u16string name;                       // ISO 8859-1
    std::optional<platform::FileTime> created; // local time
};

// The byte ranges that read_amiga_volume reads, for prefetching.
void amiga_volume_ranges(const VolumeLayout& layout, std::vector<ByteRange>& ranges);

// Reads the volume; nullopt when even its first block cannot be read.
std::optional<AmigaVolume> read_amiga_volume(ImageBytes& image, const VolumeLayout& layout);

// An Amiga date (local time) as a FileTime.
platform::FileTime file_time_of(const AmigaDate& date);

} // namespace kq::media
