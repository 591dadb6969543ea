#pragma once
// The texts in which the host describes its drives. LF (10) separates lines or records, TAB (9)
// separates the fields of a line, and inside a field CR (13) separates the entries of a list.
//   hard-disk list     name TAB path                         (one line per configured disk)
//   mount records      name TAB devices TAB volumes TAB kind (devices and volumes are lists)
//   runtime lines      path TAB key=value TAB key=value ...
// Every piece is a view into the host's text; a missing field reads as empty.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq::content {

inline constexpr char16_t kLineSeparator = u'\n';
inline constexpr char16_t kFieldSeparator = u'\t';
inline constexpr char16_t kListSeparator = u'\r';

// The pieces of `text` between separators, in order; empty text has no pieces.
std::vector<std::u16string_view> split(std::u16string_view text, char16_t separator);

// Field `index` (from 0) of a line; empty when the line has fewer fields.
std::u16string_view field_of(std::u16string_view line, std::size_t index);

// The entries of a CR-separated list, empty entries dropped.
std::vector<std::u16string> list_entries(std::u16string_view field);

// The value of `key` in a runtime line: found as TAB + key + "=", it runs to the next TAB (or
// the end of the line); nullopt when the line does not carry the key.
std::optional<std::u16string_view> key_value(std::u16string_view line, std::u16string_view key);

struct MountRecord {
    std::u16string_view name;    // compared with a disk's path
    std::u16string_view devices; // list; a first entry ":nomount:" means not mounted
    std::u16string_view volumes; // list
    std::u16string_view kind;
};

// The first record of `records` whose name equals `path` exactly.
std::optional<MountRecord> find_mount_record(std::u16string_view records, std::u16string_view path);

} // namespace kq::content
