#include "media/cue_sheet.h"

#include "common/compare.h"
#include "common/utf.h"
#include "common/windows_path.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kq::media {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool is_space(char16_t c) { return c == u' ' || c == u'\t'; }

std::u16string decoded(std::string_view sheet) {
    if (sheet.substr(0, kByteOrderMark.size()) == kByteOrderMark) sheet.remove_prefix(kByteOrderMark.size());
    if (std::optional<std::u16string> utf16 = utf8_to_utf16(sheet)) return *utf16;
    std::u16string latin1;
    for (const char c : sheet) latin1 += static_cast<char16_t>(static_cast<unsigned char>(c));
    return latin1;
}

// The name after "FILE": quoted (up to the next quote) or one blank-free token. Empty when the
// line has none, or a quote is not closed.
std::u16string_view file_name_field(std::u16string_view rest) {
    while (!rest.empty() && is_space(rest.front())) rest.remove_prefix(1);
    if (rest.empty()) return {};
    if (rest.front() == u'"') {
        const std::size_t close = rest.find(u'"', 1);
        return close == std::u16string_view::npos ? std::u16string_view() : rest.substr(1, close - 1);
    }
    std::size_t end = 0;
    while (end < rest.size() && !is_space(rest[end])) ++end;
    return rest.substr(0, end);
}

// Whether a relative path stays below its folder: not rooted, no drive, no ".." element.
bool stays_inside(std::u16string_view path) {
    if (path.empty() || is_path_separator(path.front())) return false;
    if (path.find(u':') != std::u16string_view::npos) return false; // a drive or a stream name
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(find_path_separator(path, start), path.size());
        if (path.substr(start, end - start) == u"..") return false;
        start = end + 1;
    }
    return true;
}

// Calls `each` with every line of the sheet, without its blanks at either end.
template <class Each>
void for_each_line(const std::u16string& text, Each&& each) {
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find(u'\n', start);
        if (end == std::u16string::npos) end = text.size();
        std::u16string_view line = std::u16string_view(text).substr(start, end - start);
        start = end + 1;
        while (!line.empty() && is_space(line.front())) line.remove_prefix(1);
        while (!line.empty() && (is_space(line.back()) || line.back() == u'\r')) line.remove_suffix(1);
        each(line);
    }
}

// The word after a command of `length` characters, when the line is that command.
std::optional<std::u16string_view> command_argument(std::u16string_view line, std::u16string_view command) {
    if (line.size() <= command.size() || !starts_with_ignoring_case(line, command) || !is_space(line[command.size()]))
        return std::nullopt;
    return line.substr(command.size());
}

// The FILE line's path with "\" separators; empty when the line names none.
std::u16string file_path(std::u16string_view argument) {
    std::u16string path(file_name_field(argument));
    for (char16_t& c : path)
        if (is_path_separator(c)) c = u'\\';
    return path;
}

struct TrackMode {
    std::u16string_view name;
    std::uint32_t sector_bytes, header_bytes;
};
constexpr TrackMode kDataModes[] = {
    {u"MODE1/2048", 2048, 0},  {u"MODE1/2352", 2352, 16}, {u"MODE2/2336", 2336, 8},
    {u"MODE2/2352", 2352, 24}, {u"MODE2/2048", 2048, 0},
};

// "mm:ss:ff" as a sector number (75 frames a second).
std::optional<std::uint64_t> msf_sector(std::u16string_view text) {
    std::uint64_t parts[3] = {0, 0, 0};
    std::size_t part = 0, digits = 0;
    for (const char16_t c : text) {
        if (c == u':' && part < 2 && digits > 0) {
            ++part;
            digits = 0;
        } else if (c >= u'0' && c <= u'9' && digits < 6) {
            parts[part] = parts[part] * 10 + static_cast<std::uint64_t>(c - u'0');
            ++digits;
        } else {
            return std::nullopt;
        }
    }
    if (part != 2 || digits == 0) return std::nullopt;
    return (parts[0] * 60 + parts[1]) * 75 + parts[2];
}

std::optional<std::string> read_sheet(std::u16string_view path, CueError& error) {
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) {
        error = CueError::unreadable;
        return std::nullopt;
    }
    std::string sheet;
    std::array<std::byte, 65536> buffer{};
    for (;;) {
        const std::optional<std::size_t> got = file->read(buffer);
        if (!got) {
            error = CueError::unreadable;
            return std::nullopt;
        }
        if (*got == 0) break;
        if (sheet.size() + *got > kMaxCueSheetBytes) {
            error = CueError::too_large;
            return std::nullopt;
        }
        sheet.append(reinterpret_cast<const char*>(buffer.data()), *got);
    }
    error = CueError::none;
    return sheet;
}

} // namespace

CueError read_cue_sheet(std::string_view sheet, std::vector<CueDataFile>& files) {
    files.clear();
    if (sheet.size() > kMaxCueSheetBytes) return CueError::too_large;
    const std::u16string text = decoded(sheet);
    bool unsafe = false;
    for_each_line(text, [&](std::u16string_view line) {
        const std::optional<std::u16string_view> argument = command_argument(line, u"FILE");
        if (!argument || unsafe) return;
        std::u16string path = file_path(*argument);
        if (path.empty()) return;
        if (!stays_inside(path)) {
            unsafe = true;
            return;
        }
        std::u16string name(file_name_of(path));
        if (name.empty()) return; // a folder, not a file
        files.push_back({std::move(path), std::move(name)});
    });
    if (unsafe) {
        files.clear();
        return CueError::unsafe_name;
    }
    return CueError::none;
}

CueError read_cue_sheet_file(std::u16string_view path, std::vector<CueDataFile>& files) {
    files.clear();
    CueError error = CueError::none;
    const std::optional<std::string> sheet = read_sheet(path, error);
    return sheet ? read_cue_sheet(*sheet, files) : error;
}

std::optional<CueDataTrack> first_data_track(std::string_view sheet) {
    if (sheet.size() > kMaxCueSheetBytes) return std::nullopt;
    const std::u16string text = decoded(sheet);
    std::u16string current_file;
    std::optional<CueDataTrack> pending, found;
    for_each_line(text, [&](std::u16string_view line) {
        if (found) return;
        if (const auto file = command_argument(line, u"FILE")) {
            current_file = file_path(*file);
            pending.reset();
        } else if (const auto track = command_argument(line, u"TRACK")) {
            pending.reset();
            for (const TrackMode& mode : kDataModes)
                if (ends_with_ignoring_case(*track, mode.name) && !current_file.empty())
                    pending = CueDataTrack{current_file, mode.sector_bytes, mode.header_bytes, 0};
        } else if (const auto index = command_argument(line, u"INDEX"); index && pending) {
            std::u16string_view rest = *index;
            while (!rest.empty() && is_space(rest.front())) rest.remove_prefix(1);
            if (rest.size() < 3 || rest.substr(0, 2) != u"01" || !is_space(rest[2])) return;
            rest.remove_prefix(3);
            while (!rest.empty() && is_space(rest.front())) rest.remove_prefix(1);
            if (const std::optional<std::uint64_t> sector = msf_sector(rest)) {
                pending->start_sector = *sector;
                found = pending;
            }
        }
    });
    if (found && !stays_inside(found->relative_path)) return std::nullopt;
    return found;
}

std::optional<CueDataTrack> first_data_track_of_file(std::u16string_view path) {
    CueError error = CueError::none;
    const std::optional<std::string> sheet = read_sheet(path, error);
    return sheet ? first_data_track(*sheet) : std::nullopt;
}

} // namespace kq::media
