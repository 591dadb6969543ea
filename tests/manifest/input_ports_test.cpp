#include "manifest/input_ports.h"

#include <gtest/gtest.h>

namespace kq::manifest {
namespace {

TEST(InputPorts, DefaultsKindsAndMultitap) {
    const struct {
        std::u16string_view model;
        std::uint32_t port;
        PortContent content;
    } rows[] = {
        {u"A-CD32", 0, PortContent::joypad}, {u"a-cd32", 1, PortContent::empty}, {u"a-cdtv", 0, PortContent::joystick},
        {u"a-1200", 0, PortContent::mouse},  {u"a-9000", 0, PortContent::mouse}, {u"a-500", 2, PortContent::empty},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(default_port_content(row.model, row.port), row.content)
            << std::string(row.model.begin(), row.model.end()) << " port " << row.port;
        EXPECT_EQ(is_port_default_empty(row.model, row.port), row.content == PortContent::empty);
    }
    EXPECT_EQ(port_content_of_kind(u"INPUT-GAMEPAD"), PortContent::gamepad);
    EXPECT_EQ(port_content_of_kind(u"input-multitap"), std::nullopt);
    EXPECT_EQ(kind_of_port_content(PortContent::joypad), u"input-joypad");
    EXPECT_TRUE(is_joystick_like(u"input-joypad"));
    EXPECT_FALSE(is_joystick_like(u"input-mouse"));
    EXPECT_EQ(multitap_port_index(u"input-joystick"), 1u);
    EXPECT_EQ(multitap_port_index(u"input-gamepad"), 0u) << "multitap ports offer empty and joystick only";
    EXPECT_EQ(input_ports_info(u"PARALLEL").multitap_ports, 3u);
    EXPECT_EQ(input_ports_info(u"").multitap_ports, 0u);
    EXPECT_EQ(input_ports_info(u"").port_count, 3u);
    EXPECT_EQ(input_ports_info(u"").fourth, 1u);
}

} // namespace
} // namespace kq::manifest
