#pragma once
// Output of the reference host: UTF-16 text printed as UTF-8.

#include <string>
#include <string_view>

namespace kqhost {

std::string to_utf8(std::wstring_view text);
// The same UTF-16 text as the module's core takes it (wchar_t and char16_t are both 16 bits here).
inline std::u16string_view module_text(std::wstring_view text) {
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}
inline std::wstring host_text(std::u16string_view text) { return {text.begin(), text.end()}; }
void print(std::string_view utf8);
void print(std::wstring_view text);
void print_error(std::string_view utf8);
// Prints "<what>: 0x<status in 8 hex digits>" and a line break.
void print_status(std::string_view what, long status);

} // namespace kqhost
