#pragma once
// Raw key strings: the texts of guest key events ("KEY_RAW_DOWN 0x60 KEY_RAW_UP 0x60 ") that
// make the guest type a text or press a key combination.
//
// Typing: each character is looked up in the layout's character table (a high surrogate and the
// unit after it are one character). One it lacks falls back to the plain letter of a
// mathematical italic one, then to its nearest ISO 8859-1 character, then to "?" (skipped when
// even that is missing). Shift, Alt and Ctrl are pressed and released only where a stroke needs
// a change, so that "AB" holds Shift across both letters; line feed and tab give Return and Tab;
// other control characters are left out.
//
// Combinations: the tokens of "CONTROL+LEFT AMIGA+RIGHT AMIGA" are pressed (or released) in
// order, each stroke's qualifiers before its key; a token that names nothing ends the list.
//
// The modes are those of KQGetStringRawKeys: bit 0 presses of a combination, bit 1 (without
// bit 0) its releases, neither typing. A string is counted before it is written, so that it
// takes one block of its exact size: typing a long text makes tens of UTF-16 units a character.

#include "input/keyboard_input_data.h"
#include "platform/heap.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kq::input {

// The raw key string's length in UTF-16 units, without its NUL.
std::size_t raw_key_string_length(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode);

// The raw key string in a new zero-filled block of `heap` of its exact size with the NUL; an
// empty block when the heap has no room.
platform::HeapBlock raw_key_string_block(platform::Heap heap, const KeyboardInputData& record, std::u16string_view text,
                                         std::uint32_t mode);

} // namespace kq::input
