#pragma once
// Text crossing the module's boundary, the one place where exports turn the host's strings into
// the core's views and hand results back: the host's wide strings (wchar_t on Windows, char16_t
// in the native build; both UTF-16) as views; results copied into a caller's buffer, whole or
// cut to fit; results handed over in a heap block of their own through an out-pointer.

#include "kq_amiga.h"
#include "module/status.h"
#include "platform/heap.h"
#include "platform/system_error.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kq {

static_assert(sizeof(kq_char) == sizeof(char16_t));

// A borrowed NUL-terminated string; null reads as empty.
inline std::u16string_view text_view(const kq_char* text) {
    if (text == nullptr) return {};
    return std::u16string_view(reinterpret_cast<const char16_t*>(text));
}

// The text in a caller's buffer of `chars` characters: up to its NUL, or all of it.
inline std::u16string_view text_view(const kq_char* buffer, std::uint32_t chars) {
    const std::u16string_view all(reinterpret_cast<const char16_t*>(buffer), chars);
    return all.substr(0, all.find(u'\0'));
}

// Copies as much of `text` as fits into a buffer of `chars` characters (at least 1) and ends it
// with a NUL in the last slot used: a short buffer gets a truncated text.
inline void copy_truncated(std::u16string_view text, kq_char* buffer, std::uint32_t chars) {
    const std::size_t count = std::min<std::size_t>(text.size(), chars - 1);
    std::copy_n(text.begin(), count, reinterpret_cast<char16_t*>(buffer));
    buffer[count] = 0;
}

// Copies `text` and its NUL into a buffer of `chars` characters; when they do not fit, the
// buffer is left as it is and the status says so (ERROR_BUFFER_OVERFLOW).
inline HResult copy_whole(std::u16string_view text, kq_char* buffer, std::uint32_t chars) {
    if (text.size() >= chars) return status::from_win32(platform::system_error::buffer_overflow);
    std::ranges::copy(text, reinterpret_cast<char16_t*>(buffer));
    buffer[text.size()] = 0;
    return status::ok;
}

// A new NUL-terminated copy of `text` in a block of `heap`, or nullptr when the heap has no room.
template <typename Char>
Char* copy_text_to_heap(platform::Heap heap, std::basic_string_view<Char> text) {
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(heap, (text.size() + 1) * sizeof(Char));
    if (!block) return nullptr;
    std::memcpy(block.data(), text.data(), text.size() * sizeof(Char));
    return static_cast<Char*>(block.release());
}

// Hands `text` to the host in a new global-heap block (freed with GlobalFree or the export's
// KQFree*): *out receives it, or nullptr with out_of_memory when the heap has no room.
inline HResult hand_to_host(std::u16string_view text, kq_char** out) {
    *out = reinterpret_cast<kq_char*>(copy_text_to_heap(platform::Heap::global, text));
    return *out != nullptr ? status::ok : status::out_of_memory;
}
// The same for UTF-8 text.
inline HResult hand_to_host(std::string_view text, char** out) {
    *out = copy_text_to_heap(platform::Heap::global, text);
    return *out != nullptr ? status::ok : status::out_of_memory;
}

// Hands a packed record to the host: *out receives the block, or stays as it is with
// out_of_memory when the record could not be allocated.
template <class Record>
HResult hand_to_host(platform::HeapBlock record, Record** out) {
    if (!record) return status::out_of_memory;
    *out = static_cast<Record*>(record.release());
    return status::ok;
}

} // namespace kq
