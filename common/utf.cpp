#include "common/utf.h"

#include <cstdint>

namespace kq {
namespace {

constexpr bool is_high_surrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool is_low_surrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool is_continuation(unsigned char b) { return (b & 0xC0) == 0x80; }

} // namespace

std::optional<std::u16string> utf8_to_utf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    std::size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        std::size_t length;
        char32_t code;
        char32_t minimum;
        if (lead < 0x80) {
            out.push_back(lead);
            ++i;
            continue;
        } else if ((lead & 0xE0) == 0xC0) {
            length = 2, code = lead & 0x1F, minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3, code = lead & 0x0F, minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4, code = lead & 0x07, minimum = 0x10000;
        } else {
            return std::nullopt;
        }
        if (utf8.size() - i < length) return std::nullopt;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(utf8[i + k]);
            if (!is_continuation(next)) return std::nullopt;
            code = code << 6 | (next & 0x3F);
        }
        if (code < minimum || code > 0x10FFFF || is_high_surrogate(code) || is_low_surrogate(code)) return std::nullopt;
        if (code >= 0x10000) {
            code -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(code));
        }
        i += length;
    }
    return out;
}

std::optional<std::string> utf16_to_utf8(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t code = utf16[i];
        if (is_high_surrogate(code)) {
            if (i + 1 >= utf16.size() || !is_low_surrogate(utf16[i + 1])) return std::nullopt;
            code = 0x10000 + ((code - 0xD800) << 10) + (utf16[++i] - 0xDC00);
        } else if (is_low_surrogate(code)) {
            return std::nullopt;
        }
        if (code < 0x80) {
            out.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            out.push_back(static_cast<char>(0xC0 | code >> 6));
            out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        } else if (code < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | code >> 12));
            out.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | code >> 18));
            out.push_back(static_cast<char>(0x80 | (code >> 12 & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        }
    }
    return out;
}

} // namespace kq
