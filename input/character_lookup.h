#pragma once
// Finding a character in the character table of a record's layout: the first entry for it,
// as the table's order decides. Every keystroke and every typed character asks, so the
// characters below U+0100 (nearly all that are typed) are found through an index of each
// layout's table, made once; the others are searched for.

#include "input/keyboard_input_data.h"

namespace kq::input {

// The first entry of `character` in the record's character table; null when it has none.
const CharacterEntry* find_character(const KeyboardInputData& record, char16_t character);

} // namespace kq::input
