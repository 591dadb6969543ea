#pragma once
// File-name patterns as the Windows file search writes them: "*" stands for any run of
// characters (also none), "?" for any one character; letters compare without regard to case.

#include <string_view>

namespace kq {

bool wildcard_match(std::u16string_view pattern, std::u16string_view name);

} // namespace kq
