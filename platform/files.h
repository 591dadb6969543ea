#pragma once
// Files of the host's file system, named by Windows paths (the native build maps them to
// POSIX paths).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <string>
#include <utility>
#include <vector>

namespace kq::platform {

// File attribute bits (as Windows reports them).
inline constexpr std::uint32_t kAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kAttributeHidden = 0x2;
inline constexpr std::uint32_t kAttributeDirectory = 0x10;

// The attributes of a file or folder; nullopt when they cannot be read (it does not exist).
std::optional<std::uint32_t> file_attributes(std::u16string_view path);

// The names of the files (not folders) in `folder`, in the system's order; nullopt when the
// folder cannot be read.
std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder);

// A file opened for reading; other readers may open it at the same time.
class InputFile {
public:
    static std::optional<InputFile> open(std::u16string_view path) noexcept;
    InputFile(InputFile&& other) noexcept : handle_(std::exchange(other.handle_, kClosed)) {}
    InputFile& operator=(InputFile&&) = delete;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    std::optional<std::uint64_t> size() const noexcept;
    // Reads up to buffer.size() bytes: the count read (0 at the end), or nullopt on failure.
    std::optional<std::size_t> read(std::span<std::byte> buffer) noexcept;

private:
    static constexpr std::intptr_t kClosed = -1;
    explicit InputFile(std::intptr_t handle) noexcept : handle_(handle) {}
    std::intptr_t handle_ = kClosed;
};

} // namespace kq::platform
