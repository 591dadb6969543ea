#pragma once
// An Amiga MFM encoder and extended ADF writer for the tests (no public extended ADF sample
// exists): sectors encoded by the rules of the format, tracks at any bit offset, and both
// container layouts.

#include <cstdint>
#include <span>
#include <vector>

namespace kq::test {

// MFM cells, one byte (0 or 1) per cell, most significant first.
class MfmBits {
public:
    // A data long as its 32 cells (16 data bits), with clock bits by the MFM rule.
    void cells_of(std::uint32_t half_long);
    // A long split into odd and even halves: two cell longs.
    void data_long(std::uint32_t value);
    // A raw 16-cell word (the sync 0x4489).
    void raw_word(std::uint16_t word);
    // Cells as they are, for gaps.
    void raw_cells(unsigned count, bool value);

    const std::vector<std::uint8_t>& cells() const { return cells_; }
    std::vector<std::uint8_t>& cells() { return cells_; }
    // The cells packed into bytes (the last byte padded with zero cells).
    std::vector<std::byte> packed() const;

private:
    std::vector<std::uint8_t> cells_;
    bool last_data_bit_ = false;
};

// Appends one AmigaDOS sector (1088 MFM bytes) for `track`, `sector`, with `to_gap` sectors
// until the gap and 512 data bytes.
void encode_sector(MfmBits& bits, unsigned track, unsigned sector, unsigned to_gap, std::span<const std::byte> data);

struct RawTrack {
    std::vector<std::byte> bytes;
    std::uint32_t bit_length;
};

// A whole track: `sectors.size() / 512` sectors in order from sector `first` on (wrapping),
// a gap of zero cells, and the cells rotated left by `rotation` (so that a sector can run
// past the end), stored from a bit offset of `offset` cells.
RawTrack encode_track(unsigned track, std::span<const std::byte> sectors, unsigned first = 0, unsigned rotation = 0,
                      unsigned gap_cells = 3000);

struct ExtendedTrack {
    std::uint8_t type;        // 0 decoded, 1 raw MFM
    std::uint8_t revolutions; // stored as revolutions - 1
    std::vector<std::byte> data;
    std::uint32_t bit_length;
};
// A "UAE-1ADF" file.
std::vector<std::byte> extended_adf(const std::vector<ExtendedTrack>& tracks);
// A "UAE--ADF" file: 160 entries of sync word and length, then the data.
std::vector<std::byte> old_extended_adf(const std::vector<std::vector<std::byte>>& tracks);

} // namespace kq::test
