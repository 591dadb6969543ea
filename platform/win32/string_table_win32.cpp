#include "platform/string_table.h"

#include "platform/module_file.h"

#include <windows.h>

#include <algorithm>

namespace kq::platform {

std::u16string load_string(std::uint32_t id, std::size_t max_chars) {
    // With a buffer length of 0, LoadStringW hands out a pointer to the resource text itself
    // (not terminated) and its length, so no text is cut by a buffer of ours.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(static_cast<HINSTANCE>(module_instance()), id, reinterpret_cast<LPWSTR>(&text), 0);
    if (length <= 0 || text == nullptr) return {};
    return std::u16string(reinterpret_cast<const char16_t*>(text),
                          std::min<std::size_t>(static_cast<std::size_t>(length), max_chars));
}

} // namespace kq::platform
