#pragma once
// Reads a raw key string ("KEY_RAW_DOWN 0x60 KEY_RAW_UP 0x60 ") back into raw key event words.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kq::test {

// The events of a script; nullopt when it is not made of well-formed items.
std::optional<std::vector<std::uint32_t>> script_events(std::u16string_view script);

} // namespace kq::test
