#include "kqhost/console.h"

#include <windows.h>

#include <cstdio>

namespace kqhost {

std::string to_utf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size > 0 ? size : 0), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(), size, nullptr, nullptr);
    return utf8;
}

void print(std::string_view utf8) { std::fwrite(utf8.data(), 1, utf8.size(), stdout); }

void print(std::wstring_view text) { print(to_utf8(text)); }

void print_error(std::string_view utf8) { std::fwrite(utf8.data(), 1, utf8.size(), stderr); }

void print_status(std::string_view what, long status) {
    char code[16];
    std::snprintf(code, sizeof code, ": 0x%08X\n", static_cast<unsigned>(status));
    print(what);
    print(code);
}

} // namespace kqhost
