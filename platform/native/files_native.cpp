#include "platform/files.h"
#include "platform/native/native_controls.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "common/utf.h"

namespace kq::platform {

std::optional<InputFile> InputFile::open(std::u16string_view path) noexcept {
    try {
        const std::string posix = native::to_posix_path(path);
        if (posix.empty()) return std::nullopt;
        const int fd = ::open(posix.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) return std::nullopt;
        struct stat status{};
        if (fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {  // Windows opens no folders
            ::close(fd);
            return std::nullopt;
        }
        return InputFile(fd);
    } catch (...) {
        return std::nullopt;
    }
}

InputFile::~InputFile() {
    if (handle_ != kClosed) ::close(static_cast<int>(handle_));
}

std::optional<std::uint64_t> InputFile::size() const noexcept {
    struct stat status{};
    if (fstat(static_cast<int>(handle_), &status) != 0) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::size_t> InputFile::read(std::span<std::byte> buffer) noexcept {
    for (;;) {
        const ssize_t got = ::read(static_cast<int>(handle_), buffer.data(), buffer.size());
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) return std::nullopt;
    }
}

std::optional<std::uint32_t> file_attributes(std::u16string_view path) {
    const std::string posix = native::to_posix_path(path);
    struct stat status{};
    if (posix.empty() || stat(posix.c_str(), &status) != 0) return std::nullopt;
    std::uint32_t attributes = S_ISDIR(status.st_mode) ? kAttributeDirectory : 0x80;  // or NORMAL
    if ((status.st_mode & S_IWUSR) == 0) attributes |= kAttributeReadOnly;
    const std::size_t name = posix.find_last_of('/') + 1;  // a dot file counts as hidden
    if (name < posix.size() && posix[name] == '.') attributes |= kAttributeHidden;
    return attributes;
}

std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder) {
    std::string posix = native::to_posix_path(folder);
    if (posix.empty()) return std::nullopt;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(posix.c_str()), closedir);
    if (!directory) return std::nullopt;
    if (posix.back() != '/') posix += '/';
    std::vector<std::u16string> names;
    while (const dirent* entry = readdir(directory.get())) {
        struct stat status{};
        if (stat((posix + entry->d_name).c_str(), &status) != 0 || S_ISDIR(status.st_mode)) continue;
        if (auto name = utf8_to_utf16(entry->d_name)) names.push_back(std::move(*name));
    }
    return names;
}

} // namespace kq::platform
