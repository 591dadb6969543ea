#pragma once
// The platform options that the host lists, in the order of their index. Texts are ids of the
// module's string table (0: none).

#include "string_ids.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kq {

enum class OptionType : std::uint32_t { boolean = 1, choice = 2 };
enum class OptionDevices { none, printers, serial_ports, midi_inputs, midi_outputs };

struct OptionRow {
    std::u16string_view name; // also the registry value name; compared with letter case
    OptionType type;
    StringId label, description, group_label, group_description;
    std::u16string_view value_when_absent;
    std::u16string_view default_value;
    // Choice lists: the fixed first choice, then "default" when that kind of device exists (and
    // the option offers it), then one choice per device.
    OptionDevices devices = OptionDevices::none;
    std::u16string_view first_choice_value = {};
    StringId first_choice_label = 0;
    bool offers_default_device = false;
    // An older boolean of the opposite sense, read when this one is not stored.
    std::u16string_view inverse_legacy_name = {};
};

inline constexpr std::u16string_view kDefaultDeviceValue = u"default";
inline constexpr StringId kDefaultDeviceLabel = strings::default_device;

// clang-format off
inline constexpr std::array kOptionTable{
    OptionRow{.name = u"MouseHack", .type = OptionType::boolean, .label = strings::synchronize_mouse_label,
              .description = strings::synchronize_mouse_description, .group_label = strings::mouse_pointer_group_label,
              .group_description = strings::mouse_pointer_group_description, .value_when_absent = u"0",
              .default_value = u"0"},
    OptionRow{.name = u"AutoMouseUntrap", .type = OptionType::boolean, .label = strings::auto_mouse_untrap_label,
              .description = strings::auto_mouse_untrap_description, .group_label = strings::mouse_pointer_group_label,
              .group_description = strings::mouse_pointer_group_description, .value_when_absent = u"1",
              .default_value = u"1", .inverse_legacy_name = u"DisableMagicMouse"},
    OptionRow{.name = u"WindowsPrinter", .type = OptionType::choice, .label = strings::windows_printer_label,
              .description = strings::windows_printer_description, .group_label = 0, .group_description = 0,
              .value_when_absent = u"", .default_value = u"", .devices = OptionDevices::printers,
              .first_choice_value = u"", .first_choice_label = strings::default_printer},
    OptionRow{.name = u"WindowsSerial", .type = OptionType::choice, .label = strings::windows_serial_port_label,
              .description = strings::windows_serial_port_description, .group_label = 0, .group_description = 0,
              .value_when_absent = u"", .default_value = u"", .devices = OptionDevices::serial_ports,
              .first_choice_value = u"", .first_choice_label = strings::no_serial_port},
    OptionRow{.name = u"WindowsMIDIIn", .type = OptionType::choice, .label = strings::windows_midi_input_label,
              .description = strings::windows_midi_input_description, .group_label = 0, .group_description = 0,
              .value_when_absent = u"none", .default_value = u"none", .devices = OptionDevices::midi_inputs,
              .first_choice_value = u"none", .first_choice_label = strings::no_midi_device,
              .offers_default_device = true},
    OptionRow{.name = u"WindowsMIDIOut", .type = OptionType::choice, .label = strings::windows_midi_output_label,
              .description = strings::windows_midi_output_description, .group_label = 0, .group_description = 0,
              .value_when_absent = u"none", .default_value = u"none", .devices = OptionDevices::midi_outputs,
              .first_choice_value = u"none", .first_choice_label = strings::no_midi_device,
              .offers_default_device = true},
};
// clang-format on

} // namespace kq
