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

std::uint32_t be32(std::span<const std::byte> data, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | std::to_integer<std::uint32_t>(data[at + i]);
    return value;
}

// Encodes n decoded longs as all the odd halves, then all the even halves.
void odd_even(MfmBits& bits, std::span<const std::uint32_t> longs) {
    for (std::uint32_t value : longs) bits.cells_of(value >> 1 & kDataBits);
    for (std::uint32_t value : longs) bits.cells_of(value & kDataBits);
}

// The checksum of decoded longs: the XOR of their halves' data bits.
std::uint32_t checksum(std::span<const std::uint32_t> longs) {
    std::uint32_t x = 0;
    for (std::uint32_t value : longs) x ^= (value >> 1 & kDataBits) ^ (value & kDataBits);
    return x;
}

} // namespace

void MfmBits::cells_of(std::uint32_t half_long) {
    for (int position = 31; position >= 0; --position) {
        if (position % 2 == 1) { // a clock cell: 1 between two zero data bits
            const bool before = last_data_bit_, after = (half_long >> (position - 1) & 1) != 0;
            cells_.push_back(!before && !after);
        } else {
            last_data_bit_ = (half_long >> position & 1) != 0;
            cells_.push_back(last_data_bit_);
        }
    }
}

void MfmBits::data_long(std::uint32_t value) {
    cells_of(value >> 1 & kDataBits);
    cells_of(value & kDataBits);
}

void MfmBits::raw_word(std::uint16_t word) {
    for (int i = 15; i >= 0; --i) cells_.push_back((word >> i & 1) != 0);
    last_data_bit_ = (word & 1) != 0;
}

void MfmBits::raw_cells(unsigned count, bool value) {
    cells_.insert(cells_.end(), count, static_cast<std::uint8_t>(value));
    if (count > 0) last_data_bit_ = value;
}

std::vector<std::byte> MfmBits::packed() const {
    std::vector<std::byte> out((cells_.size() + 7) / 8);
    for (std::size_t i = 0; i < cells_.size(); ++i)
        if (cells_[i]) out[i / 8] |= std::byte(0x80 >> (i % 8));
    return out;
}

void encode_sector(MfmBits& bits, unsigned track, unsigned sector, unsigned to_gap, std::span<const std::byte> data) {
    bits.cells_of(0); // two zero bytes before the sync
    bits.raw_word(0x4489);
    bits.raw_word(0x4489);
    const std::array<std::uint32_t, 5> header = {0xFF000000u | track << 16 | sector << 8 | to_gap, 0, 0, 0, 0};
    odd_even(bits, std::span(header).first(1));
    odd_even(bits, std::span(header).subspan(1));
    std::array<std::uint32_t, 128> longs{};
    for (std::size_t i = 0; i < longs.size(); ++i) longs[i] = be32(data, i * 4);
    const std::array<std::uint32_t, 1> header_sum = {checksum(header)}, data_sum = {checksum(longs)};
    odd_even(bits, header_sum);
    odd_even(bits, data_sum);
    odd_even(bits, longs);
}

RawTrack encode_track(unsigned track, std::span<const std::byte> sectors, unsigned first, unsigned rotation,
                      unsigned gap_cells) {
    const unsigned count = static_cast<unsigned>(sectors.size() / 512);
    MfmBits bits;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned sector = (first + i) % count;
        encode_sector(bits, track, sector, count - i, sectors.subspan(sector * 512, 512));
    }
    bits.raw_cells(gap_cells, false);
    std::vector<std::uint8_t>& cells = bits.cells();
    std::rotate(cells.begin(), cells.begin() + static_cast<std::ptrdiff_t>(rotation % cells.size()), cells.end());
    return {bits.packed(), static_cast<std::uint32_t>(cells.size())};
}

std::vector<std::byte> extended_adf(const std::vector<ExtendedTrack>& tracks) {
    std::vector<std::byte> out;
    for (char c : std::string_view("UAE-1ADF")) out.push_back(std::byte(c));
    put_be(out, 0, 2);
    put_be(out, static_cast<std::uint32_t>(tracks.size()), 2);
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
    for (std::size_t i = 0; i < 160; ++i) {
        put_be(out, 0, 2);
        put_be(out, i < tracks.size() ? static_cast<std::uint32_t>(tracks[i].size()) : 0, 2);
    }
    for (const auto& track : tracks) out.insert(out.end(), track.begin(), track.end());
    return out;
}

} // namespace kq::test
