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

std::u16string joined(std::initializer_list<std::u16string_view> pieces) {
    std::u16string text;
    for (const std::u16string_view piece : pieces) text += piece;
    return text;
}

class ContentInfo : public ::testing::Test {
protected:
    ContentInfo() {
        for (const std::u16string_view file : {u"a.hdf", u"b.hdf", u"c.hdf", u"d.hdf"}) folder_.create_file(file, "x");
        folder_.create_folder(u"Games");
        hard_disks_[c_] = {.device_name = u"DH7", .volume_name = u"Stored"};
        hard_disks_[d_] = {};
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
    std::u16string info(std::u16string_view list, std::u16string_view records, std::uint32_t flags) {
        return content_info_text(list, records, flags, readers()).value_or(u"<not formatted>");
    }
    std::u16string tooltip(std::uint8_t type, std::uint32_t index, std::u16string_view path,
                           std::u16string_view label) {
        return content_tooltip_text(type, index, path, label, readers()).value_or(u"<not formatted>");
    }

    test::TempFolder folder_;
    std::map<std::u16string, std::u16string, std::less<>> volume_names_{{u"C:\\wb.adf", u"Workbench"},
                                                                        {u"C:\\colon.adf", u":"},
                                                                        {u"C:\\unnamed.adf", u""},
                                                                        {u"C:\\disc.iso", u"CD_DATA"},
                                                                        {u"E:", u"Image"}};
    std::map<std::u16string, media::HardDiskNames, std::less<>> hard_disks_;
    std::vector<media::HardDiskGeometry> geometries_asked_;
    const std::u16string a_ = folder_.path(u"a.hdf"), b_ = folder_.path(u"b.hdf"), c_ = folder_.path(u"c.hdf"),
                         d_ = folder_.path(u"d.hdf"), games_ = folder_.path(u"Games"),
                         missing_ = folder_.path(u"missing.hdf");
};

TEST_F(ContentInfo, ConfiguredDisksInLongAndShortForm) {
    const std::u16string_view device = u"\\\\.\\PhysicalDrive1";
    const struct {
        const char* what;
        std::u16string list, records, long_form, short_form;
    } rows[] = {
        {"unrecorded files get DH0 and DH1", joined({u"One\t", a_, u"\nTwo\t", b_}), u"",
         joined({u"One\tHard Disk \"", a_, u"\"\nTwo\tHard Disk \"", b_, u"\""}),
         joined({u"\"", a_, u"\" (DH0, hardfile)\n\"", b_, u"\" (DH1, hardfile)"})},
        {"a taken name gets a suffix", joined({u"One\t", a_, u"\nTwo\t", b_}),
         joined({b_, u"\tDH0\rwork\tWork\rData\tmy kind"}),
         joined({u"One\tHard Disk \"", a_, u"\"\nTwo\tHard Disks \"Work\" and \"Data\""}),
         joined({u"\"", a_, u"\" (DH0, hardfile)\n\"Work\" and \"Data\" (DH0_0 and work, my kind)"})},
        {"names clash without regard to case", joined({u"One\t", a_, u"\nTwo\t", b_}), joined({b_, u"\tdh0\t\t"}),
         joined({u"One\tHard Disk \"", a_, u"\"\nTwo\tHard Disk "}),
         joined({u"\"", a_, u"\" (DH0, hardfile)\n (dh0_0)"})},
        {"not mounted", joined({u"One\t", a_}), joined({a_, u"\t:nomount:\rDH4\tWork\thardfile"}),
         u"One\tHard Disk \"Work\"", u"\"Work\" (N/A, hardfile)"},
        {"a missing file gives no line", joined({u"One\t", missing_, u"\nTwo\t", a_}), u"",
         joined({u"Two\tHard Disk \"", a_, u"\""}), joined({u"\"", a_, u"\" (DH0, hardfile)"})},
        {"a record needs no file", joined({u"One\t", missing_}), joined({missing_, u"\t\tOld\thardfile"}),
         u"One\tHard Disk \"Old\"", u"\"Old\" (DH0, hardfile)"},
        {"folders", joined({u"Play\t", games_}), u"", joined({u"Play\tHard Disk \"", games_, u"\""}),
         joined({u"\"", games_, u"\" (DH0, mounted directory)"})},
        {"colon prefix", joined({u"One\t:hdf:", a_}), joined({a_, u"\tDH2\tWork\t"}), u"One\tHard Disk \"Work\"",
         u"\"Work\" (DH2)"},
        {"three volumes, empty entries dropped", joined({u"One\t", a_}), joined({a_, u"\t\r\rDH1\r\tX\r\rY\rZ\r\t"}),
         u"One\tHard Disks \"X\", \"Y\" and \"Z\"", u"\"X\", \"Y\" and \"Z\" (DH1)"},
        {"device paths have no names", joined({u"USB\t", device}), joined({device, u"\tDH5\tWD\tDirect-attached disk"}),
         u"USB\tHard Disk ", u""},
        {"lines without a path", joined({a_, u"\n\nOne\t", a_}), u"", joined({u"One\tHard Disk \"", a_, u"\""}),
         joined({u"\"", a_, u"\" (DH0, hardfile)"})},
        {"nothing", u"", u"", u"", u""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(info(row.list, row.records, 0), row.long_form) << row.what;
        EXPECT_EQ(info(row.list, row.records, kContentInfoShort), row.short_form) << row.what;
    }
}

TEST_F(ContentInfo, RunningDisks) {
    const std::u16string_view device = u"\\\\.\\PhysicalDrive2";
    const struct {
        const char* what;
        std::u16string lines, expected;
    } rows[] = {
        {"given names", joined({a_, u"\tdevicename=DH3\tvolumename=Work"}), joined({a_, u"\tDH3\tWork\thardfile"})},
        {"stored names win", joined({c_, u"\tdevicename=DH3\tvolumename=Work"}),
         joined({c_, u"\tDH7\tStored\thardfile"})},
        {"empty stored names do not", joined({d_, u"\tdevicename=DH3\tvolumename=Work"}),
         joined({d_, u"\tDH3\tWork\thardfile"})},
        {"priority -129", joined({a_, u"\tdevicename=DH3\tbootpriority=-129"}),
         joined({a_, u"\t:nomount:\t\thardfile"})},
        {"priority -128", joined({a_, u"\tdevicename=DH3\tbootpriority=-128"}), joined({a_, u"\tDH3\t\thardfile"})},
        {"priority in hexadecimal", joined({a_, u"\tbootpriority=-0x81"}), joined({a_, u"\t:nomount:\t\thardfile"})},
        {"priority without a number", joined({a_, u"\tdevicename=DH3\tbootpriority=low"}),
         joined({a_, u"\tDH3\t\thardfile"})},
        {"not mounted despite a stored device", joined({c_, u"\tbootpriority=-200"}),
         joined({c_, u"\t:nomount:\tStored\thardfile"})},
        {"trailing backslash", joined({games_, u"\\"}), joined({games_, u"\\\t\tGames\tmounted directory"})},
        {"folder with names", joined({games_, u"\tvolumename=Play\tdevicename=DH1"}),
         joined({games_, u"\tDH1\tPlay\tmounted directory"})},
        {"keys begin after a tab", joined({a_, u"\tmydevicename=X\tvolumename=V\tx=1"}),
         joined({a_, u"\t\tV\thardfile"})},
        {"attached disk", joined({device, u"\tvendor-id=WD\tproduct-id=Elements"}),
         joined({device, u"\t\tWD Elements\tDirect-attached disk"})},
        {"attached disk without vendor", joined({device, u"\tproduct-id=Elements"}),
         joined({device, u"\t\tElements\tDirect-attached disk"})},
        {"attached disk without product", joined({device, u"\tvendor-id=WD\tproduct-id="}), u""},
        {"a share is no device", u"\\\\server\\share\\x.hdf\tproduct-id=Elements", u""},
        {"lines, a missing file among them", joined({a_, u"\n", missing_, u"\tdevicename=DH0\n\n", games_}),
         joined({a_, u"\t\t\thardfile\n", games_, u"\t\tGames\tmounted directory"})},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(info(u"ignored\tlist", row.lines, kContentInfoRuntime), row.expected) << row.what;
        EXPECT_EQ(info(u"", row.lines, kContentInfoRuntime | kContentInfoShort), row.expected) << row.what;
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
        info(u"", joined({a_, keys, u"\n", games_}), kContentInfoRuntime);
        ASSERT_EQ(geometries_asked_.size(), 1u);
        EXPECT_EQ(fields(geometries_asked_.front()), fields(expected));
    }
}

TEST_F(ContentInfo, TooltipOfEachDriveType) {
    const struct {
        std::uint8_t type;
        std::uint32_t index;
        std::u16string path, label, expected;
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
        {1, 0, joined({u"One\t", a_}), u"", joined({u"Hard disk drive:\r\n\"", a_, u"\" (DH0, hardfile)"})},
        {1, 0, joined({u"One\t", a_, u"\nTwo\t", b_}), joined({b_, u"\tDH0\tWork\tmy kind"}),
         joined({u"Hard disk drives:\r\n\"", a_, u"\" (DH0, hardfile)\n\"Work\" (DH0_0, my kind)"})},
        {1, 0, u"", u"", u"Hard disk drive:\r\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(tooltip(row.type, row.index, row.path, row.label), row.expected);
    // Summaries too long for the tooltip are left out; "<volume>" (DH0) takes eight characters more.
    for (const std::size_t summary_chars : {kTooltipSummaryChars - 1, kTooltipSummaryChars}) {
        const std::u16string volume(summary_chars - 8, u'v');
        const std::u16string text = tooltip(1, 0, joined({u"One\t", a_}), joined({a_, u"\t\t", volume, u"\t"}));
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
        EXPECT_EQ(info(joined({u"Drive\t", path}), u"", kContentInfoShort), short_form);
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
