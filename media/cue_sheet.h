#pragma once
// The data files that a CD image's CUE sheet names: its FILE lines ("FILE <name> <type>", the
// name in double quotes when it has spaces, no escapes inside them), in the order they come.
// Names are relative to the sheet's folder. A name that could reach outside that folder, one
// with a ".." element, a drive or a leading "\" or "/", is refused: sheets come with
// downloaded packages, and a copy must not take along files from elsewhere on the disk.
// The text is read as UTF-8 when it is valid UTF-8 (a byte-order mark is skipped), else as
// Latin-1.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq::media {

inline constexpr std::size_t kMaxCueSheetBytes = 1 << 20;

struct CueDataFile {
    std::u16string relative_path; // as the sheet names it, with "\" between elements
    std::u16string file_name;     // its last element
};

enum class CueError { none, too_large, unsafe_name, unreadable };

// The first data (not audio) track: the file it is in and where in that file it starts.
struct CueDataTrack {
    std::u16string relative_path;
    std::uint32_t sector_bytes = 2048; // 2048, 2336 or 2352
    std::uint32_t header_bytes = 0;    // before each sector's 2,048 user bytes: 0, 8, 16 or 24
    std::uint64_t start_sector = 0;    // its INDEX 01 (75 sectors a second)
};

CueError read_cue_sheet(std::string_view sheet, std::vector<CueDataFile>& files);
// Reads the sheet at `path` (at most kMaxCueSheetBytes).
CueError read_cue_sheet_file(std::u16string_view path, std::vector<CueDataFile>& files);

// The sheet's first data track; nullopt when it has none (or names an unsafe file).
std::optional<CueDataTrack> first_data_track(std::string_view sheet);
// The same for the sheet at `path`.
std::optional<CueDataTrack> first_data_track_of_file(std::u16string_view path);

} // namespace kq::media
