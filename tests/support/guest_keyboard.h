#pragma once
// A model of the guest's side of the keyboard, written from the AmigaOS keymap rules: it takes
// raw key events and gives the characters that the guest's keymap makes of them, with held
// qualifiers, Caps Lock and dead keys. Tests use it to check what key translation sends.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kq::test {

// One raw key of an AmigaOS keymap, as the layouts are generated from.
struct KeyFacts {
    std::uint8_t type;
    bool capsable;
    std::uint8_t map[4]; // least significant character first
    std::uint8_t descriptor_length;
    std::array<std::uint8_t, 128> descriptor;
};

// The keymap of a layout id ("en-us" ...).
std::span<const KeyFacts, 128> keymap_facts(std::u16string_view layout);

class GuestKeyboard {
public:
    explicit GuestKeyboard(std::span<const KeyFacts, 128> keymap) : keymap_(keymap) {}

    // A raw key event word (press: bit 29, release: bit 30); anything else is ignored.
    void feed(std::uint32_t event);
    std::u16string take_output() { return std::exchange(output_, {}); }

    struct Qualifiers {
        bool left_shift = false, right_shift = false, left_alt = false, right_alt = false, control = false,
             caps_lock = false;
        bool operator==(const Qualifiers&) const = default;
    };
    const Qualifiers& qualifiers() const { return held_; }

private:
    struct Press {
        bool dead = false;
        std::uint8_t index = 0, factor = 0;
    };
    void press(std::uint8_t raw);

    std::span<const KeyFacts, 128> keymap_;
    Qualifiers held_;
    Press previous_, before_previous_;
    std::u16string output_;
};

} // namespace kq::test
