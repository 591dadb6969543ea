#pragma once
// Paths in an emulator configuration: Windows paths, absolute or relative to a folder that
// another key names ("win32.floppy_path" ...).

#include <string>
#include <string_view>

namespace kq::content {

// Whether the path names its own root: a drive letter and colon, or "\" or "/" at its start
// (the native build's absolute paths begin with "/").
bool is_rooted_path(std::u16string_view path);

// `path` itself when rooted or when there is no folder; otherwise the folder, a "\" unless it
// ends in one, and `path`.
std::u16string resolved_path(std::u16string_view path, std::u16string_view folder);

// The folder that holds the file at `path`: the text before its last "\" or "/"; empty when
// there is none.
std::u16string_view folder_of(std::u16string_view path);

} // namespace kq::content
