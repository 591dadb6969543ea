#pragma once
// Extended ADF files: floppy images that keep each track as its own record, so that tracks
// which are not plain AmigaDOS tracks survive. Two layouts, known by the first 8 bytes:
//   "UAE-1ADF": 2 reserved bytes, the track count (16-bit big-endian, not 0), then one 12-byte
//     header per track (byte 2 revolutions - 1, byte 3 type, bytes 5-7 the length in bytes,
//     bytes 9-11 the length in bits), then the tracks' data one after the other.
//   "UAE--ADF": 160 tracks; a table of 4-byte entries (sync word, 16-bit length) and the data
//     from offset 648. The table is read from offset 12 on, after the 12 bytes that the newer
//     layout's header takes, so the entry at offset 8 is passed over and the 4 bytes at offset
//     648 are read as the last entry: the reading that these files have always had here.
// Type 0 tracks hold their sectors decoded; type 1 tracks hold raw MFM.

#include "media/byte_streams.h"
#include "module/status.h"
#include "platform/files.h"
#include "platform/heap.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kq::media {

struct ExtendedAdfTrack {
    std::uint32_t type;
    std::uint32_t revolutions;
    std::uint32_t byte_length;
    std::uint32_t bit_length;
    std::uint32_t offset; // of the track's data in the file
};
static_assert(sizeof(ExtendedAdfTrack) == 20);

inline constexpr std::uint32_t kTrackTypeDecoded = 0, kTrackTypeRawMfm = 1;

// Whether the first bytes of a file name it an extended ADF.
bool has_extended_adf_signature(std::span<const std::byte> first_bytes);

// The track table, its array allocated from the global heap.
class ExtendedAdfTable {
public:
    std::uint32_t track_count() const { return track_count_; }
    // Set when any track holds more than 20,000 bytes.
    std::uint32_t long_tracks() const { return long_tracks_; }
    std::span<const ExtendedAdfTrack> tracks() const {
        return {reinterpret_cast<const ExtendedAdfTrack*>(array_.data()), track_count_};
    }
    // Frees the array; the count becomes 0.
    void clear();

private:
    friend HResult read_extended_adf_table(ByteSource& source, ExtendedAdfTable& table);
    platform::HeapBlock array_;
    std::uint32_t track_count_ = 0;
    std::uint32_t long_tracks_ = 0;
};

// Reads the table from the start of `source`. Failures: the read's system error, invalid
// data (13) for an unknown signature, no tracks or a short table, E_OUTOFMEMORY.
HResult read_extended_adf_table(ByteSource& source, ExtendedAdfTable& table);

// An extended ADF opened for reading: the file and its table.
class ExtendedAdfFile {
public:
    static HResult open(std::u16string_view path, std::optional<ExtendedAdfFile>& out);
    const ExtendedAdfTable& table() const { return table_; }
    // The file, for reading the tracks' data.
    FileSource data() { return FileSource(file_); }

private:
    explicit ExtendedAdfFile(platform::File file) : file_(std::move(file)) {}
    platform::File file_;
    ExtendedAdfTable table_;
};

// The tracks decoded into a plain ADF image.
struct DecodedFloppy {
    std::vector<std::byte> image; // tracks × sectors_per_track × 512 bytes
    unsigned sectors_per_track = 0;
    std::uint32_t tracks = 0;
    std::uint32_t incomplete_tracks = 0; // with a sector that could not be decoded (zero-filled)
    std::uint32_t ignored_tracks = 0;    // beyond the most that a drive can reach
};

inline constexpr std::uint32_t kMaxDecodedTracks = 168; // 84 cylinders, 2 heads

// Decodes the tracks that `table` lists from `source`. The disk is high density when a decoded
// track holds 22 sectors or a raw track yields a sector numbered 11 or more.
HResult decode_extended_adf(ByteSource& source, const ExtendedAdfTable& table, DecodedFloppy& out);

} // namespace kq::media
