#pragma once
// The host's devices that the platform options offer: printers, serial ports, MIDI devices.

#include <string>
#include <string_view>
#include <vector>

namespace kq::platform {

// Names of the local and connected printers, in the system's order; empty when there is none
// or the enumeration fails.
std::vector<std::u16string> printer_names();

// Friendly names of the present devices of the COM-port interface class, in enumeration order,
// up to the first device whose data cannot be read; empty when the device-setup library lacks
// one of the functions this needs.
std::vector<std::u16string> com_port_friendly_names();

// Whether a DOS device of this name (such as "COM3") exists.
bool dos_device_exists(std::u16string_view name);

// Product names of the MIDI input and output devices, by device index; empty when a device's
// capabilities cannot be read.
std::vector<std::u16string> midi_input_names();
std::vector<std::u16string> midi_output_names();

} // namespace kq::platform
