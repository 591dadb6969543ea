#pragma once
// The parts of a Windows path as text: folder, file name, extension, drive root, and joining.
// "\" and "/" both separate elements, as Windows itself takes them; this is the one place that
// looks for a separator, so that a path the host writes with either works everywhere.

#include <optional>
#include <string>
#include <string_view>

namespace kq {

constexpr bool is_path_separator(char16_t c) { return c == u'\\' || c == u'/'; }

// The position of the first separator at or after `from`; npos when there is none.
constexpr std::size_t find_path_separator(std::u16string_view path, std::size_t from = 0) {
    return path.find_first_of(u"\\/", from);
}

constexpr bool has_path_separator(std::u16string_view path) {
    return find_path_separator(path) != std::u16string_view::npos;
}

// The text after the last separator (all of it when there is none).
constexpr std::u16string_view file_name_of(std::u16string_view path) {
    const std::size_t last = path.find_last_of(u"\\/");
    return last == std::u16string_view::npos ? path : path.substr(last + 1);
}

// The text up to and including the last separator, empty when there is none: a name appended
// to it names a file beside `path`.
constexpr std::u16string_view folder_of(std::u16string_view path) {
    return path.substr(0, path.size() - file_name_of(path).size());
}

// The folder without its last separator: what contains `path`. nullopt when the path has no
// separator.
constexpr std::optional<std::u16string_view> parent_of(std::u16string_view path) {
    const std::u16string_view folder = folder_of(path);
    if (folder.empty()) return std::nullopt;
    return folder.substr(0, folder.size() - 1);
}

// The path without the separators at its end.
constexpr std::u16string_view without_trailing_separators(std::u16string_view path) {
    while (!path.empty() && is_path_separator(path.back())) path.remove_suffix(1);
    return path;
}

// The text after the last "." of the file name (without the dot); nullopt when it has no ".".
constexpr std::optional<std::u16string_view> extension_of(std::u16string_view path) {
    const std::u16string_view name = file_name_of(path);
    const std::size_t dot = name.rfind(u'.');
    if (dot == std::u16string_view::npos) return std::nullopt;
    return name.substr(dot + 1);
}

// A file name split at its last ".": the stem and the extension without its dot (no dot: the
// whole name and no extension).
struct FileNameParts {
    std::u16string_view stem;
    std::optional<std::u16string_view> extension;
};
constexpr FileNameParts file_name_parts(std::u16string_view name) {
    const std::optional<std::u16string_view> extension = extension_of(name);
    if (!extension) return {name, std::nullopt};
    return {name.substr(0, name.size() - extension->size() - 1), extension};
}

// A drive letter and a colon, alone or followed by one separator ("E:", "E:\").
constexpr bool is_drive_root(std::u16string_view path) {
    const bool letter = !path.empty() && ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
    if (!letter || path.size() < 2 || path.size() > 3 || path[1] != u':') return false;
    return path.size() == 2 || is_path_separator(path[2]);
}

// A drive root with its separator ("E:\").
constexpr bool is_full_drive_root(std::u16string_view path) { return path.size() == 3 && is_drive_root(path); }

// A path that does not depend on a current folder: one that starts with a drive ("C:") or a
// separator.
constexpr bool is_rooted_path(std::u16string_view path) {
    return (path.size() >= 2 && is_drive_root(path.substr(0, 2))) || (!path.empty() && is_path_separator(path[0]));
}

// A path in the system's device namespace: two separators, then "?" or "." ("\\.\PhysicalDrive2").
constexpr bool is_device_path(std::u16string_view path) {
    return path.size() >= 3 && is_path_separator(path[0]) && is_path_separator(path[1]) &&
           (path[2] == u'?' || path[2] == u'.');
}

// The folder with a separator at its end ("\" added when it has none; an empty folder gets one too).
inline std::u16string with_trailing_separator(std::u16string_view folder) {
    std::u16string out(folder);
    if (out.empty() || !is_path_separator(out.back())) out += u'\\';
    return out;
}

// `name` in `folder`, with one separator between them.
inline std::u16string joined_path(std::u16string_view folder, std::u16string_view name) {
    std::u16string out = with_trailing_separator(folder);
    out += name;
    return out;
}

} // namespace kq
