#include "platform/files.h"
#include "platform/native/native_controls.h"

#include "common/utf.h"
#include "common/windows_path.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>

namespace kq::platform {
namespace {

thread_local SystemError t_last_error = 0;

// The Windows error closest to an errno value.
SystemError from_errno(int error) {
    switch (error) {
    case ENOENT: return system_error::file_not_found;
    case ENOTDIR: return system_error::path_not_found;
    case EACCES:
    case EPERM:
    case EISDIR: return system_error::access_denied;
    case EEXIST: return system_error::already_exists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return 112;        // ERROR_DISK_FULL: no room (a quota or a file-size limit counts as full)
    case EROFS: return 19;         // ERROR_WRITE_PROTECT
    case EBUSY: return 32;         // ERROR_SHARING_VIOLATION
    case ENAMETOOLONG: return 206; // ERROR_FILENAME_EXCED_RANGE
    case ENOTEMPTY: return 145;    // ERROR_DIR_NOT_EMPTY
    default: return 31;            // ERROR_GEN_FAILURE
    }
}

SystemError fail() {
    t_last_error = from_errno(errno);
    return t_last_error;
}

int descriptor(std::intptr_t handle) { return static_cast<int>(handle); }

std::optional<int> open_file(std::u16string_view path, int flags) {
    const std::string posix = native::to_posix_path(path);
    if (posix.empty()) {
        t_last_error = system_error::path_not_found;
        return std::nullopt;
    }
    const int fd = ::open(posix.c_str(), flags | O_CLOEXEC, 0644);
    if (fd < 0) {
        fail();
        return std::nullopt;
    }
    struct stat status = {};
    if (fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) { // Windows opens no folders as files
        ::close(fd);
        t_last_error = system_error::access_denied;
        return std::nullopt;
    }
    return fd;
}

FileTime to_file_time(const timespec& time) {
    constexpr std::uint64_t kSecondsFrom1601To1970 = 11644473600u;
    return (static_cast<std::uint64_t>(time.tv_sec) + kSecondsFrom1601To1970) * 10'000'000u +
           static_cast<std::uint64_t>(time.tv_nsec) / 100;
}

struct Folders {
    std::mutex lock;
    std::u16string temp;
    std::optional<std::u16string> program_files, common_files;
};
Folders& folders() {
    static Folders instance;
    return instance;
}

} // namespace

SystemError last_system_error() noexcept { return t_last_error; }

std::optional<File> File::open_for_reading(std::u16string_view path) noexcept {
    try {
        if (const auto fd = open_file(path, O_RDONLY)) return File(*fd);
    } catch (...) {
    }
    return std::nullopt;
}

std::optional<File> File::create(std::u16string_view path) noexcept {
    try {
        if (const auto fd = open_file(path, O_RDWR | O_CREAT | O_TRUNC)) return File(*fd);
    } catch (...) {
    }
    return std::nullopt;
}

std::optional<File> File::open_for_update(std::u16string_view path) noexcept {
    try {
        if (const auto fd = open_file(path, O_RDWR)) return File(*fd);
    } catch (...) {
    }
    return std::nullopt;
}

File::~File() {
    if (handle_ != kClosed) ::close(descriptor(handle_));
}

std::optional<std::uint64_t> File::size() const noexcept {
    struct stat status = {};
    if (fstat(descriptor(handle_), &status) != 0) return fail(), std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<FileTime> File::last_write_time() const noexcept {
    struct stat status = {};
    if (fstat(descriptor(handle_), &status) != 0) return fail(), std::nullopt;
    return to_file_time(status.st_mtim);
}

std::optional<std::size_t> File::read(std::span<std::byte> buffer) noexcept {
    for (;;) {
        const ssize_t got = ::read(descriptor(handle_), buffer.data(), buffer.size());
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) return fail(), std::nullopt;
    }
}

std::optional<std::size_t> File::write(std::span<const std::byte> bytes) noexcept {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t put = ::write(descriptor(handle_), bytes.data() + written, bytes.size() - written);
        if (put < 0) {
            if (errno == EINTR) continue;
            fail();
            return written > 0 ? std::optional<std::size_t>(written) : std::nullopt;
        }
        written += static_cast<std::size_t>(put);
    }
    return written;
}

bool File::seek(std::uint64_t offset) noexcept {
    if (lseek(descriptor(handle_), static_cast<off_t>(offset), SEEK_SET) < 0) return fail(), false;
    return true;
}

bool File::flush() noexcept {
    if (fsync(descriptor(handle_)) != 0) return fail(), false;
    return true;
}

std::optional<std::uint32_t> file_attributes(std::u16string_view path) {
    const std::string posix = native::to_posix_path(path);
    struct stat status = {};
    if (posix.empty() || stat(posix.c_str(), &status) != 0) return fail(), std::nullopt;
    std::uint32_t attributes = S_ISDIR(status.st_mode) ? kAttributeDirectory : 0x80; // or NORMAL
    if ((status.st_mode & S_IWUSR) == 0) attributes |= kAttributeReadOnly;
    const std::size_t name = posix.find_last_of('/') + 1; // a dot file counts as hidden
    if (name < posix.size() && posix[name] == '.') attributes |= kAttributeHidden;
    return attributes;
}

SystemError set_file_attributes(std::u16string_view path, std::uint32_t attributes) {
    const std::string posix = native::to_posix_path(path);
    struct stat status = {};
    if (stat(posix.c_str(), &status) != 0) return fail();
    const mode_t mode = (attributes & kAttributeReadOnly) ? status.st_mode & ~mode_t{0222} : status.st_mode | S_IWUSR;
    return chmod(posix.c_str(), mode) == 0 ? 0 : fail();
}

std::optional<std::vector<std::u16string>> list_files(std::u16string_view folder) {
    std::string posix = native::to_posix_path(folder);
    if (posix.empty()) return std::nullopt;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(posix.c_str()), closedir);
    if (!directory) return fail(), std::nullopt;
    if (posix.back() != '/') posix += '/';
    std::vector<std::u16string> names;
    while (const dirent* entry = readdir(directory.get())) {
        struct stat status = {};
        if (stat((posix + entry->d_name).c_str(), &status) != 0 || S_ISDIR(status.st_mode)) continue;
        if (auto name = utf8_to_utf16(entry->d_name)) names.push_back(std::move(*name));
    }
    return names;
}

SystemError copy_file(std::u16string_view from, std::u16string_view to) {
    std::optional<File> source = File::open_for_reading(from);
    if (!source) return t_last_error;
    std::optional<File> target = File::create(to);
    if (!target) return t_last_error;
    std::vector<std::byte> buffer(1 << 16);
    for (;;) {
        const std::optional<std::size_t> got = source->read(buffer);
        if (!got) return t_last_error;
        if (*got == 0) break;
        const std::optional<std::size_t> put = target->write(std::span(buffer).first(*got));
        if (!put || *put != *got) return t_last_error ? t_last_error : 112;
    }
    // As Windows copies, the copy keeps the source's last-write time.
    struct stat status = {};
    const std::string source_path = native::to_posix_path(from), target_path = native::to_posix_path(to);
    if (stat(source_path.c_str(), &status) == 0) {
        const timespec times[2] = {status.st_atim, status.st_mtim};
        utimensat(AT_FDCWD, target_path.c_str(), times, 0);
    }
    return 0;
}

SystemError move_file(std::u16string_view from, std::u16string_view to) {
    const std::string source = native::to_posix_path(from), target = native::to_posix_path(to);
    struct stat status = {};
    if (stat(target.c_str(), &status) == 0) return t_last_error = system_error::already_exists;
    return ::rename(source.c_str(), target.c_str()) == 0 ? 0 : fail();
}

SystemError replace_file(std::u16string_view from, std::u16string_view to) {
    const std::string source = native::to_posix_path(from), target = native::to_posix_path(to);
    return ::rename(source.c_str(), target.c_str()) == 0 ? 0 : fail();
}

SystemError delete_file(std::u16string_view path) {
    return ::unlink(native::to_posix_path(path).c_str()) == 0 ? 0 : fail();
}

bool shell_delete(std::u16string_view path) {
    const std::string posix = native::to_posix_path(path);
    return ::unlink(posix.c_str()) == 0 || errno == ENOENT;
}

SystemError create_folder(std::u16string_view path) {
    return ::mkdir(native::to_posix_path(path).c_str(), 0755) == 0 ? 0 : fail();
}

SystemError remove_folder(std::u16string_view path) {
    return ::rmdir(native::to_posix_path(path).c_str()) == 0 ? 0 : fail();
}

std::optional<std::u16string> temp_folder() {
    Folders& f = folders();
    std::lock_guard guard(f.lock);
    if (!f.temp.empty()) return f.temp;
    const char* tmp = std::getenv("TMPDIR");
    std::string folder = tmp != nullptr && *tmp != '\0' ? tmp : "/tmp";
    if (folder.back() != '/') folder += '/';
    return utf8_to_utf16(folder);
}

std::optional<std::u16string> temp_file_name(std::u16string_view folder, std::u16string_view prefix,
                                             std::uint16_t number) {
    if (number == 0) {
        t_last_error = 87; // ERROR_INVALID_PARAMETER
        return std::nullopt;
    }
    std::u16string name = folder.empty() ? std::u16string() : with_trailing_separator(folder);
    name += prefix.substr(0, 3);
    char digits[8];
    std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned>(number));
    for (const char* c = digits; *c != 0; ++c) name += static_cast<char16_t>(*c);
    name += u".tmp";
    return name;
}

std::optional<std::u16string> short_name_of(std::u16string_view path) {
    // Linux file systems keep no short names.
    struct stat status = {};
    if (stat(native::to_posix_path(path).c_str(), &status) != 0) return fail(), std::nullopt;
    return std::u16string();
}

std::optional<Guid> new_guid() {
    static std::mutex lock;
    static std::random_device device;
    static std::mt19937_64 random(device());
    std::lock_guard guard(lock);
    const std::uint64_t high = random(), low = random();
    Guid guid{static_cast<std::uint32_t>(high >> 32),
              static_cast<std::uint16_t>(high >> 16),
              static_cast<std::uint16_t>(high),
              {}};
    for (int i = 0; i < 8; ++i) guid.data4[i] = static_cast<std::uint8_t>(low >> (8 * i));
    return guid;
}

std::optional<std::u16string> program_files_folder(bool common_files) {
    Folders& f = folders();
    std::lock_guard guard(f.lock);
    return common_files ? f.common_files : f.program_files;
}

void native::set_temp_folder(std::u16string folder) {
    Folders& f = folders();
    std::lock_guard guard(f.lock);
    f.temp = std::move(folder);
}

void native::set_program_files_folders(std::optional<std::u16string> program_files,
                                       std::optional<std::u16string> common_files) {
    Folders& f = folders();
    std::lock_guard guard(f.lock);
    f.program_files = std::move(program_files);
    f.common_files = std::move(common_files);
}

} // namespace kq::platform
