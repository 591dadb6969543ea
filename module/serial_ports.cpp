#include "module/serial_ports.h"

#include "common/compare.h"
#include "platform/devices.h"

#include <algorithm>

namespace kq {
namespace {

constexpr bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }

} // namespace

std::optional<std::u16string> port_name_from_friendly_name(std::u16string_view friendly_name) {
    const std::size_t open = friendly_name.find(u"(COM");
    if (open == std::u16string_view::npos) return std::nullopt;
    const std::u16string_view after = friendly_name.substr(open + 1); // "COM..."
    const auto at = [&](std::size_t i) { return i < after.size() ? after[i] : u'\0'; };
    // The character after "(COM" is after[3]; ")" must follow it directly or one later.
    if (at(4) != u')' && at(5) != u')') return std::nullopt;
    if (!is_digit(at(3))) return std::u16string(after);
    return std::u16string(after.substr(0, is_digit(at(4)) ? 5 : 4));
}

std::vector<std::u16string> list_serial_ports() {
    std::vector<std::u16string> ports;
    const auto add = [&](std::u16string name) {
        if (std::ranges::none_of(ports, [&](const std::u16string& p) { return equal_ignoring_case(p, name); }))
            ports.push_back(std::move(name));
    };
    for (const std::u16string& friendly_name : platform::com_port_friendly_names())
        if (auto port = port_name_from_friendly_name(friendly_name)) add(std::move(*port));
    for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        std::u16string name = u"COM";
        name += digit;
        if (platform::dos_device_exists(name)) add(std::move(name));
    }
    return ports;
}

} // namespace kq
