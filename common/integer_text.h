#pragma once
// Reading an integer at the start of a text, as the C library's strtol family does: leading
// white space, an optional sign, then digits of the base; what follows the digits is ignored.
// Base 0 picks the base from the text ("0x" hexadecimal, a leading 0 octal, else decimal).
// A value past the 32-bit range is clamped to it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq {

// The value, or nullopt when no digit was read.
std::optional<std::int32_t> read_integer_prefix(std::u16string_view text, int base = 10);

// The value in decimal digits, with a minus sign when negative (as "%d" writes it).
std::u16string decimal_text(std::int64_t value);

} // namespace kq
