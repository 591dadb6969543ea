// The module's message formatter against the system's own (FormatMessageW with a template
// given as a string and an argument array).

#include "module/message_format.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <optional>
#include <vector>

namespace kq {
namespace {

std::optional<std::u16string> system_format(std::u16string_view message_template,
                                            const std::vector<MessageArgument>& arguments, DWORD extra_flags) {
    const std::u16string terminated(message_template);
    std::vector<std::u16string> texts;
    texts.reserve(arguments.size());
    std::vector<DWORD_PTR> values;
    for (const MessageArgument& argument : arguments) {
        if (const auto* text = std::get_if<std::u16string_view>(&argument)) {
            texts.emplace_back(*text);
            values.push_back(reinterpret_cast<DWORD_PTR>(texts.back().c_str()));
        } else if (const auto* number = std::get_if<std::int64_t>(&argument)) {
            values.push_back(static_cast<DWORD_PTR>(*number));
        } else {
            values.push_back(std::get<char16_t>(argument));
        }
    }
    wchar_t buffer[512];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY | extra_flags, terminated.c_str(), 0,
                       0, buffer, 512, reinterpret_cast<va_list*>(values.empty() ? nullptr : values.data()));
    if (length == 0) return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(buffer), length);
}

TEST(MessageFormatOracle, AgreesWithTheSystemFormatter) {
    const struct {
        std::u16string_view message_template;
        std::vector<MessageArgument> arguments;
    } rows[] = {
        {u"Floppy disk drive DF%1!d!:\n%2", {std::int64_t{3}, u"\"Disk\" (Game)"}},
        {u"Hard disk drives:\n%2", {u"x", u"a\nb"}},
        {u"Numeric Keypad %1!c!", {char16_t{0xB0}}},
        {u"%2 %1 %2", {u"a", u"b"}},
        {u"a%%b%nc%.d%!e%rf%tg%0never", {}},
        {u"x%1!s!!y", {u"one"}},
        {u"%1!5d!|%1!-5d!|%1!05d!|%2!05d!|%2!u!|%2!x!|%1!X!", {std::int64_t{42}, std::int64_t{-7}}},
        {u"%1!-6s!|%1!6s!|", {u"one"}},
        {u"one\ntwo\r\nthree\rfour", {}},
        {u"%a%b%z", {}},
        {u"trailing %", {}},
        {u"%1!s", {u"x"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.message_template.begin(), row.message_template.end()));
        EXPECT_EQ(format_message(row.message_template, row.arguments),
                  system_format(row.message_template, row.arguments, 0));
    }
}

TEST(MessageFormatOracle, KeepingInsertsAgreesWithIgnoreInserts) {
    for (std::u16string_view message_template :
         {u"DF%1!d!:\n%2", u"%% %. %! %n %r %t %1 x", u"cut%0here", u"%1!", u"end %"}) {
        SCOPED_TRACE(std::string(message_template.begin(), message_template.end()));
        EXPECT_EQ(format_message_keeping_inserts(message_template),
                  system_format(message_template, {}, FORMAT_MESSAGE_IGNORE_INSERTS));
    }
}

} // namespace
} // namespace kq
