#pragma once
// UTF-16 text in a test's failure message: ASCII as it is, everything else as "?".

#include <string>
#include <string_view>

namespace kq::test {

inline std::string printable(std::u16string_view text) {
    std::string out;
    for (char16_t c : text) out += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    return out;
}

} // namespace kq::test
