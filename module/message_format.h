#pragma once
// Expands message-format templates (the texts of the string table that carry %1, %2 ...) the
// way the system message formatter does for a template given as a string:
//   %1 ... %99      the argument of that number; %1!spec! formats it with a printf
//                   conversion: an optional "-" or "0" flag, an optional width, then one of
//                   s (text), c (character), d or i (32-bit signed), u (32-bit unsigned),
//                   x or X (32-bit hexadecimal); without !spec! the argument is text (s)
//   %n              a line break (CR LF)
//   %r, %t          a carriage return, a tab
//   %0              ends the message
//   %<other>        that character (so %% is a percent sign, %. a period)
//   LF, CR or CR LF a line break (CR LF)
// A template that ends in a lone "%", an unterminated !spec!, a conversion outside the list
// above or an argument number past the arguments given make the expansion fail.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace kq {

using MessageArgument = std::variant<std::u16string_view, std::int64_t, char16_t>;

std::optional<std::u16string> format_message(std::u16string_view message_template,
                                             std::span<const MessageArgument> arguments);

// The same without arguments, leaving every insert as it stands: only %n, %r, %t, %0 and line
// breaks are expanded, and every other "%" sequence (%% included) is kept as written.
std::optional<std::u16string> format_message_keeping_inserts(std::u16string_view message_template);

} // namespace kq
