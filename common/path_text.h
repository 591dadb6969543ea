#pragma once
// Windows paths as text: "\" separates the elements.

#include <optional>
#include <string>
#include <string_view>

namespace kq {

// The folder with a "\" at its end (added when missing; an empty folder gets one too).
inline std::u16string with_trailing_backslash(std::u16string_view folder) {
    std::u16string out(folder);
    if (out.empty() || out.back() != u'\\') out += u'\\';
    return out;
}

// The text after the last "\" (all of it when there is none).
constexpr std::u16string_view file_name_of(std::u16string_view path) {
    const std::size_t last = path.rfind(u'\\');
    return last == std::u16string_view::npos ? path : path.substr(last + 1);
}

// The text after the last "." of the path (without the dot); nullopt when it has no ".".
constexpr std::optional<std::u16string_view> extension_of(std::u16string_view path) {
    const std::size_t dot = path.rfind(u'.');
    if (dot == std::u16string_view::npos) return std::nullopt;
    return path.substr(dot + 1);
}

} // namespace kq
