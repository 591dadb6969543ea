#include "module/record_packer.h"

#include "string_ids.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace kq {
namespace {

using platform::Heap;

// Offsets of a record shaped like the option record: a 136-byte header with text pointers,
// u32 fields and three pointer arrays.
constexpr std::size_t kHeader = 136;
constexpr std::size_t kName = 8, kLabel = 16, kDescription = 24, kGroup = 32, kType = 48, kValues = 56, kLabels = 64,
                      kDescriptions = 72, kCount = 80, kSecondTexts = 104, kCurrent = 120, kDefault = 128;

std::uint32_t u32_at(const std::byte* block, std::size_t offset) {
    std::uint32_t value;
    std::memcpy(&value, block + offset, sizeof value);
    return value;
}

const std::byte* pointer_at(const std::byte* block, std::size_t offset) {
    const std::byte* value;
    std::memcpy(&value, block + offset, sizeof value);
    return value;
}

std::u16string text_at(const std::byte* pointer) {
    std::u16string text;
    for (char16_t unit;; pointer += 2) {
        std::memcpy(&unit, pointer, 2);
        if (unit == 0) return text;
        text += unit;
    }
}

std::size_t string_bytes(std::u16string_view text) { return (text.size() + 1) * 2; }

// Packs a record shaped like an option of three choices, with three texts of the string table.
platform::HeapBlock pack_option_like(Heap heap, std::size_t& bytes) {
    RecordPacker packer(kHeader);
    packer.set_u32(kType, 2);
    packer.set_u32(kCount, 3);
    packer.add_text(kName, u"WindowsMIDIIn");
    packer.add_text(kLabel, TextRef::from_string_id(strings::windows_midi_input_label));
    packer.add_text(kDescription, u"");
    packer.add_text(kGroup, TextRef());
    const std::array<TextRef, 3> values{u"none", u"default", u"Synth \u00e9"};
    const std::array<TextRef, 3> labels{TextRef::from_string_id(strings::no_midi_device),
                                        TextRef::from_string_id(strings::default_device), u"Synth \u00e9"};
    const std::array<TextRef, 3> descriptions{u"d1", TextRef(), u"d3"};
    packer.add_text_array(kValues, values);
    packer.add_text_array(kLabels, labels);
    packer.add_text_array(kDescriptions, descriptions);
    packer.add_text_array(kSecondTexts, {});
    packer.add_text(kCurrent, u"none");
    packer.add_text(kDefault, u"none");
    bytes = packer.packed_bytes();
    return packer.pack(heap);
}

// Header, then the arrays in the order added, then every present string in the order added,
// back to back: each pointer must point exactly where the previous string ended, and the last
// string must end the block, which also pins the block's size.
TEST(RecordPacker, LaysOutHeaderArraysThenStringsInTheOrderAdded) {
    std::size_t bytes = 0;
    const platform::HeapBlock block = pack_option_like(Heap::local, bytes);
    ASSERT_TRUE(block);
    const std::byte* base = block.data();
    EXPECT_EQ(pointer_at(base, kValues), base + kHeader);
    EXPECT_EQ(pointer_at(base, kLabels), base + kHeader + 3 * 8);
    EXPECT_EQ(pointer_at(base, kDescriptions), base + kHeader + 6 * 8);
    EXPECT_EQ(pointer_at(base, kHeader + 7 * 8), nullptr) << "absent array entry";

    const struct {
        std::size_t pointer_offset;
        std::u16string_view text;
    } expected[] = {
        {kName, u"WindowsMIDIIn"},
        {kLabel, u"Windows MIDI Input"}, // the id replaced by its text
        {kDescription, u""},
        {kHeader + 0 * 8, u"none"},
        {kHeader + 1 * 8, u"default"},
        {kHeader + 2 * 8, u"Synth \u00e9"},
        {kHeader + 3 * 8, u"None"},
        {kHeader + 4 * 8, u"Default"},
        {kHeader + 5 * 8, u"Synth \u00e9"},
        {kHeader + 6 * 8, u"d1"},
        {kHeader + 8 * 8, u"d3"},
        {kCurrent, u"none"},
        {kDefault, u"none"},
    };
    const std::byte* next = base + kHeader + 9 * 8;
    for (const auto& row : expected) {
        const std::byte* pointer = pointer_at(base, row.pointer_offset);
        EXPECT_EQ(pointer, next) << "string at field " << row.pointer_offset;
        if (pointer != next) return; // reading on would leave the block
        EXPECT_EQ(text_at(pointer), row.text);
        next = pointer + string_bytes(row.text);
    }
    EXPECT_EQ(next, base + bytes) << "the last string ends the block";
}

TEST(RecordPacker, HeaderHoldsItsSizeAndFieldsAndZeroElsewhereOnBothHeaps) {
    for (const Heap heap : {Heap::local, Heap::global}) {
        std::size_t bytes = 0;
        const platform::HeapBlock block = pack_option_like(heap, bytes);
        ASSERT_TRUE(block);
        const std::byte* base = block.data();
        EXPECT_EQ(u32_at(base, 0), kHeader);
        EXPECT_EQ(u32_at(base, 4), 0u) << "padding after cbSize";
        EXPECT_EQ(u32_at(base, kType), 2u);
        EXPECT_EQ(u32_at(base, kType + 4), 0u) << "flags were never set";
        EXPECT_EQ(u32_at(base, kCount), 3u);
        for (std::size_t offset : {kGroup, kSecondTexts, std::size_t{88}, std::size_t{96}, std::size_t{112}})
            EXPECT_EQ(pointer_at(base, offset), nullptr) << "field " << offset;
    }
}

TEST(RecordPacker, UnknownStringIdBecomesAnEmptyString) {
    RecordPacker packer(24);
    packer.add_text(8, TextRef::from_string_id(1));
    const platform::HeapBlock block = packer.pack(Heap::local);
    ASSERT_TRUE(block);
    EXPECT_EQ(packer.packed_bytes(), 24u + 2u);
    ASSERT_NE(pointer_at(block.data(), 8), nullptr);
    EXPECT_EQ(text_at(pointer_at(block.data(), 8)), u"");
}

TEST(RecordPacker, RejectsLayoutsThatCannotHoldTheirFields) {
    EXPECT_THROW(RecordPacker(12), std::invalid_argument) << "arrays would be misaligned";
    EXPECT_THROW(RecordPacker(0), std::invalid_argument);
    RecordPacker packer(24);
    EXPECT_THROW(packer.add_text(0, u"x"), std::out_of_range) << "cbSize is not a pointer";
    EXPECT_THROW(packer.add_text(20, u"x"), std::out_of_range) << "runs past the header";
    EXPECT_THROW(packer.set_u32(21, 1), std::out_of_range);
    EXPECT_NO_THROW(packer.set_u32(20, 1));
}

} // namespace
} // namespace kq
