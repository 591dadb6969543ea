#pragma once
// Files that the reference host reads from its command line.

#include <optional>
#include <string>

namespace kqhost {

// The whole file's bytes, or nullopt when it cannot be read.
std::optional<std::string> read_file_bytes(const std::wstring& path);
// The file as UTF-8 text turned into UTF-16.
std::optional<std::wstring> read_utf8_file(const std::wstring& path);

} // namespace kqhost
