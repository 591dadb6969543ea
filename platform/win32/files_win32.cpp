#include "platform/files.h"
#include "common/windows_path.h"

#include <windows.h>
// Shell and known-folder declarations come after windows.h.
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <string>

namespace kq::platform {
namespace {

HANDLE as_handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }
std::wstring terminated(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

} // namespace

SystemError last_system_error() noexcept { return GetLastError(); }

std::optional<File> File::open_for_reading(std::u16string_view path) noexcept {
    HANDLE file = CreateFileW(terminated(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    return File(reinterpret_cast<std::intptr_t>(file));
}

std::optional<File> File::create(std::u16string_view path) noexcept {
    HANDLE file = CreateFileW(terminated(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    return File(reinterpret_cast<std::intptr_t>(file));
}

std::optional<File> File::open_for_update(std::u16string_view path) noexcept {
    HANDLE file = CreateFileW(terminated(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    return File(reinterpret_cast<std::intptr_t>(file));
}

File::~File() {
    if (handle_ != kClosed) CloseHandle(as_handle(handle_));
}

std::optional<std::uint64_t> File::size() const noexcept {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(as_handle(handle_), &size)) return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<FileTime> File::last_write_time() const noexcept {
    FILETIME written;
    if (!GetFileTime(as_handle(handle_), nullptr, nullptr, &written)) return std::nullopt;
    return static_cast<FileTime>(written.dwHighDateTime) << 32 | written.dwLowDateTime;
}

std::optional<std::size_t> File::read(std::span<std::byte> buffer) noexcept {
    // ReadFile counts in 32 bits: a larger buffer is filled by the caller's next reads.
    const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(buffer.size(), 1u << 30));
    DWORD got = 0;
    if (!ReadFile(as_handle(handle_), buffer.data(), wanted, &got, nullptr)) return std::nullopt;
    return got;
}

std::optional<std::size_t> File::write(std::span<const std::byte> bytes) noexcept {
    // WriteFile counts in 32 bits, and a disk that fills up may take part of the bytes: write
    // on, so that the write that fails leaves its reason in GetLastError.
    std::size_t total = 0;
    while (total < bytes.size()) {
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(bytes.size() - total, 1u << 30));
        DWORD written = 0;
        if (!WriteFile(as_handle(handle_), bytes.data() + total, wanted, &written, nullptr))
            return total > 0 ? std::optional<std::size_t>(total) : std::nullopt;
        if (written == 0) break;
        total += written;
    }
    return total;
}

bool File::seek(std::uint64_t offset) noexcept {
    LARGE_INTEGER position;
    position.QuadPart = static_cast<LONGLONG>(offset);
    return SetFilePointerEx(as_handle(handle_), position, nullptr, FILE_BEGIN) != 0;
}

bool File::flush() noexcept { return FlushFileBuffers(as_handle(handle_)) != 0; }

std::optional<std::uint32_t> file_attributes(std::u16string_view path) {
    const DWORD attributes = GetFileAttributesW(terminated(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return attributes;
}

SystemError set_file_attributes(std::u16string_view path, std::uint32_t attributes) {
    return SetFileAttributesW(terminated(path).c_str(), attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes)
               ? 0
               : GetLastError();
}

std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder) {
    const std::u16string every_file = joined_path(folder, u"*");
    const std::wstring pattern(every_file.begin(), every_file.end());
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

SystemError copy_file(std::u16string_view from, std::u16string_view to) {
    return CopyFileW(terminated(from).c_str(), terminated(to).c_str(), FALSE) ? 0 : GetLastError();
}

SystemError move_file(std::u16string_view from, std::u16string_view to) {
    return MoveFileW(terminated(from).c_str(), terminated(to).c_str()) ? 0 : GetLastError();
}

SystemError replace_file(std::u16string_view from, std::u16string_view to) {
    return MoveFileExW(terminated(from).c_str(), terminated(to).c_str(), MOVEFILE_REPLACE_EXISTING) ? 0
                                                                                                    : GetLastError();
}

SystemError delete_file(std::u16string_view path) { return DeleteFileW(terminated(path).c_str()) ? 0 : GetLastError(); }

bool shell_delete(std::u16string_view path) {
    std::wstring paths = terminated(path);
    paths.push_back(L'\0'); // the list ends with a second NUL
    SHFILEOPSTRUCTW operation{};
    operation.wFunc = FO_DELETE;
    operation.pFrom = paths.c_str();
    operation.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOCONFIRMMKDIR | FOF_NOERRORUI; // 0x0614
    return SHFileOperationW(&operation) == 0 && !operation.fAnyOperationsAborted;
}

SystemError create_folder(std::u16string_view path) {
    return CreateDirectoryW(terminated(path).c_str(), nullptr) ? 0 : GetLastError();
}

SystemError remove_folder(std::u16string_view path) {
    return RemoveDirectoryW(terminated(path).c_str()) ? 0 : GetLastError();
}

std::optional<std::u16string> temp_folder() {
    wchar_t path[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, path);
    if (length == 0 || length > MAX_PATH) return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(path), length);
}

std::optional<std::u16string> temp_file_name(std::u16string_view folder, std::u16string_view prefix,
                                             std::uint16_t number) {
    if (number == 0) return std::nullopt;
    wchar_t name[MAX_PATH];
    if (GetTempFileNameW(terminated(folder).c_str(), terminated(prefix).c_str(), number, name) == 0)
        return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(name));
}

std::optional<std::u16string> short_name_of(std::u16string_view path) {
    WIN32_FIND_DATAW entry;
    HANDLE search = FindFirstFileW(terminated(path).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return std::nullopt;
    FindClose(search);
    return std::u16string(reinterpret_cast<const char16_t*>(entry.cAlternateFileName));
}

std::optional<Guid> new_guid() {
    GUID guid;
    if (FAILED(CoCreateGuid(&guid))) return std::nullopt;
    Guid out{guid.Data1, guid.Data2, guid.Data3, {}};
    std::copy(std::begin(guid.Data4), std::end(guid.Data4), out.data4.begin());
    return out;
}

std::optional<std::u16string> program_files_folder(bool common_files) {
    wchar_t path[MAX_PATH];
    if (FAILED(SHGetFolderPathW(nullptr, common_files ? CSIDL_PROGRAM_FILES_COMMON : CSIDL_PROGRAM_FILES, nullptr,
                                SHGFP_TYPE_CURRENT, path)))
        return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(path));
}

} // namespace kq::platform
