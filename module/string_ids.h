#pragma once
// Ids of the module's own texts in its string table (resources/strings.txt) that the frame
// loads by name.

#include <cstdint>

namespace kq::string_id {

inline constexpr std::uint16_t ipf_library_missing = 130;  // "IPF Support Library Not Found"
inline constexpr std::uint16_t add_media_files = 180;      // caption of media error boxes
inline constexpr std::uint16_t create_blank_disk = 2300;   // caption of the blank-disk message
inline constexpr std::uint16_t blank_disk_template_missing = 2301;

} // namespace kq::string_id
