#pragma once
// The data files that a CD image's CUE sheet names: its FILE lines ("FILE <name> <type>", the
// name in double quotes when it has spaces, no escapes inside them), in the order they come.
// Names are relative to the sheet's folder. A name that could reach outside that folder, one
// with a ".." element, a drive or a leading "\" or "/", is refused: sheets come with
// downloaded packages, and a copy must not take along files from elsewhere on the disk.
// The text is read as UTF-8 when it is valid UTF-8 (a byte-order mark is skipped), else as
// Latin-1.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kq::media {

inline constexpr std::size_t kMaxCueSheetBytes = 1 << 20;

struct CueDataFile {
    std::u16string relative_path;  // as the sheet names it, with "\" between elements
    std::u16string file_name;      // its last element
};

enum class CueError { none, too_large, unsafe_name, unreadable };

CueError read_cue_sheet(std::string_view sheet, std::vector<CueDataFile>& files);
// Reads the sheet at `path` (at most kMaxCueSheetBytes).
CueError read_cue_sheet_file(std::u16string_view path, std::vector<CueDataFile>& files);

} // namespace kq::media
