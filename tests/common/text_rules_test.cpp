#include "common/compare.h"
#include "common/integer_text.h"
#include "common/trim.h"
#include "common/windows_path.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

TEST(TextRules, CaseFoldsAsciiLettersOnly) {
    static_assert(equal_ignoring_case(u"A-1200", u"a-1200"));
    static_assert(!equal_ignoring_case(u"\u00c9", u"\u00e9")); // no folding past ASCII
    static_assert(!equal_ignoring_case(u"@", u"`"));           // neighbours of the letters
    static_assert(!equal_ignoring_case(u"[", u"{"));
    static_assert(!equal_ignoring_case(u"a", u"ab"));
    static_assert(starts_with_ignoring_case(u"INPUT-mouse", u"input-"));
    static_assert(!starts_with_ignoring_case(u"inp", u"input-"));
}

TEST(TextRules, PathsSplitAtEitherSeparator) {
    using View = std::u16string_view;
    const struct {
        View path, folder, file_name;
        std::optional<View> parent, extension;
    } rows[] = {
        {u"C:\\games\\disk.cue", u"C:\\games\\", u"disk.cue", u"C:\\games", u"cue"},
        {u"C:/games/disk.cue", u"C:/games/", u"disk.cue", u"C:/games", u"cue"},
        {u"C:\\my.games/disk", u"C:\\my.games/", u"disk", u"C:\\my.games", {}}, // a folder's dot is no extension
        {u"disk.tar.adz", u"", u"disk.tar.adz", {}, u"adz"},
        {u"\\disk", u"\\", u"disk", u"", {}},
        {u"games/", u"games/", u"", u"games", {}},
    };
    for (const auto& row : rows) {
        const std::string what(row.path.begin(), row.path.end());
        EXPECT_EQ(folder_of(row.path), row.folder) << what;
        EXPECT_EQ(file_name_of(row.path), row.file_name) << what;
        EXPECT_EQ(parent_of(row.path), row.parent) << what;
        EXPECT_EQ(extension_of(row.path), row.extension) << what;
    }
    static_assert(is_drive_root(u"E:") && is_drive_root(u"e:/") && !is_drive_root(u"E:\\x") && !is_drive_root(u"1:"));
    static_assert(is_rooted_path(u"/home/disk.adf") && is_rooted_path(u"C:disk.adf") && !is_rooted_path(u"games\\a"));
    static_assert(is_device_path(u"//./PhysicalDrive2") && !is_device_path(u"\\server"));
    EXPECT_EQ(joined_path(u"C:/games", u"disk.adf"), u"C:/games\\disk.adf");
    EXPECT_EQ(joined_path(u"C:/games/", u"disk.adf"), u"C:/games/disk.adf");
}

TEST(TextRules, TrimsSpaceTabCrLfOnly) {
    static_assert(trim_blanks(std::u16string_view(u" \t\r\nkeyboard\r\n ")) == u"keyboard");
    static_assert(trim_blanks(std::u16string_view(u"\u00a0x\v")) == u"\u00a0x\v");
    static_assert(trim_blanks(std::u16string_view(u" \t ")).empty());
}

TEST(TextRules, ReadsIntegersAsTheCLibraryDoes) {
    const struct {
        std::u16string_view text;
        int base;
        std::optional<std::int32_t> value;
    } rows[] = {
        {u"01", 10, 1},
        {u"  -3x", 10, -3},
        {u"+7", 10, 7},
        {u"12abc", 10, 12},
        {u"abc", 10, {}},
        {u"", 10, {}},
        {u"-", 10, {}},
        {u"0x1F", 10, 0},
        {u"0x1F", 0, 31},
        {u"0X1f", 16, 31},
        {u"017", 0, 15},
        {u"0", 0, 0},
        {u"0x", 0, 0},
        {u"019", 0, 1},
        {u"-0x10", 0, -16},
        {u"99999999999", 10, 2147483647},
        {u"-99999999999", 10, -2147483647 - 1},
        {u"\t\n 42", 10, 42},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read_integer_prefix(row.text, row.base), row.value)
            << std::string(row.text.begin(), row.text.end()) << " base " << row.base;
}

} // namespace
} // namespace kq
