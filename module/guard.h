#pragma once
// The one place where exceptions become statuses: every export runs its body through guard()
// so that no exception crosses the module's boundary.

#include "module/status.h"

#include <new>
#include <utility>

namespace kq {

template <class Body>
HResult guard(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        return status::out_of_memory;
    } catch (...) {
        return status::unexpected;  // a fault of the module, not of the host's input
    }
}

} // namespace kq
