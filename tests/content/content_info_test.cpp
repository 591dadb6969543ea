// Hard-disk summaries: configuration mode in both forms (records, files, folders, device names,
// lists), runtime mode (keys, boot priorities, names stored in images), drive roots, and the
// host's buffer.

#include "content/content_info.h"
#include "module/status.h"
#include "platform/system_error.h"
#include "tests/content/content_test_support.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace kq::content {
namespace {

using test::joined;
using test::shown;

class ContentInfo : public ::testing::Test {
protected:
    ContentInfo() {
        for (const std::u16string_view file : {u"a.hdf", u"b.hdf", u"c.hdf", u"d.hdf"}) folder_.create_file(file, "x");
        folder_.create_folder(u"Games");
        media_.hard_disks[c_] = {.device_name = u"DH7", .volume_name = u"Stored"};
        media_.hard_disks[d_] = {};
    }

    std::u16string info(std::u16string_view list, std::u16string_view records, std::uint32_t flags) {
        return content_info_text(list, records, flags, media_.readers()).value_or(u"<not formatted>");
    }

    test::TempFolder folder_;
    test::FakeMediumNames media_;
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
        EXPECT_EQ(shown(info(row.list, row.records, 0)), shown(row.long_form)) << row.what;
        EXPECT_EQ(shown(info(row.list, row.records, kContentInfoShort)), shown(row.short_form)) << row.what;
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
        {"folder named after its last element", games_, joined({games_, u"\t\tGames\tmounted directory"})},
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
        {"missing file", joined({missing_, u"\tdevicename=DH0"}), u""},
        {"a share is no device", u"\\\\server\\share\\x.hdf\tproduct-id=Elements", u""},
        {"lines", joined({a_, u"\n", missing_, u"\n\n", games_}),
         joined({a_, u"\t\t\thardfile\n", games_, u"\t\tGames\tmounted directory"})},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(shown(info(u"ignored\tlist", row.lines, kContentInfoRuntime)), shown(row.expected)) << row.what;
        EXPECT_EQ(info(u"", row.lines, kContentInfoRuntime | kContentInfoShort),
                  info(u"", row.lines, kContentInfoRuntime))
            << row.what << ": the short form is configuration mode's";
    }
}

TEST_F(ContentInfo, RunningImagesAreReadWithTheirGeometry) {
    const auto fields = [](const media::HardDiskGeometry& g) {
        return std::tuple(g.block_size, g.sectors, g.surfaces, g.reserved);
    };
    const struct {
        std::u16string keys;
        media::HardDiskGeometry expected;
    } rows[] = {
        {u"\tblocksize=0x200\tsectors=32\tsurfaces=010\treserved=2", {512, 32, 8, 2}},
        {u"", {0, 0, 0, -1}},
        {u"\tblocksize=-512\tsectors=\treserved=none", {0, 0, 0, -1}},
    };
    for (const auto& row : rows) {
        media_.geometries_asked.clear();
        info(u"", joined({a_, row.keys, u"\n", games_}), kContentInfoRuntime);
        ASSERT_EQ(media_.geometries_asked.size(), 1u) << shown(row.keys) << ": files only";
        EXPECT_EQ(fields(media_.geometries_asked.front()), fields(row.expected)) << shown(row.keys);
    }
}

#ifndef _WIN32
// Drive roots of hosts' drives, as the native platform layer is told they are.
TEST_F(ContentInfo, HostDrives) {
    platform::native::set_drive_roots({{.root = u"E:\\", .label = u"Work"},
                                       {.root = u"F:\\"},
                                       {.root = u"G:\\", .label = u"Stick", .is_removable = true},
                                       {.root = u"H:\\", .is_removable = true}});
    const struct {
        std::u16string_view path, short_form;
    } rows[] = {
        {u"E:\\", u"\"Work\" (DH0, mounted drive)"},
        {u"e:\\", u"\"Work\" (DH0, mounted drive)"},
        {u"E:\\..", u"\"Work\" (DH0, mounted drive)"},
        {u"F:\\", u"\"F:\\\" (DH0, mounted directory)"},
        {u"G:\\", u"\"Stick\" (mounted drive)"},
        {u"H:\\", u"\"H:\\\" (mounted directory)"},
        {u"Z:\\", u""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(info(joined({u"Drive\t", row.path}), u"", kContentInfoShort)), shown(row.short_form))
            << shown(row.path);
    EXPECT_EQ(shown(info(u"Drive\tE:\\", u"", 0)), "Drive\\tHard Disk \"Work\"");
    platform::native::set_drive_roots({});
}
#endif

} // namespace
} // namespace kq::content
