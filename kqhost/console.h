#pragma once
// Output of the reference host: UTF-16 text printed as UTF-8.

#include <string>
#include <string_view>

namespace kqhost {

std::string to_utf8(std::wstring_view text);
void print(std::string_view utf8);
void print(std::wstring_view text);
void print_error(std::string_view utf8);

} // namespace kqhost
