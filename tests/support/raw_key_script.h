#pragma once
// Reads a raw key string ("KEY_RAW_DOWN 0x60 KEY_RAW_UP 0x60 ") back into raw key event words:
// nullopt unless every item is well formed (upper-case hexadecimal without leading zeros, below
// 0x80, one blank after each).

#include "input/stroke_code.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kq::test {

inline std::optional<std::vector<std::uint32_t>> script_events(std::u16string_view script) {
    std::vector<std::uint32_t> events;
    for (constexpr std::u16string_view kDown = u"KEY_RAW_DOWN 0x", kUp = u"KEY_RAW_UP 0x"; !script.empty();) {
        const bool press = script.starts_with(kDown);
        if (!press && !script.starts_with(kUp)) return std::nullopt;
        script.remove_prefix(press ? kDown.size() : kUp.size());
        const std::size_t digits = std::min(script.find(u' '), script.size());
        std::uint32_t raw = 0;
        for (const char16_t c : script.substr(0, digits)) {
            if (!(c >= u'0' && c <= u'9') && !(c >= u'A' && c <= u'F')) return std::nullopt;
            raw = raw * 16 + static_cast<std::uint32_t>(c <= u'9' ? c - u'0' : c - u'A' + 10);
        }
        if (digits == 0 || digits > 2 || digits == script.size() || raw > 0x7F || (digits == 2 && script[0] == u'0'))
            return std::nullopt;
        script.remove_prefix(digits + 1);
        events.push_back(press ? input::event::press(raw) : input::event::release(raw));
    }
    return events;
}

} // namespace kq::test
