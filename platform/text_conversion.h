#pragma once
// Code-page conversions of the system.

#include <string>
#include <string_view>

namespace kq::platform {

// `text` converted to ISO 8859-1 (code page 28591) with the system's best-fit mapping and back:
// the nearest Latin-1 characters, "?" for what has none.
std::u16string best_fit_latin1(std::u16string_view text);
// `text` converted to US-ASCII (code page 20127) with the system's best-fit mapping and back.
std::u16string best_fit_us_ascii(std::u16string_view text);

} // namespace kq::platform
