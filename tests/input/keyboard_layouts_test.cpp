#include "input/keyboard_layouts.h"

#include "input/key_names.h"
#include "input/key_tokens.h"
#include "tests/support/keyboard_driver.h"

#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <vector>

namespace kq::input {
namespace {

TEST(KeyboardLayouts, CatalogueCountsAndBrackets) {
    const struct {
        std::u16string_view id, name;
        std::size_t characters;
        char16_t open, close;
    } rows[] = {
        {u"en-us", u"English - US", 191, u'(', u')'},          {u"en-gb", u"English - UK", 191, u'(', u')'},
        {u"fr-ca", u"French - Canada", 191, u'@', 0xB0},       {u"da-dk", u"Danish - Denmark", 191, u'[', u']'},
        {u"de-de", u"German - Germany", 191, u'[', u']'},      {u"en-dvorak-us", u"English - Dvorak", 191, u'(', u')'},
        {u"es-es", u"Spanish - Spain", 191, u'[', u']'},       {u"fr-fr", u"French - France", 191, u'[', u']'},
        {u"it-it", u"Italian - Italy", 191, u'[', u']'},       {u"no-no", u"Norwegian - Norway", 191, u'[', u']'},
        {u"pt-pt", u"Portuguese - Portugal", 191, u'[', u']'}, {u"de-ch", u"German - Switzerland", 191, u'[', u']'},
        {u"fr-ch", u"French - Switzerland", 191, u'[', u']'},  {u"sv-se", u"Swedish - Sweden", 191, u'[', u']'},
        {u"is-is", u"Icelandic - Iceland", 191, u'[', u']'},
    };
    ASSERT_EQ(all_layouts().size(), std::size(rows));
    for (const auto& row : rows) {
        const KeyboardLayout& layout = find_layout(row.id);
        EXPECT_EQ(layout.id, row.id);
        EXPECT_EQ(short_layout_name(layout), row.name);
        EXPECT_EQ(layout.characters.size(), row.characters) << test::printable(row.id);
        EXPECT_EQ(layout.open_bracket, row.open);
        EXPECT_EQ(layout.close_bracket, row.close);
        EXPECT_EQ(layout.keymap_image.size(), kKeymapImageBytes);
    }
    EXPECT_EQ(find_layout(u"DE-DE").id, u"de-de");
    EXPECT_EQ(find_layout(u"xx-yy").id, u"en-us");
    // Rows of the default table as the keyboard description gives them.
    const auto code_of = [](char16_t c) {
        for (const CharacterEntry& e : default_layout().characters)
            if (e.character == c) return e.code;
        return 0u;
    };
    EXPECT_EQ(code_of(u' '), 0x07F1FC40u);
    EXPECT_EQ(code_of(u'!'), 0x07F1FC81u);
    EXPECT_EQ(code_of(u'"'), 0x07F1FCAAu);
}

// A copy of a layout's keymap image with the characters of some keys (no qualifier) replaced.
std::vector<std::uint8_t> image_with(std::u16string_view layout, std::initializer_list<std::pair<int, int>> keys) {
    const std::span<const std::uint8_t> source = find_layout(layout).keymap_image;
    std::vector<std::uint8_t> image(source.begin(), source.end());
    for (auto [raw, character] : keys) {
        image[2 + raw] = 0; // a plain key of one character
        image[130 + 4 * raw + 3] = static_cast<std::uint8_t>(character);
    }
    return image;
}

TEST(KeyboardLayouts, RecognitionFollowsTheProbeOrder) {
    for (const KeyboardLayout& layout : all_layouts())
        EXPECT_EQ(recognize_layout(layout.keymap_image), layout.id) << test::printable(layout.id);
    const struct {
        const char* name;
        std::vector<std::uint8_t> image;
        std::u16string_view layout;
    } rows[] = {
        {"de-de with ' on 0x0B is de-ch", image_with(u"de-de", {{0x0B, '\''}}), u"de-ch"},
        {"de-ch with ß on 0x0B is de-de", image_with(u"de-ch", {{0x0B, 0xDF}}), u"de-de"},
        {"ö on 0x29 and å on 0x1A is sv-se", image_with(u"en-us", {{0x29, 0xF6}, {0x1A, 0xE5}}), u"sv-se"},
        {"ö on 0x29 without å goes on and falls back", image_with(u"en-us", {{0x29, 0xF6}}), u"en-us"},
        {"ö on 0x29 and ð on 0x1A is is-is", image_with(u"en-us", {{0x29, 0xF6}, {0x1A, 0xF0}}), u"is-is"},
        {"ò on 0x29 wins before sv-se", image_with(u"sv-se", {{0x29, 0xF2}}), u"it-it"},
        {"ñ on 0x29 is es-es", image_with(u"sv-se", {{0x29, 0xF1}}), u"es-es"},
    };
    for (const auto& row : rows) EXPECT_EQ(recognize_layout(row.image), row.layout) << row.name;
    std::vector<std::uint8_t> version_2 = image_with(u"de-de", {});
    version_2[0] = 2;
    EXPECT_EQ(recognize_layout(version_2), u"en-us") << "version byte not 1";
    EXPECT_EQ(recognize_layout(std::span(find_layout(u"de-de").keymap_image).first(657)), u"en-us")
        << "an image one byte short";
    EXPECT_EQ(keyboard_layout_text(find_layout(u"de-de").keymap_image), u"de-de\tGerman - Germany");
}

TEST(KeyNames, FixedNamesCharactersAndDeadKeys) {
    const struct {
        std::u16string_view layout;
        std::uint8_t raw;
        char16_t suffix;
        std::optional<std::u16string_view> name;
    } rows[] = {
        {u"en-us", 0x5A, 0, u"Numeric Keypad ("},
        {u"de-de", 0x5A, 0, u"Numeric Keypad ["},
        {u"fr-ca", 0x5A, 0, u"Numeric Keypad @"},
        {u"fr-ca", 0x5B, 0, u"Numeric Keypad \u00b0"},
        {u"en-us", 0x60, 0, u"Left Shift"},
        {u"en-us", 0x60, u'+', u"Shift+"},
        {u"en-us", 0x20, 0, u"A"},
        {u"de-de", 0x15, 0, u"Z"},
        {u"fr-fr", 0x1A, 0, u"^"}, // a dead key is named by its accent
        {u"de-de", 0x0C, 0, u"\u00b4"},
        {u"en-us", 0x63, u'+', u"Control+"},
        {u"en-us", 0x65, 0, std::nullopt}, // Right Alt has no name of its own
        {u"en-us", 0x40, 0, u"Space"},
        {u"en-us", 0x73, 0, u"Play/Pause"},
    };
    for (const auto& row : rows) {
        test::KeyboardDriver driver(row.layout);
        const auto name = raw_key_name(driver.record(), row.raw, row.suffix);
        EXPECT_EQ(name, row.name ? std::optional<std::u16string>(*row.name) : std::nullopt)
            << test::printable(row.layout) << " " << std::hex << int{row.raw};
    }
    test::KeyboardDriver fr(u"fr-fr");
    EXPECT_EQ(raw_key_label(fr.record(), 0x1A), u"^");
    EXPECT_EQ(raw_key_label(fr.record(), 0x10), u"A") << "fr-fr is AZERTY";
    EXPECT_EQ(raw_key_label(fr.record(), 0x5F), u"Help");
}

TEST(KeyNames, DisplayNamesOfCombinations) {
    const struct {
        std::u16string_view layout, text;
        HResult status;
        std::vector<std::u16string_view> names;
    } rows[] = {
        {u"en-us", u"!", status::ok, {u"Shift+1"}},
        {u"en-us", u"shift+a", status::ok, {u"Left Shift", u"A"}},
        {u"en-us", u"CONTROL+LEFT AMIGA+RIGHT AMIGA", status::ok, {u"Control", u"Left Amiga", u"Right Amiga"}},
        {u"en-us", u"\u00e1", status::ok, {u"Alt+F", u"A"}}, // a dead key and its letter
        {u"de-de", u"NUMPAD [", status::ok, {u"Numeric Keypad ["}},
        {u"en-us", u"PLUS", status::ok, {u"Shift+="}},
        {u"en-us", u"+", status::ok, {u"Shift+="}},
        {u"en-us", u"A+PLUS", status::ok, {u"A", u"Shift+="}},
        {u"en-us", u"", status::ok, {u""}}, // no key: an empty name, not the buffer's old content
        {u"en-us", u"NO SUCH KEY", status::from_win32(1168), {}},
        {u"en-us", u"\u4e00", status::from_win32(1168), {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(test::printable(row.text));
        test::KeyboardDriver driver(row.layout);
        std::vector<char16_t> buffer(64, u'#');
        EXPECT_EQ(key_display_name(driver.record(), row.text, buffer), row.status);
        if (row.status != status::ok) continue;
        std::size_t at = 0;
        for (std::u16string_view name : row.names) {
            EXPECT_EQ(std::u16string_view(buffer.data() + at), name);
            at += name.size() + 1;
        }
    }
    test::KeyboardDriver driver(u"en-us");
    std::vector<char16_t> exact(std::u16string_view(u"Shift+1").size() + 1);
    EXPECT_EQ(key_display_name(driver.record(), u"!", exact), status::ok);
    exact.pop_back();
    EXPECT_EQ(key_display_name(driver.record(), u"!", exact), status::from_win32(111)) << "no room for the NUL";
}

} // namespace
} // namespace kq::input
