#include "exports/host_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kq {
namespace {

std::u16string shown(const std::vector<kq_char>& buffer) { return std::u16string(buffer.begin(), buffer.end()); }

// A result goes into a host's buffer whole (or not at all, with the overflow status) or cut to
// fit; either way it ends with a NUL inside the buffer and nothing past the buffer changes.
TEST(HostText, ResultsInTheHostsBuffer) {
    constexpr HResult kOverflow = status::from_win32(platform::system_error::buffer_overflow);
    const struct {
        std::u16string_view text;
        std::uint32_t chars;
        HResult whole_status;
        std::u16string_view whole, truncated; // the buffer and two guard slots after each copy
    } rows[] = {
        {u"Floppy", 7, status::ok, std::u16string_view(u"Floppy\0##", 9), std::u16string_view(u"Floppy\0##", 9)},
        {u"Floppy", 6, kOverflow, u"########", std::u16string_view(u"Flopp\0##", 8)},
        {u"Floppy", 1, kOverflow, u"###", std::u16string_view(u"\0##", 3)},
        {u"", 1, status::ok, std::u16string_view(u"\0##", 3), std::u16string_view(u"\0##", 3)},
    };
    for (const auto& row : rows) {
        std::vector<kq_char> whole(row.chars + 2, u'#'), truncated(row.chars + 2, u'#');
        EXPECT_EQ(copy_whole(row.text, whole.data(), row.chars), row.whole_status) << row.chars;
        copy_truncated(row.text, truncated.data(), row.chars);
        EXPECT_EQ(shown(whole), row.whole) << row.chars;
        EXPECT_EQ(shown(truncated), row.truncated) << row.chars;
    }
}

} // namespace
} // namespace kq
