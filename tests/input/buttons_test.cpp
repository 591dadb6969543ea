#include "input/buttons.h"

#include "platform/string_table.h"
#include "tests/support/manifest_text.h"

#include <gtest/gtest.h>

namespace kq::input {
namespace {

TEST(Buttons, NamesByControllerKind) {
    const struct {
        std::uint32_t mask, kind;
        std::optional<std::u16string_view> name;
    } rows[] = {
        {1, 2, u"Right"},        {2, 3, u"Left"},        {4, 4, u"Down"},         {8, 2, u"Up"},
        {16, 2, u"Fire 1"},      {16, 3, u"Fire 1"},     {16, 4, u"Red"},         {32, 3, u"Fire 2"},
        {32, 4, u"Blue"},        {64, 3, u"Fire 3"},     {64, 2, std::nullopt},   {64, 4, u"Yellow"},
        {128, 4, u"Green"},      {128, 3, std::nullopt}, {256, 4, u"Play/Pause"}, {512, 4, u"Reverse"},
        {1024, 4, u"Forward"},   {3, 2, std::nullopt},   {16, 5, std::nullopt},   {16, 1, std::nullopt},
        {2048, 4, std::nullopt}, {0, 4, std::nullopt},
    };
    for (const auto& row : rows) {
        const auto id = button_name_id(row.mask, row.kind);
        EXPECT_EQ(id ? std::optional(platform::load_string(*id, 80)) : std::nullopt,
                  row.name ? std::optional<std::u16string>(*row.name) : std::nullopt)
            << "mask " << row.mask << " kind " << row.kind;
    }
}

TEST(Buttons, AssignmentsFillTheirSlots) {
    using Kind = ButtonSlot::Kind;
    const struct {
        std::optional<std::u16string_view> value, autorepeat, rate;
        std::uint32_t device;
        Kind kind;
        std::uint32_t mask;
        std::u16string_view key;
        std::uint32_t autorepeat_on, autorepeat_rate;
    } rows[] = {
        {u"BUTTON-2", u"TRUE", u"12", 2, Kind::button, 32, u"", 1, 12},
        {u"unused", std::nullopt, std::nullopt, 2, Kind::unused, 0, u"", 0, 0},
        {std::nullopt, u"yes", u"x", 2, Kind::nothing, 0, u"", 0, 0},
        {u"undefined", std::nullopt, std::nullopt, 2, Kind::nothing, 0, u"", 0, 0},
        {u"SPACE", std::nullopt, std::nullopt, 2, Kind::nothing, 0, u"", 0, 0},
        {u"undefined", std::nullopt, std::nullopt, 255, Kind::key, 0, u"", 0, 0},
        {u"SPACE", u"true", u"5", 255, Kind::key, 0, u"SPACE", 1, 5},
        {std::nullopt, std::nullopt, std::nullopt, 255, Kind::unused, 0, u"", 0, 0},
        {u"Unused", std::nullopt, std::nullopt, 255, Kind::unused, 0, u"", 0, 0},
    };
    for (const auto& row : rows) {
        ButtonSlot slot;
        slot.kind = ButtonSlot::key;
        slot.key_name = u"stale";
        parse_assignment(slot, row.value, row.autorepeat, row.rate, row.device);
        EXPECT_EQ(slot.kind, row.kind);
        EXPECT_EQ(slot.mask, row.mask);
        EXPECT_EQ(slot.key_name, row.key);
        EXPECT_EQ(slot.autorepeat, row.autorepeat_on);
        EXPECT_EQ(slot.autorepeat_rate, row.autorepeat_rate);
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
    manifest::Element pad = document.find_input_port(1, false);
    const ButtonMapping from_guest = read_button_mapping(document, pad, ButtonDirection::from_guest);
    EXPECT_EQ(from_guest.device_type, 4u);
    EXPECT_EQ(from_guest.slots[4].kind, ButtonSlot::button) << "button-1 is assigned button-2";
    EXPECT_EQ(from_guest.slots[4].mask, 32u);
    EXPECT_EQ(from_guest.slots[4].autorepeat, 1u);
    EXPECT_EQ(from_guest.slots[0].kind, ButtonSlot::unused);
    EXPECT_EQ(from_guest.slots[6].kind, ButtonSlot::nothing) << "an unknown name is ignored";

    const ButtonMapping from_source = read_button_mapping(document, pad, ButtonDirection::from_source);
    EXPECT_EQ(from_source.slots[5].kind, ButtonSlot::button) << "button-2 is the source of button-1";
    EXPECT_EQ(from_source.slots[5].mask, 16u);
    EXPECT_EQ(from_source.slots[6].kind, ButtonSlot::nothing) << "button-3 names no known button";

    const ButtonMapping keys =
        read_button_mapping(document, document.find_peripheral(u"input-virtualbuttons"), ButtonDirection::from_guest);
    EXPECT_EQ(keys.device_type, kKeyAssignedDevice);
    EXPECT_EQ(keys.slots[4].kind, ButtonSlot::key);
    EXPECT_EQ(keys.slots[4].key_name, u"SPACE");
}

} // namespace
} // namespace kq::input
