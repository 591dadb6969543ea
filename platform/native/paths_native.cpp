#include "platform/native/native_controls.h"

#include "common/utf.h"

#include <algorithm>

namespace kq::platform::native {

std::string to_posix_path(std::u16string_view windows_path) {
    std::string path = utf16_to_utf8(windows_path).value_or(std::string());
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

} // namespace kq::platform::native
