#include "content/drive_paths.h"

#include "platform/files.h"
#include "platform/volumes.h"

namespace kq::content {
namespace {

constexpr bool is_letter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

} // namespace

bool is_device_path(std::u16string_view path) {
    return path.size() >= 3 && path[0] == u'\\' && path[1] == u'\\' && (path[2] == u'?' || path[2] == u'.');
}

bool is_drive_root(std::u16string_view path) {
    if (path.size() < 2 || path.size() > 3 || !is_letter(path[0]) || path[1] != u':') return false;
    return path.size() == 2 || path[2] == u'\\';
}

bool is_full_drive_root(std::u16string_view path) { return path.size() == 3 && is_drive_root(path); }

std::optional<std::uint32_t> path_attributes(std::u16string_view path) {
    if (path.empty()) return std::nullopt;
    // A drive root is asked with the system's dialogs suppressed: an empty removable drive
    // would otherwise ask the user for a disk.
    if (is_full_drive_root(path)) return platform::drive_root_attributes(path);
    return platform::file_attributes(path);
}

} // namespace kq::content
