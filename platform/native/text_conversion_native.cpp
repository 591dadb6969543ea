#include "platform/text_conversion.h"

#include <algorithm>
#include <array>

namespace kq::platform {
namespace {

// The native build has no code pages of its own: it keeps Latin-1 characters and maps a few
// common others the way the system's best-fit tables do; the rest become "?".
struct BestFit {
    char16_t from;
    char16_t to;
};
// clang-format off
constexpr std::array<BestFit, 12> kBestFit{{
    {0x0100, u'A'}, {0x0101, u'a'}, {0x0106, u'C'}, {0x0107, u'c'}, {0x0141, u'L'}, {0x0142, u'l'},
    {0x2013, u'-'}, {0x2014, u'-'}, {0x2018, u'\''}, {0x2019, u'\''}, {0x201C, u'"'}, {0x201D, u'"'},
}};
// clang-format on

// Latin-1 letters 0xC0-0xFF without their accents, as the system's US-ASCII best fit has them
// ('?' where there is no plain letter).
constexpr char16_t kLatin1Letters[] = u"AAAAAA?CEEEEIIII?NOOOOO?OUUUUY??aaaaaa?ceeeeiiii?nooooo?ouuuuy?y";

bool is_high_surrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool is_low_surrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

} // namespace

std::u16string best_fit_us_ascii(std::u16string_view text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80) {
            out += c;
        } else if (c >= 0xC0 && c <= 0xFF) {
            out += kLatin1Letters[c - 0xC0];
        } else {
            const auto fit = std::ranges::find(kBestFit, c, &BestFit::from);
            out += fit != kBestFit.end() ? fit->to : u'?';
            if (is_high_surrogate(c) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) ++i;
        }
    }
    return out;
}

std::u16string best_fit_latin1(std::u16string_view text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c <= 0xFF) {
            out += c;
            continue;
        }
        const auto fit = std::ranges::find(kBestFit, c, &BestFit::from);
        out += fit != kBestFit.end() ? fit->to : u'?';
        if (is_high_surrogate(c) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) ++i; // one character
    }
    return out;
}

} // namespace kq::platform
