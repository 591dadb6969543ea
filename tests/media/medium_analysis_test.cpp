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

constexpr platform::FileTime kSecond = 10000000, k1978 = platform::FileTime{137696} * 86400 * kSecond;
constexpr platform::FileTime amiga(std::uint64_t days, std::uint64_t minutes, std::uint64_t ticks) {
    return k1978 + (days * 86400 + minutes * 60) * kSecond + ticks * kSecond / 50;
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
    using enum AnalysisClass;
    // OFS and FFS that boot; international FFS and dir cache; a data disk; a custom boot block;
    // a DOS boot block without a volume; high density; blank.
    const std::tuple<FloppySpec, AnalysisClass, std::u16string_view> cases[] = {
        {{}, amigados_boot, u"Workbench"},
        {{.first_long = 0x444F5301, .name = "FFS Disk"}, amigados_boot, u"FFS Disk"},
        {{.first_long = 0x444F5303, .name = "Intl"}, later_kickstart, u"Intl"},
        {{.first_long = 0x444F5305}, later_kickstart, u"Workbench"},
        {{.boot_checksum = false, .name = "Data"}, not_bootable, u"Data"},
        {{.first_long = 0x12345678, .boot_code = "custom loader", .root = false}, custom_boot, u""},
        {{.boot_code = "trackloader", .root = false}, custom_boot, u""},
        {{.high_density = true, .name = "HD Disk"}, amigados_boot, u"HD Disk"},
        {{.boot_checksum = false, .root = false}, not_bootable, u""}};
    for (const auto& [spec, expected, name] : cases) {
        const MediumAnalysis analysis = analyse(u"disk.adf", test::floppy_image(spec));
        EXPECT_EQ(std::tuple(analysis.kind, analysis.analysis_class, analysis.volume_name, analysis.conversion_label),
                  std::tuple(MediumKind::floppy, expected, name, u"Raw File"));
        EXPECT_TRUE(name.empty() || analysis.date == amiga(16801, 720, 0)) << test::printable(name);
    }
    EXPECT_EQ(analyse(u"tiny.adf", Image(100)).analysis_class, unknown); // too short for boot blocks
}

TEST_F(Analysis, TheSameFloppyInEveryContainer) {
    const Image adf = test::floppy_image({.first_long = 0x444F5301, .name = "Packed", .created = {15000, 61, 25}});
    std::vector<test::ExtendedTrack> raw_tracks;
    for (std::uint32_t track = 0; track < 160; ++track) {
        test::RawTrack raw =
            test::encode_track(track, std::span(adf).subspan(track * 5632, 5632), track % 11, track * 101);
        raw_tracks.push_back({1, 1, std::move(raw.bytes), raw.bit_length});
    }
    const auto sample = [](const char* name) {
        const test::dms::Bytes bytes = test::dms::read_sample(name);
        return Image(reinterpret_cast<const std::byte*>(bytes.data()),
                     reinterpret_cast<const std::byte*>(bytes.data() + bytes.size()));
    };
    const std::tuple<std::u16string_view, Image, std::u16string_view> cases[] = {
        {u"Disk.ADZ", test::gzip_member(adf), u"ADF from ADZ"},
        {u"disk.adz", test::zip_archive(adf), u"ADF from ADZ"},
        {u"extended.adf", test::extended_adf(raw_tracks), u"ADF from Extended ADF"},
        {u"Disk.dms", sample("test_C1_heavy1.dms"), u"ADF from DMS"},
        {u"Locked.dms", sample("test_C1_heavy2_pwd.dms"), u"ADF from DMS"}}; // without its password
    for (const auto& [name, content, label] : cases) {
        const MediumAnalysis analysis = analyse(name, content);
        const bool dms = label == u"ADF from DMS"; // the samples' volume: OFS, not bootable
        EXPECT_EQ(std::tuple(analysis.analysis_class, analysis.volume_name, analysis.conversion_label),
                  std::tuple(dms ? AnalysisClass::not_bootable : AnalysisClass::amigados_boot,
                             dms ? u"Test_C1" : u"Packed", label))
            << test::printable(name);
        EXPECT_TRUE(dms || analysis.date == amiga(15000, 61, 25)) << test::printable(name);
    }
}

TEST_F(Analysis, HardDisks) {
    const Image disk = test::rdb_hard_disk(
        200, {{"DH0", "System", 1, 99, true, {16500, 10, 0}}, {"DH1", "Work", 100, 199, false, {16501, 11, 0}}});
    for (const auto& [name, content, label] : {std::tuple{u"disk.hdf", disk, u"Raw File"},
                                               std::tuple{u"disk.HDZ", test::gzip_member(disk), u"HDF from HDZ"}}) {
        const MediumAnalysis analysis = analyse(name, content);
        EXPECT_EQ(std::tuple(analysis.kind, analysis.analysis_class, analysis.conversion_label, analysis.volume_name),
                  std::tuple(MediumKind::hard_disk, AnalysisClass::later_kickstart, label, u"System"));
        EXPECT_EQ(analysis.date, amiga(16500, 10, 0));
        ASSERT_EQ(analysis.partitions.size(), 2u);
        EXPECT_EQ(std::tuple(analysis.partitions[0].device_name, analysis.partitions[0].bootable,
                             analysis.partitions[1].device_name, analysis.partitions[1].volume_name,
                             analysis.partitions[1].bootable),
                  std::tuple(u"DH0", true, u"DH1", u"Work", false));
    }
    // No bootable partition: readable, but it does not boot.
    EXPECT_EQ(analyse(u"data.hdf", test::rdb_hard_disk(100, {{"DH2", "Data", 1, 99, false}})).analysis_class,
              AnalysisClass::not_bootable);
    const std::optional<HardDiskNames> names = read_hard_disk_names(folder_.path(u"data.hdf"), {});
    EXPECT_EQ(std::pair(names->device_name, names->volume_name),
              std::pair(std::u16string(u"DH2"), std::u16string(u"Data")));
    // Compressed, cut off after the partition: read only as far as needed.
    Image cut = test::gzip_member(test::rdb_hard_disk(2000, {{"DH0", "Early", 1, 63, true}}));
    cut.resize(cut.size() / 2);
    EXPECT_EQ(analyse(u"cut.hdz", cut).volume_name, u"Early");
    // Without a partition table; a file a little longer than its volume (the root is found below
    // where the size puts it).
    const Image volume = test::amiga_volume(20480, "Hardfile", {16000, 0, 0});
    const MediumAnalysis plain = analyse(u"plain.hdf", volume);
    EXPECT_EQ(std::tuple(plain.analysis_class, plain.volume_name, plain.partitions.size()),
              std::tuple(AnalysisClass::later_kickstart, u"Hardfile", 1u));
    EXPECT_TRUE(plain.partitions[0].device_name.empty());
    Image longer = volume;
    longer.resize(longer.size() + 64 * 512);
    EXPECT_EQ(analyse(u"longer.hdf", longer).volume_name, u"Hardfile");
    EXPECT_EQ(analyse(u"longer.hdz", test::gzip_member(longer)).volume_name, u"Hardfile");
    // A given geometry with 4 reserved blocks moves the root up by one.
    Image reserved = test::amiga_volume(20480, "", {16000, 0, 0});
    const Image moved = test::amiga_volume(20482, "Reserved", {16000, 0, 0});
    std::copy(moved.begin() + 10241 * 512, moved.begin() + 10242 * 512, reserved.begin() + 10241 * 512);
    folder_.create_file(u"reserved.hdf", test::as_string(reserved));
    EXPECT_EQ(read_hard_disk_names(folder_.path(u"reserved.hdf"),
                                   {.block_size = 512, .sectors = 32, .surfaces = 1, .reserved = 4})
                  ->volume_name,
              u"Reserved");
    EXPECT_EQ(analyse(u"zeros.hdf", Image(1 << 20)).analysis_class, AnalysisClass::not_bootable);
}

TEST_F(Analysis, CdImages) {
    const MediumAnalysis plain =
        analyse(u"game.iso", test::iso_image({.volume = "CD32_GAME", .created = "1994031512000000"}));
    EXPECT_EQ(std::tuple(plain.kind, plain.analysis_class, plain.volume_name),
              std::tuple(MediumKind::cd, AnalysisClass::not_bootable, u"CD32_GAME"));
    EXPECT_EQ(plain.date, k1978 + (5917ull * 86400 + 12 * 3600) * kSecond); // 1994-03-15 12:00:00
    // Through a CUE sheet: raw sectors, the data track after two seconds of an audio track.
    folder_.create_file(u"cd\\track.bin",
                        test::as_string(test::iso_image(
                            {.volume = "CDTV", .created = "1991060100000000", .raw = true, .lead_sectors = 150})));
    const MediumAnalysis cue =
        analyse(u"cd\\disc.cue", test::bytes_of("FILE \"track.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                                                "  TRACK 02 MODE1/2352\n    INDEX 01 00:02:00\n"));
    EXPECT_EQ(cue.volume_name, u"CDTV");
    EXPECT_EQ(cue.date, amiga(4899, 0, 0)); // 1991-06-01
    // A date left unspecified; no descriptor; a primary descriptor whose version is not 1.
    EXPECT_FALSE(analyse(u"nodate.iso", test::iso_image({.created = "0000000000000000"})).date.has_value());
    EXPECT_EQ(analyse(u"empty.iso", Image(64 * 2048)).analysis_class, AnalysisClass::unknown);
    for (const std::byte version : {std::byte{0}, std::byte{2}, std::byte{'1'}}) {
        Image image = test::iso_image();
        image[16 * 2048 + 6] = version;
        const MediumAnalysis analysis = analyse(u"version.iso", image);
        EXPECT_EQ(std::pair(analysis.analysis_class, analysis.volume_name),
                  std::pair(AnalysisClass::unknown, std::u16string()));
    }
}

TEST_F(Analysis, IpfImagesAndWhatCannotBeRead) {
#ifndef _WIN32
    platform::native::set_program_files_folders(std::nullopt, std::nullopt);
#endif
    // Wine has no CAPSImg library installed either.
    EXPECT_EQ(analyse(u"game.ipf", Image(1024), AnalysisFailure::ipf_library_missing).conversion_label,
              u"ADF from IPF");
#ifndef _WIN32
    const std::string caps = KQ_TEST_CAPS_DIR "/with-library";
    platform::native::set_program_files_folders(std::nullopt, std::u16string(caps.begin(), caps.end()));
    Image ipf = test::bytes_of(std::string_view("FAKEIPF\0", 8));
    const Image adf = test::floppy_image({.name = "Preserved"});
    ipf.insert(ipf.end(), adf.begin(), adf.end());
    const MediumAnalysis analysis = analyse(u"game.ipf", ipf);
    EXPECT_EQ(std::pair(analysis.volume_name, analysis.analysis_class),
              std::pair(std::u16string(u"Preserved"), AnalysisClass::amigados_boot));
    EXPECT_EQ(analyse(u"other.ipf", Image(4096)).analysis_class, AnalysisClass::unknown); // refused by the library
    platform::native::set_program_files_folders(std::nullopt, std::nullopt);
#endif
    MediumAnalysis missing;
    for (const std::u16string_view name :
         {u"missing.adf", u"missing.hdz", u"missing.dms", u"missing.iso", u"missing.cue"})
        EXPECT_EQ(analyse_medium(folder_.path(name), missing), AnalysisFailure::unreadable) << test::printable(name);
    // Readable files that are not what their names say: nothing known, no failure.
    for (const std::u16string_view name : {u"text.adz", u"text.dms", u"text.hdz"})
        EXPECT_EQ(analyse(name, test::bytes_of("plain text")).analysis_class, AnalysisClass::unknown)
            << test::printable(name);
    EXPECT_EQ(read_volume_name(folder_.path(u"missing.adf")), std::nullopt);
}

} // namespace
} // namespace kq::media
