#pragma once
// The summary of a hard-disk drive's disks that the host shows: which image files, folders,
// host drives and directly attached disks are configured, under which volume and device names.
//
// Configuration mode reads the hard-disk list (name TAB path per line) and the mount records
// (content_lines.h) and gives one line per disk that exists or has a record:
//   long form   name TAB "Hard Disk "Work"" (or "Hard Disks "A" and "B"")
//   short form  "Work" (DH0, hardfile)
// Runtime mode reads runtime lines (path TAB key=value ...) and gives one mount record per
// disk: path TAB device TAB volume TAB kind. Lines are separated by LF.

#include "content/medium_name_readers.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

// The host's drive types.
enum class DriveType : std::uint8_t { floppy = 0, hard_disk = 1, cd = 2, network = 3 };

inline constexpr std::uint32_t kContentInfoRuntime = 0x1; // the records are runtime lines
inline constexpr std::uint32_t kContentInfoShort = 0x2;   // configuration mode's short form

// The summary; `list` is read in configuration mode only. nullopt when a text of the string
// table could not be formatted.
std::optional<std::u16string> content_info_text(std::u16string_view list, std::u16string_view records,
                                                std::uint32_t flags, const MediumNameReaders& readers);

} // namespace kq::content
