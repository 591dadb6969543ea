#pragma once
// The serial ports that the "WindowsSerial" option offers.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq {

// The port name in a device's friendly name: "USB Serial Port (COM3)" gives "COM3", "(COM12)"
// gives "COM12". The text after the first "(COM" must close with ")" after one or two
// characters; the name then runs from the character after "(" to the end of the port number
// (one digit, or two when two follow), or to the end of the friendly name when a letter
// stands where the number belongs. Anything else names no port.
std::optional<std::u16string> port_name_from_friendly_name(std::u16string_view friendly_name);

// The ports named by the COM-port devices' friendly names, then "COM0" to "COM9" where such a
// DOS device exists; each name once.
std::vector<std::u16string> list_serial_ports();

} // namespace kq
