#pragma once
// The run-length stage (simple mode, and the second stage of quick, medium, deep and, when
// flagged, heavy): 0x90 introduces a run. 0x90 0x00 is a plain 0x90; 0x90 n v is n copies of v
// (n = 1..254); 0x90 0xFF v hi lo is (hi × 256 + lo) copies of v.

#include <cstdint>
#include <optional>
#include <span>

namespace kq::media::dms {

// Fills `out` exactly; false when the input ends first or a run passes the end of `out`.
bool unpack_rle(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

// The checksum (dms_checks.h) of the `size` bytes that the runs give, without writing them; nullopt
// where unpack_rle fails.
std::optional<std::uint16_t> rle_checksum(std::span<const std::uint8_t> in, std::size_t size);

} // namespace kq::media::dms
