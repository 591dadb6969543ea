#include "media/analysis/amiga_volume.h"

#include "common/byte_order.h"

#include <vector>

namespace kq::media {
namespace {

constexpr std::uint32_t kTypeHeader = 2, kSecondaryTypeRoot = 1;
constexpr std::size_t kMaxNameChars = 30;
constexpr std::uint32_t kMinBlockSize = 512, kMaxBlockSize = 32768;
constexpr platform::FileTime kTicksPerDay = 864000000000, kTicksPerMinute = 600000000, kTicksPerAmigaTick = 200000;
constexpr platform::FileTime kAmigaEpoch = platform::FileTime{137696} * kTicksPerDay; // 1978-01-01

bool usable(const VolumeLayout& layout) {
    return layout.block_size >= kMinBlockSize && layout.block_size <= kMaxBlockSize &&
           (layout.block_size & (layout.block_size - 1)) == 0 && layout.blocks > layout.reserved;
}

std::uint64_t root_block(const VolumeLayout& layout) { return (layout.reserved + layout.blocks - 1) / 2; }

std::uint32_t long_at(const std::vector<std::byte>& block, std::size_t offset) { return load_be32(&block[offset]); }

// A root block: type and secondary type right, all its longs summing to zero.
bool is_root(const std::vector<std::byte>& block) {
    const std::size_t size = block.size();
    if (long_at(block, 0) != kTypeHeader || long_at(block, size - 4) != kSecondaryTypeRoot) return false;
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < size; at += 4) sum += long_at(block, at);
    return sum == 0;
}

AmigaDate date_at(const std::vector<std::byte>& block, std::size_t offset) {
    return {long_at(block, offset), long_at(block, offset + 4), long_at(block, offset + 8)};
}

void read_root(const std::vector<std::byte>& block, AmigaVolume& volume) {
    const std::size_t size = block.size();
    const std::size_t name_at = size - 80;
    const std::size_t length = std::to_integer<std::size_t>(block[name_at]);
    volume.has_root = true;
    if (length <= kMaxNameChars)
        for (std::size_t i = 0; i < length; ++i)
            volume.name += static_cast<char16_t>(std::to_integer<unsigned>(block[name_at + 1 + i]));
    // The volume's creation date; some images leave it empty and keep the last changes only.
    for (const std::size_t from_end : {28u, 40u, 92u}) {
        const AmigaDate date = date_at(block, size - from_end);
        if (date.days != 0) {
            volume.created = file_time_of(date);
            break;
        }
    }
}

} // namespace

platform::FileTime file_time_of(const AmigaDate& date) {
    return kAmigaEpoch + date.days * kTicksPerDay + date.minutes * kTicksPerMinute + date.ticks * kTicksPerAmigaTick;
}

void amiga_volume_ranges(const VolumeLayout& layout, std::vector<ByteRange>& ranges) {
    if (!usable(layout)) return;
    ranges.push_back({layout.start, layout.block_size});
    const std::uint64_t root = root_block(layout);
    const std::uint64_t lowest = root > layout.step_down ? root - layout.step_down : 0;
    ranges.push_back({layout.start + lowest * layout.block_size, (root - lowest + 1) * layout.block_size});
}

std::optional<AmigaVolume> read_amiga_volume(ImageBytes& image, const VolumeLayout& layout) {
    if (!usable(layout)) return std::nullopt;
    std::vector<std::byte> block(layout.block_size);
    if (!image.read(layout.start, block)) return std::nullopt;
    AmigaVolume volume;
    volume.dos_type = long_at(block, 0);
    volume.is_dos = (volume.dos_type & kDosTypeMask) == kDosTypeDos && (volume.dos_type & 0xFF) <= 7;
    if (!volume.is_dos) return volume;
    const std::uint64_t root = root_block(layout);
    for (std::uint64_t below = 0; below <= layout.step_down && below <= root; ++below) {
        if (!image.read(layout.start + (root - below) * layout.block_size, block)) continue;
        if (is_root(block)) {
            read_root(block, volume);
            break;
        }
    }
    return volume;
}

} // namespace kq::media
