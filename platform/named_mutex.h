#pragma once
// A named mutex shared by every process of the machine (on Windows; the native build keeps it
// inside the process). Recursive for the thread that owns it, as Windows mutexes are.

#include <optional>
#include <string_view>
#include <utility>

namespace kq::platform {

class NamedMutex {
public:
    // Creates the mutex, or opens it when it exists, without taking ownership; nullopt when
    // neither is possible.
    static std::optional<NamedMutex> open(std::u16string_view name) noexcept;
    NamedMutex(NamedMutex&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    NamedMutex& operator=(NamedMutex&&) = delete;
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;
    ~NamedMutex(); // closes the handle

    // Waits for ownership without a time limit; false when the wait fails. A mutex abandoned
    // by a thread that ended while owning it counts as acquired.
    bool acquire() noexcept;
    void release() noexcept;

private:
    explicit NamedMutex(void* handle) noexcept : handle_(handle) {}
    void* handle_ = nullptr;
};

} // namespace kq::platform
