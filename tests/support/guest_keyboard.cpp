#include "tests/support/guest_keyboard.h"

#include "common/compare.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace kq::test {
namespace {

struct LayoutFacts {
    std::u16string_view layout;
    const KeyFacts (&keys)[128];
};

#include "keymap_facts.inc"

// clang-format off
const LayoutFacts kFacts[] = {
    {u"da-dk", kKeyFacts_da_dk}, {u"de-ch", kKeyFacts_de_ch}, {u"de-de", kKeyFacts_de_de},
    {u"en-dvorak-us", kKeyFacts_en_dvorak_us}, {u"en-gb", kKeyFacts_en_gb}, {u"en-us", kKeyFacts_en_us},
    {u"es-es", kKeyFacts_es_es}, {u"fr-ca", kKeyFacts_fr_ca}, {u"fr-ch", kKeyFacts_fr_ch},
    {u"fr-fr", kKeyFacts_fr_fr}, {u"is-is", kKeyFacts_is_is}, {u"it-it", kKeyFacts_it_it},
    {u"no-no", kKeyFacts_no_no}, {u"pt-pt", kKeyFacts_pt_pt}, {u"sv-se", kKeyFacts_sv_se},
};
// clang-format on

constexpr std::uint8_t kShift = 1, kAlt = 2, kControl = 4;
constexpr std::uint8_t kDeadKey = 0x20, kStringKey = 0x40, kNoOp = 0x80;
constexpr std::uint8_t kModEntry = 0x01, kDeadEntry = 0x08;

// The characters of a key-map word by key type: the qualifier that each one stands for.
// clang-format off
constexpr int kWordSlots[8][4] = {
    {0, -1, -1, -1}, {0, kShift, -1, -1}, {0, kAlt, -1, -1}, {0, kShift, kAlt, kShift | kAlt},
    {0, kControl, -1, -1}, {0, kShift, kControl, kShift | kControl}, {0, kAlt, kControl, kAlt | kControl},
    {0, kShift, kAlt, kShift | kAlt},
};
// clang-format on

} // namespace

std::span<const KeyFacts, 128> keymap_facts(std::u16string_view layout) {
    for (const LayoutFacts& facts : kFacts)
        if (equal_ignoring_case(facts.layout, layout)) return facts.keys;
    throw std::invalid_argument("no such layout");
}

void GuestKeyboard::feed(std::uint32_t event) {
    const auto raw = static_cast<std::uint8_t>(event & 0x7F);
    const bool down = (event & 0x20000000u) != 0;
    if (down == ((event & 0x40000000u) != 0)) return;
    // Qualifier keys set what they hold (Caps Lock: the keyboard sends the lock's state); the
    // Amiga keys (0x66, 0x67) are qualifiers that no keymap reads.
    bool* const held[] = {&held_.left_shift, &held_.right_shift, &held_.caps_lock,
                          &held_.control,    &held_.left_alt,    &held_.right_alt};
    if (raw >= 0x60 && raw <= 0x65)
        *held[raw - 0x60] = down;
    else if (down && raw != 0x66 && raw != 0x67)
        press(raw);
}

void GuestKeyboard::press(std::uint8_t raw) {
    const KeyFacts& key = keymap_[raw];
    std::uint8_t qualifier = 0;
    if (held_.left_shift || held_.right_shift || (held_.caps_lock && key.capsable)) qualifier |= kShift;
    if (held_.left_alt || held_.right_alt) qualifier |= kAlt;
    if (held_.control) qualifier |= kControl;
    qualifier &= key.type & 7; // a held qualifier that the key's type does not cover is ignored

    Press current;
    if (key.type & kNoOp) {
        // nothing to give
    } else if ((key.type & (kDeadKey | kStringKey)) == 0) {
        const int type = key.type & 7;
        // A vanilla key (type 7) gives its Control characters by clearing bits 5 and 6.
        const int wanted = type == 7 ? qualifier & ~kControl : qualifier;
        for (int i = 0; i < 4; ++i)
            if (kWordSlots[type][i] == wanted && key.map[i] != 0) {
                std::uint8_t character = key.map[i];
                if (type == 7 && (qualifier & kControl)) character &= 0x9F;
                output_ += static_cast<char16_t>(character);
                break;
            }
    } else {
        // Descriptor entries: one pair per qualifier combination inside the type, in order.
        std::vector<int> slots;
        for (int q = 0; q < 8; ++q)
            if ((q & ~(key.type & 7)) == 0) slots.push_back(q);
        const auto slot = static_cast<std::size_t>(std::ranges::find(slots, qualifier) - slots.begin());
        const std::uint8_t first = key.descriptor[2 * slot], second = key.descriptor[2 * slot + 1];
        if (key.type & kStringKey) {
            for (std::uint8_t i = 0; i < first; ++i) output_ += static_cast<char16_t>(key.descriptor[second + i]);
        } else if (first == 0) {
            output_ += static_cast<char16_t>(second);
        } else if (first == kDeadEntry) {
            current = {true, static_cast<std::uint8_t>(second & 0x0F), static_cast<std::uint8_t>(second >> 4)};
        } else if (first == kModEntry) {
            std::size_t end = key.descriptor_length;
            for (std::size_t n = 0; n < slots.size(); ++n)
                if (key.descriptor[2 * n] == kModEntry && key.descriptor[2 * n + 1] > second)
                    end = std::min<std::size_t>(end, key.descriptor[2 * n + 1]);
            std::size_t index = 0;
            if (previous_.dead)
                index = previous_.factor == 0
                            ? previous_.index
                            : previous_.index * previous_.factor + (before_previous_.dead ? before_previous_.index : 0);
            if (second + index < end && key.descriptor[second + index] != 0)
                output_ += static_cast<char16_t>(key.descriptor[second + index]);
        }
    }
    before_previous_ = previous_;
    previous_ = current;
}

} // namespace kq::test
