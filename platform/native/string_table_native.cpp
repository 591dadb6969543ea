#include "platform/string_table.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kq::platform {
namespace {

struct StringRow {
    std::uint32_t id;
    std::u16string_view text;
};

// The same table that the Windows build compiles into its STRINGTABLE resource.
constexpr StringRow kStrings[] = {
#include "string_table_rows.inc"
};

// Lookups search by id: the ids must rise strictly from row to row.
static_assert(std::ranges::adjacent_find(kStrings, std::ranges::greater_equal{}, &StringRow::id) ==
                  std::ranges::end(kStrings),
              "rows are sorted by id without repeats");

} // namespace

std::u16string load_string(std::uint32_t id, std::size_t max_chars) {
    const auto row = std::ranges::lower_bound(kStrings, id, {}, &StringRow::id);
    if (row == std::ranges::end(kStrings) || row->id != id) return {};
    return std::u16string(row->text.substr(0, max_chars));
}

} // namespace kq::platform
