#include "input/raw_key_strings.h"

#include "input/keyboard_layouts.h"
#include "platform/text_conversion.h"
#include "tests/support/guest_keyboard.h"
#include "tests/support/keyboard_driver.h"
#include "tests/support/printable.h"
#include "tests/support/raw_key_script.h"

#include <gtest/gtest.h>

namespace kq::input {
namespace {

// The raw key string as KQGetStringRawKeys makes it: counted, then written into a block of that
// many units and the NUL. A count too short writes past the block (AddressSanitizer stops the
// run); one too long leaves NULs, so that the text ends before the count.
std::u16string written(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode = 0) {
    const platform::HeapBlock block = raw_key_string_block(platform::Heap::local, record, text, mode);
    if (!block) {
        ADD_FAILURE() << "no block";
        return {};
    }
    const std::u16string script(reinterpret_cast<const char16_t*>(block.data()));
    EXPECT_EQ(script.size(), raw_key_string_length(record, text, mode)) << test::printable(text) << " mode " << mode;
    return script;
}

// What the guest types when it plays a script back.
std::u16string played_back(std::u16string_view layout, std::u16string_view script) {
    test::GuestKeyboard guest(test::keymap_facts(layout));
    const auto events = test::script_events(script);
    EXPECT_TRUE(events) << test::printable(script);
    for (std::uint32_t e : events.value_or(std::vector<std::uint32_t>{})) guest.feed(e);
    EXPECT_EQ(guest.qualifiers(), test::GuestKeyboard::Qualifiers{}) << "every qualifier released at the end";
    return guest.take_output();
}

TEST(RawKeyStrings, TypingExamples) {
    const struct {
        std::u16string_view text, script;
    } rows[] = {
        {u"Ab",
         u"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_UP 0x60 KEY_RAW_DOWN 0x35 KEY_RAW_UP 0x35 "},
        {u"AB",
         u"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_DOWN 0x35 KEY_RAW_UP 0x35 KEY_RAW_UP 0x60 "},
        {u"a\n", u"KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_DOWN 0x44 KEY_RAW_UP 0x44 "},
        {u"A\tb", u"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_UP 0x60 KEY_RAW_DOWN 0x42 "
                  u"KEY_RAW_UP 0x42 KEY_RAW_DOWN 0x35 KEY_RAW_UP 0x35 "},
        {u"\r\x01", u""}, // other control characters are left out
        {u"", u""},
    };
    test::KeyboardDriver driver(u"en-us");
    for (const auto& row : rows) EXPECT_EQ(written(driver.record(), row.text), row.script) << test::printable(row.text);
}

// Every character a layout has, dead-key compositions among them, in one text: the guest types
// the text back unchanged.
TEST(RawKeyStrings, EveryLayoutTypesItsWholeCharacterTableBack) {
    for (const KeyboardLayout& layout : all_layouts()) {
        std::u16string text;
        for (const CharacterEntry& entry : layout.characters) text += entry.character;
        test::KeyboardDriver driver(layout.id);
        // The line feed at the end is the Return key, which the guest reads as a carriage return.
        EXPECT_EQ(played_back(layout.id, written(driver.record(), text + u"\n")), text + u"\r")
            << test::printable(layout.id);
    }
}

TEST(RawKeyStrings, CharactersOutsideTheTableFallBack) {
    const struct {
        const char* name;
        std::u16string_view text, typed;
    } rows[] = {
        {"mathematical italic capital", u"\U0001D434\U0001D44D", u"AZ"},
        {"mathematical italic small", u"\U0001D44E\U0001D467", u"az"},
        {"Planck constant", u"\u210E", u"h"},
        {"nothing near it in Latin-1", u"\u4E00", u"?"},
        {"unpaired low surrogate", std::u16string_view(u"\xDC00x", 2), u"?x"},
        {"unpaired high surrogate at the end", std::u16string_view(u"x\xD800", 2), u"x?"},
        {"a high surrogate takes the unit after it", std::u16string_view(u"\xD800y", 2), u"?"},
    };
    test::KeyboardDriver driver(u"en-us");
    for (const auto& row : rows)
        EXPECT_EQ(played_back(u"en-us", written(driver.record(), row.text)), row.typed) << row.name;
    // A character with a best fit in Latin-1 types as that, as the system converts it.
    const std::u16string fit = platform::best_fit_latin1(u"\u2019");
    EXPECT_EQ(fit, u"'");
    EXPECT_EQ(played_back(u"en-us", written(driver.record(), u"\u2019")), fit);
}

TEST(RawKeyStrings, Combinations) {
    const struct {
        std::u16string_view text;
        std::uint32_t mode;
        std::u16string_view script;
    } rows[] = {
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 1, u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 KEY_RAW_DOWN 0x67 "},
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 2, u"KEY_RAW_UP 0x63 KEY_RAW_UP 0x66 KEY_RAW_UP 0x67 "},
        {u"CONTROL+LEFT AMIGA+RIGHT AMIGA", 3, u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 KEY_RAW_DOWN 0x67 "},
        {u"shift+a", 1, u"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 "},
        {u"A+PLUS", 1, u"KEY_RAW_DOWN 0x20 KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0xC "},
        {u"+", 1, u"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0xC "},
        {u"plus", 2, u"KEY_RAW_UP 0x60 KEY_RAW_UP 0xC "},
        {u" control + f10 ", 1, u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x59 "},
        {u"CONTROL+NO SUCH KEY+A", 1, u"KEY_RAW_DOWN 0x63 "}, // an unknown token ends the list
        {u"NUMPAD (", 1, u"KEY_RAW_DOWN 0x5A "},
        {u"\u00e1", 1, u"KEY_RAW_DOWN 0x64 KEY_RAW_DOWN 0x23 KEY_RAW_DOWN 0x20 "},
        {u"", 2, u""},
    };
    test::KeyboardDriver driver(u"en-us");
    for (const auto& row : rows)
        EXPECT_EQ(written(driver.record(), row.text, row.mode), row.script)
            << test::printable(row.text) << " mode " << row.mode;
}

} // namespace
} // namespace kq::input
