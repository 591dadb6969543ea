#pragma once
// The tooltip text of a drive: its kind and what it holds.
//   floppy     "Floppy disk drive DF0:" and the disk's volume name ("Empty" without a disk)
//   hard disk  "Hard disk drive:" (or "Hard disk drives:") and the short-form summary
//   CD         "CD drive:" and the disc's volume name or label
//   network    "Network"
// A medium's volume name, when one is found, is shown in double quotes before its display
// label: "Workbench" (Workbench 3.1.adf).

#include "content/content_info.h"
#include "content/medium_name_readers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

// The hard-disk summary in a tooltip is left out when it has this many characters or more.
inline constexpr std::size_t kTooltipSummaryChars = 2000;

// The tooltip of a drive of type `drive_type`; `path` is the medium file or drive root (for a
// hard disk, the hard-disk list) and `label` its display label (for a hard disk, the mount
// records). Empty for an unknown drive type; nullopt when the text could not be formatted.
std::optional<std::u16string> content_tooltip_text(std::uint8_t drive_type, std::uint32_t drive_index,
                                                   std::u16string_view path, std::u16string_view label,
                                                   const MediumNameReaders& readers);

} // namespace kq::content
