#include "platform/text_conversion.h"

#include <windows.h>

#include <string>

namespace kq::platform {

namespace {

// Through a single-byte code page with the system's best-fit mapping; each byte is its own
// character in both code pages used here.
std::u16string through_code_page(UINT code_page, std::u16string_view text) {
    if (text.empty()) return {};
    const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(code_page, 0, wide, length, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return u"?";
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(code_page, 0, wide, length, narrow.data(), bytes, nullptr, nullptr);
    std::u16string back;
    for (const char byte : narrow) back += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return back;
}

} // namespace

std::u16string best_fit_latin1(std::u16string_view text) { return through_code_page(28591, text); }

std::u16string best_fit_us_ascii(std::u16string_view text) { return through_code_page(20127, text); }

} // namespace kq::platform
