// The options through their exports, with the native build's in-memory settings and the
// devices a test chooses.

#include "kq_amiga.h"
#include "module/settings_key.h"
#include "platform/native/native_controls.h"
#include "platform/settings_store.h"
#include "tests/support/option_record.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <variant>
#include <vector>

namespace kq {
namespace {

using platform::native::DeviceLists;
using Texts = std::vector<std::u16string>;

class Options : public testing::Test {
protected:
    void SetUp() override {
        platform::native::clear_settings();
        platform::native::set_devices({});
    }
    void TearDown() override { SetUp(); }

    static test::OptionView option(std::uint32_t index) {
        KQOption* record = nullptr;
        EXPECT_EQ(KQGetOption(index, 0, &record, nullptr), KQ_S_OK);
        std::string error;
        const auto view = test::read_option_record(record, error);
        EXPECT_TRUE(view) << "option " << index << ": " << error;
        EXPECT_EQ(KQFreeOption(record), KQ_S_OK);
        return view.value_or(test::OptionView{});
    }
    static void store(std::u16string_view name, std::uint32_t value) {
        platform::write_setting_dword(kPlatformSettingsKey, name, value);
    }
    static void store(std::u16string_view name, std::u16string_view value) {
        platform::write_setting_string(kPlatformSettingsKey, name, value);
    }
};

// With nothing stored and no devices: every record reads back in its layout, each choice
// described by the option's description, the current value the default; spot checks of names,
// groups and choices.
TEST_F(Options, EveryOptionWithNothingStoredAndNoDevices) {
    const struct {
        std::u16string_view name;
        std::uint32_t type;
        std::u16string_view default_value;
        Texts labels;
    } rows[] = {{u"MouseHack", 1, u"0", {}},
                {u"AutoMouseUntrap", 1, u"1", {}},
                {u"WindowsPrinter", 2, u"", {u"Default"}},
                {u"WindowsSerial", 2, u"", {u"None"}},
                {u"WindowsMIDIIn", 2, u"none", {u"None"}},
                {u"WindowsMIDIOut", 2, u"none", {u"None"}}};
    for (std::uint32_t index = 0; index < std::size(rows); ++index) {
        SCOPED_TRACE(index);
        const test::OptionView view = option(index);
        const std::u16string default_value(rows[index].default_value);
        EXPECT_EQ(std::tuple(view.name, view.type, view.flags, view.current_value, view.default_value, view.labels),
                  std::tuple(std::u16string(rows[index].name), rows[index].type, 0u, default_value, default_value,
                             rows[index].labels));
        EXPECT_EQ(view.values, Texts(view.labels.size(), view.default_value));
        EXPECT_FALSE(view.description.empty() || view.label.empty());
        EXPECT_EQ(std::pair(view.group_label.has_value(), view.group_description.has_value()),
                  std::pair(index < 2, index < 2));
        EXPECT_EQ(view.descriptions, Texts(view.values.size(), view.description));
    }
    EXPECT_EQ(option(0).label, u"Synchronize to host mouse");
    EXPECT_EQ(option(1).group_label, u"Mouse Pointer");
    EXPECT_EQ(option(4).label, u"Windows MIDI Input");
    EXPECT_EQ(option(2).description, u"Choose the printer to which the Amiga printer output will be sent.");
    KQOption* record = reinterpret_cast<KQOption*>(1);
    EXPECT_EQ(KQGetOption(6, 0, &record, nullptr), KQ_S_FALSE);
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(KQGetOption(0xFFFFFFFFu, 0, &record, nullptr), KQ_S_FALSE);
    EXPECT_EQ(KQGetOption(0, 0, nullptr, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(KQFreeOption(nullptr), KQ_S_OK);
}

TEST_F(Options, StoredValuesBecomeCurrent) {
    const struct {
        const char* name;
        std::vector<std::pair<std::u16string_view, std::variant<std::uint32_t, std::u16string_view>>> stored;
        std::uint32_t index;
        std::u16string_view current;
    } rows[] = {
        {"boolean set", {{u"MouseHack", 1u}}, 0, u"1"},
        {"formatted as a signed number", {{u"MouseHack", 0xFFFFFFFFu}}, 0, u"-1"},
        {"value names ignore case", {{u"MOUSEHACK", 1u}}, 0, u"1"},
        {"unreadable type is absent", {{u"MouseHack", u"1"}}, 0, u"0"},
        {"untrap stored", {{u"AutoMouseUntrap", 0u}}, 1, u"0"},
        {"older setting of opposite sense, off", {{u"DisableMagicMouse", 0u}}, 1, u"1"},
        {"older setting of opposite sense, on", {{u"DisableMagicMouse", 5u}}, 1, u"0"},
        {"newer setting wins", {{u"DisableMagicMouse", 0u}, {u"AutoMouseUntrap", 0u}}, 1, u"0"},
        {"a printer that has gone away", {{u"WindowsPrinter", u"Old Laser"}}, 2, u"Old Laser"},
        {"serial port", {{u"WindowsSerial", u"COM2"}}, 3, u"COM2"},
        {"empty MIDI value", {{u"WindowsMIDIIn", u""}}, 4, u"none"},
        {"MIDI default", {{u"WindowsMIDIOut", u"default"}}, 5, u"default"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        platform::native::clear_settings();
        for (const auto& [name, value] : row.stored) std::visit([&](auto v) { store(name, v); }, value);
        EXPECT_EQ(option(row.index).current_value, row.current);
    }
}

TEST_F(Options, ChoiceListsFollowTheDevices) {
    platform::native::set_devices(DeviceLists{
        .printers = {u"Laser", u"\\\\server\\Ink"},
        .com_port_friendly_names = {u"USB Serial (COM3)", u"Modem", u"Bluetooth (COM12)"},
        .dos_devices = {u"COM1", u"COM3", u"COM12"},
        .midi_inputs = {},
        .midi_outputs = {u"Synth"},
    });
    const struct {
        std::uint32_t index;
        Texts values, labels;
    } rows[] = {
        {2, {u"", u"Laser", u"\\\\server\\Ink"}, {u"Default", u"Laser", u"\\\\server\\Ink"}},
        // Friendly names first, then the probe of COM0 to COM9, each port once.
        {3, {u"", u"COM3", u"COM12", u"COM1"}, {u"None", u"COM3", u"COM12", u"COM1"}},
        {4, {u"none"}, {u"None"}},
        {5, {u"none", u"default", u"Synth"}, {u"None", u"Default", u"Synth"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.index);
        const test::OptionView view = option(row.index);
        EXPECT_EQ(view.values, row.values);
        EXPECT_EQ(view.labels, row.labels);
        EXPECT_EQ(view.descriptions, Texts(row.values.size(), view.description));
    }
}

TEST_F(Options, SettingStoresDeletesOrRefuses) {
    const auto dword = [](std::u16string_view name) {
        return platform::read_setting_dword(kPlatformSettingsKey, name);
    };
    const auto text = [](std::u16string_view name) {
        return platform::read_setting_string(kPlatformSettingsKey, name);
    };
    const struct {
        const char16_t *name, *value;
        kq_status status;
        std::optional<std::uint32_t> number;
        std::optional<std::u16string> string;
    } rows[] = {
        {u"MouseHack", u"0x1", KQ_S_OK, 1u, std::nullopt},
        {u"MouseHack", u"017", KQ_S_OK, 15u, std::nullopt},
        {u"MouseHack", u"-1", KQ_S_OK, 0xFFFFFFFFu, std::nullopt},
        {u"AutoMouseUntrap", u"yes", KQ_S_OK, 0u, std::nullopt},
        {u"AutoMouseUntrap", nullptr, KQ_S_OK, 0u, std::nullopt},
        {u"mousehack", u"1", KQ_E_INVALIDARG, std::nullopt, std::nullopt},
        {u"WindowsMIDIOut", u"Synth", KQ_S_OK, std::nullopt, u"Synth"},
        {u"WindowsPrinter", u"", KQ_S_OK, std::nullopt, std::nullopt},
        {u"WindowsSerial", nullptr, KQ_S_OK, std::nullopt, std::nullopt},
        {u"NoSuchOption", u"1", KQ_E_INVALIDARG, std::nullopt, std::nullopt},
        {nullptr, u"1", KQ_E_INVALIDARG, std::nullopt, std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name ? test::printable(row.name) : "null");
        platform::native::clear_settings();
        store(u"WindowsPrinter", u"Laser"); // deleted by an empty value
        store(u"WindowsSerial", u"COM1");
        EXPECT_EQ(KQSetOption(row.name, row.value, nullptr, nullptr), row.status);
        if (row.name == nullptr) continue;
        const std::u16string_view name = row.name;
        if (name.starts_with(u"Windows")) {
            EXPECT_EQ(text(name), row.string);
        } else {
            EXPECT_EQ(dword(name), row.number);
        }
    }
}

} // namespace
} // namespace kq
