#pragma once
// The key table: host virtual keys (with their extended flag) that translate by position into
// raw keys, whatever the layouts. Entries are 4 bytes, as the stored key tables have them:
//   0  host virtual-key code, or for a marker entry "[", "\" or "/" naming a configurable key
//   1  raw key
//   2  flags: bit 0 the host key must be extended (or must not), bit 1 marker entry, bit 2 an
//      entry of the built-in table
//   3  zero

#include "input/stroke_code.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace kq::input {

struct KeyTableEntry {
    std::uint8_t key;
    std::uint8_t raw;
    std::uint8_t flags;
    std::uint8_t zero;
};
static_assert(sizeof(KeyTableEntry) == 4);

inline constexpr std::uint8_t kEntryExtended = 1, kEntryMarker = 2, kEntryBuiltIn = 4;
inline constexpr std::uint8_t kMarkerA = '[', kMarkerB = '\\', kMarkerC = '/';

// A configurable host key: key A stands for Left Amiga, B for Right Amiga, C for Help.
struct ConfigurableKey {
    std::uint8_t virtual_key;
    std::uint32_t extended;
};

namespace detail {
constexpr KeyTableEntry key(std::uint8_t vk, std::uint8_t raw, bool extended = false) {
    return {vk, raw, static_cast<std::uint8_t>((extended ? kEntryExtended : 0) | kEntryBuiltIn), 0};
}
constexpr KeyTableEntry marker(std::uint8_t marker_char, std::uint8_t raw) {
    return {marker_char, raw, kEntryMarker | kEntryBuiltIn, 0};
}
} // namespace detail

// Both Alt keys give Left Alt and both Control keys the one Amiga Ctrl, deliberately.
// clang-format off
inline constexpr std::array<KeyTableEntry, 45> kBuiltInKeyTable{
    detail::marker(kMarkerA, raw_key::left_amiga), detail::marker(kMarkerB, raw_key::right_amiga),
    detail::marker(kMarkerC, raw_key::help),
    detail::key(0xA2, raw_key::control), detail::key(0xA3, raw_key::control, true),
    detail::key(0xA0, raw_key::left_shift), detail::key(0xA1, raw_key::right_shift),
    detail::key(0xA4, raw_key::left_alt), detail::key(0xA5, raw_key::left_alt, true),
    detail::key(0x14, raw_key::caps_lock), detail::key(0x09, raw_key::tab),
    detail::key(0x0D, raw_key::return_key), detail::key(0x0D, raw_key::keypad_enter, true),
    detail::key(0x1B, 0x45),
    detail::key(0x70, 0x50), detail::key(0x71, 0x51), detail::key(0x72, 0x52), detail::key(0x73, 0x53),
    detail::key(0x74, 0x54), detail::key(0x75, 0x55), detail::key(0x76, 0x56), detail::key(0x77, 0x57),
    detail::key(0x78, 0x58), detail::key(0x79, 0x59),
    detail::key(0x2E, 0x46, true), detail::key(0x08, 0x41),
    detail::key(0x25, 0x4F, true), detail::key(0x26, 0x4C, true), detail::key(0x27, 0x4E, true),
    detail::key(0x28, 0x4D, true),
    detail::key(0x60, 0x0F), detail::key(0x61, 0x1D), detail::key(0x62, 0x1E), detail::key(0x63, 0x1F),
    detail::key(0x64, 0x2D), detail::key(0x65, 0x2E), detail::key(0x66, 0x2F), detail::key(0x67, 0x3D),
    detail::key(0x68, 0x3E), detail::key(0x69, 0x3F),
    detail::key(0x6B, 0x5E), detail::key(0x6D, 0x4A), detail::key(0x6F, 0x5C, true), detail::key(0x6A, 0x5D),
    detail::key(0x6E, 0x3C),
};
// clang-format on

// The configurable key of a descriptor: bits 24-31 and 16-23 both 1 name the virtual key in the
// low byte and its extended flag in bit 8; any other value selects `fallback`.
constexpr ConfigurableKey decode_configurable_key(std::uint32_t descriptor, ConfigurableKey fallback) {
    if ((descriptor >> 24) != 1 || ((descriptor >> 16) & 0xFF) != 1) return fallback;
    return {static_cast<std::uint8_t>(descriptor & 0xFF), (descriptor >> 8) & 1};
}
inline constexpr ConfigurableKey kDefaultKeyA{0x5B, 1}, kDefaultKeyB{0x5C, 1}, kDefaultKeyC{0x22, 1};

// The raw key of the first entry that matches (virtual key, extended flag), if any.
std::optional<std::uint8_t> look_up_key(std::span<const KeyTableEntry> table, std::uint8_t virtual_key, bool extended,
                                        const ConfigurableKey (&configurable)[3]);

} // namespace kq::input
