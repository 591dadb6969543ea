#include "module/serial_ports.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

TEST(SerialPorts, PortNameFromFriendlyName) {
    const struct {
        std::u16string_view friendly_name;
        std::optional<std::u16string_view> port;
    } rows[] = {
        {u"USB Serial Port (COM3)", u"COM3"},
        {u"(COM12)", u"COM12"},
        {u"Modem (COM1) on line 2", u"COM1"},
        {u"Adapter (COM1a)", u"COM1"}, // one digit, then something else
        {u"Port (COMX)", u"COMX)"},    // a letter: the rest, uncut
        {u"Port (COMXY) tail", u"COMXY) tail"},
        {u"Bluetooth (COM123)", std::nullopt}, // ")" comes too late
        {u"Dangling (COM3", std::nullopt},
        {u"(COM", std::nullopt},
        {u"Printer port (LPT1)", std::nullopt},
        {u"lower case (com4)", std::nullopt},
        {u"", std::nullopt},
        {u"Two (COM5) and (COM6)", u"COM5"}, // the first "(COM" only
    };
    for (const auto& row : rows)
        EXPECT_EQ(port_name_from_friendly_name(row.friendly_name),
                  row.port ? std::optional<std::u16string>(*row.port) : std::nullopt)
            << std::string(row.friendly_name.begin(), row.friendly_name.end());
}

} // namespace
} // namespace kq
