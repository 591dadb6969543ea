#include "common/integer_text.h"

#include <algorithm>
#include <limits>
#include <string>

namespace kq {
namespace {

constexpr bool is_space(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

constexpr int digit_value(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'z') return c - u'a' + 10;
    if (c >= u'A' && c <= u'Z') return c - u'A' + 10;
    return 99;
}

} // namespace

std::optional<std::int32_t> read_integer_prefix(std::u16string_view text, int base) {
    std::size_t i = 0;
    while (i < text.size() && is_space(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) negative = text[i++] == u'-';
    const bool has_hex_prefix = i + 1 < text.size() && text[i] == u'0' && (text[i + 1] == u'x' || text[i + 1] == u'X');
    if (base == 0) {
        if (has_hex_prefix && i + 2 < text.size() && digit_value(text[i + 2]) < 16)
            base = 16, i += 2;
        else if (i < text.size() && text[i] == u'0')
            base = 8;
        else
            base = 10;
    } else if (base == 16 && has_hex_prefix && i + 2 < text.size() && digit_value(text[i + 2]) < 16) {
        i += 2;
    }
    // Magnitudes are gathered up to one past the 32-bit range, then clamped.
    constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    std::int64_t magnitude = 0;
    std::size_t digits = 0;
    for (; i < text.size() && digit_value(text[i]) < base; ++i, ++digits)
        magnitude = std::min(magnitude * base + digit_value(text[i]), kLimit);
    if (digits == 0) return std::nullopt;
    if (negative) return static_cast<std::int32_t>(-magnitude);
    return static_cast<std::int32_t>(std::min(magnitude, kLimit - 1));
}

std::u16string decimal_text(std::int64_t value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace kq
