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

#include "input/keyboard_input_data.h"

#include <string>
#include <string_view>

namespace kq::input {

std::u16string type_text(const KeyboardInputData& record, std::u16string_view text);

enum class CombinationEvents { press, release };
std::u16string combination_keys(const KeyboardInputData& record, std::u16string_view text, CombinationEvents events);

// The keys for the modes of KQGetStringRawKeys: bit 0 presses of a combination, bit 1 (without
// bit 0) its releases, neither typing.
std::u16string raw_key_string(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode);

} // namespace kq::input
