// Extended ADF files and their MFM tracks: the track tables of both layouts (with the older
// layout's established reading), sectors found at any bit offset, and whole disks decoded into
// plain ADF images. The test files are made by an encoder that follows the format's rules.

#include "media/extended_adf.h"
#include "media/mfm_track.h"
#include "tests/support/compressed_files.h"
#include "tests/support/mfm_encoder.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::media {
namespace {

using Bytes = std::vector<std::byte>;

const HResult kInvalid = status::from_win32(platform::system_error::invalid_data);

Bytes random_bytes(std::size_t size, unsigned seed) {
    Bytes out(size);
    std::uint32_t state = seed * 2246822519u + 1;
    for (std::byte& b : out) b = std::byte((state = state * 1664525u + 1013904223u) >> 24);
    return out;
}

TEST(MfmTrack, FindsEverySectorAtAnyBitOffset) {
    const Bytes data = random_bytes(22 * kSectorBytes, 1);
    Bytes sectors(22 * kSectorBytes);
    // From sector 5, rotated by 13 cells; sectors at other offsets are found in whole disks below.
    const test::RawTrack track = test::encode_track(40, std::span(data).first(11 * kSectorBytes), 5, 13);
    const MfmTrackSectors rotated = decode_mfm_track(track.bytes, track.bit_length, kDoubleDensitySectors, sectors);
    EXPECT_EQ(std::pair(rotated.found.count(), rotated.last_track_number), std::pair(std::size_t{11}, 40u));
    EXPECT_TRUE(std::equal(sectors.begin(), sectors.begin() + 11 * kSectorBytes, data.begin()));
    const test::RawTrack hd = test::encode_track(3, data, 0, 11);
    EXPECT_EQ(decode_mfm_track(hd.bytes, hd.bit_length, kHighDensitySectors, sectors).found.count(), 22u);
    EXPECT_TRUE(sectors == data);
    // Sector numbers at or above the limit do not count.
    EXPECT_EQ(decode_mfm_track(hd.bytes, hd.bit_length, kDoubleDensitySectors, sectors).found.count(), 11u);
    // One flipped cell in the data of sector 0 and one in the header of sector 1 (1088 bytes each).
    test::RawTrack damaged = test::encode_track(3, std::span(data).first(11 * kSectorBytes));
    damaged.bytes[200] ^= std::byte{0x10};
    damaged.bytes[1088 + 12] ^= std::byte{0x01};
    const MfmTrackSectors found = decode_mfm_track(damaged.bytes, damaged.bit_length, kDoubleDensitySectors, sectors);
    EXPECT_FALSE(found.found[0] || found.found[1]);
    EXPECT_EQ(found.found.count(), 9u);
    // Nothing to find: no bits, or bits without sync words, or sync words alone.
    Bytes syncs;
    for (int i = 0; i < 6400; ++i) syncs.insert(syncs.end(), {std::byte{0x44}, std::byte{0x89}});
    for (const Bytes& bits : {Bytes{}, Bytes(12800, std::byte{0xAA}), syncs})
        EXPECT_EQ(decode_mfm_track(bits, 0, 11, sectors).found.count(), 0u) << bits.size();
}

HResult read_table(const Bytes& file, ExtendedAdfTable& table) {
    MemorySource source(file);
    return read_extended_adf_table(source, table);
}

TEST(ExtendedAdfTable, BothLayoutsAndRefusals) {
    const std::vector<test::ExtendedTrack> tracks = {
        {0, 1, Bytes(5632), 45056}, {1, 1, Bytes(12668), 101344}, {1, 3, Bytes(25000), 199999}, {0, 1, {}, 0}};
    const Bytes file = test::extended_adf(tracks);
    ExtendedAdfTable table;
    ASSERT_EQ(read_table(file, table), status::ok);
    ASSERT_EQ(table.track_count(), 4u);
    EXPECT_EQ(table.long_tracks(), 1u);
    for (std::uint32_t i = 0, offset = 12 + 4 * 12; i < 4; offset += table.tracks()[i++].byte_length) {
        const ExtendedAdfTrack& track = table.tracks()[i];
        EXPECT_EQ(
            std::tuple(track.type, track.revolutions, track.byte_length, track.bit_length, track.offset),
            std::tuple(tracks[i].type, tracks[i].revolutions, tracks[i].data.size(), tracks[i].bit_length, offset))
            << i;
    }
    ASSERT_EQ(read_table(test::extended_adf({{1, 1, Bytes(20000), 160000}}), table), status::ok);
    EXPECT_EQ(table.long_tracks(), 0u); // short tracks only
    // The older layout: the entry at offset 8 is passed over, so track i gets the length of track
    // i + 1, and the last one the 16-bit value at offset 650 (in track 0's data: 00 00 12 34).
    std::vector<Bytes> old_tracks;
    for (std::size_t i = 0; i < 160; ++i) old_tracks.push_back(Bytes(100 + i, std::byte{0x55}));
    old_tracks[0][2] = std::byte{0x12};
    old_tracks[0][3] = std::byte{0x34};
    const Bytes older = test::old_extended_adf(old_tracks);
    ASSERT_EQ(read_table(older, table), status::ok);
    ASSERT_EQ(table.track_count(), 160u);
    EXPECT_EQ(table.long_tracks(), 0u);
    for (std::uint32_t i = 0, offset = 648; i < 160; offset += table.tracks()[i++].byte_length) {
        const ExtendedAdfTrack& track = table.tracks()[i];
        EXPECT_EQ(std::tuple(track.type, track.revolutions, track.byte_length, track.bit_length, track.offset),
                  std::tuple(kTrackTypeDecoded, 1u, i < 159 ? 101 + i : 0x1234, 0u, offset))
            << i;
    }
    // Refused: no tracks, a plain ADF, another signature, and both tables cut at every length.
    for (const Bytes& refused : {test::extended_adf({}), Bytes(901120), test::bytes_of("UAE-2ADF\0\0\0\1")}) {
        EXPECT_EQ(read_table(refused, table), kInvalid) << refused.size();
        EXPECT_EQ(table.track_count(), 0u);
    }
    for (const Bytes& whole : {file, older})
        for (std::size_t cut = 0; cut < (whole == file ? 60 : 648); ++cut)
            EXPECT_EQ(read_table(Bytes(whole.begin(), whole.begin() + cut), table), kInvalid) << cut;
}

// A disk of `tracks` tracks whose even tracks are stored decoded and odd ones as raw MFM.
std::pair<Bytes, Bytes> mixed_disk(std::uint32_t tracks, unsigned sectors) {
    const Bytes adf = random_bytes(tracks * sectors * kSectorBytes, tracks + sectors);
    std::vector<test::ExtendedTrack> entries;
    for (std::uint32_t i = 0; i < tracks; ++i) {
        const std::span<const std::byte> track =
            std::span(adf).subspan(i * sectors * kSectorBytes, sectors * kSectorBytes);
        test::RawTrack raw = test::encode_track(i, track, i % sectors, i * 977);
        entries.push_back(i % 2 == 0 ? test::ExtendedTrack{0, 1, Bytes(track.begin(), track.end()), sectors * 4096}
                                     : test::ExtendedTrack{1, 1, std::move(raw.bytes), raw.bit_length});
    }
    return {adf, test::extended_adf(entries)};
}

HResult decode(const Bytes& file, DecodedFloppy& out) {
    ExtendedAdfTable table;
    MemorySource source(file);
    const HResult read = read_extended_adf_table(source, table);
    return read != status::ok ? read : decode_extended_adf(source, table, out);
}

TEST(ExtendedAdfDecoding, WholeMissingAndExtraTracks) {
    DecodedFloppy decoded;
    for (const unsigned sectors : {kDoubleDensitySectors, kHighDensitySectors}) {
        const auto [adf, file] = mixed_disk(160, sectors);
        ASSERT_EQ(decode(file, decoded), status::ok);
        EXPECT_EQ(std::tuple(decoded.sectors_per_track, decoded.tracks, decoded.incomplete_tracks),
                  std::tuple(sectors, 160u, 0u));
        EXPECT_TRUE(decoded.image == adf) << sectors;
    }
    // An unformatted track, a raw track without AmigaDOS sectors and a short decoded track, of
    // which the sectors held in full are kept.
    const Bytes data = random_bytes(5632, 9);
    ASSERT_EQ(decode(test::extended_adf({{0, 1, data, 45056},
                                         {0, 1, {}, 0},
                                         {1, 1, Bytes(12668, std::byte{0xAA}), 101344},
                                         {0, 1, Bytes(data.begin(), data.begin() + 1100), 8800}}),
                     decoded),
              status::ok);
    EXPECT_EQ(std::tuple(decoded.sectors_per_track, decoded.tracks, decoded.incomplete_tracks),
              std::tuple(11u, 4u, 3u));
    Bytes expected(3 * 5632 + 1024);
    std::copy(data.begin(), data.end(), expected.begin());
    std::copy_n(data.begin(), 1024, expected.begin() + 3 * 5632);
    ASSERT_EQ(decoded.image.size(), 4u * 5632u);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), decoded.image.begin()));
    // Tracks beyond 84 cylinders are left out.
    ASSERT_EQ(decode(test::extended_adf(std::vector<test::ExtendedTrack>(170, {0, 1, Bytes(5632), 45056})), decoded),
              status::ok);
    EXPECT_EQ(std::pair(decoded.tracks, decoded.ignored_tracks), std::pair(kMaxDecodedTracks, 2u));
    // A table that points past the end of the file; and the same files opened from disk.
    Bytes cut = mixed_disk(4, 11).second;
    cut.resize(cut.size() - 100);
    EXPECT_EQ(decode(cut, decoded), kInvalid);
    const test::TempFolder folder;
    const auto [adf, file] = mixed_disk(4, 11);
    folder.create_file(u"disk.adf", std::string(reinterpret_cast<const char*>(file.data()), file.size()));
    folder.create_file(u"plain.adf", std::string(901120, '\0'));
    std::optional<ExtendedAdfFile> opened;
    ASSERT_EQ(ExtendedAdfFile::open(folder.path(u"disk.adf"), opened), status::ok);
    FileSource source = opened->data();
    ASSERT_EQ(decode_extended_adf(source, opened->table(), decoded), status::ok);
    EXPECT_TRUE(decoded.image == adf);
    EXPECT_EQ(ExtendedAdfFile::open(folder.path(u"plain.adf"), opened), kInvalid);
    EXPECT_FALSE(opened.has_value());
    EXPECT_EQ(ExtendedAdfFile::open(folder.path(u"missing.adf"), opened),
              status::from_win32(platform::system_error::file_not_found));
    EXPECT_TRUE(has_extended_adf_signature(file));
    EXPECT_FALSE(has_extended_adf_signature(Bytes(8)));
}

} // namespace
} // namespace kq::media
