#include "module/message_format.h"

#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <vector>

namespace kq {
namespace {

TEST(MessageFormat, ExpandsTheTemplatesOfTheStringTable) {
    const struct {
        std::u16string_view message_template;
        std::vector<MessageArgument> arguments;
        std::u16string_view expected;
    } rows[] = {
        {u"Floppy disk drive DF%1!d!:\n%2", {std::int64_t{1}, u"Empty"}, u"Floppy disk drive DF1:\r\nEmpty"},
        {u"Hard Disk %1", {u"\"Work\""}, u"Hard Disk \"Work\""},
        {u"Numeric Keypad %1!c!", {char16_t{u'['}}, u"Numeric Keypad ["},
        {u"Numeric Keypad %1!c!", {std::int64_t{0xB0}}, u"Numeric Keypad \u00b0"},
        {u"Model: %1", {u"CD\u00b3\u00b2"}, u"Model: CD\u00b3\u00b2"},
        {u"%2 before %1", {u"a", u"b"}, u"b before a"},
        {u"%1%1", {u"x"}, u"xx"},
        {u"100%% %. %! %z", {}, u"100% . ! z"},
        {u"a%nb%rc%td", {}, u"a\r\nb\rc\td"},
        {u"line\nline\r\nline\rend", {}, u"line\r\nline\r\nline\r\nend"},
        {u"kept%0 cut", {}, u"kept"},
        {u"[%1!5d!][%1!-5d!][%1!05d!][%2!05d!]",
         {std::int64_t{42}, std::int64_t{-42}},
         u"[   42][42   ][00042][-0042]"},
        {u"%1!u! %1!x! %1!X!", {std::int64_t{-5}}, u"4294967291 fffffffb FFFFFFFB"},
        {u"%1!-6s!|", {u"one"}, u"one   |"},
    };
    for (const auto& row : rows) {
        const auto text = format_message(row.message_template, row.arguments);
        ASSERT_TRUE(text) << test::printable(row.message_template);
        EXPECT_EQ(*text, row.expected) << test::printable(row.message_template);
    }
}

TEST(MessageFormat, MalformedTemplatesFail) {
    const std::vector<MessageArgument> one{u"x"};
    for (std::u16string_view bad : {u"ends in %", u"%1!s", u"%1!", u"%1!q!", u"%2", u"%1!ls!"})
        EXPECT_FALSE(format_message(bad, one)) << test::printable(bad);
}

TEST(MessageFormat, KeepingInsertsExpandsOnlyLineBreaksAndTheEnd) {
    const struct {
        std::u16string_view message_template, expected;
    } rows[] = {
        {u"DF%1!d!:\n%2", u"DF%1!d!:\r\n%2"},
        {u"%% %. %n %r %t", u"%% %. \r\n \r \t"},
        {u"cut%0here", u"cut"},
    };
    for (const auto& row : rows) {
        const auto text = format_message_keeping_inserts(row.message_template);
        ASSERT_TRUE(text) << test::printable(row.message_template);
        EXPECT_EQ(*text, row.expected);
    }
    EXPECT_FALSE(format_message_keeping_inserts(u"lone %"));
}

} // namespace
} // namespace kq
