// Drive tooltips: the text of each drive type, media with and without stored volume names,
// hard-disk summaries of one and several lines, CD drive roots, and cutting to the buffer.

#include "content/content_tooltip.h"
#include "tests/content/content_test_support.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

namespace kq::content {
namespace {

using test::joined;
using test::shown;

class ContentTooltip : public ::testing::Test {
protected:
    ContentTooltip() {
        folder_.create_file(u"a.hdf", "a");
        folder_.create_file(u"b.hdf", "b");
        media_.volume_names = {{u"C:\\wb.adf", u"Workbench"},
                               {u"C:\\colon.adf", u":"},
                               {u"C:\\unnamed.adf", u""},
                               {u"C:\\disc.iso", u"CD_DATA"},
                               {u"E:", u"Image"}};
    }

    std::u16string tooltip(std::uint8_t type, std::uint32_t index, std::u16string_view path,
                           std::u16string_view label) {
        return content_tooltip_text(type, index, path, label, media_.readers()).value_or(u"<not formatted>");
    }

    test::TempFolder folder_;
    test::FakeMediumNames media_;
    const std::u16string a_ = folder_.path(u"a.hdf"), b_ = folder_.path(u"b.hdf");
};

TEST_F(ContentTooltip, EachDriveType) {
    const struct {
        const char* what;
        std::uint8_t type;
        std::uint32_t index;
        std::u16string path, label, expected;
    } rows[] = {
        {"empty floppy drive", 0, 0, u"", u"", u"Floppy disk drive DF0:\r\nEmpty"},
        {"named floppy", 0, 3, u"C:\\wb.adf", u"WB 3.1", u"Floppy disk drive DF3:\r\n\"Workbench\" (WB 3.1)"},
        {"colon is no name", 0, 1, u"C:\\colon.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"},
        {"empty name", 0, 1, u"C:\\unnamed.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"},
        {"unreadable image", 0, 1, u"C:\\other.adf", u"Disk 1", u"Floppy disk drive DF1:\r\nDisk 1"},
        {"floppy drives read the medium", 0, 0, u"E:", u"Disk", u"Floppy disk drive DF0:\r\n\"Image\" (Disk)"},
        {"empty CD drive", 2, 0, u"", u"Disc", u"CD drive:\r\nEmpty"},
        {"CD image", 2, 0, u"C:\\disc.iso", u"Disc", u"CD drive:\r\n\"CD_DATA\" (Disc)"},
        {"network", 3, 0, u"C:\\wb.adf", u"Share", u"Network"},
        {"unknown type", 4, 0, u"C:\\wb.adf", u"Disk", u""},
        {"one hard disk", 1, 0, joined({u"One\t", a_}), u"",
         joined({u"Hard disk drive:\r\n\"", a_, u"\" (DH0, hardfile)"})},
        {"hard disks", 1, 0, joined({u"One\t", a_, u"\nTwo\t", b_}), joined({b_, u"\tDH0\tWork\tmy kind"}),
         joined({u"Hard disk drives:\r\n\"", a_, u"\" (DH0, hardfile)\n\"Work\" (DH0_0, my kind)"})},
        {"no hard disk", 1, 0, u"", u"", u"Hard disk drive:\r\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(tooltip(row.type, row.index, row.path, row.label)), shown(row.expected)) << row.what;
}

TEST_F(ContentTooltip, LongHardDiskSummariesAreLeftOut) {
    for (const std::size_t summary_chars : {kTooltipSummaryChars - 1, kTooltipSummaryChars}) {
        // "<volume>" (DH0) takes eight characters more than the volume name.
        const std::u16string volume(summary_chars - 8, u'v');
        const std::u16string text = tooltip(1, 0, joined({u"One\t", a_}), joined({a_, u"\t\t", volume, u"\t"}));
        EXPECT_EQ(text.size(), summary_chars < kTooltipSummaryChars ? 18 + summary_chars : 18) << summary_chars;
    }
}

#ifndef _WIN32
TEST_F(ContentTooltip, CdDriveRootsShowTheirLabel) {
    platform::native::set_drive_roots({{.root = u"E:\\", .label = u"GAME_DISC"}, {.root = u"F:\\"}});
    const struct {
        std::u16string_view path, expected;
    } rows[] = {
        {u"E:", u"CD drive:\r\n\"GAME_DISC\" (Game)"},
        {u"e:\\", u"CD drive:\r\n\"GAME_DISC\" (Game)"},
        {u"F:", u"CD drive:\r\nGame"},
        {u"Z:\\", u"CD drive:\r\nGame"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(tooltip(2, 0, row.path, u"Game")), shown(row.expected)) << shown(row.path);
    platform::native::set_drive_roots({});
}
#endif

} // namespace
} // namespace kq::content
