#include "media/amiga_blocks.h"

#include "common/byte_order.h"

namespace kq::media {
namespace {

constexpr std::int64_t kTicksPerDay = 864000000000;
constexpr std::int64_t kTicksPerMinute = 600000000;
constexpr std::int64_t kTicksPerAmigaTick = 200000; // 1/50 s
// 1978-01-01 00:00, the Amiga's epoch, as 100-ns ticks since 1601-01-01: 137,696 days.
constexpr std::int64_t kAmigaEpoch = std::int64_t{137696} * kTicksPerDay;

} // namespace

AmigaDate amiga_date(platform::FileTime local_time) {
    const std::int64_t since = static_cast<std::int64_t>(local_time) - kAmigaEpoch;
    if (since < 0) return {0, 0, 0};
    const std::int64_t rest = since % kTicksPerDay;
    const std::int64_t minutes = rest / kTicksPerMinute;
    return {static_cast<std::uint32_t>(since / kTicksPerDay), static_cast<std::uint32_t>(minutes),
            static_cast<std::uint32_t>((rest - minutes * kTicksPerMinute) / kTicksPerAmigaTick)};
}

void store_date(Block block, std::size_t offset, const AmigaDate& date) {
    store_be32(&block[offset], date.days);
    store_be32(&block[offset + 4], date.minutes);
    store_be32(&block[offset + 8], date.ticks);
}

AmigaDate load_date(std::span<const std::byte, kBlockBytes> block, std::size_t offset) {
    return {load_be32(&block[offset]), load_be32(&block[offset + 4]), load_be32(&block[offset + 8])};
}

std::uint32_t sum_of_longs(std::span<const std::byte, kBlockBytes> block) {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < kBlockBytes; at += 4) sum += load_be32(&block[at]);
    return sum;
}

void store_normal_checksum(Block block, std::size_t offset) {
    store_be32(&block[offset], 0);
    store_be32(&block[offset], 0u - sum_of_longs(block));
}

bool boot_checksum_valid(std::span<const std::byte, 2 * kBlockBytes> boot) {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < boot.size(); at += 4) {
        const std::uint32_t value = load_be32(&boot[at]);
        sum += value;
        if (sum < value) ++sum; // the carry goes round
    }
    return sum == 0xFFFFFFFF;
}

void stamp_root_block(Block block, const AmigaDate& date) {
    for (const std::size_t offset : {kRootChangedDate, kVolumeChangedDate, kVolumeCreatedDate})
        store_date(block, offset, date);
    store_normal_checksum(block, kRootChecksum);
}

} // namespace kq::media
