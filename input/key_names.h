#pragma once
// Human-readable names of raw keys and key combinations in a guest layout.

#include "input/keyboard_input_data.h"
#include "module/status.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kq::input {

// The name of raw key `raw`: its fixed name (Left Shift is "Shift" when `suffix` is "+"; the
// keypad brackets take the layout's characters), else the character that the key gives alone
// (or, for a dead key, the accent it gives before Space), upper-cased for a-z; then `suffix`
// when it is not 0. nullopt when the key has no name.
std::optional<std::u16string> raw_key_name(const KeyboardInputData& record, std::uint8_t raw, char16_t suffix = 0);

// The label of a key for a picture of the keyboard: the fixed name, else the first character
// (not a space) whose first stroke is this key alone, possibly before Space; upper-cased a-z.
std::optional<std::u16string> raw_key_label(const KeyboardInputData& record, std::uint8_t raw);

// The names of the strokes of a key combination text, written into `buffer` as a sequence of
// NUL-terminated names, one per stroke (qualifiers in front: "Shift+A"). S_OK when the text
// is used up; HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) when the buffer runs out;
// HRESULT_FROM_WIN32(ERROR_NOT_FOUND) at a token that names nothing or a key without a name.
HResult key_display_name(const KeyboardInputData& record, std::u16string_view text, std::span<char16_t> buffer);

// The text that KQGetKeyboardLayout writes for a keymap image: the layout id, a tab, and its
// display name without the part in brackets.
std::u16string keyboard_layout_text(std::span<const std::uint8_t> image);

} // namespace kq::input
