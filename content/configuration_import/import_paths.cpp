#include "content/configuration_import/import_paths.h"

#include "common/windows_path.h"

namespace kq::content {

std::u16string resolved_path(std::u16string_view path, std::u16string_view folder) {
    if (folder.empty() || is_rooted_path(path)) return std::u16string(path);
    return joined_path(folder, path);
}

} // namespace kq::content
