#include "platform/string_table.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

// Texts whose form the string table's generator must carry through: quotes, line feeds,
// leading blanks, a lone comma.
TEST(StringTable, LoadsTextsAsWritten) {
    const struct {
        std::uint32_t id;
        std::u16string_view text;
    } rows[] = {
        {130, u"IPF Support Library Not Found"},
        {180, u"Add Media Files"},
        {511, u"Floppy disk drive DF%1!d!:\n%2"},
        {352, u","},
        {363, u" and"},
        {1135, u"WinUAE Configuration Files (*.uae)"},
        {522, u"English - US (usa0 or usa1)"},
    };
    for (const auto& row : rows) EXPECT_EQ(platform::load_string(row.id, 2048), row.text) << row.id;
    const std::u16string quoted = platform::load_string(335, 2048);
    EXPECT_NE(quoted.find(u"\"pushed out\""), std::u16string::npos);
}

TEST(StringTable, MissingIdsAreEmptyAndLongTextsAreCut) {
    EXPECT_EQ(platform::load_string(1, 2048), u"");
    EXPECT_EQ(platform::load_string(65535, 2048), u"");
    EXPECT_EQ(platform::load_string(130, 3), u"IPF");
    EXPECT_EQ(platform::load_string(130, 0), u"");
}

} // namespace
} // namespace kq
