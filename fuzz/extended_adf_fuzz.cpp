// Reads arbitrary bytes as an extended ADF: its track table, then every track decoded into a
// plain image. A table that reads must be consistent with itself, and a decoded image must
// have exactly the size that its track count and density give.

#include "fuzz/fuzz_require.h"
#include "media/extended_adf.h"
#include "media/mfm_track.h"

using namespace kq;
using namespace kq::media;
using kq::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source(std::as_bytes(std::span(data, size)));
    ExtendedAdfTable table;
    if (read_extended_adf_table(source, table) != status::ok) {
        require(table.track_count() == 0);
        return 0;
    }
    require(table.track_count() > 0 && table.tracks().size() == table.track_count());
    bool long_tracks = false;
    for (const ExtendedAdfTrack& track : table.tracks()) long_tracks = long_tracks || track.byte_length > 20000;
    require(table.long_tracks() == (long_tracks ? 1u : 0u));
    DecodedFloppy decoded;
    if (decode_extended_adf(source, table, decoded) != status::ok) return 0;
    require(decoded.sectors_per_track == kDoubleDensitySectors || decoded.sectors_per_track == kHighDensitySectors);
    require(decoded.image.size() == decoded.tracks * decoded.sectors_per_track * kSectorBytes);
    require(decoded.tracks + decoded.ignored_tracks == table.track_count());
    require(decoded.incomplete_tracks <= decoded.tracks);
    return 0;
}
