#include "platform/module_file.h"

#include <windows.h>

#include <atomic>

namespace kq::platform {
namespace {

std::atomic<HMODULE> g_module_instance{nullptr};

HMODULE module_holding_this_code() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&module_holding_this_code), &module);
    return module;
}

} // namespace

void set_module_instance(void* instance) noexcept { g_module_instance.store(static_cast<HMODULE>(instance)); }

void* module_instance() noexcept {
    HMODULE instance = g_module_instance.load();
    return instance != nullptr ? instance : module_holding_this_code();
}

std::u16string module_file_path() {
    wchar_t path[kMaxPathChars];
    const DWORD length =
        GetModuleFileNameW(static_cast<HMODULE>(module_instance()), path, static_cast<DWORD>(kMaxPathChars));
    // A path that fills the buffer was cut; a cut path is no path.
    if (length == 0 || length >= kMaxPathChars) return {};
    return std::u16string(reinterpret_cast<const char16_t*>(path), length);
}

} // namespace kq::platform
