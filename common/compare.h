#pragma once
// How values compare: identifiers and values read from manifests, registry values, layout
// ids, button names and key tokens are equal without regard to ASCII letter case (only A-Z
// and a-z fold; every other character must match exactly).

#include <string_view>

namespace kq {

constexpr char16_t ascii_lower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

constexpr bool equal_ignoring_case(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (ascii_lower(a[i]) != ascii_lower(b[i])) return false;
    return true;
}

// Whether `text` begins with `prefix` (a prefix test of the prefix's length).
constexpr bool starts_with_ignoring_case(std::u16string_view text, std::u16string_view prefix) {
    return text.size() >= prefix.size() && equal_ignoring_case(text.substr(0, prefix.size()), prefix);
}

// Whether `text` ends with `suffix`.
constexpr bool ends_with_ignoring_case(std::u16string_view text, std::u16string_view suffix) {
    return text.size() >= suffix.size() && equal_ignoring_case(text.substr(text.size() - suffix.size()), suffix);
}

} // namespace kq
