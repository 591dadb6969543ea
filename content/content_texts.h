#pragma once
// The string-table texts of the drives' content texts, by id, and their loader.

#include "platform/string_table.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace kq::content {

namespace text_id {
inline constexpr std::uint16_t list_comma = 352;            // ","
inline constexpr std::uint16_t list_and = 363;              // " and"
inline constexpr std::uint16_t not_available = 410;         // "N/A": the device of an unmounted disk
inline constexpr std::uint16_t direct_attached_disk = 442;  // the kind of a device path
inline constexpr std::uint16_t floppy_drive = 511;          // "Floppy disk drive DF%1!d!:\n%2"
inline constexpr std::uint16_t hard_disk_drive = 512;       // "Hard disk drive:\n%2"
inline constexpr std::uint16_t cd_drive = 513;              // "CD drive:\n%2"
inline constexpr std::uint16_t network_drive = 514;         // "Network"
inline constexpr std::uint16_t empty_drive = 515;           // "Empty"
inline constexpr std::uint16_t hard_disk_drives = 516;      // "Hard disk drives:\n%2"
inline constexpr std::uint16_t kind_hardfile = 1100;
inline constexpr std::uint16_t kind_mounted_directory = 1101;
inline constexpr std::uint16_t kind_mounted_drive = 1102;
inline constexpr std::uint16_t one_hard_disk = 1105;        // "Hard Disk %1"
inline constexpr std::uint16_t hard_disks = 1106;           // "Hard Disks %1"
} // namespace text_id

// The longest string-table text the module loads.
inline constexpr std::size_t kMaxStringChars = 2048;

inline std::u16string content_text(std::uint16_t id) { return platform::load_string(id, kMaxStringChars); }

} // namespace kq::content
