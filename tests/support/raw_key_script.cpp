#include "tests/support/raw_key_script.h"

#include "input/stroke_code.h"

namespace kq::test {

std::optional<std::vector<std::uint32_t>> script_events(std::u16string_view script) {
    std::vector<std::uint32_t> events;
    while (!script.empty()) {
        bool press;
        if (script.starts_with(u"KEY_RAW_DOWN 0x"))
            press = true, script.remove_prefix(15);
        else if (script.starts_with(u"KEY_RAW_UP 0x"))
            press = false, script.remove_prefix(13);
        else
            return std::nullopt;
        std::uint32_t raw = 0;
        std::size_t digits = 0;
        for (; digits < script.size() && script[digits] != u' '; ++digits) {
            const char16_t c = script[digits];
            const int value = c >= u'0' && c <= u'9' ? c - u'0' : c >= u'A' && c <= u'F' ? c - u'A' + 10 : -1;
            if (value < 0) return std::nullopt; // upper-case hexadecimal only
            raw = raw * 16 + static_cast<std::uint32_t>(value);
        }
        if (digits == 0 || digits > 2 || digits == script.size() || raw > 0x7F) return std::nullopt;
        if (digits == 2 && script[0] == u'0') return std::nullopt; // no leading zeros
        script.remove_prefix(digits + 1);                          // the digits and the blank after them
        events.push_back(press ? input::event::press(raw) : input::event::release(raw));
    }
    return events;
}

} // namespace kq::test
