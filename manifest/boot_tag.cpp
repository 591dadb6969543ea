#include "manifest/boot_tag.h"

#include "common/compare.h"
#include "common/wildcard.h"
#include "common/windows_path.h"
#include "manifest/manifest_document.h"
#include "platform/files.h"

#include <vector>

namespace kq::manifest {
namespace {

constexpr std::u16string_view kAdfFolder = u"Shared\\adf\\", kHdfFolder = u"Shared\\hdf\\",
                              kDirFolder = u"Shared\\dir\\";
constexpr std::u16string_view kArosLatest = u"aros-latest";
constexpr std::u16string_view kArosPrefix = u"aros-", kArosSuffix = u"-boot.adf";

bool starts_with_digit(std::u16string_view text) { return !text.empty() && text[0] >= u'0' && text[0] <= u'9'; }

// A release as runs of digits (compared by value) and other characters (compared as text).
struct ReleasePart {
    bool number;
    std::u16string_view text;
};
std::vector<ReleasePart> release_parts(std::u16string_view release) {
    std::vector<ReleasePart> parts;
    for (std::size_t start = 0; start < release.size();) {
        const bool number = release[start] >= u'0' && release[start] <= u'9';
        std::size_t end = start;
        while (end < release.size() && (release[end] >= u'0' && release[end] <= u'9') == number) ++end;
        parts.push_back({number, release.substr(start, end - start)});
        start = end;
    }
    return parts;
}

// Compares two runs of digits by value (leading zeros aside).
int compare_numbers(std::u16string_view a, std::u16string_view b) {
    while (a.size() > 1 && a.front() == u'0') a.remove_prefix(1);
    while (b.size() > 1 && b.front() == u'0') b.remove_prefix(1);
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    return a.compare(b) < 0 ? -1 : a.compare(b) > 0 ? 1 : 0;
}

bool older_release(std::u16string_view a, std::u16string_view b) {
    const std::vector<ReleasePart> x = release_parts(a), y = release_parts(b);
    for (std::size_t i = 0; i < x.size() && i < y.size(); ++i) {
        const int order =
            x[i].number && y[i].number ? compare_numbers(x[i].text, y[i].text) : x[i].text.compare(y[i].text);
        if (order != 0) return order < 0;
    }
    return x.size() < y.size();
}

} // namespace

std::optional<std::u16string> newest_aros_boot_disk(std::u16string_view folder) {
    const std::optional<std::vector<std::u16string>> files = platform::list_files(folder);
    if (!files) return std::nullopt;
    std::optional<std::u16string> newest;
    std::u16string_view newest_release;
    for (const std::u16string& name : *files) {
        if (!wildcard_match(u"aros-*-boot.adf", name)) continue;
        const std::u16string_view release =
            std::u16string_view(name).substr(kArosPrefix.size(), name.size() - kArosPrefix.size() - kArosSuffix.size());
        if (!newest || older_release(newest_release, release)) {
            newest = name.substr(0, name.size() - 4); // without ".adf"
            newest_release = std::u16string_view(name).substr(kArosPrefix.size(), release.size());
        }
    }
    return newest;
}

HResult resolve_boot_tag(std::u16string_view tag, std::u16string_view type, std::u16string_view data_root,
                         std::u16string& path) {
    const std::u16string root = with_trailing_separator(data_root);
    if (equal_ignoring_case(type, u"adf")) {
        const std::u16string folder = root + std::u16string(kAdfFolder);
        if (starts_with_ignoring_case(tag, kArosLatest)) {
            if (const std::optional<std::u16string> newest = newest_aros_boot_disk(folder)) {
                path = folder + *newest + u".adf";
                return status::ok;
            }
        }
        path = folder;
        if (starts_with_digit(tag)) {
            path += u"amiga-os-";
            path += tag;
            path += u"-workbench.adf";
        } else {
            path += tag;
            path += u".adf";
        }
        return status::ok;
    }
    if (equal_ignoring_case(type, u"hdf")) {
        const std::u16string folder = root + std::u16string(kHdfFolder);
        std::u16string named = folder + std::u16string(tag) + u".hdf";
        if (!starts_with_digit(tag) && platform::file_attributes(named)) {
            path = std::move(named);
        } else {
            path = folder + u"workbench-" + std::u16string(tag) + u".hdf";
        }
        return status::ok;
    }
    if (equal_ignoring_case(type, u"dir")) {
        if (tag == u"3x0") {
            path = root + std::u16string(kDirFolder) + u"System";
            return status::ok;
        }
        if (tag == u"aros") {
            path = root + std::u16string(kDirFolder) + u"AROS";
            return status::ok;
        }
    }
    return status::invalid_argument;
}

HResult boot_tag_path(const char* manifest, std::u16string_view data_root, std::uint32_t operation,
                      std::u16string& path) {
    ManifestDocument document;
    if (const HResult loaded = document.load(manifest); loaded != status::ok) return loaded;
    const std::string boot = document.application_path() + "/configuration/boot";
    Text tag, type;
    if (const HResult read = document.get_path_text(boot, tag); read != status::ok) return read;
    if (const HResult read = document.get_path_attribute(boot, "type", type); read != status::ok) return read;
    if (operation != 0) return status::invalid_argument;
    return resolve_boot_tag(tag.value_or(u""), type.value_or(u""), data_root, path);
}

} // namespace kq::manifest
