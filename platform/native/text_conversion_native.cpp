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
constexpr std::array<BestFit, 12> kBestFit{{
    {0x0100, u'A'}, {0x0101, u'a'}, {0x0106, u'C'}, {0x0107, u'c'}, {0x0141, u'L'}, {0x0142, u'l'},
    {0x2013, u'-'}, {0x2014, u'-'}, {0x2018, u'\''}, {0x2019, u'\''}, {0x201C, u'"'}, {0x201D, u'"'},
}};

} // namespace

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
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
            ++i;  // a pair is one character
    }
    return out;
}

} // namespace kq::platform
