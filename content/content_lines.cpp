#include "content/content_lines.h"

namespace kq::content {

std::vector<std::u16string_view> split(std::u16string_view text, char16_t separator) {
    std::vector<std::u16string_view> pieces;
    if (text.empty()) return pieces;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        if (end == std::u16string_view::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

std::u16string_view field_of(std::u16string_view line, std::size_t index) {
    std::size_t start = 0;
    for (; index > 0; --index) {
        const std::size_t tab = line.find(kFieldSeparator, start);
        if (tab == std::u16string_view::npos) return {};
        start = tab + 1;
    }
    return line.substr(start, line.find(kFieldSeparator, start) - start);
}

std::vector<std::u16string> list_entries(std::u16string_view field) {
    std::vector<std::u16string> entries;
    for (const std::u16string_view entry : split(field, kListSeparator))
        if (!entry.empty()) entries.emplace_back(entry);
    return entries;
}

std::optional<std::u16string_view> key_value(std::u16string_view line, std::u16string_view key) {
    std::u16string marker(1, kFieldSeparator);
    marker.append(key);
    marker += u'=';
    const std::size_t found = line.find(marker);
    if (found == std::u16string_view::npos) return std::nullopt;
    const std::size_t start = found + marker.size();
    return line.substr(start, line.find(kFieldSeparator, start) - start);
}

std::optional<MountRecord> find_mount_record(std::u16string_view records, std::u16string_view path) {
    for (const std::u16string_view record : split(records, kLineSeparator)) {
        if (field_of(record, 0) != path) continue;
        return MountRecord{.name = field_of(record, 0),
                           .devices = field_of(record, 1),
                           .volumes = field_of(record, 2),
                           .kind = field_of(record, 3)};
    }
    return std::nullopt;
}

} // namespace kq::content
