// The game ports: what each of the four holds, as port content codes.
//
// "joyport<N>" names the device: "none", "mouse" (or a numbered or named mouse), "joy<n>",
// "kbd<n>" (keys standing in for a joystick), "custom<n>" or a controller's own name.
// "joyport<N>mode" says how the guest sees it: "mouse", "wheelmouse", "mousenowheel", "djoy",
// "ajoy", "cdtvjoy", "gamepad", "cd32joy", or "default" (decided by the device).

#include "content/configuration_import/import_steps.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "manifest/input_ports.h"

#include <algorithm>
#include <array>

namespace kq::content {
namespace {

using manifest::PortContent;

struct ModeContent {
    std::u16string_view mode;
    PortContent content;
};
constexpr std::array kModeContents{
    ModeContent{u"mouse", PortContent::mouse},        ModeContent{u"wheelmouse", PortContent::mouse},
    ModeContent{u"mousenowheel", PortContent::mouse}, ModeContent{u"djoy", PortContent::joystick},
    ModeContent{u"ajoy", PortContent::joystick},      ModeContent{u"cdtvjoy", PortContent::joystick},
    ModeContent{u"gamepad", PortContent::gamepad},    ModeContent{u"cd32joy", PortContent::joypad}};

// What port 0 holds when nothing is written for it: a joystick on the CD machines, else a mouse.
PortContent usual_port0_content(std::u16string_view model_id) {
    return is_cd_model(model_id) ? PortContent::joystick : PortContent::mouse;
}

void add_port(CatalogWriter& catalog, PortContent content, std::uint32_t unit, bool is_multitap) {
    catalog.add_peripheral(manifest::kind_of_port_content(content),
                           {{"unit", decimal_text(unit)}, {"multitap", is_multitap ? u"true" : u""}});
}

// What game port `port` (0 to 3) holds: the device of "joyport<port>", its kind narrowed by
// "joyport<port>mode"; nullopt when the configuration does not name a device.
std::optional<PortContent> port_content_of(const UaeConfiguration& configuration, std::uint32_t port) {
    const std::optional<std::u16string_view> device = configuration.value(numbered_key(u"joyport", port));
    if (!device) return std::nullopt;
    if (equal_ignoring_case(*device, u"none")) return PortContent::empty;
    if (const auto mode = configuration.value(numbered_key(u"joyport", port, u"mode"))) {
        const auto found = std::ranges::find_if(
            kModeContents, [&](const ModeContent& row) { return equal_ignoring_case(row.mode, *mode); });
        if (found != kModeContents.end()) return found->content;
    }
    return contains_ignoring_case(*device, u"mouse") ? PortContent::mouse : PortContent::joystick;
}

} // namespace

void import_ports(const ImportSource& source, CatalogWriter& catalog) {
    // A port that the configuration does not mention keeps its usual content.
    const std::optional<PortContent> port0 = port_content_of(source.configuration, 0);
    std::array<PortContent, 4> contents{port0.value_or(usual_port0_content(source.model))};
    for (std::uint32_t port = 1; port < contents.size(); ++port)
        contents[port] = port_content_of(source.configuration, port).value_or(PortContent::empty);

    if (contents[0] != usual_port0_content(source.model)) add_port(catalog, contents[0], 0, false);
    if (contents[1] != PortContent::empty) add_port(catalog, contents[1], 1, false);
    // Ports 2 and 3 are the parallel-port adapter's units 0 and 1.
    if (contents[2] != PortContent::empty || contents[3] != PortContent::empty) {
        catalog.add_peripheral(u"input-multitap", {{"type", u"parallel"}});
        for (std::uint32_t unit = 0; unit < 2; ++unit)
            if (contents[2 + unit] != PortContent::empty) add_port(catalog, contents[2 + unit], unit, true);
    }
    if (std::ranges::find(contents, PortContent::joystick) != contents.end())
        catalog.add(CatalogSection::description, "joystick", u"true");
}

} // namespace kq::content
