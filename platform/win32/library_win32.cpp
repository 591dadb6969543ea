#include "platform/library.h"

#include <windows.h>

#include <string>

namespace kq::platform {

Library Library::load(std::u16string_view path) noexcept {
    try {
        const std::u16string terminated(path);
        return Library(LoadLibraryW(reinterpret_cast<const wchar_t*>(terminated.c_str())));
    } catch (...) {
        return Library();
    }
}

Library::Procedure Library::find(const char* name) const noexcept {
    if (handle_ == nullptr) return nullptr;
    return reinterpret_cast<Procedure>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void Library::unload() noexcept {
    if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(std::exchange(handle_, nullptr)));
}

} // namespace kq::platform
