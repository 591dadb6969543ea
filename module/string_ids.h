#pragma once
// Ids of the module's own texts in its string table (resources/strings.txt) that the frame
// loads by name.

#include <cstdint>

namespace kq::string_id {

inline constexpr std::uint16_t ipf_library_missing = 130;  // "IPF Support Library Not Found"
inline constexpr std::uint16_t add_media_files = 180;      // caption of media error boxes

} // namespace kq::string_id
