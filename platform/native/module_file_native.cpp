#include "platform/module_file.h"
#include "platform/native/native_controls.h"

#include <mutex>

namespace kq::platform {
namespace {

std::mutex g_lock;
void* g_instance = nullptr;
std::u16string g_module_file_path;

} // namespace

void set_module_instance(void* instance) noexcept {
    std::lock_guard lock(g_lock);
    g_instance = instance;
}

void* module_instance() noexcept {
    std::lock_guard lock(g_lock);
    return g_instance;
}

std::u16string module_file_path() {
    std::lock_guard lock(g_lock);
    return g_module_file_path.size() < kMaxPathChars ? g_module_file_path : std::u16string();
}

void native::set_module_file_path(std::u16string path) {
    std::lock_guard lock(g_lock);
    g_module_file_path = std::move(path);
}

} // namespace kq::platform
