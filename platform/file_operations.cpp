#include "platform/file_operations.h"

#include "common/integer_text.h"
#include "common/windows_path.h"
#include "platform/files.h"

#include <string>
#include <vector>

namespace kq::platform {

SystemError create_folder_tree(std::u16string_view path) {
    // Walk up to the deepest level that exists, then create the ones below it in order.
    std::vector<std::u16string_view> missing;
    for (std::u16string_view level = without_trailing_separators(path); !level.empty() && !file_attributes(level);) {
        missing.push_back(level);
        level = parent_of(level).value_or(std::u16string_view());
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

std::optional<std::u16string> first_free_file_name(std::u16string_view folder, std::u16string_view name, int most) {
    const FileNameParts parts = file_name_parts(name);
    for (int n = 1; n <= most; ++n) {
        std::u16string candidate(parts.stem);
        if (n >= 2) {
            candidate += u'(';
            candidate += decimal_text(n);
            candidate += u')';
        }
        if (parts.extension) {
            candidate += u'.';
            candidate += *parts.extension;
        }
        std::u16string path(folder);
        path += candidate;
        if (!file_attributes(path)) return candidate;
    }
    return std::nullopt;
}

} // namespace kq::platform
