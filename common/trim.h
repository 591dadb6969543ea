#pragma once
// Trimming of element text: blanks are space, tab, CR and LF. (Attribute values are never
// trimmed.)

#include <string_view>

namespace kq {

constexpr bool is_blank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

template <class Char>
constexpr std::basic_string_view<Char> trim_blanks(std::basic_string_view<Char> text) {
    while (!text.empty() && is_blank(static_cast<char16_t>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && is_blank(static_cast<char16_t>(text.back()))) text.remove_suffix(1);
    return text;
}

} // namespace kq
