#pragma once
// The loader of the string-table texts that the drives' content texts are made of.

#include "platform/string_table.h"
#include "string_ids.h"

#include <cstddef>
#include <string>

namespace kq::content {

// The longest string-table text the module loads.
inline constexpr std::size_t kMaxStringChars = 2048;

inline std::u16string content_text(StringId id) { return platform::load_string(id, kMaxStringChars); }

} // namespace kq::content
