#include "platform/named_mutex.h"

#include <windows.h>

#include <string>

namespace kq::platform {

std::optional<NamedMutex> NamedMutex::open(std::u16string_view name) noexcept {
    try {
        const std::u16string terminated(name);
        HANDLE handle = CreateMutexW(nullptr, FALSE, reinterpret_cast<const wchar_t*>(terminated.c_str()));
        if (handle == nullptr) return std::nullopt;
        return NamedMutex(handle);
    } catch (...) {
        return std::nullopt;
    }
}

NamedMutex::~NamedMutex() {
    if (handle_ != nullptr) CloseHandle(handle_);
}

bool NamedMutex::acquire() noexcept {
    const DWORD result = WaitForSingleObject(handle_, INFINITE);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

void NamedMutex::release() noexcept { ReleaseMutex(handle_); }

} // namespace kq::platform
