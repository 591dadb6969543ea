// The layouts, their recognition from a keymap image, key names and display names, device
// commands and controller buttons.

#include "input/keyboard_layouts.h"

#include "input/buttons.h"
#include "input/device_commands.h"
#include "input/key_names.h"
#include "kq_amiga.h"
#include "platform/string_table.h"
#include "tests/support/guest_keyboard.h"
#include "tests/support/keyboard_driver.h"
#include "tests/support/manifest_text.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kq;
using namespace kq::input;
using test::printable;
using Name = std::optional<std::u16string_view>;

std::optional<std::u16string> owned(Name name) { return name ? std::optional<std::u16string>(*name) : std::nullopt; }

// Each layout is found by its id in any case, recognised from its own keymap image, types 191
// characters, and takes its keypad brackets from the guest keymap's keys 0x5A and 0x5B.
TEST(KeyboardLayouts, EveryLayoutAgainstItsGuestKeymap) {
    ASSERT_EQ(all_layouts().size(), 15u);
    for (const KeyboardLayout& layout : all_layouts()) {
        SCOPED_TRACE(printable(layout.id));
        std::u16string upper(layout.id);
        for (char16_t& c : upper) c = c >= u'a' && c <= u'z' ? c - 32 : c;
        EXPECT_EQ(&find_layout(upper), &layout);
        EXPECT_EQ(recognize_layout(layout.keymap_image), layout.id);
        EXPECT_EQ(layout.characters.size(), 191u);
        EXPECT_EQ(layout.keymap_image.size(), kKeymapImageBytes);
        test::GuestKeyboard guest(test::keymap_facts(layout.id));
        for (const std::uint8_t raw : {0x5A, 0x5B}) guest.feed(event::press(raw));
        EXPECT_EQ(guest.take_output(), (std::u16string{layout.open_bracket, layout.close_bracket}));
    }
    EXPECT_EQ(find_layout(u"xx-yy").id, u"en-us");
    EXPECT_EQ(short_layout_name(find_layout(u"en-us")), u"English - US");
    EXPECT_EQ(short_layout_name(find_layout(u"de-ch")), u"German - Switzerland");
    EXPECT_EQ(keyboard_layout_text(find_layout(u"de-de").keymap_image), u"de-de\tGerman - Germany");
    // Rows of the default table as the keyboard description gives them.
    for (const auto& [character, code] : {std::pair{u' ', 0x07F1FC40u}, {u'!', 0x07F1FC81u}, {u'"', 0x07F1FCAAu}})
        EXPECT_TRUE(std::ranges::any_of(default_layout().characters, [&](const CharacterEntry& e) {
            return e.character == character && e.code == code;
        }));
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
    std::vector<std::uint8_t> version_2 = image_with(u"de-de", {});
    version_2[0] = 2;
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
        {"version byte not 1", version_2, u"en-us"},
    };
    for (const auto& row : rows) EXPECT_EQ(recognize_layout(row.image), row.layout) << row.name;
    EXPECT_EQ(recognize_layout(std::span(find_layout(u"de-de").keymap_image).first(657)), u"en-us") << "one byte short";
}

TEST(KeyNames, FixedNamesCharactersAndDeadKeys) {
    const struct {
        std::u16string_view layout;
        std::uint8_t raw;
        char16_t suffix;
        Name name;
    } rows[] = {
        {u"fr-ca", 0x5A, 0, u"Numeric Keypad @"},
        {u"fr-ca", 0x5B, 0, u"Numeric Keypad \u00b0"},
        {u"en-us", 0x60, 0, u"Left Shift"},
        {u"en-us", 0x60, u'+', u"Shift+"},
        {u"de-de", 0x15, 0, u"Z"},
        {u"de-de", 0x0C, 0, u"\u00b4"}, // dead keys: by their accent
        {u"en-us", 0x63, u'+', u"Control+"},
        {u"en-us", 0x65, 0, std::nullopt}, // Right Alt: no name
        {u"en-us", 0x40, 0, u"Space"},
        {u"en-us", 0x73, 0, u"Play/Pause"},
    };
    for (const auto& row : rows) {
        test::KeyboardDriver driver(row.layout);
        EXPECT_EQ(raw_key_name(driver.record(), row.raw, row.suffix), owned(row.name))
            << printable(row.layout) << " " << std::hex << int{row.raw};
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
        SCOPED_TRACE(printable(row.text));
        test::KeyboardDriver driver(row.layout);
        std::vector<char16_t> buffer(64, u'#');
        EXPECT_EQ(key_display_name(driver.record(), row.text, buffer), row.status);
        const char16_t* at = buffer.data();
        for (std::u16string_view name : row.names) {
            EXPECT_EQ(std::u16string_view(at), name);
            at += name.size() + 1;
        }
    }
    test::KeyboardDriver driver(u"en-us");
    std::vector<char16_t> exact(std::u16string_view(u"Shift+1").size() + 1);
    EXPECT_EQ(key_display_name(driver.record(), u"!", exact), status::ok);
    exact.pop_back();
    EXPECT_EQ(key_display_name(driver.record(), u"!", exact), status::from_win32(111)) << "no room for the NUL";
}

TEST(DeviceCommands, TablesAndTheRecord) {
    const struct {
        std::uint32_t index, category;
        std::u16string_view model;
        Name name, command;
    } rows[] = {
        {1, 2, u"A-CDTV", u"Previous", u"KEY_RAW_DOWN 0x74 KEY_RAW_UP 0x74"},
        {5, 2, u"a-cdtv", u"Rewind", u"KEY_RAW_DOWN 0x76 KEY_RAW_UP 0x76"},
        {6, 2, u"a-cdtv", {}, {}},
        {0, 2, u"a-500", {}, {}},
        {0, 0x102, u"a-cdtv", u"Play/Pause", u"KEY_RAW_DOWN 0x73 KEY_RAW_UP 0x73"}, // the low byte counts
        {0, 7, u"", u"Left Amiga\tLeft Amiga", u"KEY_RAW_DOWN 0x66 KEY_RAW_UP 0x66"},
        {2, 7, u"a-500", u"Soft Reset\tControl+Left Amiga+Right Amiga",
         u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 KEY_RAW_DOWN 0x67 KEY_RAW_UP 0x67 KEY_RAW_UP 0x66 KEY_RAW_UP 0x63"},
        {3, 7, u"a-1200", u"Help\tHelp", u"KEY_RAW_DOWN 0x5F KEY_RAW_UP 0x5F"},
        {4, 7, u"a-1200", {}, {}},
        {0, 3, u"a-cdtv", {}, {}},
    };
    for (const auto& row : rows) {
        const std::optional<DeviceCommandText> text = device_command(row.index, row.category, row.model);
        EXPECT_EQ(text ? std::optional(text->name) : std::nullopt, owned(row.name)) << row.index << "/" << row.category;
        EXPECT_EQ(text ? std::optional(text->command) : std::nullopt, owned(row.command));
    }
    // One block: the header, right after it the name and its NUL, then the command.
    const DeviceCommandText text{u"Soft Reset\tKeys", u"KEY_RAW_DOWN 0x63 KEY_RAW_UP 0x63"};
    const platform::HeapBlock block = pack_device_command(text);
    ASSERT_TRUE(block);
    const auto* record = reinterpret_cast<const KQDeviceCommand*>(block.data());
    EXPECT_EQ(record->cbSize, 24u);
    EXPECT_EQ(reinterpret_cast<const std::byte*>(record->name), block.data() + 24);
    EXPECT_EQ(record->command, record->name + text.name.size() + 1);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record->name)), text.name);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record->command)), text.command);
}

TEST(Buttons, NamesByControllerKind) {
    const struct {
        std::uint32_t mask, kind;
        Name name;
    } rows[] = {
        {1, 2, u"Right"},     {2, 3, u"Left"},       {4, 4, u"Down"},
        {8, 2, u"Up"},        {16, 2, u"Fire 1"},    {16, 3, u"Fire 1"},
        {16, 4, u"Red"},      {32, 3, u"Fire 2"},    {32, 4, u"Blue"},
        {64, 3, u"Fire 3"},   {64, 2, {}},           {64, 4, u"Yellow"},
        {128, 4, u"Green"},   {128, 3, {}},          {256, 4, u"Play/Pause"},
        {512, 4, u"Reverse"}, {1024, 4, u"Forward"}, {3, 2, {}},
        {16, 5, {}},          {16, 1, {}},           {2048, 4, {}},
        {0, 4, {}},
    };
    for (const auto& row : rows) {
        const auto id = button_name_id(row.mask, row.kind);
        EXPECT_EQ(id ? std::optional(platform::load_string(*id, 80)) : std::nullopt, owned(row.name))
            << "mask " << row.mask << " kind " << row.kind;
    }
}

TEST(Buttons, AssignmentsFillTheirSlots) {
    using Kind = ButtonSlot::Kind;
    const struct {
        Name value, autorepeat, rate;
        std::uint32_t device;
        Kind kind;
        std::uint32_t mask;
        std::u16string_view key;
        std::uint32_t autorepeat_on, autorepeat_rate;
    } rows[] = {
        {u"BUTTON-2", u"TRUE", u"12", 2, Kind::button, 32, u"", 1, 12},
        {u"unused", {}, {}, 2, Kind::unused, 0, u"", 0, 0},
        {{}, u"yes", u"x", 2, Kind::nothing, 0, u"", 0, 0},
        {u"undefined", {}, {}, 2, Kind::nothing, 0, u"", 0, 0},
        {u"SPACE", {}, {}, 2, Kind::nothing, 0, u"", 0, 0},
        {u"undefined", {}, {}, 255, Kind::key, 0, u"", 0, 0},
        {u"SPACE", u"true", u"5", 255, Kind::key, 0, u"SPACE", 1, 5},
        {{}, {}, {}, 255, Kind::unused, 0, u"", 0, 0},
        {u"Unused", {}, {}, 255, Kind::unused, 0, u"", 0, 0},
    };
    for (const auto& row : rows) {
        ButtonSlot slot{.kind = ButtonSlot::key, .key_name = u"stale"};
        parse_assignment(slot, row.value, row.autorepeat, row.rate, row.device);
        EXPECT_EQ(std::tie(slot.kind, slot.mask, slot.key_name, slot.autorepeat, slot.autorepeat_rate),
                  std::tie(row.kind, row.mask, row.key, row.autorepeat_on, row.autorepeat_rate))
            << printable(row.value.value_or(u"(none)"));
    }
}

TEST(Buttons, MappingsReadFromAPortsButtonSetInBothDirections) {
    manifest::ManifestDocument document;
    ASSERT_EQ(
        document.load(test::kq9_with_configuration(
                          "<peripheral unit=\"1\" buttons=\"pad\">input-joypad</peripheral>"
                          "<peripheral unit=\"0\" buttons=\"keys\">input-virtualbuttons</peripheral>"
                          "<buttons id=\"pad\"><button name=\"button-1\" source=\"button-2\" autorepeat=\"true\"/>"
                          "<button name=\"button-up\" source=\"unused\"/><button name=\"no-such\" source=\"button-3\"/>"
                          "</buttons><buttons id=\"keys\"><button name=\"button-1\" source=\"SPACE\"/></buttons>")
                          .c_str()),
        status::ok);
    const manifest::Element pad = document.find_input_port(1, false);
    const ButtonMapping from_guest = read_button_mapping(document, pad, ButtonDirection::from_guest);
    EXPECT_EQ(from_guest.device_type, 4u);
    EXPECT_EQ(std::tie(from_guest.slots[4].kind, from_guest.slots[4].mask, from_guest.slots[4].autorepeat),
              std::tuple(ButtonSlot::button, 32u, 1u))
        << "button-1 is assigned button-2";
    EXPECT_EQ(from_guest.slots[0].kind, ButtonSlot::unused);
    EXPECT_EQ(from_guest.slots[6].kind, ButtonSlot::nothing) << "an unknown name is ignored";
    const ButtonMapping from_source = read_button_mapping(document, pad, ButtonDirection::from_source);
    EXPECT_EQ(std::tie(from_source.slots[5].kind, from_source.slots[5].mask), std::tuple(ButtonSlot::button, 16u))
        << "button-2 is the source of button-1";
    EXPECT_EQ(from_source.slots[6].kind, ButtonSlot::nothing) << "button-3 names no known button";
    const ButtonMapping keys =
        read_button_mapping(document, document.find_peripheral(u"input-virtualbuttons"), ButtonDirection::from_guest);
    EXPECT_EQ(keys.device_type, kKeyAssignedDevice);
    EXPECT_EQ(std::tie(keys.slots[4].kind, keys.slots[4].key_name), std::tuple(ButtonSlot::key, u"SPACE"));
}
