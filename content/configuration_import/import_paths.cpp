#include "content/configuration_import/import_paths.h"

#include "common/path_text.h"

namespace kq::content {
namespace {

constexpr bool is_letter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

} // namespace

bool is_rooted_path(std::u16string_view path) {
    if (path.size() >= 2 && is_letter(path[0]) && path[1] == u':') return true;
    return !path.empty() && (path[0] == u'\\' || path[0] == u'/');
}

std::u16string resolved_path(std::u16string_view path, std::u16string_view folder) {
    if (folder.empty() || is_rooted_path(path)) return std::u16string(path);
    return with_trailing_backslash(folder) + std::u16string(path);
}

std::u16string_view folder_of(std::u16string_view path) {
    const std::size_t last = path.find_last_of(u"\\/");
    return last == std::u16string_view::npos ? std::u16string_view() : path.substr(0, last);
}

} // namespace kq::content
