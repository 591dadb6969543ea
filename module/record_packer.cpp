#include "module/record_packer.h"

#include "platform/string_table.h"

#include <cstring>
#include <stdexcept>

namespace kq {
namespace {

constexpr std::size_t kPointerBytes = sizeof(void*);

void write_pointer(std::byte* block, std::size_t offset, const void* target) {
    std::memcpy(block + offset, &target, kPointerBytes);
}

} // namespace

std::optional<std::u16string> resolve_text(TextRef text) {
    switch (text.kind()) {
    case TextRef::Kind::text: return std::u16string(text.text());
    case TextRef::Kind::string_id: return platform::load_string(text.string_id(), kMaxLoadedTextChars);
    case TextRef::Kind::absent: break;
    }
    return std::nullopt;
}

RecordPacker::RecordPacker(std::size_t header_bytes) : header_bytes_(header_bytes) {
    // The arrays that follow the header hold pointers, so the header keeps them aligned.
    if (header_bytes < sizeof(std::uint32_t) || header_bytes % kPointerBytes != 0)
        throw std::invalid_argument("record header size");
}

void RecordPacker::check_header_field(std::size_t offset, std::size_t width) const {
    // cbSize occupies the first four bytes; every other field lies inside the header.
    if (offset < sizeof(std::uint32_t) || offset > header_bytes_ - width)
        throw std::out_of_range("record field outside the header");
}

void RecordPacker::set_u32(std::size_t offset, std::uint32_t value) {
    check_header_field(offset, sizeof value);
    words_.push_back({offset, value});
}

void RecordPacker::add_text(std::size_t pointer_offset, TextRef text) {
    check_header_field(pointer_offset, kPointerBytes);
    if (auto value = resolve_text(text)) texts_.push_back({std::nullopt, pointer_offset, std::move(*value)});
}

void RecordPacker::add_text_array(std::size_t pointer_offset, std::span<const TextRef> texts) {
    check_header_field(pointer_offset, kPointerBytes);
    if (texts.empty()) return;
    const std::size_t array = arrays_.size();
    arrays_.push_back({pointer_offset, texts.size()});
    for (std::size_t entry = 0; entry < texts.size(); ++entry)
        if (auto value = resolve_text(texts[entry])) texts_.push_back({array, entry, std::move(*value)});
}

std::size_t RecordPacker::packed_bytes() const {
    std::size_t bytes = header_bytes_;
    for (const Array& array : arrays_) bytes += array.entry_count * kPointerBytes;
    for (const Text& text : texts_) bytes += (text.value.size() + 1) * sizeof(char16_t);
    return bytes;
}

platform::HeapBlock RecordPacker::pack(platform::Heap heap) const {
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(heap, packed_bytes());
    if (!block) return block;
    std::byte* base = block.data();

    const auto cb_size = static_cast<std::uint32_t>(header_bytes_);
    std::memcpy(base, &cb_size, sizeof cb_size);
    for (const Word& word : words_) std::memcpy(base + word.offset, &word.value, sizeof word.value);

    std::vector<std::size_t> array_offsets;
    array_offsets.reserve(arrays_.size());
    std::size_t cursor = header_bytes_;
    for (const Array& array : arrays_) {
        array_offsets.push_back(cursor);
        write_pointer(base, array.pointer_offset, base + cursor);
        cursor += array.entry_count * kPointerBytes;
    }
    for (const Text& text : texts_) {
        const std::size_t pointer_offset =
            text.array ? array_offsets[*text.array] + text.slot * kPointerBytes : text.slot;
        write_pointer(base, pointer_offset, base + cursor);
        std::memcpy(base + cursor, text.value.data(), text.value.size() * sizeof(char16_t));
        cursor += (text.value.size() + 1) * sizeof(char16_t); // the NUL is already zero
    }
    return block;
}

} // namespace kq
