#include "media/cue_sheet.h"

#include "common/compare.h"
#include "common/utf.h"
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
    if (path.empty() || path.front() == u'\\') return false;
    if (path.find(u':') != std::u16string_view::npos) return false;  // a drive or a stream name
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find(u'\\', start), path.size());
        if (path.substr(start, end - start) == u"..") return false;
        start = end + 1;
    }
    return true;
}

} // namespace

CueError read_cue_sheet(std::string_view sheet, std::vector<CueDataFile>& files) {
    files.clear();
    if (sheet.size() > kMaxCueSheetBytes) return CueError::too_large;
    const std::u16string text = decoded(sheet);
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find(u'\n', start);
        if (end == std::u16string::npos) end = text.size();
        std::u16string_view line = std::u16string_view(text).substr(start, end - start);
        start = end + 1;
        while (!line.empty() && (is_space(line.front()))) line.remove_prefix(1);
        while (!line.empty() && (is_space(line.back()) || line.back() == u'\r')) line.remove_suffix(1);
        if (line.size() < 5 || !starts_with_ignoring_case(line, u"FILE") || !is_space(line[4])) continue;
        std::u16string path(file_name_field(line.substr(4)));
        if (path.empty()) continue;
        for (char16_t& c : path)
            if (c == u'/') c = u'\\';
        if (!stays_inside(path)) {
            files.clear();
            return CueError::unsafe_name;
        }
        const std::size_t last = path.rfind(u'\\');
        std::u16string name = path.substr(last == std::u16string::npos ? 0 : last + 1);
        if (name.empty()) continue;  // a folder, not a file
        files.push_back({std::move(path), std::move(name)});
    }
    return CueError::none;
}

CueError read_cue_sheet_file(std::u16string_view path, std::vector<CueDataFile>& files) {
    files.clear();
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return CueError::unreadable;
    std::string sheet;
    std::array<std::byte, 65536> buffer{};
    for (;;) {
        const std::optional<std::size_t> got = file->read(buffer);
        if (!got) return CueError::unreadable;
        if (*got == 0) break;
        if (sheet.size() + *got > kMaxCueSheetBytes) return CueError::too_large;
        sheet.append(reinterpret_cast<const char*>(buffer.data()), *got);
    }
    return read_cue_sheet(sheet, files);
}

} // namespace kq::media
