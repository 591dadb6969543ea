#include "content/drive_paths.h"

#include "common/windows_path.h"
#include "platform/files.h"
#include "platform/volumes.h"

namespace kq::content {

std::optional<std::uint32_t> path_attributes(std::u16string_view path) {
    if (path.empty()) return std::nullopt;
    // A drive root is asked with the system's dialogs suppressed: an empty removable drive
    // would otherwise ask the user for a disk.
    if (is_full_drive_root(path)) return platform::drive_root_attributes(path);
    return platform::file_attributes(path);
}

} // namespace kq::content
