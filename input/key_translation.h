#pragma once
// Translation of host key messages into guest raw key events.
//
// Host key word (low 32 bits used): bits 0-7 virtual key; 16-17 non-zero for an extended key;
// 18-19 character mode (1 translate the character word's character, 3 record it as deferred,
// 0 or 2 no character); bit 20 key down (else up); bits 24 and 27 consulted by the preprocessing
// only; bit 28 fetch the next queued event (all else ignored).
//
// A key that the key table knows is sent by position. Any other key is sent by the character
// the host's layout produced: its strokes come from the guest layout's character table, and the
// guest's Shift, Alt and Ctrl are pressed or released around them as each stroke needs, then
// put back when the host key is released. Events go through a queue of 32 words: the first comes
// back at once, the rest by fetching (bit 28 of the answer says more are pending).

#include "input/keyboard_input_data.h"
#include "module/status.h"

#include <cstdint>

namespace kq::input {

namespace host_key {
inline constexpr std::uint32_t extended_bits = 0x30000, key_down = 1u << 20, fetch = 1u << 28;
inline constexpr std::uint32_t character_mode_shift = 18;
inline constexpr std::uint32_t translate_character = 1, defer_character = 3;
} // namespace host_key

// One host key message, or a fetch: the answer (an event word) goes to `answer` when it is not
// null. S_OK, or E_FAIL when a fetch finds the queue empty (nothing written). No allocation.
HResult process_keyboard_input(KeyboardInputData& record, std::uint64_t key_word, std::uint64_t character_word,
                               std::uint32_t* answer) noexcept;

// Whether the module wants the character of a key about to go down: the answer is the key word
// with bit 31 set, and bit 30 set when the character is wanted (bits 27-29 cleared unless a
// character is pending). S_OK.
HResult preprocess_keyboard_input(KeyboardInputData& record, std::uint64_t key_word, std::uint32_t* answer) noexcept;

} // namespace kq::input
