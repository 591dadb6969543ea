#include "manifest/input_ports.h"

#include "common/compare.h"

namespace kq::manifest {

std::optional<PortContent> port_content_of_kind(std::u16string_view kind) {
    for (std::size_t code = 0; code < kPortContentKinds.size(); ++code)
        if (equal_ignoring_case(kPortContentKinds[code], kind)) return static_cast<PortContent>(code);
    return std::nullopt;
}

bool is_joystick_like(std::u16string_view kind) {
    const std::optional<PortContent> content = port_content_of_kind(kind);
    return content == PortContent::joystick || content == PortContent::gamepad || content == PortContent::joypad;
}

std::uint32_t multitap_port_index(std::u16string_view kind) {
    return port_content_of_kind(kind) == PortContent::joystick ? 1 : 0;
}

PortContent default_port_content(std::u16string_view model_id, std::uint32_t port) noexcept {
    if (port != 0) return PortContent::empty;
    if (equal_ignoring_case(model_id, u"a-cd32")) return PortContent::joypad;
    if (equal_ignoring_case(model_id, u"a-cdtv")) return PortContent::joystick;
    return PortContent::mouse;
}

bool is_port_default_empty(std::u16string_view model_id, std::uint32_t port) {
    return default_port_content(model_id, port) == PortContent::empty;
}

InputPortsInfo input_ports_info(std::u16string_view multitap_type) noexcept {
    InputPortsInfo info;
    if (equal_ignoring_case(multitap_type, u"parallel")) info.multitap_ports = 3;
    return info;
}

} // namespace kq::manifest
