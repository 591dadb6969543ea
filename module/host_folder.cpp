#include "module/host_folder.h"

#include "common/windows_path.h"
#include "platform/module_file.h"

namespace kq {

std::u16string host_folder_of(std::u16string_view module_path) {
    const std::optional<std::u16string_view> module_folder = parent_of(module_path);
    if (!module_folder) return {};
    return std::u16string(parent_of(*module_folder).value_or(std::u16string_view()));
}

std::u16string host_folder() { return host_folder_of(platform::module_file_path()); }

} // namespace kq
