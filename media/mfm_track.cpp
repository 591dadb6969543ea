#include "media/mfm_track.h"

#include <array>
#include <vector>

namespace kq::media {
namespace {

constexpr std::uint32_t kSync = 0x4489;
constexpr std::uint32_t kDataBits = 0x55555555;
// A sector after its sync words, in raw MFM longs: info (2 longs from 0), label (8 from 2,
// covered by the header checksum only), header checksum (2), data checksum (2), data (256).
constexpr std::size_t kInfoLong = 0, kHeaderSumLong = 10, kDataSumLong = 12, kDataLong = 14;
constexpr std::size_t kSectorLongs = 270;
constexpr std::size_t kSectorBits = kSectorLongs * 32;
constexpr int kMaxRepeatedSyncs = 8;

// The track's bits laid out straight: the first `length` bits of the track, followed by as
// many bits again from its start as a sector and a sync need, so that a sector that runs past
// the end reads on into the start without any wrapping arithmetic.
class CircularBits {
public:
    CircularBits(std::span<const std::byte> bytes, std::uint64_t length) : length_(length) {
        // A sector read starts at most 16 bits after a position in the track, plus up to
        // kMaxRepeatedSyncs more sync words.
        const std::uint64_t total = length + 16 * (kMaxRepeatedSyncs + 1) + kSectorBits + 64;
        bits_.assign(static_cast<std::size_t>(total / 8 + 8), 0);
        if (length % 8 == 0) {
            // Whole bytes: copy them, then the start again, byte by byte.
            for (std::size_t i = 0; i < bits_.size(); ++i)
                bits_[i] = std::to_integer<std::uint8_t>(bytes[i % static_cast<std::size_t>(length / 8)]);
        } else {
            for (std::uint64_t i = 0; i < total; ++i) {
                const std::uint64_t source = i % length;
                if (std::to_integer<unsigned>(bytes[source >> 3]) >> (7 - (source & 7)) & 1)
                    bits_[i >> 3] |= static_cast<std::uint8_t>(0x80 >> (i & 7));
            }
        }
    }

    unsigned bit(std::uint64_t position) const { return bits_[position >> 3] >> (7 - (position & 7)) & 1; }
    std::uint32_t long_at(std::uint64_t position) const {
        const std::uint8_t* p = &bits_[position >> 3];
        const std::uint64_t forty = std::uint64_t{p[0]} << 32 | std::uint64_t{p[1]} << 24 | std::uint64_t{p[2]} << 16 |
                                    std::uint64_t{p[3]} << 8 | p[4];
        return static_cast<std::uint32_t>(forty >> (8 - (position & 7)));
    }
    std::uint32_t word_at(std::uint64_t position) const { return long_at(position) >> 16; }
    std::uint64_t length() const { return length_; }

private:
    std::vector<std::uint8_t> bits_;
    std::uint64_t length_;
};

// One decoded long from its odd half and its even half.
std::uint32_t decode_long(std::uint32_t odd, std::uint32_t even) { return (odd & kDataBits) << 1 | (even & kDataBits); }

// Decodes the sector whose info starts at bit `start` when both checksums hold: writes its
// data and returns its info long.
bool decode_sector(const CircularBits& bits, std::uint64_t start, std::uint32_t& info,
                   std::array<std::byte, kSectorBytes>& data) {
    std::array<std::uint32_t, kSectorLongs> raw{};
    for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = bits.long_at(start + i * 32);

    std::uint32_t header_sum = 0;
    for (std::size_t i = kInfoLong; i < kHeaderSumLong; ++i) header_sum ^= raw[i];
    if ((header_sum & kDataBits) != decode_long(raw[kHeaderSumLong], raw[kHeaderSumLong + 1])) return false;
    std::uint32_t data_sum = 0;
    for (std::size_t i = kDataLong; i < kSectorLongs; ++i) data_sum ^= raw[i];
    if ((data_sum & kDataBits) != decode_long(raw[kDataSumLong], raw[kDataSumLong + 1])) return false;

    info = decode_long(raw[kInfoLong], raw[kInfoLong + 1]);
    for (std::size_t i = 0; i < kSectorBytes / 4; ++i) {
        // The data's odd halves fill its first 512 raw bytes, the even halves the next 512.
        const std::uint32_t value = decode_long(raw[kDataLong + i], raw[kDataLong + kSectorBytes / 4 + i]);
        for (int b = 0; b < 4; ++b) data[i * 4 + static_cast<std::size_t>(b)] = std::byte(value >> (24 - 8 * b) & 0xFF);
    }
    return true;
}

} // namespace

MfmTrackSectors decode_mfm_track(std::span<const std::byte> raw, std::uint32_t bit_length, unsigned max_sectors,
                                 std::span<std::byte> sectors) {
    MfmTrackSectors result;
    std::uint64_t length = raw.size() * std::uint64_t{8};
    if (bit_length != 0 && bit_length < length) length = bit_length;
    if (length < 16) return result;
    const CircularBits bits(raw, length);
    std::array<std::byte, kSectorBytes> data{};
    std::uint32_t window = bits.word_at(0) >> 1; // shifted in one bit at a time below
    for (std::uint64_t position = 0; position < length; ++position) {
        window = (window << 1 | bits.bit(position + 15)) & 0xFFFF;
        if (window != kSync) continue;
        std::uint64_t start = position + 16;
        for (int repeats = 0; bits.word_at(start) == kSync && repeats < kMaxRepeatedSyncs; ++repeats) start += 16;
        std::uint32_t info = 0;
        if (!decode_sector(bits, start, info, data)) continue;
        const unsigned sector = info >> 8 & 0xFF;
        if ((info >> 24) != 0xFF || sector >= max_sectors) continue;
        if (!result.found[sector]) {
            std::copy(data.begin(), data.end(), sectors.begin() + static_cast<std::ptrdiff_t>(sector * kSectorBytes));
            result.found.set(sector);
        }
        result.last_track_number = info >> 16 & 0xFF;
        // The next sector starts after this one; the window restarts there.
        position = start + kSectorBits - 1;
        if (position + 1 < length) window = bits.word_at(position + 1) >> 1;
    }
    return result;
}

} // namespace kq::media
