#pragma once
// The buttons of the guest's game controllers: their names in the manifest ("button-up" ...
// "button-7"), their mask bits, the names shown for each kind of controller, and the button
// mappings of a port (which button or key each guest button is assigned).

#include "manifest/manifest_document.h"
#include "module/status.h"
#include "string_ids.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kq::input {

struct ButtonName {
    std::u16string_view name;
    std::uint32_t mask;
};
// In slot order.
// clang-format off
inline constexpr std::array<ButtonName, 11> kButtonNames{{
    {u"button-up", 8}, {u"button-down", 4}, {u"button-left", 2}, {u"button-right", 1},
    {u"button-1", 16}, {u"button-2", 32}, {u"button-3", 64}, {u"button-4", 128},
    {u"button-5", 256}, {u"button-6", 512}, {u"button-7", 1024},
}};
// clang-format on

// Controller kinds for button names: a two-button joystick, a three-button joystick, a
// seven-button game pad.
inline constexpr std::uint32_t kTwoButtonJoystick = 2, kThreeButtonJoystick = 3, kSevenButtonPad = 4;

// The string id of the name of button `mask` (exactly one bit) on a controller of `kind`; nullopt
// for a pair that has no name.
std::optional<StringId> button_name_id(std::uint32_t mask, std::uint32_t kind) noexcept;

// A port whose buttons are assigned keyboard keys by name.
inline constexpr std::uint32_t kKeyAssignedDevice = 255;

struct ButtonSlot {
    enum Kind : std::uint32_t { nothing = 0, unused = 1, button = 2, key = 3 };
    std::uint32_t kind = nothing;
    std::uint32_t mask = 0;
    std::uint32_t autorepeat = 0;
    std::uint32_t autorepeat_rate = 0;
    std::u16string key_name;
};

struct ButtonMapping {
    std::uint32_t device_type = 0;
    std::array<ButtonSlot, 11> slots{};
};

// The slot of a button name (without regard to case); null for any other name.
ButtonSlot* slot_of(ButtonMapping& mapping, std::u16string_view name);

// Fills a slot from one assignment: on a key-assigned device an absent value or "unused" is
// unused, "undefined" a key without a name, anything else the key of that name; elsewhere an
// absent value is nothing, "unused" unused, a button name that button, anything else nothing.
// Autorepeat is on exactly for "true"; the rate is a decimal number (0 when absent).
void parse_assignment(ButtonSlot& slot, std::optional<std::u16string_view> value,
                      std::optional<std::u16string_view> autorepeat, std::optional<std::u16string_view> rate,
                      std::uint32_t device_type);

// Which side of a `button` element chooses the slot: the guest's button ("name") or the source
// assigned to it ("source"); the other side is the assigned value.
enum class ButtonDirection { from_guest, from_source };

// Applies one assignment; names that have no slot are ignored.
void apply_button(ButtonMapping& mapping, std::optional<std::u16string_view> first_name,
                  std::optional<std::u16string_view> second_name, std::optional<std::u16string_view> autorepeat,
                  std::optional<std::u16string_view> rate, ButtonDirection direction);

// The mapping of a port from its `buttons` set: every `button` child, with attributes "name"
// (a guest button), "source" (a button or key name), "autorepeat" and "autorepeat-rate". The
// device type is the port's content code, 255 for a port of on-screen buttons.
ButtonMapping read_button_mapping(const manifest::ManifestDocument& document, manifest::Element port,
                                  ButtonDirection direction);

} // namespace kq::input
