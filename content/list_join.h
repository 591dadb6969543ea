#pragma once
// Lists of device and volume names as a sentence: "first, second and third", with the
// separators of the string table.

#include <span>
#include <string>

namespace kq::content {

enum class Quoting { none, double_quotes };

// The entries in order, each in double quotes when asked: two entries are joined by " and ",
// more by ", " and, before the last, " and ". No entries give empty text.
std::u16string join_list(std::span<const std::u16string> entries, Quoting quoting);

} // namespace kq::content
