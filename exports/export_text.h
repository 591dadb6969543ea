#pragma once
// Strings crossing the boundary: the host's wide strings (wchar_t on Windows, char16_t in the
// native build; both UTF-16) as the core's views, and back.

#include "kq_amiga.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace kq {

static_assert(sizeof(kq_char) == sizeof(char16_t));

// A borrowed NUL-terminated string; null reads as empty.
inline std::u16string_view text_view(const kq_char* text) {
    if (text == nullptr) return {};
    return std::u16string_view(reinterpret_cast<const char16_t*>(text));
}

// The text in a caller's buffer of `chars` characters: up to its NUL, or all of it.
inline std::u16string_view text_view(const kq_char* buffer, std::uint32_t chars) {
    const std::u16string_view all(reinterpret_cast<const char16_t*>(buffer), chars);
    return all.substr(0, all.find(u'\0'));
}

// Copies as much of `text` as fits into a buffer of `chars` characters (at least 1) and ends it
// with a NUL in the last slot used: a short buffer gets a truncated text.
inline void copy_truncated(std::u16string_view text, kq_char* buffer, std::uint32_t chars) {
    const std::size_t count = text.size() < chars ? text.size() : chars - 1;
    std::copy_n(text.begin(), count, reinterpret_cast<char16_t*>(buffer));
    buffer[count] = 0;
}

} // namespace kq
