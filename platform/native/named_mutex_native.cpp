#include "platform/named_mutex.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace kq::platform {
namespace {

// The native build has no machine-wide objects: a name stands for one mutex per process,
// which lives as long as the process.
std::recursive_mutex* mutex_named(std::u16string_view name) {
    static std::mutex lock;
    static std::map<std::u16string, std::unique_ptr<std::recursive_mutex>, std::less<>> mutexes;
    std::lock_guard guard(lock);
    auto found = mutexes.find(name);
    if (found == mutexes.end())
        found = mutexes.emplace(std::u16string(name), std::make_unique<std::recursive_mutex>()).first;
    return found->second.get();
}

} // namespace

std::optional<NamedMutex> NamedMutex::open(std::u16string_view name) noexcept {
    try {
        return NamedMutex(mutex_named(name));
    } catch (...) {
        return std::nullopt;
    }
}

NamedMutex::~NamedMutex() = default;

bool NamedMutex::acquire() noexcept {
    try {
        static_cast<std::recursive_mutex*>(handle_)->lock();
        return true;
    } catch (...) {
        return false;
    }
}

void NamedMutex::release() noexcept { static_cast<std::recursive_mutex*>(handle_)->unlock(); }

} // namespace kq::platform
