#pragma once
// The fifteen guest keyboard layouts: id, display name, keymap image, character table and
// keypad bracket pair. "en-us" is the default, used whenever no other layout matches.
//
// Keymap image (the AmigaOS keymap form, also accepted from outside for recognition):
//   0    1    version, must be 1 (otherwise the image counts as absent)
//   1    1    reserved
//   2    128  key type of raw keys 0x00-0x7F (bit 0 Shift, bit 1 Alt, bit 2 Control; values
//             above 7 mark dead, string and no-op keys)
//   130  512  key map: a 32-bit word per raw key, big-endian, up to four characters
//   642  16   Caps Lock set: bit (k mod 8) of byte (k / 8) when Caps Lock affects raw key k

#include "input/stroke_code.h"
#include "string_ids.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kq::input {

inline constexpr std::size_t kKeymapImageBytes = 658;

struct KeyboardLayout {
    std::u16string_view id;
    StringId display_name; // cut before " (" where it is shown
    std::span<const std::uint8_t> keymap_image;
    std::span<const CharacterEntry> characters;
    char16_t open_bracket, close_bracket;
};

const KeyboardLayout& default_layout();
// The layout of `id` (compared without regard to case), else the default layout.
const KeyboardLayout& find_layout(std::u16string_view id);
// Every layout, the default first.
std::span<const KeyboardLayout> all_layouts();

// Qualifier bits of a keymap image.
inline constexpr std::uint8_t kQualifierShift = 1, kQualifierAlt = 2, kQualifierControl = 4;

// The character of raw key `raw` under `qualifier` in a keymap image; 0 for none, and for an
// image that is too short or not of version 1.
char16_t keymap_character(std::span<const std::uint8_t> image, std::uint8_t raw, std::uint8_t qualifier);
// Whether Caps Lock affects raw key `raw`.
bool keymap_caps_affects(std::span<const std::uint8_t> image, std::uint8_t raw);

// The layout that a keymap image represents, by the probe table; "en-us" when none matches.
std::u16string_view recognize_layout(std::span<const std::uint8_t> image);

// The layout's display name without its " (...)" part.
std::u16string short_layout_name(const KeyboardLayout& layout);

} // namespace kq::input
