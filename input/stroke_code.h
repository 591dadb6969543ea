#pragma once
// Raw key codes, raw key event words and stroke codes: the units of key translation.
//
// Raw key event word (32 bits): the raw key in bits 0-6, bit 28 "more events pending",
// bit 29 press, bit 30 release, bit 31 always set (0x80000000 alone: no event).
// Stroke code (32 bits): up to three 10-bit strokes, the first in bits 0-9, each holding a raw
// key (bits 0-6; 127 for no stroke) and the qualifiers it needs (Shift bit 7, Alt bit 8,
// Control bit 9).

#include <cstdint>

namespace kq::input {

namespace raw_key {
inline constexpr std::uint8_t space = 0x40, tab = 0x42, keypad_enter = 0x43, return_key = 0x44;
inline constexpr std::uint8_t keypad_open = 0x5A, keypad_close = 0x5B, help = 0x5F;
inline constexpr std::uint8_t left_shift = 0x60, right_shift = 0x61, caps_lock = 0x62, control = 0x63, left_alt = 0x64,
                              right_alt = 0x65, left_amiga = 0x66, right_amiga = 0x67;
inline constexpr std::uint8_t none = 127; // no stroke
} // namespace raw_key

namespace event {
inline constexpr std::uint32_t valid = 0x80000000u, release_bit = 0x40000000u, press_bit = 0x20000000u,
                               more_pending = 0x10000000u;
inline constexpr std::uint32_t nothing = valid;
constexpr std::uint32_t press(std::uint32_t raw) { return valid | press_bit | raw; }
constexpr std::uint32_t release(std::uint32_t raw) { return valid | release_bit | raw; }
} // namespace event

using StrokeCode = std::uint32_t;

namespace stroke {
inline constexpr std::uint32_t shift = 0x080, alt = 0x100, control = 0x200;
inline constexpr std::uint32_t qualifiers = shift | alt | control;
constexpr std::uint32_t nth(StrokeCode code, int index) { return code >> (10 * index) & 0x3FF; }
constexpr std::uint8_t raw(std::uint32_t one_stroke) { return static_cast<std::uint8_t>(one_stroke & 0x7F); }
// A code of one stroke without qualifiers.
constexpr StrokeCode single(std::uint8_t raw_key) { return 0x07F1FC00u | raw_key; }
} // namespace stroke

static_assert(stroke::single(raw_key::space) == 0x07F1FC40u);

// One row of a layout's character table.
struct CharacterEntry {
    char16_t character;
    StrokeCode code;
};

} // namespace kq::input
