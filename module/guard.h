#pragma once
// The one place where exceptions become statuses: every export that can allocate runs its body
// through guard() so that no exception crosses the module's boundary.
//
// The exports that run outside guard() cannot throw, and say so: KQGetPlatformName answers a
// constant; the KQFree* exports only release a block (platform::heap_free and
// free_keyboard_input_data are noexcept); the shell-window exports answer E_NOTIMPL;
// KQGetInputPortsInfo, KQGetDefaultInputPortContent, KQPreprocessKeyboardInput and
// KQProcessKeyboardInput call noexcept functions only: the two keyboard exports run for every
// key the host sees and allocate nothing, and the port exports read fixed tables; likewise the
// button lookup in front of KQGetInputButtonName's guard(). The argument checks in front of each
// guard() compare pointers and numbers only.

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
        return status::unexpected; // a fault of the module, not of the host's input
    }
}

} // namespace kq
