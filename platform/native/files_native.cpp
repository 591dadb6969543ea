#include "platform/files.h"
#include "platform/native/native_controls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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

} // namespace kq::platform
