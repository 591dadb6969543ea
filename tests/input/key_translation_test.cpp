// Key translation and raw key strings, read back by an independent model of the guest's keymap.

#include "input/key_translation.h"
#include "input/keyboard_layouts.h"
#include "input/raw_key_strings.h"
#include "platform/keyboard_state.h"
#include "platform/text_conversion.h"
#include "tests/support/guest_keyboard.h"
#include "tests/support/keyboard_driver.h"
#include "tests/support/printable.h"
#include "tests/support/raw_key_script.h"

#include <gtest/gtest.h>

using namespace kq;
using namespace kq::input;
using Events = std::vector<std::uint32_t>;
using test::KeyboardDriver, test::kVkTyping, test::printable;

constexpr std::uint32_t P(std::uint32_t raw) { return event::press(raw); }
constexpr std::uint32_t R(std::uint32_t raw) { return event::release(raw); }
constexpr std::uint32_t kMore = event::more_pending, kNothing = event::nothing;
constexpr std::uint8_t kVkShift = 0xA0, kVkReturn = 0x0D;

// Every character of every layout's table, typed (with host Shift held or not) and read by the
// guest's keymap, comes out as itself and leaves the guest's qualifiers as they were.
TEST(KeyTranslation, EveryCharacterOfEveryLayoutRoundTripsThroughTheGuestKeymap) {
    for (const KeyboardLayout& layout : all_layouts()) {
        for (const bool shift_held : {false, true}) {
            KeyboardDriver driver(layout.id);
            test::GuestKeyboard guest(test::keymap_facts(layout.id));
            const auto feed = [&](const Events& events) {
                for (std::uint32_t e : events) guest.feed(e);
            };
            if (shift_held) feed(driver.down(kVkShift));
            const test::GuestKeyboard::Qualifiers before = guest.qualifiers();
            for (const CharacterEntry& entry : layout.characters) {
                feed(driver.down(kVkTyping, entry.character));
                feed(driver.key(kVkTyping, false, false));
                ASSERT_EQ(guest.take_output(), std::u16string(1, entry.character))
                    << printable(layout.id) << " U+" << std::hex << int{entry.character} << " Shift " << shift_held;
                ASSERT_EQ(guest.qualifiers(), before);
            }
            if (shift_held) feed(driver.key(kVkShift, false, false));
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
         {{kVkTyping, 0, 1, u'!', {P(0x60) | kMore, P(0x01)}}, {kVkTyping, 0, 0, 0, {R(0x01) | kMore, R(0x60)}}}},
        {"a lower-case letter with host Shift held",
         {{kVkShift, 0, 1, 0, {P(0x60)}},
          {kVkTyping, 0, 1, u'a', {R(0x60) | kMore, P(0x20)}},
          {kVkTyping, 0, 0, 0, {R(0x20) | kMore, P(0x60)}},
          {kVkShift, 0, 0, 0, {R(0x60)}}}},
        {"two host keys sharing a temporarily released Shift",
         {{kVkShift, 0, 1, 0, {P(0x60)}},
          {kVkTyping, 0, 1, u'a', {R(0x60) | kMore, P(0x20)}},
          {0x42, 0, 1, u'b', {P(0x35)}},
          {kVkShift, 0, 0, 0, {kNothing}}, // the guest already saw Shift released
          {kVkTyping, 0, 0, 0, {R(0x20)}},
          {0x42, 0, 0, 0, {R(0x35)}}}},
        {"an accent through a dead key: Alt held for the first stroke only",
         {{kVkTyping, 0, 1, u'\u00e1', {P(0x64) | kMore, P(0x23) | kMore, R(0x23) | kMore, R(0x64) | kMore, P(0x20)}},
          {kVkTyping, 0, 0, 0, {R(0x20)}}}},
        {"both Control keys and both Alt keys",
         {{0xA2, 0, 1, 0, {P(0x63)}},
          {0xA3, 1, 1, 0, {P(0x63)}},
          {0xA3, 1, 0, 0, {R(0x63)}},
          {0xA4, 0, 1, 0, {P(0x64)}},
          {0xA5, 1, 1, 0, {P(0x64)}},
          {0xA5, 1, 0, 0, {R(0x64)}}}},
        {"Return, auto-repeat, and Numpad Enter",
         {{kVkReturn, 0, 1, 0, {P(0x44)}},
          {kVkReturn, 0, 1, 0, {P(0x44)}},
          {kVkReturn, 0, 0, 0, {R(0x44)}},
          {kVkReturn, 1, 1, 0, {P(0x43)}},
          {kVkReturn, 1, 0, 0, {R(0x43)}}}},
        {"default configurable keys: Windows keys and Page Down (extended)",
         {{0x5B, 1, 1, 0, {P(0x66)}},
          {0x5C, 1, 1, 0, {P(0x67)}},
          {0x22, 1, 1, 0, {P(0x5F)}},
          {0x22, 0, 1, 0, {kNothing}}}},
        {"a configurable key descriptor: VK 0x22 without the extended flag",
         {{0x22, 0, 1, 0, {P(0x5F)}}, {0x22, 1, 1, 0, {kNothing}}},
         0x01010022},
        {"a key up without its press", {{kVkTyping, 0, 0, 0, {kNothing}}}},
        {"a character that the layout cannot type", {{kVkTyping, 0, 1, u'\u4e00', {kNothing}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        KeyboardDriver driver(u"en-us", 0, row.key_c);
        for (std::size_t i = 0; i < row.steps.size(); ++i) {
            const Step& step = row.steps[i];
            EXPECT_EQ(driver.key(step.virtual_key, step.extended, step.down, step.character), step.events)
                << "step " << i;
        }
    }
}

TEST(KeyTranslation, CapsLockFetchAndPreprocessing) {
    KeyboardDriver driver(u"en-us");
    const bool host_on = platform::caps_lock_on();
    EXPECT_EQ(driver.down(0x14), Events{host_on ? R(0x62) : P(0x62)}) << "Caps Lock goes against the host's toggle";
    EXPECT_EQ(driver.record().modifiers & modifier::caps_lock, host_on ? 0u : modifier::caps_lock);
    EXPECT_EQ(driver.key(0x14, false, false), Events{kNothing}) << "its release sends nothing";

    std::uint32_t answer = 0x12345678;
    EXPECT_EQ(process_keyboard_input(driver.record(), host_key::fetch, 0, &answer), status::failed);
    EXPECT_EQ(answer, 0x12345678u) << "an empty queue: nothing written";
    EXPECT_EQ(process_keyboard_input(driver.record(), host_key::fetch | host_key::key_down | 0x0D, 0, nullptr),
              status::failed)
        << "the fetch bit wins over everything else";

    const struct {
        std::uint32_t key_word, answer;
    } rows[] = {
        {0x0D, 0x8000000D},              // Return never wants a character
        {0x5B | 0x10000, 0x8001005B},    // nor the configurable keys
        {0x60, 0x80000060},              // nor a keypad key the table maps
        {0x41, 0xC0000041},              // a letter does
        {0x41 | 0x38000000, 0xC0000041}, // bits 27-29 are cleared
        {0x41 | 0x09000000, 0xC9000041}, // 24 and 27: a character is pending
        {0xA0 | 0x09000000, 0xC10000A0}, // not for a modifier
    };
    for (const auto& row : rows) {
        EXPECT_EQ(preprocess_keyboard_input(driver.record(), row.key_word, &answer), status::ok);
        EXPECT_EQ(answer, row.answer) << std::hex << row.key_word;
    }
    EXPECT_EQ(driver.record().character_pending, 1u);
    // A deferred character remembers its key; the next other key asks for character mode 1.
    driver.answers(0x0D | 3u << host_key::character_mode_shift | host_key::key_down, u'x');
    preprocess_keyboard_input(driver.record(), 0x42, &answer);
    EXPECT_EQ(answer, 0xC0040042u);
    EXPECT_EQ(driver.record().pending_virtual_key, 0);
}

// The raw key string's events as KQGetStringRawKeys makes it: counted, then written into a block of
// that many units and the NUL. A count too short writes past the block (AddressSanitizer stops
// the run); one too long leaves NULs, so that the text ends before the count.
Events written(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode = 0) {
    const platform::HeapBlock block = raw_key_string_block(platform::Heap::local, record, text, mode);
    const std::u16string script(block ? reinterpret_cast<const char16_t*>(block.data()) : u"no block");
    EXPECT_EQ(script.size(), raw_key_string_length(record, text, mode)) << printable(text) << " mode " << mode;
    const auto events = test::script_events(script);
    EXPECT_TRUE(events) << printable(script);
    return events.value_or(Events{});
}

// What the guest types when it plays the events back; every qualifier is released at the end.
std::u16string played_back(std::u16string_view layout, const Events& events) {
    test::GuestKeyboard guest(test::keymap_facts(layout));
    for (std::uint32_t e : events) guest.feed(e);
    EXPECT_EQ(guest.qualifiers(), test::GuestKeyboard::Qualifiers{});
    return guest.take_output();
}

TEST(RawKeyStrings, TextsAndCombinations) {
    const struct {
        std::u16string_view text;
        std::uint32_t mode;
        Events events;
    } rows[] = {
        {u"Ab", 0, {P(0x60), P(0x20), R(0x20), R(0x60), P(0x35), R(0x35)}},
        {u"AB", 0, {P(0x60), P(0x20), R(0x20), P(0x35), R(0x35), R(0x60)}},
        {u"a\n", 0, {P(0x20), R(0x20), P(0x44), R(0x44)}},
        {u"A\tb", 0, {P(0x60), P(0x20), R(0x20), R(0x60), P(0x42), R(0x42), P(0x35), R(0x35)}},
        {u"\r\x01", 0, {}}, // other control characters are left out
        {u"", 0, {}},
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 1, {P(0x63), P(0x66), P(0x67)}},
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 2, {R(0x63), R(0x66), R(0x67)}},
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 3, {P(0x63), P(0x66), P(0x67)}},
        {u"A+PLUS", 1, {P(0x20), P(0x60), P(0xC)}},
        {u"+", 1, {P(0x60), P(0xC)}},
        {u"plus", 2, {R(0x60), R(0xC)}},
        {u" control + f10 ", 1, {P(0x63), P(0x59)}},
        {u"CONTROL+NO SUCH KEY+A", 1, {P(0x63)}}, // an unknown token ends the list
        {u"NUMPAD (", 1, {P(0x5A)}},
        {u"\u00e1", 1, {P(0x64), P(0x23), P(0x20)}},
        {u"", 2, {}},
    };
    KeyboardDriver driver(u"en-us");
    for (const auto& row : rows)
        EXPECT_EQ(written(driver.record(), row.text, row.mode), row.events) << printable(row.text) << " " << row.mode;
}

// Every character a layout has, dead-key compositions among them, in one text: the guest types
// the text back unchanged (the line feed is Return, read as a carriage return).
TEST(RawKeyStrings, EveryLayoutTypesItsWholeCharacterTableBack) {
    for (const KeyboardLayout& layout : all_layouts()) {
        std::u16string text;
        for (const CharacterEntry& entry : layout.characters) text += entry.character;
        KeyboardDriver driver(layout.id);
        EXPECT_EQ(played_back(layout.id, written(driver.record(), text + u"\n")), text + u"\r") << printable(layout.id);
    }
}

TEST(RawKeyStrings, CharactersOutsideTheTableFallBack) {
    const struct {
        std::u16string_view text, typed;
    } rows[] = {
        {u"\U0001D434\U0001D44D\U0001D44E\U0001D467", u"AZaz"}, // mathematical italic letters
        {u"\u210E", u"h"},                                      // Planck constant
        {u"\u4E00", u"?"},                                      // nothing near it in Latin-1
        {std::u16string_view(u"\xDC00x", 2), u"?x"},            // unpaired low surrogate
        {std::u16string_view(u"x\xD800", 2), u"x?"},            // unpaired high surrogate at the end
        {std::u16string_view(u"\xD800y", 2), u"?"},             // a high surrogate takes the unit after it
        {u"\u2019", u"'"},                                      // the system's best fit in Latin-1
    };
    EXPECT_EQ(platform::best_fit_latin1(u"\u2019"), u"'");
    KeyboardDriver driver(u"en-us");
    for (const auto& row : rows)
        EXPECT_EQ(played_back(u"en-us", written(driver.record(), row.text)), row.typed) << printable(row.text);
}

// A host's observer rides along when the record is rebuilt, and is told of the new record.
TEST(KeyboardInputData, ARebuiltRecordKeepsItsObserverAndTellsIt) {
    struct Recording : KeyboardObserver {
        KeyboardInputData* told = nullptr;
        int calls = 0;
    } observer;
    observer.record_replaced = [](KeyboardObserver* self, KeyboardInputData* record) {
        auto* recording = static_cast<Recording*>(self);
        recording->told = record;
        ++recording->calls;
    };
    KeyboardInputData* record = nullptr;
    ASSERT_EQ(make_keyboard_input_data(&record, u"system", u"de-de", nullptr, 0, 0, 0, 0), status::ok);
    record->observer = &observer;
    KeyboardInputData* const old = record;
    ASSERT_EQ(make_keyboard_input_data(&record, u"system", u"fr-ca", nullptr, 0, 0, 0, 0), status::ok);
    EXPECT_NE(record, old);
    EXPECT_EQ(record->observer, &observer);
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(observer.told, record);
    free_keyboard_input_data(record);
}
