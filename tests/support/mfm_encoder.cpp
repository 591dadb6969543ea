#include "tests/support/mfm_encoder.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kq::test {
namespace {

constexpr std::uint32_t kDataBits = 0x55555555;

void put_be(std::vector<std::byte>& out, std::uint32_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out.push_back(std::byte(value >> (8 * i) & 0xFF));
}

// The checksum of decoded longs: the XOR of their halves' data bits.
std::uint32_t checksum(std::span<const std::uint32_t> longs) {
    std::uint32_t sum = 0;
    for (const std::uint32_t value : longs) sum ^= (value >> 1 & kDataBits) ^ (value & kDataBits);
    return sum;
}

// MFM cells, one byte (0 or 1) per cell.
struct MfmBits {
    std::vector<std::uint8_t> cells;
    bool last_data_bit = false;

    // 16 data bits (the odd or even bits of a long) as 32 cells: a clock cell is 1 between two
    // zero data bits.
    void half_long(std::uint32_t half) {
        for (int position = 30; position >= 0; position -= 2) {
            const bool bit = (half >> position & 1) != 0;
            cells.push_back(!last_data_bit && !bit);
            cells.push_back(bit);
            last_data_bit = bit;
        }
    }
    // Longs as all their odd halves, then all their even halves.
    void odd_even(std::span<const std::uint32_t> longs) {
        for (const std::uint32_t value : longs) half_long(value >> 1 & kDataBits);
        for (const std::uint32_t value : longs) half_long(value & kDataBits);
    }
    void sector(unsigned track, unsigned sector, unsigned to_gap, std::span<const std::byte> data) {
        half_long(0); // two zero bytes, then two sync words
        for (int word = 0; word < 2; ++word)
            for (int i = 15; i >= 0; --i) cells.push_back(0x4489 >> i & 1);
        last_data_bit = true;
        const std::array<std::uint32_t, 5> header = {0xFF000000u | track << 16 | sector << 8 | to_gap, 0, 0, 0, 0};
        std::array<std::uint32_t, 128> longs{};
        for (std::size_t i = 0; i < 512; ++i)
            longs[i / 4] = longs[i / 4] << 8 | std::to_integer<std::uint32_t>(data[i]);
        odd_even(std::span(header).first(1));
        odd_even(std::span(header).subspan(1));
        odd_even(std::array{checksum(header)});
        odd_even(std::array{checksum(longs)});
        odd_even(longs);
    }
};

} // namespace

RawTrack encode_track(unsigned track, std::span<const std::byte> sectors, unsigned first, unsigned rotation) {
    const unsigned count = static_cast<unsigned>(sectors.size() / 512);
    MfmBits bits;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned sector = (first + i) % count;
        bits.sector(track, sector, count - i, sectors.subspan(sector * 512, 512));
    }
    bits.cells.insert(bits.cells.end(), 3000, 0); // the gap
    std::vector<std::uint8_t>& cells = bits.cells;
    std::rotate(cells.begin(), cells.begin() + static_cast<std::ptrdiff_t>(rotation % cells.size()), cells.end());
    RawTrack raw{std::vector<std::byte>((cells.size() + 7) / 8), static_cast<std::uint32_t>(cells.size())};
    for (std::size_t i = 0; i < cells.size(); ++i)
        if (cells[i]) raw.bytes[i / 8] |= std::byte(0x80 >> (i % 8));
    return raw;
}

std::vector<std::byte> extended_adf(const std::vector<ExtendedTrack>& tracks) {
    std::vector<std::byte> out;
    for (char c : std::string_view("UAE-1ADF")) out.push_back(std::byte(c));
    put_be(out, static_cast<std::uint32_t>(tracks.size()), 4);
    for (const ExtendedTrack& track : tracks) {
        put_be(out, 0, 2);
        out.push_back(std::byte(track.revolutions - 1));
        out.push_back(std::byte(track.type));
        put_be(out, static_cast<std::uint32_t>(track.data.size()), 4);
        put_be(out, track.bit_length, 4);
    }
    for (const ExtendedTrack& track : tracks) out.insert(out.end(), track.data.begin(), track.data.end());
    return out;
}

std::vector<std::byte> old_extended_adf(const std::vector<std::vector<std::byte>>& tracks) {
    std::vector<std::byte> out;
    for (char c : std::string_view("UAE--ADF")) out.push_back(std::byte(c));
    for (std::size_t i = 0; i < 160; ++i)
        put_be(out, i < tracks.size() ? static_cast<std::uint32_t>(tracks[i].size()) : 0, 4);
    for (const auto& track : tracks) out.insert(out.end(), track.begin(), track.end());
    return out;
}

} // namespace kq::test
