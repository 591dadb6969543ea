#pragma once
// What the content texts' tests share: medium names that a test chooses instead of real
// images, texts joined from pieces, and texts shown with their separators visible.

#include "content/medium_name_readers.h"

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kq::test {

// Names "stored" in images, by path; every question is recorded.
struct FakeMediumNames {
    std::map<std::u16string, std::u16string, std::less<>> volume_names;
    std::map<std::u16string, media::HardDiskNames, std::less<>> hard_disks;
    std::vector<media::HardDiskGeometry> geometries_asked;

    content::MediumNameReaders readers() {
        return {.volume_name = [this](std::u16string_view path) -> std::optional<std::u16string> {
                    const auto found = volume_names.find(path);
                    if (found == volume_names.end()) return std::nullopt;
                    return found->second;
                },
                .hard_disk_names = [this](std::u16string_view path, const media::HardDiskGeometry& geometry)
                    -> std::optional<media::HardDiskNames> {
                    geometries_asked.push_back(geometry);
                    const auto found = hard_disks.find(path);
                    if (found == hard_disks.end()) return std::nullopt;
                    return found->second;
                }};
    }
};

inline std::u16string joined(std::initializer_list<std::u16string_view> pieces) {
    std::u16string text;
    for (const std::u16string_view piece : pieces) text += piece;
    return text;
}

// ASCII as it is, TAB, LF and CR as \t, \n and \r, anything else as "?".
inline std::string shown(std::u16string_view text) {
    std::string out;
    for (const char16_t c : text) {
        if (c == u'\t')
            out += "\\t";
        else if (c == u'\n')
            out += "\\n";
        else if (c == u'\r')
            out += "\\r";
        else
            out += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    }
    return out;
}

} // namespace kq::test
