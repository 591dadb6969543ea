#include "kqhost/file_input.h"

#include "kqhost/command.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace kqhost {

std::optional<std::string> read_file_bytes(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) return std::nullopt;
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

std::optional<std::wstring> read_utf8_file(const std::wstring& path) {
    const std::optional<std::string> bytes = read_file_bytes(path);
    if (!bytes) return std::nullopt;
    const int size = MultiByteToWideChar(CP_UTF8, 0, bytes->data(), static_cast<int>(bytes->size()), nullptr, 0);
    std::wstring text(static_cast<std::size_t>(size > 0 ? size : 0), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes->data(), static_cast<int>(bytes->size()), text.data(), size);
    return text;
}

int with_output_file(const std::wstring& path, const std::function<int()>& command) {
    const bool existed = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    const int exit_code = command();
    if (exit_code != kExitOk && !existed) DeleteFileW(path.c_str());
    return exit_code;
}

} // namespace kqhost
