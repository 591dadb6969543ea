#pragma once
// Output of the reference host: UTF-16 text printed as UTF-8.

#include <string>
#include <string_view>

namespace kqhost {

std::string to_utf8(std::wstring_view text);
void print(std::string_view utf8);
void print(std::wstring_view text);
void print_error(std::string_view utf8);
// Prints "<what>: 0x<status in 8 hex digits>" and a line break.
void print_status(std::string_view what, long status);

} // namespace kqhost
