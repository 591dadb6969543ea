// The content analysis of disk and CD images built by the tests: boot classes, volume names,
// dates and conversion labels of floppies in every container, hard disks with and without a
// partition table, CD images plain and through CUE sheets, and what fails.

#include "media/analysis/medium_analysis.h"
#include "media/medium_names.h"
#include "tests/media/dms/dms_test_support.h"
#include "tests/support/amiga_images.h"
#include "tests/support/compressed_files.h"
#include "tests/support/mfm_encoder.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

namespace kq::media {
namespace {

using test::FloppySpec;
using test::Image;

constexpr platform::FileTime kTicksPerSecond = 10000000;
// 1978-01-01 as 100-ns ticks since 1601.
constexpr platform::FileTime k1978 = platform::FileTime{137696} * 86400 * kTicksPerSecond;
constexpr platform::FileTime amiga(std::uint64_t days, std::uint64_t minutes, std::uint64_t ticks) {
    return k1978 + (days * 86400 + minutes * 60) * kTicksPerSecond + ticks * kTicksPerSecond / 50;
}

class Analysis : public ::testing::Test {
protected:
    MediumAnalysis analyse(std::u16string_view name, const Image& content,
                           AnalysisFailure expected = AnalysisFailure::none) {
        folder_.create_file(name, test::as_string(content));
        MediumAnalysis analysis;
        EXPECT_EQ(analyse_medium(folder_.path(name), analysis), expected) << test::printable(name);
        return analysis;
    }
    test::TempFolder folder_;
};

TEST_F(Analysis, FloppyBootClasses) {
    const struct {
        const char* what;
        FloppySpec spec;
        AnalysisClass expected;
        std::u16string_view name;
    } cases[] = {
        {"OFS that boots", {}, AnalysisClass::amigados_boot, u"Workbench"},
        {"FFS that boots", {.first_long = 0x444F5301, .name = "FFS Disk"}, AnalysisClass::amigados_boot, u"FFS Disk"},
        {"international FFS (DOS\\3)",
         {.first_long = 0x444F5303, .name = "Intl"},
         AnalysisClass::later_kickstart,
         u"Intl"},
        {"dir cache (DOS\\5)", {.first_long = 0x444F5305}, AnalysisClass::later_kickstart, u"Workbench"},
        {"data disk, no boot checksum", {.boot_checksum = false, .name = "Data"}, AnalysisClass::not_bootable, u"Data"},
        {"custom boot block",
         {.first_long = 0x12345678, .boot_code = "custom loader", .root = false},
         AnalysisClass::custom_boot,
         u""},
        {"DOS boot block, no volume", {.boot_code = "trackloader", .root = false}, AnalysisClass::custom_boot, u""},
        {"high density", {.high_density = true, .name = "HD Disk"}, AnalysisClass::amigados_boot, u"HD Disk"},
        {"blank, not bootable", {.boot_checksum = false, .root = false}, AnalysisClass::not_bootable, u""},
    };
    for (const auto& c : cases) {
        const MediumAnalysis analysis = analyse(u"disk.adf", test::floppy_image(c.spec));
        EXPECT_EQ(analysis.kind, MediumKind::floppy) << c.what;
        EXPECT_EQ(analysis.analysis_class, c.expected) << c.what;
        EXPECT_EQ(analysis.volume_name, c.name) << c.what;
        EXPECT_EQ(analysis.conversion_label, u"Raw File") << c.what;
        if (!c.name.empty()) {
            EXPECT_EQ(analysis.date, amiga(16801, 720, 0)) << c.what;
        }
    }
    // Too short to hold boot blocks: unknown.
    EXPECT_EQ(analyse(u"tiny.adf", Image(100)).analysis_class, AnalysisClass::unknown);
}

Image encrypted_dms(const Image& archive, std::uint16_t key) {
    const auto bytes = reinterpret_cast<const std::uint8_t*>(archive.data());
    const test::dms::Bytes encrypted = test::dms::encrypted(test::dms::Bytes(bytes, bytes + archive.size()), key);
    const auto out = reinterpret_cast<const std::byte*>(encrypted.data());
    return Image(out, out + encrypted.size());
}

TEST_F(Analysis, TheSameFloppyInEveryContainer) {
    const Image adf = test::floppy_image({.first_long = 0x444F5301, .name = "Packed", .created = {15000, 61, 25}});
    std::vector<test::ExtendedTrack> raw_tracks;
    for (std::uint32_t track = 0; track < 160; ++track) {
        const std::span<const std::byte> sectors(adf.data() + track * 5632, 5632);
        test::RawTrack raw = test::encode_track(track, sectors, track % 11, track * 101);
        raw_tracks.push_back({1, 1, std::move(raw.bytes), raw.bit_length});
    }
    const struct {
        std::u16string_view name;
        Image content;
        std::u16string_view label;
    } cases[] = {
        {u"Disk.ADZ", test::gzip_member(adf), u"ADF from ADZ"},
        {u"disk.adz", test::zip_archive(adf), u"ADF from ADZ"},
        {u"Disk.dms", test::dms_archive(adf), u"ADF from DMS"},
        {u"Encrypted.dms", encrypted_dms(test::dms_archive(adf), 0x5A5A), u"ADF from DMS"}, // without its password
        {u"extended.adf", test::extended_adf(raw_tracks), u"ADF from Extended ADF"},
    };
    for (const auto& c : cases) {
        const MediumAnalysis analysis = analyse(c.name, c.content);
        EXPECT_EQ(analysis.analysis_class, AnalysisClass::amigados_boot) << test::printable(c.name);
        EXPECT_EQ(analysis.volume_name, u"Packed") << test::printable(c.name);
        EXPECT_EQ(analysis.date, amiga(15000, 61, 25)) << test::printable(c.name);
        EXPECT_EQ(analysis.conversion_label, c.label) << test::printable(c.name);
    }
}

TEST_F(Analysis, HardDisksWithAPartitionTable) {
    const Image disk = test::rdb_hard_disk(
        200, {{"DH0", "System", 1, 99, true, {16500, 10, 0}}, {"DH1", "Work", 100, 199, false, {16501, 11, 0}}});
    for (const auto& [name, content, label] : {std::tuple{u"disk.hdf", disk, u"Raw File"},
                                               std::tuple{u"disk.HDZ", test::gzip_member(disk), u"HDF from HDZ"}}) {
        const MediumAnalysis analysis = analyse(name, content);
        EXPECT_EQ(analysis.kind, MediumKind::hard_disk);
        EXPECT_EQ(analysis.analysis_class, AnalysisClass::later_kickstart);
        EXPECT_EQ(analysis.conversion_label, label);
        EXPECT_EQ(analysis.volume_name, u"System");
        EXPECT_EQ(analysis.date, amiga(16500, 10, 0));
        ASSERT_EQ(analysis.partitions.size(), 2u);
        EXPECT_EQ(analysis.partitions[0].device_name, u"DH0");
        EXPECT_TRUE(analysis.partitions[0].bootable);
        EXPECT_EQ(analysis.partitions[1].device_name, u"DH1");
        EXPECT_EQ(analysis.partitions[1].volume_name, u"Work");
        EXPECT_FALSE(analysis.partitions[1].bootable);
    }
    // No bootable partition: readable, but it does not boot.
    const Image data_disk = test::rdb_hard_disk(100, {{"DH2", "Data", 1, 99, false}});
    EXPECT_EQ(analyse(u"data.hdf", data_disk).analysis_class, AnalysisClass::not_bootable);
    const std::optional<HardDiskNames> names = read_hard_disk_names(folder_.path(u"data.hdf"), {});
    ASSERT_TRUE(names.has_value());
    EXPECT_EQ(names->device_name, u"DH2");
    EXPECT_EQ(names->volume_name, u"Data");
}

TEST_F(Analysis, HardDisksWithoutAPartitionTable) {
    const Image volume = test::amiga_volume(20480, "Hardfile", {16000, 0, 0});
    const MediumAnalysis analysis = analyse(u"plain.hdf", volume);
    EXPECT_EQ(analysis.analysis_class, AnalysisClass::later_kickstart);
    EXPECT_EQ(analysis.volume_name, u"Hardfile");
    ASSERT_EQ(analysis.partitions.size(), 1u);
    EXPECT_TRUE(analysis.partitions[0].device_name.empty());

    // A file a little longer than its volume: the root is found below where the size puts it.
    Image longer = volume;
    longer.resize(longer.size() + 64 * 512);
    EXPECT_EQ(analyse(u"longer.hdf", longer).volume_name, u"Hardfile");
    EXPECT_EQ(analyse(u"longer.hdz", test::gzip_member(longer)).volume_name, u"Hardfile");

    // A given geometry with 4 reserved blocks moves the root up by one.
    Image reserved = test::amiga_volume(20480, "", {16000, 0, 0});
    const Image moved = test::amiga_volume(20482, "Reserved", {16000, 0, 0});
    std::copy(moved.begin() + 10241 * 512, moved.begin() + 10242 * 512, reserved.begin() + 10241 * 512);
    folder_.create_file(u"reserved.hdf", test::as_string(reserved));
    const std::optional<HardDiskNames> names = read_hard_disk_names(
        folder_.path(u"reserved.hdf"), {.block_size = 512, .sectors = 32, .surfaces = 1, .reserved = 4});
    ASSERT_TRUE(names.has_value());
    EXPECT_EQ(names->volume_name, u"Reserved");

    // Not an AmigaDOS volume at all.
    EXPECT_EQ(analyse(u"zeros.hdf", Image(1 << 20)).analysis_class, AnalysisClass::not_bootable);
}

TEST_F(Analysis, CompressedHardDisksAreReadOnlyAsFarAsNeeded) {
    // The partition sits at the start; the rest of the file is cut off, so inflating it all
    // would fail, while the analysis needs only what comes before the cut.
    const Image disk = test::rdb_hard_disk(2000, {{"DH0", "Early", 1, 63, true}});
    Image compressed = test::gzip_member(disk);
    compressed.resize(compressed.size() / 2);
    const MediumAnalysis analysis = analyse(u"cut.hdz", compressed);
    EXPECT_EQ(analysis.volume_name, u"Early");
    EXPECT_EQ(analysis.analysis_class, AnalysisClass::later_kickstart);
}

TEST_F(Analysis, CdImages) {
    const MediumAnalysis plain =
        analyse(u"game.iso", test::iso_image({.volume = "CD32_GAME", .created = "1994031512000000"}));
    EXPECT_EQ(plain.kind, MediumKind::cd);
    EXPECT_EQ(plain.analysis_class, AnalysisClass::not_bootable);
    EXPECT_EQ(plain.volume_name, u"CD32_GAME");
    EXPECT_EQ(plain.date, k1978 + ((5917ull * 86400) + 12 * 3600) * kTicksPerSecond); // 1994-03-15 12:00:00

    // Through a CUE sheet: raw sectors, the data track after two seconds of an audio track.
    folder_.create_file(u"cd\\track.bin",
                        test::as_string(test::iso_image(
                            {.volume = "CDTV", .created = "1991060100000000", .raw = true, .lead_sectors = 150})));
    const MediumAnalysis cue =
        analyse(u"cd\\disc.cue", test::bytes_of("FILE \"track.bin\" BINARY\n"
                                                "  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                                                "  TRACK 02 MODE1/2352\n    INDEX 01 00:02:00\n"));
    EXPECT_EQ(cue.volume_name, u"CDTV");
    EXPECT_TRUE(cue.date.has_value());
    // A date left unspecified, and an image with no descriptor.
    EXPECT_FALSE(analyse(u"nodate.iso", test::iso_image({.created = "0000000000000000"})).date.has_value());
    EXPECT_EQ(analyse(u"empty.iso", Image(64 * 2048)).analysis_class, AnalysisClass::unknown);
    // A primary descriptor whose version byte is not 1 is not read.
    for (const std::byte version : {std::byte{0}, std::byte{2}, std::byte{'1'}}) {
        Image image = test::iso_image();
        image[16 * 2048 + 6] = version;
        const MediumAnalysis analysis = analyse(u"version.iso", image);
        EXPECT_EQ(analysis.analysis_class, AnalysisClass::unknown) << static_cast<int>(version);
        EXPECT_EQ(analysis.volume_name, u"") << static_cast<int>(version);
    }
}

TEST_F(Analysis, IpfImagesNeedTheLibrary) {
#ifndef _WIN32
    platform::native::set_program_files_folders(std::nullopt, std::nullopt);
#endif
    // Wine has no CAPSImg library installed either.
    const MediumAnalysis analysis = analyse(u"game.ipf", Image(1024), AnalysisFailure::ipf_library_missing);
    EXPECT_EQ(analysis.conversion_label, u"ADF from IPF");
}

#ifndef _WIN32
TEST_F(Analysis, IpfImagesThroughTheLibrary) {
    const std::string caps = KQ_TEST_CAPS_DIR "/with-library";
    platform::native::set_program_files_folders(std::nullopt, std::u16string(caps.begin(), caps.end()));
    Image ipf = test::bytes_of(std::string_view("FAKEIPF\0", 8));
    const Image adf = test::floppy_image({.name = "Preserved"});
    ipf.insert(ipf.end(), adf.begin(), adf.end());
    const MediumAnalysis analysis = analyse(u"game.ipf", ipf);
    EXPECT_EQ(analysis.volume_name, u"Preserved");
    EXPECT_EQ(analysis.analysis_class, AnalysisClass::amigados_boot);
    // An image that the library refuses is read as nothing known.
    EXPECT_EQ(analyse(u"other.ipf", Image(4096)).analysis_class, AnalysisClass::unknown);
    platform::native::set_program_files_folders(std::nullopt, std::nullopt);
}
#endif

TEST_F(Analysis, WhatCannotBeRead) {
    MediumAnalysis analysis;
    for (const std::u16string_view name :
         {u"missing.adf", u"missing.hdz", u"missing.dms", u"missing.iso", u"missing.cue"})
        EXPECT_EQ(analyse_medium(folder_.path(name), analysis), AnalysisFailure::unreadable) << test::printable(name);
    // Readable files that are not what their names say: nothing known, no failure.
    for (const std::u16string_view name : {u"text.adz", u"text.dms", u"text.hdz"})
        EXPECT_EQ(analyse(name, test::bytes_of("plain text")).analysis_class, AnalysisClass::unknown)
            << test::printable(name);
    EXPECT_EQ(read_volume_name(folder_.path(u"missing.adf")), std::nullopt);
}

} // namespace
} // namespace kq::media
