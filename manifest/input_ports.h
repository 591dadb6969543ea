#pragma once
// What the guest's game ports hold: the vocabulary of port contents, each model's defaults,
// and the port facts the host builds its menus from.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kq::manifest {

// Port content codes, with the manifest kind that stands for each.
enum class PortContent : std::uint32_t { empty = 0, mouse = 1, joystick = 2, gamepad = 3, joypad = 4 };
inline constexpr std::array<std::u16string_view, 5> kPortContentKinds{u"input-empty", u"input-mouse", u"input-joystick",
                                                                      u"input-gamepad", u"input-joypad"};

// The content code of a manifest kind (compared without regard to case).
std::optional<PortContent> port_content_of_kind(std::u16string_view kind);
constexpr std::u16string_view kind_of_port_content(PortContent content) {
    return kPortContentKinds[static_cast<std::size_t>(content)];
}

// "input-joystick", "input-gamepad" and "input-joypad".
bool is_joystick_like(std::u16string_view kind);

// The two multitap ports offer only "input-empty" (index 0) and "input-joystick" (index 1);
// any other kind there reads as index 0.
std::uint32_t multitap_port_index(std::u16string_view kind);

// The first port holds a joypad on the CD32, a joystick on the CDTV and a mouse elsewhere;
// every other port is empty.
PortContent default_port_content(std::u16string_view model_id, std::uint32_t port) noexcept;
bool is_port_default_empty(std::u16string_view model_id, std::uint32_t port);

struct InputPortsInfo {
    std::uint32_t port_count = 3;
    std::uint32_t multitap_ports = 0; // bit 0 the first extra port, bit 1 the second
    std::uint32_t third = 0;
    std::uint32_t fourth = 1;
};
// Both extra ports for a "parallel" multitap, none otherwise.
InputPortsInfo input_ports_info(std::u16string_view multitap_type) noexcept;

} // namespace kq::manifest
