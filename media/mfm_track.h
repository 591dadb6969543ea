#pragma once
// Decoding a raw Amiga MFM track into its AmigaDOS sectors. Each sector is a sync (0x4489,
// repeated), then the info long, a 16-byte label, the header and data checksums and 512 data
// bytes, every field stored as its odd bits then its even bits. Sync words are found at any
// bit offset, and the track is circular: a sector may run past the end into the start.

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kq::media {

inline constexpr std::size_t kSectorBytes = 512;
inline constexpr unsigned kDoubleDensitySectors = 11, kHighDensitySectors = 22;

struct MfmTrackSectors {
    std::bitset<kHighDensitySectors> found; // the sectors whose data was stored
    unsigned last_track_number = 0;         // the track number of the last good header
};

// Decodes the first `bit_length` bits of `raw` (all of them when bit_length is 0 or larger),
// storing each good sector's data at sectors[sector * 512]; sectors must hold max_sectors × 512
// bytes. A sector counts when both checksums match, its format byte is 0xFF and its number is
// below max_sectors; the first good copy of a sector wins.
MfmTrackSectors decode_mfm_track(std::span<const std::byte> raw, std::uint32_t bit_length, unsigned max_sectors,
                                 std::span<std::byte> sectors);

} // namespace kq::media
