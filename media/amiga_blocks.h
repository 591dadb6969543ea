#pragma once
// AmigaDOS volume blocks: 512-byte blocks of big-endian longs. The normal checksum makes all
// longs of a block sum to zero (mod 2^32); date stamps are three longs (days since 1978-01-01,
// minutes since midnight, ticks of 1/50 s since the start of the minute) in local time.

#include "platform/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kq::media {

inline constexpr std::size_t kBlockBytes = 512;
using Block = std::span<std::byte, kBlockBytes>;

// Root block fields used here (byte offsets).
inline constexpr std::size_t kRootChecksum = 20;
inline constexpr std::size_t kRootChangedDate = 420, kVolumeChangedDate = 472, kVolumeCreatedDate = 484;

struct AmigaDate {
    std::uint32_t days, minutes, ticks;
    bool operator==(const AmigaDate&) const = default;
};

// A local wall-clock time (100-ns ticks since 1601, taken as it stands) as an Amiga date.
// Times before 1978 give day 0.
AmigaDate amiga_date(platform::FileTime local_time);

void store_date(Block block, std::size_t offset, const AmigaDate& date);
AmigaDate load_date(std::span<const std::byte, kBlockBytes> block, std::size_t offset);

// Sets the long at `offset` so that the block's longs sum to zero.
void store_normal_checksum(Block block, std::size_t offset);
// The sum of the block's 128 longs (0 for a block with a correct normal checksum).
std::uint32_t sum_of_longs(std::span<const std::byte, kBlockBytes> block);

// Whether the boot blocks (the first 1,024 bytes of a floppy) carry a valid boot checksum: their
// 256 longs, added with end-around carry, give 0xFFFFFFFF.
bool boot_checksum_valid(std::span<const std::byte, 2 * kBlockBytes> boot);

// Stamps a root block with `date` as the root's and the volume's last change and the volume's
// creation, and recomputes its checksum.
void stamp_root_block(Block block, const AmigaDate& date);

} // namespace kq::media
