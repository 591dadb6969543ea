#include "platform/heap.h"

#include <windows.h>

namespace kq::platform {

void* heap_allocate_zeroed(Heap heap, std::size_t bytes) noexcept {
    return heap == Heap::local ? static_cast<void*>(LocalAlloc(LPTR, bytes))
                               : static_cast<void*>(GlobalAlloc(GPTR, bytes));
}

void heap_free(Heap heap, void* block) noexcept {
    if (block == nullptr) return;
    if (heap == Heap::local)
        LocalFree(block);
    else
        GlobalFree(block);
}

} // namespace kq::platform
