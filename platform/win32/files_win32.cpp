#include "platform/files.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace kq::platform {
namespace {

HANDLE as_handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

} // namespace

std::optional<InputFile> InputFile::open(std::u16string_view path) noexcept {
    try {
        const std::u16string terminated(path);
        HANDLE file = CreateFileW(reinterpret_cast<const wchar_t*>(terminated.c_str()), GENERIC_READ,
                                  FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                  nullptr);
        if (file == INVALID_HANDLE_VALUE) return std::nullopt;
        return InputFile(reinterpret_cast<std::intptr_t>(file));
    } catch (...) {
        return std::nullopt;
    }
}

InputFile::~InputFile() {
    if (handle_ != kClosed) CloseHandle(as_handle(handle_));
}

std::optional<std::uint64_t> InputFile::size() const noexcept {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(as_handle(handle_), &size)) return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<std::size_t> InputFile::read(std::span<std::byte> buffer) noexcept {
    // ReadFile counts in 32 bits: a larger buffer is filled by the caller's next reads.
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(buffer.size(), 1u << 30));
    DWORD got = 0;
    if (!ReadFile(as_handle(handle_), buffer.data(), wanted, &got, nullptr)) return std::nullopt;
    return got;
}

std::optional<std::uint32_t> file_attributes(std::u16string_view path) {
    const std::wstring terminated(path.begin(), path.end());
    const DWORD attributes = GetFileAttributesW(terminated.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return attributes;
}

std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder) {
    std::wstring pattern(folder.begin(), folder.end());
    if (pattern.empty() || pattern.back() != L'\\') pattern += L'\\';
    pattern += L'*';
    WIN32_FIND_DATAW entry;
    HANDLE search = FindFirstFileW(pattern.c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        if (GetLastError() == ERROR_FILE_NOT_FOUND) return std::vector<std::u16string>();
        return std::nullopt;
    }
    std::vector<std::u16string> names;
    do {
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.emplace_back(reinterpret_cast<const char16_t*>(entry.cFileName));
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    return names;
}

} // namespace kq::platform
