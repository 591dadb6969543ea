#include "module/record_packer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace kq {
namespace {

using platform::Heap;

// Offsets of a record shaped like the option record: a 136-byte header with text pointers,
// u32 fields and three pointer arrays.
constexpr std::size_t kHeader = 136;
constexpr std::size_t kName = 8, kLabel = 16, kDescription = 24, kGroup = 32, kType = 48,
                      kValues = 56, kLabels = 64, kDescriptions = 72, kCount = 80,
                      kSecondTexts = 104, kCurrent = 120, kDefault = 128;

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

struct PackedRecord {
    platform::HeapBlock block;
    std::size_t bytes;
    const std::byte* base() const { return block.data(); }
    bool holds(const std::byte* pointer) const {
        return pointer >= base() && pointer < base() + bytes;
    }
};

PackedRecord pack_option_like(Heap heap) {
    RecordPacker packer(kHeader);
    packer.set_u32(kType, 2);
    packer.set_u32(kCount, 3);
    packer.add_text(kName, u"WindowsMIDIIn");
    packer.add_text(kLabel, TextRef::from_string_id(324));
    packer.add_text(kDescription, u"");
    packer.add_text(kGroup, TextRef());
    const std::array<TextRef, 3> values{u"none", u"default", u"Synth \u00e9"};
    const std::array<TextRef, 3> labels{TextRef::from_string_id(328),
                                        TextRef::from_string_id(329), u"Synth \u00e9"};
    const std::array<TextRef, 3> descriptions{u"d1", TextRef(), u"d3"};
    packer.add_text_array(kValues, values);
    packer.add_text_array(kLabels, labels);
    packer.add_text_array(kDescriptions, descriptions);
    packer.add_text_array(kSecondTexts, {});
    packer.add_text(kCurrent, u"none");
    packer.add_text(kDefault, u"none");
    const std::size_t bytes = packer.packed_bytes();
    return {packer.pack(heap), bytes};
}

TEST(RecordPacker, SizeIsHeaderPlusArrayEntriesPlusPresentStrings) {
    const PackedRecord record = pack_option_like(Heap::local);
    ASSERT_TRUE(record.block);
    const std::size_t strings =
        string_bytes(u"WindowsMIDIIn") + string_bytes(u"Windows MIDI Input") + string_bytes(u"") +
        string_bytes(u"none") + string_bytes(u"default") + string_bytes(u"Synth \u00e9") +
        string_bytes(u"None") + string_bytes(u"Default") + string_bytes(u"Synth \u00e9") +
        string_bytes(u"d1") + string_bytes(u"d3") + string_bytes(u"none") + string_bytes(u"none");
    EXPECT_EQ(record.bytes, kHeader + 9 * 8 + strings);
}

TEST(RecordPacker, HeaderCarriesSizeFieldsAndZeroForAllElse) {
    for (const Heap heap : {Heap::local, Heap::global}) {
        const PackedRecord record = pack_option_like(heap);
        ASSERT_TRUE(record.block);
        EXPECT_EQ(u32_at(record.base(), 0), kHeader);
        EXPECT_EQ(u32_at(record.base(), 4), 0u) << "padding after cbSize";
        EXPECT_EQ(u32_at(record.base(), kType), 2u);
        EXPECT_EQ(u32_at(record.base(), kType + 4), 0u) << "flags were never set";
        EXPECT_EQ(u32_at(record.base(), kCount), 3u);
        EXPECT_EQ(pointer_at(record.base(), kGroup), nullptr) << "absent text";
        EXPECT_EQ(pointer_at(record.base(), kSecondTexts), nullptr) << "empty array";
        for (std::size_t offset : {88u, 96u, 112u})
            EXPECT_EQ(pointer_at(record.base(), offset), nullptr) << "untouched field " << offset;
    }
}

TEST(RecordPacker, ArraysFollowTheHeaderAndEveryPointerStaysInTheBlock) {
    const PackedRecord record = pack_option_like(Heap::global);
    ASSERT_TRUE(record.block);
    const std::byte* base = record.base();
    EXPECT_EQ(pointer_at(base, kValues), base + kHeader);
    EXPECT_EQ(pointer_at(base, kLabels), base + kHeader + 3 * 8);
    EXPECT_EQ(pointer_at(base, kDescriptions), base + kHeader + 6 * 8);

    std::vector<const std::byte*> strings;
    for (std::size_t offset : {kName, kLabel, kDescription, kCurrent, kDefault})
        strings.push_back(pointer_at(base, offset));
    for (std::size_t entry = 0; entry < 9; ++entry)
        if (const std::byte* text = pointer_at(base, kHeader + entry * 8)) strings.push_back(text);
    EXPECT_EQ(strings.size(), 13u);
    for (const std::byte* text : strings) {
        ASSERT_TRUE(record.holds(text));
        EXPECT_GE(text, base + kHeader + 9 * 8) << "strings come after the arrays";
        EXPECT_LE(text + string_bytes(text_at(text)), base + record.bytes);
    }
    EXPECT_EQ(pointer_at(base, kHeader + 7 * 8), nullptr) << "absent array entry";
}

TEST(RecordPacker, StringsAppearInTheOrderAddedWithIdsReplaced) {
    const PackedRecord record = pack_option_like(Heap::local);
    ASSERT_TRUE(record.block);
    const std::byte* base = record.base();
    const struct {
        const std::byte* pointer;
        std::u16string_view text;
    } expected[] = {
        {pointer_at(base, kName), u"WindowsMIDIIn"},
        {pointer_at(base, kLabel), u"Windows MIDI Input"},  // string id 324
        {pointer_at(base, kDescription), u""},
        {pointer_at(base, kHeader + 0 * 8), u"none"},
        {pointer_at(base, kHeader + 1 * 8), u"default"},
        {pointer_at(base, kHeader + 2 * 8), u"Synth \u00e9"},
        {pointer_at(base, kHeader + 3 * 8), u"None"},     // 328
        {pointer_at(base, kHeader + 4 * 8), u"Default"},  // 329
        {pointer_at(base, kHeader + 5 * 8), u"Synth \u00e9"},
        {pointer_at(base, kHeader + 6 * 8), u"d1"},
        {pointer_at(base, kHeader + 8 * 8), u"d3"},
        {pointer_at(base, kCurrent), u"none"},
        {pointer_at(base, kDefault), u"none"},
    };
    const std::byte* next = base + kHeader + 9 * 8;
    for (const auto& row : expected) {
        EXPECT_EQ(row.pointer, next) << "string " << std::string(row.text.begin(), row.text.end());
        EXPECT_EQ(text_at(row.pointer), row.text);
        next = row.pointer + string_bytes(row.text);
    }
    EXPECT_EQ(next, base + record.bytes) << "the last string ends the block";
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
