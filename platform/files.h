#pragma once
// Files and folders of the host's file system, named by Windows paths (the native build maps
// them to POSIX paths). Failures leave their reason in last_system_error().

#include "platform/clock.h"
#include "platform/system_error.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kq::platform {

// The longest path that the module hands to the system or the host, in characters with its
// terminating NUL (MAX_PATH).
inline constexpr std::size_t kMaxPathChars = 260;

// File attribute bits (as Windows reports them).
inline constexpr std::uint32_t kAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kAttributeHidden = 0x2;
inline constexpr std::uint32_t kAttributeDirectory = 0x10;

// The attributes of a file or folder; nullopt when they cannot be read (it does not exist).
std::optional<std::uint32_t> file_attributes(std::u16string_view path);
SystemError set_file_attributes(std::u16string_view path, std::uint32_t attributes);

// The names of the files (not folders) in `folder`, in the system's order; nullopt when the
// folder cannot be read.
std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder);

class File {
public:
    // For reading; other readers may open the file at the same time.
    static std::optional<File> open_for_reading(std::u16string_view path) noexcept;
    // A new, empty file (replacing any earlier one), not shared while it is open.
    static std::optional<File> create(std::u16string_view path) noexcept;
    // An existing file for reading and writing, not shared while it is open.
    static std::optional<File> open_for_update(std::u16string_view path) noexcept;

    File(File&& other) noexcept : handle_(std::exchange(other.handle_, kClosed)) {}
    File& operator=(File&&) = delete;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    std::optional<std::uint64_t> size() const noexcept;
    std::optional<FileTime> last_write_time() const noexcept;
    // Reads up to buffer.size() bytes: the count read (0 at the end), or nullopt on failure.
    std::optional<std::size_t> read(std::span<std::byte> buffer) noexcept;
    // Writes the bytes: the count written (fewer when a write failed part way, for example on
    // a full disk, with the reason in last_system_error()), or nullopt when nothing was written.
    std::optional<std::size_t> write(std::span<const std::byte> bytes) noexcept;
    bool seek(std::uint64_t offset) noexcept;
    bool flush() noexcept;

private:
    static constexpr std::intptr_t kClosed = -1;
    explicit File(std::intptr_t handle) noexcept : handle_(handle) {}
    std::intptr_t handle_ = kClosed;
};

// Copies a file over `to` (replacing it), keeping its last-write time.
SystemError copy_file(std::u16string_view from, std::u16string_view to);
// Renames a file; fails when `to` exists.
SystemError move_file(std::u16string_view from, std::u16string_view to);
// Renames a file over `to`, replacing it (both on one drive).
SystemError replace_file(std::u16string_view from, std::u16string_view to);
SystemError delete_file(std::u16string_view path);
// Deletes through the shell's file operation (no confirmation, no dialogs, not to the recycle
// bin): the last resort for a file that a plain delete could not remove.
bool shell_delete(std::u16string_view path);

SystemError create_folder(std::u16string_view path); // already_exists when it does
SystemError remove_folder(std::u16string_view path); // only an empty folder

// The per-user temporary folder (at most 260 characters, normally ending in "\").
std::optional<std::u16string> temp_folder();
// The temporary name that the system forms in `folder` from up to three characters of
// `prefix` and a 16-bit number (GetTempFileName; "AEM1A2B.tmp"), without creating anything.
// nullopt when the service fails. Number 0 is not allowed: it would make the system create a
// file of its own choosing.
std::optional<std::u16string> temp_file_name(std::u16string_view folder, std::u16string_view prefix,
                                             std::uint16_t number);

// The short (8.3) alternative name of the file or folder at `path` (its last element only):
// empty when it has none; nullopt when it cannot be looked up.
std::optional<std::u16string> short_name_of(std::u16string_view path);

struct Guid {
    std::uint32_t data1;
    std::uint16_t data2, data3;
    std::array<std::uint8_t, 8> data4;
};
std::optional<Guid> new_guid();

// The machine's Program Files folder, or its Common Files folder.
std::optional<std::u16string> program_files_folder(bool common_files);

} // namespace kq::platform
