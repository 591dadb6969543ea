// Copying medium files: the names the copies get (US-ASCII, converted, unique), the flags that
// stop a copy, unpacking on the way, attributes, and CUE sheets with their data files.

#include "media/copy_medium.h"
#include "platform/files.h"
#include "tests/support/compressed_files.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kq::media {
namespace {

TEST(CopyMedium, NamesFlagsConversionAndCueSheets) {
    constexpr std::uint32_t kConvert = kCopyMediumConvert, kUnique = kCopyMediumUniqueName;
    constexpr std::uint32_t kReadOnlyHidden = platform::kAttributeReadOnly | platform::kAttributeHidden;
    constexpr std::uintmax_t kNone = static_cast<std::uintmax_t>(-1); // no such file
    const test::TempFolder source, target;
    const test::Bytes image = test::sample_image(40000);
    const test::Bytes packed = test::gzip_member(image);
    const std::string gzip(reinterpret_cast<const char*>(packed.data()), packed.size());
    const std::string dms = test::read_file(test::to_fs_path(test::test_data_path(u"dms\\rle_small.dms")));
    source.create_file(u"audio\\Track 02.wav", "audio track");
    target.create_file(u"Game.adf", "old");
    ASSERT_EQ(platform::set_file_attributes(target.path(u"Game.adf"), platform::kAttributeReadOnly), 0u);
    const struct {
        std::u16string_view source;
        std::string content;
        std::uint32_t flags;
        std::u16string_view target; // the copy's name; on failure, a file that must be as it was
        std::uintmax_t target_size;
        HResult expected = status::ok;
    } cases[] = {
        {u"Crunched.DMS", dms, kConvert, u"Crunched.adf", 22528},
        {u"Work.hdz", gzip, kConvert, u"Work.hdf", image.size()},
        {u"Disk.ADZ", gzip, kConvert, u"Disk.adf", image.size()},
        {u"Plain.hdz", gzip, 0, u"Plain.hdz", gzip.size()},
        {u"Image.adf", "floppy", kConvert, u"Image.adf", 6},
        {u"noextension", "x", kConvert | kUnique, u"noextension", 1},
        {u"\u65E5\u672C\\Spiel.adf", "floppy", 0, u"Spiel.adf", 6}, // through the folder's short name
        {u"Broken.adz", "no gzip", kConvert, u"Broken.adf", kNone,
         status::from_win32(platform::system_error::invalid_data)},
        {u"Game.cue", "FILE \"audio\\Track 02.wav\" WAVE\n", kConvert, u"Game.cue", 31},
        {u"Evil.cue", "FILE \"..\\secret.bin\" BINARY\n", 0, u"Evil.cue", kNone, status::from_win32(161)},
        // Over an existing copy, read-only even, unless the flags say otherwise.
        {u"Game.adf", "newer", kCopyMediumNoOverwrite, u"Game.adf", 3,
         status::from_win32(platform::system_error::file_exists)},
        {u"Game.adf", "newer", kCopyMediumSkipSameName, u"Game.adf", 3, status::nothing_more},
        {u"Game.adf", "newer", kUnique, u"Game(2).adf", 5},
        {u"Game.adf", "newer", kUnique | kCopyMediumSkipSameName, u"Game(3).adf", 5}, // not the source's name
        {u"Game.adf", "newer", 0, u"Game.adf", 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(test::printable(c.source) + " " + std::to_string(c.flags));
        // A read-only, hidden source makes a writable, visible copy.
        source.create_file(c.source, c.content);
        ASSERT_EQ(platform::set_file_attributes(source.path(c.source), kReadOnlyHidden), 0u);
        std::u16string copied = u"?";
        EXPECT_EQ(copy_medium_file(source.path(c.source), target.path(), c.flags, copied), c.expected);
        EXPECT_EQ(copied, c.expected == status::ok ? target.path(c.target) : u"");
        std::error_code error;
        EXPECT_EQ(std::filesystem::file_size(target.native(c.target), error), c.target_size);
        EXPECT_EQ(platform::file_attributes(copied).value_or(0) & kReadOnlyHidden, 0u);
        platform::set_file_attributes(source.path(c.source), 0);
    }
    EXPECT_EQ(test::read_file(target.native(u"Track 02.wav")), "audio track");
    EXPECT_EQ(ascii_file_name(u"\u65E5\u672C.adf"), u"__.adf");
    // A path element that cannot be looked up is the system's error; a source needs a folder.
    std::u16string copied;
    EXPECT_LT(ascii_safe_path(source.path(u"n\u00E4hler\\x.adf"), copied), 0);
    EXPECT_EQ(copy_medium_file(u"no-separator.adf", target.path(), 0, copied), status::invalid_argument);
}

} // namespace
} // namespace kq::media
