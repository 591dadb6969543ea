#pragma once
// Files that the reference host reads from its command line, and the ones it writes.

#include <functional>
#include <optional>
#include <string>

namespace kqhost {

// The whole file's bytes, or nullopt when it cannot be read.
std::optional<std::string> read_file_bytes(const std::wstring& path);
// The file as UTF-8 text turned into UTF-16.
std::optional<std::wstring> read_utf8_file(const std::wstring& path);

// Runs `command`, which writes the file at `path`, and returns its exit code. When it fails, a
// file that it created there is removed again, so that no partial output stays; a file that was
// there before is left alone (the command may have failed before it opened the file, or the
// file may be its input).
int with_output_file(const std::wstring& path, const std::function<int()>& command);

} // namespace kqhost
