#pragma once
// The module's string table: user-visible texts loaded by numeric id.

#include <cstddef>
#include <cstdint>
#include <string>

namespace kq::platform {

// The text of string `id`, cut to at most `max_chars` characters; empty when the table has
// no such string.
std::u16string load_string(std::uint32_t id, std::size_t max_chars);

} // namespace kq::platform
