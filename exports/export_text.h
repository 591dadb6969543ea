#pragma once
// Strings crossing the boundary: the host's wide strings (wchar_t on Windows, char16_t in the
// native build; both UTF-16) as the core's views, and back.

#include "kq_amiga.h"

#include <string_view>

namespace kq {

static_assert(sizeof(kq_char) == sizeof(char16_t));

// A borrowed NUL-terminated string; null reads as empty.
inline std::u16string_view text_view(const kq_char* text) {
    if (text == nullptr) return {};
    return std::u16string_view(reinterpret_cast<const char16_t*>(text));
}

} // namespace kq
