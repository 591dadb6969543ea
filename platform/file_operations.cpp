#include "platform/file_operations.h"

#include "platform/files.h"

#include <string>
#include <vector>

namespace kq::platform {

SystemError create_folder_tree(std::u16string_view path) {
    while (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
    // Walk up to the deepest level that exists, then create the ones below it in order.
    std::vector<std::u16string_view> missing;
    for (std::u16string_view level = path; !level.empty() && !file_attributes(level);) {
        missing.push_back(level);
        const std::size_t parent = level.rfind(u'\\');
        level = parent == std::u16string_view::npos ? std::u16string_view() : level.substr(0, parent);
    }
    for (auto level = missing.rbegin(); level != missing.rend(); ++level) {
        const SystemError error = create_folder(*level);
        if (error != 0 && error != system_error::already_exists) return error;
    }
    return 0;
}

bool delete_file_robustly(std::u16string_view path) {
    const SystemError error = delete_file(path);
    if (error == 0 || error == system_error::file_not_found || error == system_error::path_not_found) return true;
    return shell_delete(path);
}

bool file_exists(std::u16string_view path) {
    const std::optional<std::uint32_t> attributes = file_attributes(path);
    return attributes && (*attributes & kAttributeDirectory) == 0;
}

} // namespace kq::platform
