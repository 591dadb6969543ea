#include "platform/text_conversion.h"

#include <windows.h>

#include <string>

namespace kq::platform {

std::u16string best_fit_latin1(std::u16string_view text) {
    if (text.empty()) return {};
    const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
    const int length = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(28591, 0, wide, length, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return u"?";
    std::string latin1(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(28591, 0, wide, length, latin1.data(), bytes, nullptr, nullptr);
    std::u16string back;
    for (const char byte : latin1) back += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return back;
}

} // namespace kq::platform
