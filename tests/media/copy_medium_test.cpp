// Copying medium files: the names the copies get (US-ASCII, converted, unique), the flags that
// stop a copy, unpacking on the way, attributes, and CUE sheets with their data files.

#include "media/copy_medium.h"
#include "platform/files.h"
#include "tests/media/dms/dms_test_support.h"
#include "tests/support/compressed_files.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace kq::media {
namespace {

namespace fs = std::filesystem;

std::string as_text(const test::Bytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

class CopyMedium : public ::testing::Test {
protected:
    // Copies a file of the source folder into the target folder.
    HResult copy(std::u16string_view name, std::uint32_t flags, std::u16string& target) {
        return copy_medium_file(source_.path(name), target_.path(), flags, target);
    }
    std::string target_content(std::u16string_view name) const { return test::read_file(target_.native(name)); }
    bool in_target(std::u16string_view name) const { return fs::exists(target_.native(name)); }

    test::TempFolder source_, target_;
};

TEST_F(CopyMedium, NamesAndConversion) {
    const test::Bytes image = test::sample_image(40000);
    const std::string gzip = as_text(test::gzip_member(image));
    const std::string dms = test::read_file(test::to_fs_path(test::test_data_path(u"dms\\rle_small.dms")));
    ASSERT_FALSE(dms.empty());
    const struct {
        std::u16string_view source;
        std::string content;
        std::uint32_t flags;
        std::u16string_view target;
        std::size_t target_size;
    } cases[] = {
        {u"Game.DMS", dms, kCopyMediumConvert, u"Game.adf", 22528},
        {u"Work.hdz", gzip, kCopyMediumConvert, u"Work.hdf", image.size()},
        {u"Disk.ADZ", gzip, kCopyMediumConvert, u"Disk.adf", image.size()},
        {u"Other.dms", dms, 0, u"Other.dms", dms.size()},
        {u"Plain.hdz", gzip, 0, u"Plain.hdz", gzip.size()},
        {u"Image.adf", "floppy", kCopyMediumConvert, u"Image.adf", 6},
        {u"noextension", "x", kCopyMediumConvert, u"noextension", 1},
    };
    for (const auto& c : cases) {
        source_.create_file(c.source, c.content);
        std::u16string target;
        ASSERT_EQ(copy(c.source, c.flags, target), status::ok) << test::printable(c.source);
        EXPECT_EQ(target, target_.path(c.target));
        EXPECT_EQ(fs::file_size(target_.native(c.target)), c.target_size) << test::printable(c.source);
    }
    EXPECT_EQ(target_content(u"Work.hdf"), as_text(image));
}

TEST_F(CopyMedium, UnpackingFailuresLeaveNothing) {
    source_.create_file(u"Broken.adz", as_text(test::gzip_member(test::sample_image(5000), {.crc_xor = 1})));
    source_.create_file(u"Broken.dms", "DMS!not really");
    // Encrypted, and no key unpacks its first cylinder: refused like any corrupt archive.
    test::dms::Bytes encrypted = test::dms::encrypted(test::dms::read_sample("rle_small.dms"), 0x1234);
    const std::size_t cylinder = test::dms::record_offsets(encrypted)[1];
    encrypted[cylinder + 20 + 7] ^= 0x10;
    test::dms::fix_record_crcs(encrypted, cylinder);
    source_.create_file(u"Encrypted.dms", std::string(encrypted.begin(), encrypted.end()));
    std::u16string target;
    for (const std::u16string_view name : {u"Broken.adz", u"Broken.dms", u"Encrypted.dms"}) {
        EXPECT_EQ(copy(name, kCopyMediumConvert, target), status::from_win32(platform::system_error::invalid_data));
        EXPECT_TRUE(target.empty());
    }
    EXPECT_TRUE(fs::is_empty(target_.native(u"")));
}

TEST_F(CopyMedium, FlagsThatDecideWhetherAndWhere) {
    source_.create_file(u"Game.adf", "new");
    target_.create_file(u"Game.adf", "old");
    std::u16string target;
    EXPECT_EQ(copy(u"Game.adf", kCopyMediumNoOverwrite, target),
              status::from_win32(platform::system_error::file_exists));
    EXPECT_EQ(target_content(u"Game.adf"), "old");
    EXPECT_EQ(copy(u"Game.adf", kCopyMediumSkipSameName, target), status::nothing_more);
    EXPECT_EQ(target_content(u"Game.adf"), "old");

    ASSERT_EQ(copy(u"Game.adf", kCopyMediumUniqueName, target), status::ok);
    EXPECT_EQ(target, target_.path(u"Game(2).adf"));
    ASSERT_EQ(copy(u"Game.adf", kCopyMediumUniqueName | kCopyMediumNoOverwrite, target), status::ok);
    EXPECT_EQ(target, target_.path(u"Game(3).adf"));
    // A unique name that differs from the source's is copied in spite of the skip flag.
    ASSERT_EQ(copy(u"Game.adf", kCopyMediumUniqueName | kCopyMediumSkipSameName, target), status::ok);
    EXPECT_EQ(target, target_.path(u"Game(4).adf"));

    // Without flags an existing target, read-only even, is replaced.
    ASSERT_EQ(platform::set_file_attributes(target_.path(u"Game.adf"), platform::kAttributeReadOnly), 0u);
    ASSERT_EQ(copy(u"Game.adf", 0, target), status::ok);
    EXPECT_EQ(target_content(u"Game.adf"), "new");
}

TEST_F(CopyMedium, CopiesAreWritable) {
    source_.create_file(u"Locked.adf", "read-only source");
    ASSERT_EQ(platform::set_file_attributes(source_.path(u"Locked.adf"),
                                            platform::kAttributeReadOnly | platform::kAttributeHidden),
              0u);
    std::u16string target;
    ASSERT_EQ(copy(u"Locked.adf", 0, target), status::ok);
    const std::optional<std::uint32_t> attributes = platform::file_attributes(target);
    ASSERT_TRUE(attributes.has_value());
    EXPECT_EQ(*attributes & (platform::kAttributeReadOnly | platform::kAttributeHidden), 0u);
    platform::set_file_attributes(source_.path(u"Locked.adf"), 0);
}

TEST_F(CopyMedium, CueSheetsTakeTheirDataFilesAlong) {
    source_.create_file(u"Game.cue",
                        "FILE \"Game.bin\" BINARY\n  TRACK 01 MODE1/2352\nFILE \"audio\\Track 02.wav\" WAVE\n");
    source_.create_file(u"Game.bin", "data track");
    source_.create_file(u"audio\\Track 02.wav", "audio track");
    std::u16string target;
    ASSERT_EQ(copy(u"Game.cue", kCopyMediumConvert, target), status::ok);
    EXPECT_EQ(target, target_.path(u"Game.cue"));
    EXPECT_EQ(target_content(u"Game.bin"), "data track");
    EXPECT_EQ(target_content(u"Track 02.wav"), "audio track");

    // The first data file that fails is the result.
    source_.create_file(u"Missing.cue", "FILE \"Game.bin\" BINARY\nFILE \"gone.bin\" BINARY\n");
    EXPECT_EQ(copy(u"Missing.cue", 0, target), status::from_win32(platform::system_error::file_not_found));
    // A sheet that reaches out of its folder takes nothing along.
    source_.create_file(u"Evil.cue", "FILE \"..\\secret.bin\" BINARY\n");
    EXPECT_EQ(copy(u"Evil.cue", 0, target), status::from_win32(161));
    EXPECT_FALSE(in_target(u"secret.bin"));
}

TEST_F(CopyMedium, NamesBecomeAscii) {
    EXPECT_EQ(ascii_file_name(u"Game.adf"), u"Game.adf");
    EXPECT_EQ(ascii_file_name(u"\u65E5\u672C.adf"), u"__.adf");
    EXPECT_EQ(ascii_file_name(u"Why?.adf"), u"Why_.adf");

    const std::u16string name = u"Spiel\u65E5\u672C.adf";
    source_.create_file(name, "floppy");
    std::u16string target;
    ASSERT_EQ(copy(name, 0, target), status::ok);
    const std::u16string copied = target.substr(target.rfind(u'\\') + 1);
    EXPECT_TRUE(std::all_of(copied.begin(), copied.end(), [](char16_t c) { return c < 0x80 && c != u'?'; }))
        << test::printable(copied);
    // Either the file system's short name or the name with "_" for what has no ASCII form.
    EXPECT_TRUE(copied == u"Spiel__.adf" || copied.find(u'~') != std::u16string::npos) << test::printable(copied);
    EXPECT_EQ(test::read_file(test::to_fs_path(target)), "floppy");

    // A path element that cannot be looked up is the system's error.
    std::u16string safe;
    EXPECT_LT(ascii_safe_path(source_.path(u"n\u00E4hler\\x.adf"), safe), 0);
    EXPECT_EQ(ascii_safe_path(u"C:\\plain\\path.adf", safe), status::ok);
    EXPECT_EQ(safe, u"C:\\plain\\path.adf");
    EXPECT_EQ(copy_medium_file(u"no-separator.adf", target_.path(), 0, target), status::invalid_argument);
}

} // namespace
} // namespace kq::media
