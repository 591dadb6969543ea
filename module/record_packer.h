#pragma once
// Lays out a record that the module hands to the host as one block, so that the host frees
// it with a single call:
//
//   offset 0                 the fixed header; its first field, u32 cbSize, holds the
//                            header's size; pointer fields and u32 fields at given offsets
//   header_bytes             the pointer arrays, one after another in the order added,
//                            8 bytes per entry
//   after the arrays         every string as NUL-terminated UTF-16, in the order added
//
// All pointers point into the block, which is zero-filled, so absent strings are null
// pointers and unset counts 0. Text given as a string id is replaced by the id's text
// (at most kMaxLoadedTextChars characters) when it is added, so the host never sees an id.
// Total size: header + 8 per array entry + 2 × (length + 1) per present string.

#include "module/text_ref.h"
#include "platform/heap.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kq {

inline constexpr std::size_t kMaxLoadedTextChars = 2048;

class RecordPacker {
public:
    explicit RecordPacker(std::size_t header_bytes);

    void set_u32(std::size_t offset, std::uint32_t value);
    // A string whose address goes to the pointer field at `pointer_offset`.
    void add_text(std::size_t pointer_offset, TextRef text);
    // An array of string pointers whose address goes to the pointer field at
    // `pointer_offset`; an empty list leaves that field null.
    void add_text_array(std::size_t pointer_offset, std::span<const TextRef> texts);

    std::size_t packed_bytes() const;
    // The packed record in a new block of `heap`; an empty block when the heap has no room.
    platform::HeapBlock pack(platform::Heap heap) const;

private:
    struct Array {
        std::size_t pointer_offset;
        std::size_t entry_count;
    };
    struct Text {
        std::optional<std::size_t> array; // index into arrays_, or none for a header field
        std::size_t slot;                 // header offset, or entry index in the array
        std::u16string value;
    };
    struct Word {
        std::size_t offset;
        std::uint32_t value;
    };

    void check_header_field(std::size_t offset, std::size_t width) const;

    std::size_t header_bytes_;
    std::vector<Word> words_;
    std::vector<Array> arrays_;
    std::vector<Text> texts_;
};

// The text that `text` stands for: its own text, the loaded string of its id, or nullopt
// when it is absent.
std::optional<std::u16string> resolve_text(TextRef text);

} // namespace kq
