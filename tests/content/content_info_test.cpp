// Hard-disk summaries (configuration mode in both forms, runtime mode, drive roots), the device
// names they hand out, and the drive tooltips built on them. Names stored in images come from
// a table of the test's own.

#include "content/content_info.h"
#include "content/content_tooltip.h"
#include "content/device_name_allocator.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <vector>

namespace kq::content {
namespace {

class ContentInfo : public ::testing::Test {
protected:
    ContentInfo() {
        for (const std::u16string_view file : {u"a.hdf", u"b.hdf", u"c.hdf", u"d.hdf"}) folder_.create_file(file, "x");
        folder_.create_folder(u"Games");
        hard_disks_[folder_.path(u"c.hdf")] = {.device_name = u"DH7", .volume_name = u"Stored"};
        hard_disks_[folder_.path(u"d.hdf")] = {};
    }

    MediumNameReaders readers() {
        return {.volume_name = [this](std::u16string_view path) -> std::optional<std::u16string> {
                    const auto found = volume_names_.find(path);
                    return found == volume_names_.end() ? std::nullopt : std::optional(found->second);
                },
                .hard_disk_names = [this](std::u16string_view path, const media::HardDiskGeometry& geometry)
                    -> std::optional<media::HardDiskNames> {
                    geometries_asked_.push_back(geometry);
                    const auto found = hard_disks_.find(path);
                    return found == hard_disks_.end() ? std::nullopt : std::optional(found->second);
                }};
    }
    // `text` with @a, @b, @c, @d (files), @g (a folder), @m (a missing file) and @v (a device) replaced.
    std::u16string paths(std::u16string_view text) const {
        std::u16string out;
        for (std::size_t at = 0; at < text.size(); ++at) {
            const std::size_t which = text[at] == u'@' ? std::u16string_view(u"abcdgmv").find(text[at + 1]) : 7;
            out += which < 7 ? paths_[which] : std::u16string(1, text[at]);
            at += which < 7 ? 1 : 0;
        }
        return out;
    }
    std::u16string info(std::u16string_view list, std::u16string_view records, std::uint32_t flags) {
        return content_info_text(paths(list), paths(records), flags, readers()).value_or(u"<not formatted>");
    }
    std::u16string tooltip(std::uint8_t type, std::uint32_t index, std::u16string_view path,
                           std::u16string_view label) {
        return content_tooltip_text(type, index, paths(path), paths(label), readers()).value_or(u"<not formatted>");
    }

    test::TempFolder folder_;
    std::map<std::u16string, std::u16string, std::less<>> volume_names_{{u"C:\\wb.adf", u"Workbench"},
                                                                        {u"C:\\colon.adf", u":"},
                                                                        {u"C:\\unnamed.adf", u""},
                                                                        {u"C:\\disc.iso", u"CD_DATA"},
                                                                        {u"E:", u"Image"}};
    std::map<std::u16string, media::HardDiskNames, std::less<>> hard_disks_;
    std::vector<media::HardDiskGeometry> geometries_asked_;
    const std::u16string paths_[7] = {folder_.path(u"a.hdf"),  folder_.path(u"b.hdf"), folder_.path(u"c.hdf"),
                                      folder_.path(u"d.hdf"),  folder_.path(u"Games"), folder_.path(u"missing.hdf"),
                                      u"\\\\.\\PhysicalDrive1"};
};

TEST_F(ContentInfo, ConfiguredDisksInLongAndShortForm) {
    const struct {
        const char* what;
        std::u16string_view list, records, long_form, short_form;
    } rows[] = {
        {"unrecorded files get DH0 and DH1", u"One\t@a\nTwo\t@b", u"", u"One\tHard Disk \"@a\"\nTwo\tHard Disk \"@b\"",
         u"\"@a\" (DH0, hardfile)\n\"@b\" (DH1, hardfile)"},
        {"a taken name gets a suffix", u"One\t@a\nTwo\t@b", u"@b\tDH0\rwork\tWork\rData\tmy kind",
         u"One\tHard Disk \"@a\"\nTwo\tHard Disks \"Work\" and \"Data\"",
         u"\"@a\" (DH0, hardfile)\n\"Work\" and \"Data\" (DH0_0 and work, my kind)"},
        {"names clash without regard to case", u"One\t@a\nTwo\t@b", u"@b\tdh0\t\t",
         u"One\tHard Disk \"@a\"\nTwo\tHard Disk ", u"\"@a\" (DH0, hardfile)\n (dh0_0)"},
        {"not mounted", u"One\t@a", u"@a\t:nomount:\rDH4\tWork\thardfile", u"One\tHard Disk \"Work\"",
         u"\"Work\" (N/A, hardfile)"},
        {"a missing file gives no line", u"One\t@m\nTwo\t@a", u"", u"Two\tHard Disk \"@a\"", u"\"@a\" (DH0, hardfile)"},
        {"a record needs no file", u"One\t@m", u"@m\t\tOld\thardfile", u"One\tHard Disk \"Old\"",
         u"\"Old\" (DH0, hardfile)"},
        {"folders", u"Play\t@g", u"", u"Play\tHard Disk \"@g\"", u"\"@g\" (DH0, mounted directory)"},
        {"colon prefix", u"One\t:hdf:@a", u"@a\tDH2\tWork\t", u"One\tHard Disk \"Work\"", u"\"Work\" (DH2)"},
        {"three volumes, empty entries dropped", u"One\t@a", u"@a\t\r\rDH1\r\tX\r\rY\rZ\r\t",
         u"One\tHard Disks \"X\", \"Y\" and \"Z\"", u"\"X\", \"Y\" and \"Z\" (DH1)"},
        {"device paths have no names", u"USB\t@v", u"@v\tDH5\tWD\tDirect-attached disk", u"USB\tHard Disk ", u""},
        {"lines without a path", u"@a\n\nOne\t@a", u"", u"One\tHard Disk \"@a\"", u"\"@a\" (DH0, hardfile)"},
        {"nothing", u"", u"", u"", u""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(info(row.list, row.records, 0), paths(row.long_form)) << row.what;
        EXPECT_EQ(info(row.list, row.records, kContentInfoShort), paths(row.short_form)) << row.what;
    }
}

TEST_F(ContentInfo, RunningDisks) {
    const struct {
        const char* what;
        std::u16string_view lines, expected;
    } rows[] = {
        {"given names", u"@a\tdevicename=DH3\tvolumename=Work", u"@a\tDH3\tWork\thardfile"},
        {"stored names win", u"@c\tdevicename=DH3\tvolumename=Work", u"@c\tDH7\tStored\thardfile"},
        {"empty stored names do not", u"@d\tdevicename=DH3\tvolumename=Work", u"@d\tDH3\tWork\thardfile"},
        {"priority -129", u"@a\tdevicename=DH3\tbootpriority=-129", u"@a\t:nomount:\t\thardfile"},
        {"priority -128", u"@a\tdevicename=DH3\tbootpriority=-128", u"@a\tDH3\t\thardfile"},
        {"priority in hexadecimal", u"@a\tbootpriority=-0x81", u"@a\t:nomount:\t\thardfile"},
        {"priority without a number", u"@a\tdevicename=DH3\tbootpriority=low", u"@a\tDH3\t\thardfile"},
        {"not mounted despite a stored device", u"@c\tbootpriority=-200", u"@c\t:nomount:\tStored\thardfile"},
        {"trailing backslash", u"@g\\", u"@g\\\t\tGames\tmounted directory"},
        {"folder with names", u"@g\tvolumename=Play\tdevicename=DH1", u"@g\tDH1\tPlay\tmounted directory"},
        {"keys begin after a tab", u"@a\tmydevicename=X\tvolumename=V\tx=1", u"@a\t\tV\thardfile"},
        {"attached disk", u"@v\tvendor-id=WD\tproduct-id=Elements", u"@v\t\tWD Elements\tDirect-attached disk"},
        {"attached disk without vendor", u"@v\tproduct-id=Elements", u"@v\t\tElements\tDirect-attached disk"},
        {"attached disk without product", u"@v\tvendor-id=WD\tproduct-id=", u""},
        {"a share is no device", u"\\\\server\\share\\x.hdf\tproduct-id=Elements", u""},
        {"lines, a missing file among them", u"@a\n@m\tdevicename=DH0\n\n@g",
         u"@a\t\t\thardfile\n@g\t\tGames\tmounted directory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(info(u"ignored\tlist", row.lines, kContentInfoRuntime), paths(row.expected)) << row.what;
        EXPECT_EQ(info(u"", row.lines, kContentInfoRuntime | kContentInfoShort), paths(row.expected)) << row.what;
    }
    // Images are read with the geometry their keys give; folders are not read.
    const auto fields = [](const media::HardDiskGeometry& g) {
        return std::tuple(g.block_size, g.sectors, g.surfaces, g.reserved);
    };
    const std::pair<std::u16string_view, media::HardDiskGeometry> geometries[] = {
        {u"\tblocksize=0x200\tsectors=32\tsurfaces=010\treserved=2", {512, 32, 8, 2}},
        {u"", {0, 0, 0, -1}},
        {u"\tblocksize=-512\tsectors=\treserved=none", {0, 0, 0, -1}},
    };
    for (const auto& [keys, expected] : geometries) {
        geometries_asked_.clear();
        info(u"", u"@a" + std::u16string(keys) + u"\n@g", kContentInfoRuntime);
        ASSERT_EQ(geometries_asked_.size(), 1u);
        EXPECT_EQ(fields(geometries_asked_.front()), fields(expected));
    }
}

TEST_F(ContentInfo, TooltipOfEachDriveType) {
    const struct {
        std::uint8_t type;
        std::uint32_t index;
        std::u16string_view path, label, expected;
    } rows[] = {
        {0, 0, u"", u"", u"Floppy disk drive DF0:\r\nEmpty"},
        {0, 3, u"C:\\wb.adf", u"WB 3.1", u"Floppy disk drive DF3:\r\n\"Workbench\" (WB 3.1)"},
        {0, 1, u"C:\\colon.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"}, // a colon is no name
        {0, 1, u"C:\\unnamed.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"},
        {0, 1, u"C:\\other.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"},
        {0, 0, u"E:", u"Disk", u"Floppy disk drive DF0:\r\n\"Image\" (Disk)"}, // floppy drives read the medium
        {2, 0, u"", u"Disc", u"CD drive:\r\nEmpty"},
        {2, 0, u"C:\\disc.iso", u"Disc", u"CD drive:\r\n\"CD_DATA\" (Disc)"},
        {3, 0, u"C:\\wb.adf", u"Share", u"Network"},
        {4, 0, u"C:\\wb.adf", u"Disk", u""},
        {1, 0, u"One\t@a", u"", u"Hard disk drive:\r\n\"@a\" (DH0, hardfile)"},
        {1, 0, u"One\t@a\nTwo\t@b", u"@b\tDH0\tWork\tmy kind",
         u"Hard disk drives:\r\n\"@a\" (DH0, hardfile)\n\"Work\" (DH0_0, my kind)"},
        {1, 0, u"", u"", u"Hard disk drive:\r\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(tooltip(row.type, row.index, row.path, row.label), paths(row.expected));
    // Summaries too long for the tooltip are left out; "<volume>" (DH0) takes eight characters more.
    for (const std::size_t summary_chars : {kTooltipSummaryChars - 1, kTooltipSummaryChars}) {
        const std::u16string volume(summary_chars - 8, u'v');
        const std::u16string text = tooltip(1, 0, u"One\t@a", u"@a\t\t" + volume + u"\t");
        EXPECT_EQ(text.size(), summary_chars < kTooltipSummaryChars ? 18 + summary_chars : 18) << summary_chars;
    }
}

#ifndef _WIN32
// Drive roots of hosts' drives, as the native platform layer is told they are.
TEST_F(ContentInfo, HostDrivesAndCdDriveRoots) {
    platform::native::set_drive_roots({{.root = u"E:\\", .label = u"Work"},
                                       {.root = u"F:\\"},
                                       {.root = u"G:\\", .label = u"Stick", .is_removable = true},
                                       {.root = u"H:\\", .is_removable = true}});
    const std::pair<std::u16string_view, std::u16string_view> rows[] = {
        {u"E:\\", u"\"Work\" (DH0, mounted drive)"},
        {u"e:\\", u"\"Work\" (DH0, mounted drive)"},
        {u"E:\\..", u"\"Work\" (DH0, mounted drive)"},
        {u"F:\\", u"\"F:\\\" (DH0, mounted directory)"},
        {u"G:\\", u"\"Stick\" (mounted drive)"},
        {u"H:\\", u"\"H:\\\" (mounted directory)"},
        {u"Z:\\", u""},
    };
    for (const auto& [path, short_form] : rows)
        EXPECT_EQ(info(u"Drive\t" + std::u16string(path), u"", kContentInfoShort), short_form);
    EXPECT_EQ(info(u"Drive\tE:\\", u"", 0), u"Drive\tHard Disk \"Work\"");
    const std::pair<std::u16string_view, std::u16string_view> cd_rows[] = {
        {u"E:", u"CD drive:\r\n\"Work\" (Game)"},
        {u"e:\\", u"CD drive:\r\n\"Work\" (Game)"},
        {u"F:", u"CD drive:\r\nGame"},
        {u"Z:\\", u"CD drive:\r\nGame"},
    };
    for (const auto& [path, expected] : cd_rows) EXPECT_EQ(tooltip(2, 0, path, u"Game"), expected);
    platform::native::set_drive_roots({});
}
#endif

TEST(ContentDeviceNames, NewNamesAndReservations) {
    // Each step: a name to reserve (empty: ask for a new name), and the name taken.
    const std::vector<std::pair<std::u16string, std::u16string>> rows[] = {
        {{u"DH1", u"DH1"}, {u"", u"DH0"}, {u"", u"DH2"}},
        {{u"", u"DH0"}, {u"DH0", u"DH0_0"}, {u"DH0", u"DH0_1"}},
        {{u"DH0_0", u"DH0_0"}, {u"DH0", u"DH0"}, {u"DH0", u"DH0_1"}},
        {{u"WORK", u"WORK"}, {u"work", u"work_0"}, {u"dh0", u"dh0"}, {u"", u"DH1"}},
    };
    for (const auto& steps : rows) {
        DeviceNameAllocator allocator;
        for (const auto& [asked, taken] : steps)
            EXPECT_EQ(asked.empty() ? allocator.take_new_name() : allocator.reserve(asked), taken);
    }
}

} // namespace
} // namespace kq::content
