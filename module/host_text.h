#pragma once
// A string handed to the host in a block of its own, NUL-terminated, which the host frees
// with the heap's release (GlobalFree for the global heap).

#include "platform/heap.h"

#include <cstring>
#include <string_view>

namespace kq {

template <typename Char>
Char* copy_characters_to_heap(platform::Heap heap, std::basic_string_view<Char> text) {
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(heap, (text.size() + 1) * sizeof(Char));
    if (!block) return nullptr;
    std::memcpy(block.data(), text.data(), text.size() * sizeof(Char));
    return static_cast<Char*>(block.release());
}

// The new block of UTF-16 text, or nullptr when the heap has no room.
inline char16_t* copy_text_to_heap(platform::Heap heap, std::u16string_view text) {
    return copy_characters_to_heap(heap, text);
}

// The same for 8-bit (UTF-8) text.
inline char* copy_text_to_heap(platform::Heap heap, std::string_view text) { return copy_characters_to_heap(heap, text); }

} // namespace kq
