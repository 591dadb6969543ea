#pragma once
// A string handed to the host in a block of its own, NUL-terminated, which the host frees
// with the heap's release (GlobalFree for the global heap).

#include "platform/heap.h"

#include <cstring>
#include <string_view>

namespace kq {

// The new block, or nullptr when the heap has no room.
inline char16_t* copy_text_to_heap(platform::Heap heap, std::u16string_view text) {
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(heap, (text.size() + 1) * sizeof(char16_t));
    if (!block) return nullptr;
    std::memcpy(block.data(), text.data(), text.size() * sizeof(char16_t));
    return static_cast<char16_t*>(block.release());
}

} // namespace kq
