#pragma once
// Conversion between UTF-8 and UTF-16, strict in both directions: malformed input (a bad
// UTF-8 sequence, an overlong form, an unpaired surrogate) yields nullopt rather than a guess.

#include <optional>
#include <string>
#include <string_view>

namespace kq {

std::optional<std::u16string> utf8_to_utf16(std::string_view utf8);
std::optional<std::string> utf16_to_utf8(std::u16string_view utf16);

} // namespace kq
