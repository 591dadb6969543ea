#include "common/utf.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

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

} // namespace
} // namespace kq
