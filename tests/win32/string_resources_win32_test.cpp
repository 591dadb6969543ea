// The STRINGTABLE resource that the build made from resources/strings.txt holds exactly the
// texts of the generated table.

#include "platform/string_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>

namespace {

struct StringRow {
    std::uint32_t id;
    std::u16string_view text;
};
constexpr StringRow kStrings[] = {
#include "string_table_rows.inc"
};

TEST(StringResources, EveryTextLoadsAsGenerated) {
    for (const StringRow& row : kStrings)
        EXPECT_EQ(kq::platform::load_string(row.id, 4096), row.text) << "string " << row.id;
}

} // namespace
