// Extended ADF files and their MFM tracks: the track tables of both layouts (with the older
// layout's established reading), sectors found at any bit offset, and whole disks decoded into
// plain ADF images. The test files are made by an encoder that follows the format's rules.

#include "media/extended_adf.h"
#include "media/mfm_track.h"
#include "tests/support/mfm_encoder.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace kq::media {
namespace {

using Bytes = std::vector<std::byte>;

Bytes random_bytes(std::size_t size, unsigned seed) {
    Bytes out(size);
    std::uint32_t state = seed * 2246822519u + 1;
    for (std::byte& b : out) {
        state = state * 1664525u + 1013904223u;
        b = std::byte(state >> 24);
    }
    return out;
}

std::string hex(std::span<const std::byte> bytes) {
    std::string out;
    char digits[3];
    for (std::byte b : bytes) {
        std::snprintf(digits, sizeof digits, "%02x", std::to_integer<unsigned>(b));
        out += digits;
    }
    return out;
}

TEST(MfmEncoder, MatchesThePublishedTestVector) {
    test::MfmBits bits;
    const Bytes zero(512);
    test::encode_sector(bits, 0, 0, 11, zero);
    const Bytes packed = bits.packed();
    ASSERT_EQ(packed.size(), 1088u);
    std::string expected = "aaaaaaaa44894489552aaaa5552aaaa92aaaaaaa";
    for (int i = 0; i < 7; ++i) expected += "aaaaaaaa";
    expected += "aaaaaaaaaaaaaaa4aaaaaaaaaaaaaaaa";
    EXPECT_EQ(hex(std::span(packed).first(64)), expected);
}

TEST(MfmTrack, FindsEverySectorAtAnyBitOffset) {
    const Bytes data = random_bytes(11 * kSectorBytes, 1);
    const struct {
        unsigned first, rotation;
    } cases[] = {{0, 0}, {0, 1}, {0, 7}, {5, 13}, {10, 4000}, {3, 95000}, {0, 97000}};
    for (const auto& c : cases) {
        const test::RawTrack track = test::encode_track(40, data, c.first, c.rotation);
        Bytes sectors(22 * kSectorBytes);
        const MfmTrackSectors found = decode_mfm_track(track.bytes, track.bit_length, kDoubleDensitySectors, sectors);
        EXPECT_EQ(found.found.count(), 11u) << c.first << "/" << c.rotation;
        EXPECT_EQ(found.last_track_number, 40u);
        EXPECT_TRUE(std::equal(data.begin(), data.end(), sectors.begin())) << c.first << "/" << c.rotation;
    }
}

TEST(MfmTrack, HighDensityAndDamagedSectors) {
    const Bytes data = random_bytes(22 * kSectorBytes, 2);
    const test::RawTrack hd = test::encode_track(3, data, 0, 11);
    Bytes sectors(22 * kSectorBytes);
    EXPECT_EQ(decode_mfm_track(hd.bytes, hd.bit_length, kHighDensitySectors, sectors).found.count(), 22u);
    EXPECT_TRUE(sectors == data);
    // Sector numbers at or above the limit do not count.
    EXPECT_EQ(decode_mfm_track(hd.bytes, hd.bit_length, kDoubleDensitySectors, sectors).found.count(), 11u);

    // One flipped cell in the data of sector 0 and one in the header of sector 1 (the track
    // starts with sector 0; each sector is 1088 bytes).
    test::RawTrack damaged = test::encode_track(3, std::span(data).first(11 * kSectorBytes));
    damaged.bytes[200] ^= std::byte{0x10};
    damaged.bytes[1088 + 12] ^= std::byte{0x01};
    const MfmTrackSectors found = decode_mfm_track(damaged.bytes, damaged.bit_length, kDoubleDensitySectors, sectors);
    EXPECT_FALSE(found.found[0]);
    EXPECT_FALSE(found.found[1]);
    EXPECT_EQ(found.found.count(), 9u);

    // Nothing to find: no bits, or bits without sync words.
    EXPECT_EQ(decode_mfm_track({}, 0, 11, sectors).found.count(), 0u);
    const Bytes noise(12800, std::byte{0xAA});
    EXPECT_EQ(decode_mfm_track(noise, 0, 11, sectors).found.count(), 0u);
    const Bytes syncs = [] {
        Bytes out;
        for (int i = 0; i < 6400; ++i) out.insert(out.end(), {std::byte{0x44}, std::byte{0x89}});
        return out;
    }();
    EXPECT_EQ(decode_mfm_track(syncs, 0, 11, sectors).found.count(), 0u);
}

HResult read_table(const Bytes& file, ExtendedAdfTable& table) {
    MemorySource source(file);
    return read_extended_adf_table(source, table);
}

TEST(ExtendedAdfTable, NewerLayout) {
    const Bytes file = test::extended_adf(
        {{0, 1, Bytes(5632), 45056}, {1, 1, Bytes(12668), 101344}, {1, 3, Bytes(25000), 199999}, {0, 1, {}, 0}});
    ExtendedAdfTable table;
    ASSERT_EQ(read_table(file, table), status::ok);
    ASSERT_EQ(table.track_count(), 4u);
    EXPECT_EQ(table.long_tracks(), 1u);
    const std::uint32_t data_start = 12 + 4 * 12;
    const ExtendedAdfTrack expected[] = {{0, 1, 5632, 45056, data_start},
                                         {1, 1, 12668, 101344, data_start + 5632},
                                         {1, 3, 25000, 199999, data_start + 5632 + 12668},
                                         {0, 1, 0, 0, data_start + 5632 + 12668 + 25000}};
    for (std::size_t i = 0; i < 4; ++i) {
        const ExtendedAdfTrack& track = table.tracks()[i];
        EXPECT_EQ(track.type, expected[i].type) << i;
        EXPECT_EQ(track.revolutions, expected[i].revolutions) << i;
        EXPECT_EQ(track.byte_length, expected[i].byte_length) << i;
        EXPECT_EQ(track.bit_length, expected[i].bit_length) << i;
        EXPECT_EQ(track.offset, expected[i].offset) << i;
    }
    table.clear();
    EXPECT_EQ(table.track_count(), 0u);

    // Short tracks only: no long-track flag.
    ASSERT_EQ(read_table(test::extended_adf({{1, 1, Bytes(20000), 160000}}), table), status::ok);
    EXPECT_EQ(table.long_tracks(), 0u);
}

TEST(ExtendedAdfTable, OlderLayoutIsReadAsItAlwaysWas) {
    // Track i of the file is 100 + i bytes long, and track 0's data starts with 00 00 12 34.
    std::vector<Bytes> tracks;
    for (std::size_t i = 0; i < 160; ++i) tracks.push_back(Bytes(100 + i, std::byte{0x55}));
    tracks[0][2] = std::byte{0x12};
    tracks[0][3] = std::byte{0x34};
    ExtendedAdfTable table;
    ASSERT_EQ(read_table(test::old_extended_adf(tracks), table), status::ok);
    ASSERT_EQ(table.track_count(), 160u);
    EXPECT_EQ(table.long_tracks(), 0u);
    // The entry at offset 8 is passed over: track i gets the length of track i + 1, and the last
    // one the 16-bit value at offset 650 (in track 0's data).
    std::uint32_t offset = 648;
    for (std::uint32_t i = 0; i < 160; ++i) {
        const ExtendedAdfTrack& track = table.tracks()[i];
        const std::uint32_t length = i < 159 ? 101 + i : 0x1234;
        EXPECT_EQ(track.byte_length, length) << i;
        EXPECT_EQ(track.offset, offset) << i;
        EXPECT_EQ(track.type, kTrackTypeDecoded);
        EXPECT_EQ(track.revolutions, 1u);
        EXPECT_EQ(track.bit_length, 0u);
        offset += length;
    }
}

TEST(ExtendedAdfTable, RefusedFiles) {
    const HResult invalid = status::from_win32(platform::system_error::invalid_data);
    const Bytes one_track = test::extended_adf({{0, 1, Bytes(5632), 45056}});
    const Bytes older = test::old_extended_adf({});
    const struct {
        const char* what;
        Bytes file;
    } cases[] = {
        {"no tracks", test::extended_adf({})},
        {"plain ADF", Bytes(901120)},
        {"other signature", Bytes{std::byte{'U'},
                                  std::byte{'A'},
                                  std::byte{'E'},
                                  std::byte{'-'},
                                  std::byte{'2'},
                                  std::byte{'A'},
                                  std::byte{'D'},
                                  std::byte{'F'},
                                  {},
                                  {},
                                  {},
                                  std::byte{1}}},
        {"empty file", {}},
        {"header cut short", Bytes(one_track.begin(), one_track.begin() + 10)},
        {"table cut short", Bytes(one_track.begin(), one_track.begin() + 20)},
        {"older table cut short", Bytes(older.begin(), older.begin() + 600)},
    };
    for (const auto& c : cases) {
        ExtendedAdfTable table;
        EXPECT_EQ(read_table(c.file, table), invalid) << c.what;
        EXPECT_EQ(table.track_count(), 0u) << c.what;
    }
}

struct Disk {
    Bytes adf;
    Bytes file;
};

// A disk of `tracks` tracks whose even tracks are stored decoded and odd ones as raw MFM.
Disk mixed_disk(std::uint32_t tracks, unsigned sectors) {
    Disk disk;
    disk.adf = random_bytes(tracks * sectors * kSectorBytes, tracks + sectors);
    std::vector<test::ExtendedTrack> entries;
    for (std::uint32_t i = 0; i < tracks; ++i) {
        const std::span<const std::byte> track(disk.adf.data() + i * sectors * kSectorBytes, sectors * kSectorBytes);
        if (i % 2 == 0) {
            entries.push_back({0, 1, Bytes(track.begin(), track.end()), static_cast<std::uint32_t>(track.size() * 8)});
        } else {
            test::RawTrack raw = test::encode_track(i, track, i % sectors, i * 977);
            entries.push_back({1, 1, std::move(raw.bytes), raw.bit_length});
        }
    }
    disk.file = test::extended_adf(entries);
    return disk;
}

HResult decode(const Bytes& file, DecodedFloppy& out) {
    ExtendedAdfTable table;
    MemorySource source(file);
    if (const HResult read = read_extended_adf_table(source, table); read != status::ok) return read;
    return decode_extended_adf(source, table, out);
}

TEST(ExtendedAdfDecoding, WholeDisksBecomePlainImages) {
    for (const unsigned sectors : {kDoubleDensitySectors, kHighDensitySectors}) {
        const Disk disk = mixed_disk(160, sectors);
        DecodedFloppy decoded;
        ASSERT_EQ(decode(disk.file, decoded), status::ok);
        EXPECT_EQ(decoded.sectors_per_track, sectors);
        EXPECT_EQ(decoded.tracks, 160u);
        EXPECT_EQ(decoded.incomplete_tracks, 0u);
        EXPECT_TRUE(decoded.image == disk.adf) << sectors;
    }
}

TEST(ExtendedAdfDecoding, MissingAndExtraTracks) {
    // An unformatted track, a raw track without AmigaDOS sectors and a short decoded track.
    const Bytes data = random_bytes(3 * 5632, 9);
    const Bytes file = test::extended_adf({{0, 1, Bytes(data.begin(), data.begin() + 5632), 45056},
                                           {0, 1, {}, 0},
                                           {1, 1, Bytes(12668, std::byte{0xAA}), 101344},
                                           {0, 1, Bytes(data.begin(), data.begin() + 1100), 8800}});
    DecodedFloppy decoded;
    ASSERT_EQ(decode(file, decoded), status::ok);
    EXPECT_EQ(decoded.sectors_per_track, 11u);
    EXPECT_EQ(decoded.tracks, 4u);
    EXPECT_EQ(decoded.incomplete_tracks, 3u);
    ASSERT_EQ(decoded.image.size(), 4u * 5632u);
    EXPECT_TRUE(std::equal(data.begin(), data.begin() + 5632, decoded.image.begin()));
    EXPECT_TRUE(std::all_of(decoded.image.begin() + 5632, decoded.image.begin() + 3 * 5632,
                            [](std::byte b) { return b == std::byte{0}; }));
    // The sectors that the short track holds in full are kept.
    EXPECT_TRUE(std::equal(data.begin(), data.begin() + 1024, decoded.image.begin() + 3 * 5632));

    // Tracks beyond 84 cylinders are left out.
    std::vector<test::ExtendedTrack> many(170, {0, 1, Bytes(5632, std::byte{7}), 45056});
    ASSERT_EQ(decode(test::extended_adf(many), decoded), status::ok);
    EXPECT_EQ(decoded.tracks, kMaxDecodedTracks);
    EXPECT_EQ(decoded.ignored_tracks, 2u);

    // A table that points past the end of the file.
    Bytes cut = mixed_disk(4, 11).file;
    cut.resize(cut.size() - 100);
    EXPECT_EQ(decode(cut, decoded), status::from_win32(platform::system_error::invalid_data));
}

TEST(ExtendedAdfFile, OpensFromDisk) {
    const test::TempFolder folder;
    const Disk disk = mixed_disk(4, 11);
    folder.create_file(u"disk.adf", std::string(reinterpret_cast<const char*>(disk.file.data()), disk.file.size()));
    folder.create_file(u"plain.adf", std::string(901120, '\0'));

    std::optional<ExtendedAdfFile> file;
    ASSERT_EQ(ExtendedAdfFile::open(folder.path(u"disk.adf"), file), status::ok);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->table().track_count(), 4u);
    FileSource data = file->data();
    DecodedFloppy decoded;
    ASSERT_EQ(decode_extended_adf(data, file->table(), decoded), status::ok);
    EXPECT_TRUE(decoded.image == disk.adf);

    EXPECT_EQ(ExtendedAdfFile::open(folder.path(u"plain.adf"), file),
              status::from_win32(platform::system_error::invalid_data));
    EXPECT_FALSE(file.has_value());
    EXPECT_EQ(ExtendedAdfFile::open(folder.path(u"missing.adf"), file),
              status::from_win32(platform::system_error::file_not_found));
    EXPECT_TRUE(has_extended_adf_signature(disk.file));
    EXPECT_FALSE(has_extended_adf_signature(Bytes(8)));
}

} // namespace
} // namespace kq::media
