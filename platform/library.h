#pragma once
// Loading a library at run time and resolving its functions by name.

#include <string_view>
#include <utility>

namespace kq::platform {

class Library {
public:
    // The generic function type that a resolved name comes back as; callers cast it to the
    // function's real type.
    using Procedure = void (*)();

    Library() = default;
    // Loads the library at `path`; the result is not loaded when that fails.
    static Library load(std::u16string_view path) noexcept;
    Library(Library&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Library& operator=(Library&& other) noexcept {
        if (this != &other) {
            unload();
            handle_ = std::exchange(other.handle_, nullptr);
        }
        return *this;
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { unload(); }

    bool is_loaded() const noexcept { return handle_ != nullptr; }
    // The function exported under `name`, or nullptr.
    Procedure find(const char* name) const noexcept;

private:
    explicit Library(void* handle) noexcept : handle_(handle) {}
    void unload() noexcept;
    void* handle_ = nullptr;
};

} // namespace kq::platform
