// Text rules shared by every layer: case, paths, blanks, integers, UTF-8, host buffers.

#include "common/compare.h"
#include "common/integer_text.h"
#include "common/trim.h"
#include "common/utf.h"
#include "common/wildcard.h"
#include "common/windows_path.h"
#include "exports/host_text.h"

#include <gtest/gtest.h>

#include <vector>

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

TEST(TextRules, WildcardsMatchWholeNamesIgnoringCase) {
    const struct {
        std::u16string_view pattern, name;
        bool match;
    } rows[] = {
        {u"aros-*-boot.adf", u"AROS-20240101-boot.ADF", true},
        {u"aros-*.rom", u"aros-.rom", true},
        {u"*-ext.rom", u"aros-ext.rom.bak", false},
        {u"a?c", u"abc", true},
        {u"a?c", u"ac", false},
        {u"*a*b", u"xaxbxab", true},
        {u"a*", u"", false},
        {u"**", u"", true},
        {u"abc", u"ab", false},
        {u"ab", u"abc", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(wildcard_match(row.pattern, row.name), row.match)
            << std::string(row.pattern.begin(), row.pattern.end()) << " "
            << std::string(row.name.begin(), row.name.end());
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
        {u"abc", 10, {}},
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

TEST(Utf, RoundTripsEveryEncodingLength) {
    const struct {
        std::string_view utf8;
        std::u16string_view utf16;
    } rows[] = {
        {"", u""},
        {"Amiga", u"Amiga"},
        {"Gr\xC3\xBC\xC3\x9F\x65", u"Gr\u00fc\u00dfe"},
        {"\xE2\x82\xAC", u"\u20ac"},
        {"\xF0\x9D\x91\x8E", u"\U0001D44E"}, // mathematical italic small a: a surrogate pair
        {"\xEF\xBF\xBF", u"\uffff"},
        {std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf8_to_utf16(row.utf8), std::u16string(row.utf16)) << row.utf8;
        EXPECT_EQ(utf16_to_utf8(row.utf16), std::string(row.utf8)) << row.utf8;
    }
}

TEST(Utf, RefusesMalformedInput) {
    for (std::string_view bad : {
             "\x80",                 // continuation without lead
             "\xC3",                 // cut after the lead
             "\xE2\x82",             // cut in a three-byte form
             "\xC0\xAF",             // overlong "/"
             "\xE0\x80\xAF",         // overlong three-byte form
             "\xED\xA0\x80",         // an encoded surrogate
             "\xF4\x90\x80\x80",     // past U+10FFFF
             "\xF8\x88\x80\x80\x80", // five-byte lead
             "ok\xC3(",              // bad continuation
         })
        EXPECT_FALSE(utf8_to_utf16(bad)) << bad;
    for (std::u16string_view bad : {std::u16string_view(u"\xD800", 1), std::u16string_view(u"a\xDC00", 2),
                                    std::u16string_view(u"\xD800\x0041", 2)})
        EXPECT_FALSE(utf16_to_utf8(bad));
}

std::u16string shown(const std::vector<kq_char>& buffer) { return std::u16string(buffer.begin(), buffer.end()); }

// A result goes into a host's buffer whole (or not at all, with the overflow status) or cut to
// fit; either way it ends with a NUL inside the buffer and nothing past the buffer changes.
TEST(HostText, ResultsInTheHostsBuffer) {
    constexpr HResult kOverflow = status::from_win32(platform::system_error::buffer_overflow);
    const struct {
        std::u16string_view text;
        std::uint32_t chars;
        HResult whole_status;
        std::u16string_view whole, truncated; // the buffer and two guard slots after each copy
    } rows[] = {
        {u"Floppy", 7, status::ok, std::u16string_view(u"Floppy\0##", 9), std::u16string_view(u"Floppy\0##", 9)},
        {u"Floppy", 6, kOverflow, u"########", std::u16string_view(u"Flopp\0##", 8)},
        {u"Floppy", 1, kOverflow, u"###", std::u16string_view(u"\0##", 3)},
        {u"", 1, status::ok, std::u16string_view(u"\0##", 3), std::u16string_view(u"\0##", 3)},
    };
    for (const auto& row : rows) {
        std::vector<kq_char> whole(row.chars + 2, u'#'), truncated(row.chars + 2, u'#');
        EXPECT_EQ(copy_whole(row.text, whole.data(), row.chars), row.whole_status) << row.chars;
        copy_truncated(row.text, truncated.data(), row.chars);
        EXPECT_EQ(shown(whole), row.whole) << row.chars;
        EXPECT_EQ(shown(truncated), row.truncated) << row.chars;
    }
}

} // namespace
} // namespace kq
