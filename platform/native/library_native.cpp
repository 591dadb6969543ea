#include "platform/library.h"
#include "platform/native/native_controls.h"

#include <dlfcn.h>

namespace kq::platform {

Library Library::load(std::u16string_view path) noexcept {
    try {
        const std::string posix = native::to_posix_path(path);
        if (posix.empty()) return Library();
        return Library(dlopen(posix.c_str(), RTLD_NOW | RTLD_LOCAL));
    } catch (...) {
        return Library();
    }
}

Library::Procedure Library::find(const char* name) const noexcept {
    if (handle_ == nullptr) return nullptr;
    return reinterpret_cast<Procedure>(dlsym(handle_, name));
}

void Library::unload() noexcept {
    if (handle_ != nullptr) dlclose(std::exchange(handle_, nullptr));
}

} // namespace kq::platform
