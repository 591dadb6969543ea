#pragma once
// Paths in an emulator configuration: Windows paths, absolute or relative to a folder that
// another key names ("win32.floppy_path" ...).

#include <string>
#include <string_view>

namespace kq::content {

// `path` itself when rooted (a drive, or a separator at its start: the native build's absolute
// paths begin with "/") or when there is no folder; otherwise `path` in the folder.
std::u16string resolved_path(std::u16string_view path, std::u16string_view folder);

} // namespace kq::content
