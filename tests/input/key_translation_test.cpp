#include "input/key_translation.h"

#include "input/keyboard_layouts.h"
#include "platform/keyboard_state.h"
#include "tests/support/guest_keyboard.h"
#include "tests/support/keyboard_driver.h"

#include <gtest/gtest.h>

#include <vector>

namespace kq::input {
namespace {

using Events = std::vector<std::uint32_t>;
using test::KeyboardDriver;
using test::kVkTyping;

constexpr std::uint8_t kVkLeftShift = 0xA0, kVkRightControl = 0xA3, kVkLeftControl = 0xA2, kVkLeftAlt = 0xA4,
                       kVkRightAlt = 0xA5, kVkCapsLock = 0x14, kVkReturn = 0x0D;
constexpr std::uint32_t P(std::uint32_t raw) { return event::press(raw); }
constexpr std::uint32_t R(std::uint32_t raw) { return event::release(raw); }
constexpr std::uint32_t kMore = event::more_pending, kNothing = event::nothing;

std::string describe(std::u16string_view layout, char16_t character) {
    char text[64];
    std::snprintf(text, sizeof text, "%s U+%04X", std::string(layout.begin(), layout.end()).c_str(),
                  static_cast<unsigned>(character));
    return text;
}

// Every character of every layout's table, typed through key translation and read by an
// independent model of the guest's keymap, comes out as itself, and leaves the guest's
// qualifiers as they were before the keystroke (with host Shift held or not).
TEST(KeyTranslation, EveryCharacterOfEveryLayoutRoundTripsThroughTheGuestKeymap) {
    for (const KeyboardLayout& layout : all_layouts()) {
        for (const bool shift_held : {false, true}) {
            KeyboardDriver driver(layout.id);
            test::GuestKeyboard guest(test::keymap_facts(layout.id));
            const auto feed = [&](const Events& events) {
                for (std::uint32_t e : events) guest.feed(e);
            };
            if (shift_held) feed(driver.down(kVkLeftShift));
            const test::GuestKeyboard::Qualifiers before = guest.qualifiers();
            for (const CharacterEntry& entry : layout.characters) {
                feed(driver.down(kVkTyping, false, entry.character));
                feed(driver.up(kVkTyping));
                ASSERT_EQ(guest.take_output(), std::u16string(1, entry.character))
                    << describe(layout.id, entry.character) << (shift_held ? " with Shift held" : "");
                ASSERT_EQ(guest.qualifiers(), before) << describe(layout.id, entry.character);
            }
            if (shift_held) feed(driver.up(kVkLeftShift));
            EXPECT_EQ(guest.qualifiers(), test::GuestKeyboard::Qualifiers{});
            EXPECT_EQ(driver.record().queue_length, 0);
        }
    }
}

TEST(KeyTranslation, KeystrokeScenarios) {
    struct Step {
        std::uint8_t virtual_key;
        bool extended, down;
        char16_t character;
        Events events;
    };
    const struct {
        const char* name;
        std::vector<Step> steps;
        std::uint32_t key_c = 0;
    } rows[] = {
        {"\"!\" on en-us presses Shift around 1",
         {{kVkTyping, false, true, u'!', {P(0x60) | kMore, P(0x01)}},
          {kVkTyping, false, false, 0, {R(0x01) | kMore, R(0x60)}}}},
        {"a lower-case letter with host Shift held",
         {{kVkLeftShift, false, true, 0, {P(0x60)}},
          {kVkTyping, false, true, u'a', {R(0x60) | kMore, P(0x20)}},
          {kVkTyping, false, false, 0, {R(0x20) | kMore, P(0x60)}},
          {kVkLeftShift, false, false, 0, {R(0x60)}}}},
        {"two host keys sharing a temporarily released Shift",
         {{kVkLeftShift, false, true, 0, {P(0x60)}},
          {kVkTyping, false, true, u'a', {R(0x60) | kMore, P(0x20)}},
          {0x42, false, true, u'b', {P(0x35)}},
          {kVkLeftShift, false, false, 0, {kNothing}}, // the guest already saw Shift released
          {kVkTyping, false, false, 0, {R(0x20)}},
          {0x42, false, false, 0, {R(0x35)}}}},
        {"an accent through a dead key: Alt held for the first stroke only",
         {{kVkTyping,
           false,
           true,
           u'\u00e1',
           {P(0x64) | kMore, P(0x23) | kMore, R(0x23) | kMore, R(0x64) | kMore, P(0x20)}},
          {kVkTyping, false, false, 0, {R(0x20)}}}},
        {"both Control keys and both Alt keys",
         {{kVkLeftControl, false, true, 0, {P(0x63)}},
          {kVkLeftControl, false, false, 0, {R(0x63)}},
          {kVkRightControl, true, true, 0, {P(0x63)}},
          {kVkRightControl, true, false, 0, {R(0x63)}},
          {kVkLeftAlt, false, true, 0, {P(0x64)}},
          {kVkLeftAlt, false, false, 0, {R(0x64)}},
          {kVkRightAlt, true, true, 0, {P(0x64)}},
          {kVkRightAlt, true, false, 0, {R(0x64)}}}},
        {"Return and Numpad Enter",
         {{kVkReturn, false, true, 0, {P(0x44)}},
          {kVkReturn, false, false, 0, {R(0x44)}},
          {kVkReturn, true, true, 0, {P(0x43)}},
          {kVkReturn, true, false, 0, {R(0x43)}}}},
        {"auto-repeat presses again",
         {{kVkReturn, false, true, 0, {P(0x44)}},
          {kVkReturn, false, true, 0, {P(0x44)}},
          {kVkReturn, false, false, 0, {R(0x44)}}}},
        {"default configurable keys: Windows keys and Page Down (extended)",
         {{0x5B, true, true, 0, {P(0x66)}},
          {0x5C, true, true, 0, {P(0x67)}},
          {0x22, true, true, 0, {P(0x5F)}},
          {0x22, false, true, 0, {kNothing}}}},
        {"a configurable key descriptor: VK 0x22 without the extended flag",
         {{0x22, false, true, 0, {P(0x5F)}}, {0x22, true, true, 0, {kNothing}}},
         0x01010022},
        {"a key up without its press", {{kVkTyping, false, false, 0, {kNothing}}}},
        {"a character that the layout cannot type", {{kVkTyping, false, true, u'\u4e00', {kNothing}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        KeyboardDriver driver(u"en-us", 0, 0, row.key_c);
        for (std::size_t i = 0; i < row.steps.size(); ++i) {
            const Step& step = row.steps[i];
            EXPECT_EQ(step.down ? driver.down(step.virtual_key, step.extended, step.character)
                                : driver.up(step.virtual_key, step.extended),
                      step.events)
                << "step " << i;
        }
    }
}

TEST(KeyTranslation, CapsLockGoesAgainstTheHostToggle) {
    KeyboardDriver driver(u"en-us");
    const bool host_on = platform::caps_lock_on();
    EXPECT_EQ(driver.down(kVkCapsLock), Events{host_on ? R(0x62) : P(0x62)});
    EXPECT_EQ(driver.record().modifiers & modifier::caps_lock, host_on ? 0u : modifier::caps_lock);
    EXPECT_EQ(driver.up(kVkCapsLock), Events{kNothing}) << "its release sends nothing";
}

TEST(KeyTranslation, FetchingAnEmptyQueueFails) {
    KeyboardDriver driver(u"en-us");
    std::uint32_t answer = 0x12345678;
    EXPECT_EQ(process_keyboard_input(driver.record(), host_key::fetch, 0, &answer), status::failed);
    EXPECT_EQ(answer, 0x12345678u) << "nothing written";
    EXPECT_EQ(process_keyboard_input(driver.record(), host_key::fetch | host_key::key_down | 0x0D, 0, nullptr),
              status::failed)
        << "the fetch bit wins over everything else";
}

TEST(KeyTranslation, PreprocessingSaysWhichKeysWantTheirCharacter) {
    KeyboardDriver driver(u"en-us");
    const struct {
        std::uint32_t key_word;
        std::uint32_t answer;
    } rows[] = {
        {0x0D, 0x8000000D},                            // Return never wants a character
        {0x5B | 0x10000, 0x8001005B},                  // nor the configurable keys
        {0x60, 0x80000060},                            // nor a keypad key the table maps
        {0x41, 0xC0000041},                            // a letter does
        {0x41 | 0x38000000, 0xC0000041},               // bits 27-29 are cleared
        {0x41 | 0x09000000, 0xC9000041},               // 24 and 27: a character is pending
        {0xA0 | 0x09000000, 0xC1000041 - 0x41 + 0xA0}, // not for a modifier
    };
    for (const auto& row : rows) {
        std::uint32_t answer = 0;
        EXPECT_EQ(preprocess_keyboard_input(driver.record(), row.key_word, &answer), status::ok);
        EXPECT_EQ(answer, row.answer) << std::hex << row.key_word;
    }
    EXPECT_EQ(driver.record().character_pending, 1u);
    // A deferred character remembers its key; the next other key asks for character mode 1.
    driver.answers(0x0D | 3u << host_key::character_mode_shift | host_key::key_down, u'x');
    std::uint32_t answer = 0;
    preprocess_keyboard_input(driver.record(), 0x42, &answer);
    EXPECT_EQ(answer, 0xC0040042u);
    EXPECT_EQ(driver.record().pending_virtual_key, 0);
}

} // namespace
} // namespace kq::input
