#include "input/buttons.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "manifest/input_ports.h"
#include "string_ids.h"

namespace kq::input {
namespace {

struct ButtonLabel {
    std::uint32_t mask;
    StringId two_button, three_button, seven_button; // 0: no name
};

constexpr ButtonLabel kButtonLabels[] = {
    {1, strings::direction_right, strings::direction_right, strings::direction_right},
    {2, strings::direction_left, strings::direction_left, strings::direction_left},
    {4, strings::direction_down, strings::direction_down, strings::direction_down},
    {8, strings::direction_up, strings::direction_up, strings::direction_up},
    {16, strings::fire_1_button, strings::fire_1_button, strings::red_button},
    {32, strings::fire_2_button, strings::fire_2_button, strings::blue_button},
    {64, 0, strings::fire_3_button, strings::yellow_button},
    {128, 0, 0, strings::green_button},
    {256, 0, 0, strings::play_pause_button},
    {512, 0, 0, strings::reverse_button},
    {1024, 0, 0, strings::forward_button},
};

} // namespace

std::optional<StringId> button_name_id(std::uint32_t mask, std::uint32_t kind) noexcept {
    for (const ButtonLabel& label : kButtonLabels) {
        if (label.mask != mask) continue;
        const StringId id = kind == kTwoButtonJoystick     ? label.two_button
                            : kind == kThreeButtonJoystick ? label.three_button
                            : kind == kSevenButtonPad      ? label.seven_button
                                                           : 0;
        if (id != 0) return id;
    }
    return std::nullopt;
}

ButtonSlot* slot_of(ButtonMapping& mapping, std::u16string_view name) {
    for (std::size_t i = 0; i < kButtonNames.size(); ++i)
        if (equal_ignoring_case(kButtonNames[i].name, name)) return &mapping.slots[i];
    return nullptr;
}

void parse_assignment(ButtonSlot& slot, std::optional<std::u16string_view> value,
                      std::optional<std::u16string_view> autorepeat, std::optional<std::u16string_view> rate,
                      std::uint32_t device_type) {
    slot = ButtonSlot{};
    const bool absent = !value || value->empty();
    if (device_type == kKeyAssignedDevice) {
        if (absent || equal_ignoring_case(*value, u"unused")) {
            slot.kind = ButtonSlot::unused;
        } else {
            slot.kind = ButtonSlot::key;
            if (!equal_ignoring_case(*value, u"undefined")) slot.key_name = std::u16string(*value);
        }
    } else if (!absent) {
        if (equal_ignoring_case(*value, u"unused")) {
            slot.kind = ButtonSlot::unused;
        } else {
            for (const ButtonName& button : kButtonNames)
                if (equal_ignoring_case(button.name, *value)) {
                    slot.kind = ButtonSlot::button;
                    slot.mask = button.mask;
                }
        }
    }
    slot.autorepeat = autorepeat && equal_ignoring_case(*autorepeat, u"true") ? 1 : 0;
    slot.autorepeat_rate = rate ? static_cast<std::uint32_t>(read_integer_prefix(*rate, 10).value_or(0)) : 0;
}

void apply_button(ButtonMapping& mapping, std::optional<std::u16string_view> first_name,
                  std::optional<std::u16string_view> second_name, std::optional<std::u16string_view> autorepeat,
                  std::optional<std::u16string_view> rate, ButtonDirection direction) {
    const auto chooser = direction == ButtonDirection::from_guest ? first_name : second_name;
    const auto value = direction == ButtonDirection::from_guest ? second_name : first_name;
    if (!chooser) return;
    if (ButtonSlot* slot = slot_of(mapping, *chooser))
        parse_assignment(*slot, value, autorepeat, rate, mapping.device_type);
}

ButtonMapping read_button_mapping(const manifest::ManifestDocument& document, manifest::Element port,
                                  ButtonDirection direction) {
    ButtonMapping mapping;
    const std::u16string kind = manifest::element_text(port).value_or(u"");
    if (equal_ignoring_case(kind, u"input-virtualbuttons"))
        mapping.device_type = kKeyAssignedDevice;
    else if (const auto content = manifest::port_content_of_kind(kind))
        mapping.device_type = static_cast<std::uint32_t>(*content);
    manifest::Element set = document.find_button_set(port);
    for (manifest::Element button = manifest::find_child_element("button", set); button != nullptr;
         button = manifest::find_child_element("button", set, button)) {
        manifest::Text name, source, autorepeat, rate;
        manifest::get_attribute_text(button, "name", name);
        manifest::get_attribute_text(button, "source", source);
        manifest::get_attribute_text(button, "autorepeat", autorepeat);
        manifest::get_attribute_text(button, "autorepeat-rate", rate);
        const auto view = [](const manifest::Text& text) {
            return text ? std::optional<std::u16string_view>(*text) : std::nullopt;
        };
        apply_button(mapping, view(name), view(source), view(autorepeat), view(rate), direction);
    }
    return mapping;
}

} // namespace kq::input
