#include "platform/devices.h"
#include "platform/native/native_controls.h"

#include "common/compare.h"

#include <algorithm>
#include <mutex>

namespace kq::platform {
namespace {

struct Devices {
    std::mutex lock;
    native::DeviceLists lists;
};

Devices& devices() {
    static Devices instance;
    return instance;
}

std::vector<std::u16string> copy_of(std::vector<std::u16string> native::DeviceLists::*list) {
    Devices& d = devices();
    std::lock_guard guard(d.lock);
    return d.lists.*list;
}

} // namespace

std::vector<std::u16string> printer_names() { return copy_of(&native::DeviceLists::printers); }

std::vector<std::u16string> com_port_friendly_names() { return copy_of(&native::DeviceLists::com_port_friendly_names); }

bool dos_device_exists(std::u16string_view name) {
    const std::vector<std::u16string> names = copy_of(&native::DeviceLists::dos_devices);
    return std::ranges::any_of(names, [&](const std::u16string& device) { return equal_ignoring_case(device, name); });
}

std::vector<std::u16string> midi_input_names() { return copy_of(&native::DeviceLists::midi_inputs); }

std::vector<std::u16string> midi_output_names() { return copy_of(&native::DeviceLists::midi_outputs); }

void native::set_devices(DeviceLists lists) {
    Devices& d = devices();
    std::lock_guard guard(d.lock);
    d.lists = std::move(lists);
}

} // namespace kq::platform
