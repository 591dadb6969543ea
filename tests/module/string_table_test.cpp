#include "platform/string_table.h"
#include "string_ids.h"

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
        {strings::ipf_library_missing, u"IPF Support Library Not Found"},
        {strings::add_media_files, u"Add Media Files"},
        {strings::floppy_drive_template, u"Floppy disk drive DF%1!d!:\n%2"},
        {strings::list_comma, u","},
        {strings::list_and, u" and"},
        {strings::uae_filter_name, u"WinUAE Configuration Files (*.uae)"},
        {strings::keyboard_layout_en_us, u"English - US (usa0 or usa1)"},
    };
    for (const auto& row : rows) EXPECT_EQ(platform::load_string(row.id, 2048), row.text) << row.id;
    const std::u16string quoted = platform::load_string(strings::auto_mouse_untrap_description, 2048);
    EXPECT_NE(quoted.find(u"\"pushed out\""), std::u16string::npos);
}

TEST(StringTable, MissingIdsAreEmptyAndLongTextsAreCut) {
    EXPECT_EQ(platform::load_string(1, 2048), u"");
    EXPECT_EQ(platform::load_string(65535, 2048), u"");
    EXPECT_EQ(platform::load_string(strings::ipf_library_missing, 3), u"IPF");
    EXPECT_EQ(platform::load_string(strings::ipf_library_missing, 0), u"");
}

} // namespace
} // namespace kq
