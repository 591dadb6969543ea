#pragma once
// An Amiga MFM encoder and extended ADF writer for the tests (no public extended ADF sample
// exists): sectors encoded by the rules of the format, tracks at any bit offset, and both
// container layouts.

#include <cstdint>
#include <span>
#include <vector>

namespace kq::test {

struct RawTrack {
    std::vector<std::byte> bytes;
    std::uint32_t bit_length;
};

// A whole track of AmigaDOS sectors (1088 MFM bytes each): `sectors.size() / 512` sectors in
// order from sector `first` on (wrapping), a gap of zero cells, and the cells rotated left by
// `rotation` (so that a sector can run past the end).
RawTrack encode_track(unsigned track, std::span<const std::byte> sectors, unsigned first = 0, unsigned rotation = 0);

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
