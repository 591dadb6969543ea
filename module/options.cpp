#include "module/options.h"

#include "common/integer_text.h"
#include "module/option_table.h"
#include "module/record_packer.h"
#include "module/serial_ports.h"
#include "module/settings_key.h"
#include "platform/devices.h"
#include "platform/settings_store.h"

#include <algorithm>
#include <vector>

namespace kq {
namespace {

namespace field {
constexpr std::size_t name = 8, label = 16, description = 24, group_label = 32, group_description = 40, type = 48,
                      flags = 52, choice_values = 56, choice_labels = 64, choice_descriptions = 72, count = 80,
                      current_value = 120, default_value = 128;
} // namespace field

std::vector<std::u16string> devices_of(OptionDevices devices) {
    switch (devices) {
    case OptionDevices::printers: return platform::printer_names();
    case OptionDevices::serial_ports: return list_serial_ports();
    case OptionDevices::midi_inputs: return platform::midi_input_names();
    case OptionDevices::midi_outputs: return platform::midi_output_names();
    case OptionDevices::none: break;
    }
    return {};
}

TextRef id(StringId string_id) { return string_id == 0 ? TextRef() : TextRef::from_string_id(string_id); }

} // namespace

std::u16string current_option_value(std::size_t index) {
    const OptionRow& option = kOptionTable.at(index);
    if (option.type == OptionType::boolean) {
        if (const auto stored = platform::read_setting_dword(kPlatformSettingsKey, option.name))
            return decimal_text(static_cast<std::int32_t>(*stored)); // as "%d"
        if (!option.inverse_legacy_name.empty()) {
            if (const auto legacy = platform::read_setting_dword(kPlatformSettingsKey, option.inverse_legacy_name))
                return *legacy == 0 ? u"1" : u"0";
        }
        return std::u16string(option.value_when_absent);
    }
    std::optional<std::u16string> stored = platform::read_setting_string(kPlatformSettingsKey, option.name);
    return stored && !stored->empty() ? std::move(*stored) : std::u16string(option.value_when_absent);
}

HResult get_option_record(std::uint32_t index, platform::HeapBlock& record) {
    record = platform::HeapBlock();
    if (index >= kOptionTable.size()) return status::nothing_more;
    const OptionRow& option = kOptionTable[index];

    std::vector<TextRef> values, labels, descriptions;
    std::vector<std::u16string> devices;
    if (option.type == OptionType::choice) {
        devices = devices_of(option.devices);
        values.push_back(option.first_choice_value);
        labels.push_back(id(option.first_choice_label));
        if (option.offers_default_device && !devices.empty()) {
            values.push_back(kDefaultDeviceValue);
            labels.push_back(id(kDefaultDeviceLabel));
        }
        for (const std::u16string& device : devices) {
            values.push_back(std::u16string_view(device));
            labels.push_back(std::u16string_view(device));
        }
        descriptions.assign(values.size(), id(option.description));
    }
    const std::u16string current = current_option_value(index);

    RecordPacker packer(kOptionRecordBytes);
    packer.set_u32(field::type, static_cast<std::uint32_t>(option.type));
    packer.set_u32(field::flags, 0);
    packer.set_u32(field::count, static_cast<std::uint32_t>(values.size()));
    packer.add_text(field::name, option.name);
    packer.add_text(field::label, id(option.label));
    packer.add_text(field::description, id(option.description));
    packer.add_text(field::group_label, id(option.group_label));
    packer.add_text(field::group_description, id(option.group_description));
    packer.add_text_array(field::choice_values, values);
    packer.add_text_array(field::choice_labels, labels);
    packer.add_text_array(field::choice_descriptions, descriptions);
    packer.add_text(field::current_value, std::u16string_view(current));
    packer.add_text(field::default_value, option.default_value);
    record = packer.pack(platform::Heap::local);
    return record ? status::ok : status::out_of_memory;
}

HResult set_option(std::u16string_view name, std::u16string_view value) {
    const auto option = std::ranges::find(kOptionTable, name, &OptionRow::name);
    if (option == kOptionTable.end()) return status::invalid_argument;
    platform::SystemError error = 0;
    if (option->type == OptionType::boolean) {
        const std::int32_t number = read_integer_prefix(value, 0).value_or(0);
        error = platform::write_setting_dword(kPlatformSettingsKey, option->name, static_cast<std::uint32_t>(number));
    } else if (!value.empty()) {
        error = platform::write_setting_string(kPlatformSettingsKey, option->name, value);
    } else {
        error = platform::delete_setting(kPlatformSettingsKey, option->name);
    }
    return status::from_win32(error);
}

} // namespace kq
