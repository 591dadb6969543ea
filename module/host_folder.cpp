#include "module/host_folder.h"

#include "platform/module_file.h"

namespace kq {

std::u16string host_folder_of(std::u16string_view module_path) {
    const std::size_t last = module_path.rfind(u'\\');
    if (last == std::u16string_view::npos || last == 0) return {};
    const std::size_t second = module_path.rfind(u'\\', last - 1);
    if (second == std::u16string_view::npos) return {};
    return std::u16string(module_path.substr(0, second));
}

std::u16string host_folder() { return host_folder_of(platform::module_file_path()); }

} // namespace kq
