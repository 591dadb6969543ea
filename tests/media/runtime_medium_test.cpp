// Runtime working copies on real files: which images get one and under what name, the record
// beside it, change detection, write-back (also compressed), and what stays behind when
// something fails.

#include "media/compression/inflate.h"
#include "media/runtime_medium.h"
#include "platform/files.h"
#include "tests/support/compressed_files.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>

namespace kq::media {
namespace {

namespace fs = std::filesystem;
using test::to_fs_path;

std::string as_text(const test::Bytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

class RuntimeMedium : public ::testing::Test {
protected:
    RuntimeMedium() {
#ifndef _WIN32
        // Natively the temporary folder is one of the test's own.
        platform::native::set_temp_folder(temp_.path() + u"\\");
#endif
    }
    ~RuntimeMedium() override {
        for (const std::u16string& copy : copies_) {
            std::error_code ignored;
            fs::remove(to_fs_path(copy), ignored);
            fs::remove(to_fs_path(record_of(copy)), ignored);
        }
#ifndef _WIN32
        platform::native::set_temp_folder(u"");
#endif
    }

    static std::u16string record_of(std::u16string_view copy) {
        const std::size_t name = copy.rfind(u'\\') + 1;
        return std::u16string(copy.substr(0, name + kRuntimeKeyChars)) + u".info";
    }

    // Makes a working copy of `image` (below the images folder); the path, or the failure.
    HResult get(std::u16string_view image, std::u16string& copy, std::uint32_t flags = 0,
                std::optional<std::u16string_view> key = std::nullopt,
                std::optional<std::u16string_view> alternate = std::nullopt) {
        RuntimeMediumRequest request;
        const std::u16string path = images_.path(image);
        request.image_path = path;
        request.caller_key = key;
        request.alternate_folder = alternate;
        request.no_timestamp = (flags & kRuntimeMediumNoTimestamp) != 0;
        copy.clear();
        const HResult result = make_runtime_medium(request, copy);
        if (!copy.empty()) copies_.push_back(copy);
        return result;
    }

    bool changed(std::u16string_view copy) {
        bool is_changed = false;
        EXPECT_EQ(check_runtime_medium(copy, is_changed), status::ok) << test::printable(copy);
        return is_changed;
    }

    // Writes new content into a working copy, as the emulator does, a while after it was made.
    static void modify(std::u16string_view copy, std::string_view content) {
        const fs::path path = to_fs_path(copy);
        const auto before = fs::last_write_time(path);
        std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
        fs::last_write_time(path, before + std::chrono::seconds(5));
    }

    static bool exists(std::u16string_view path) { return fs::exists(to_fs_path(path)); }

    std::size_t runtime_files() const {
        const std::optional<std::u16string> folder = runtime_folder();
        std::error_code error;
        std::size_t count = 0;
        for (fs::directory_iterator it(to_fs_path(*folder), error), end; !error && it != end; it.increment(error))
            ++count;
        return count;
    }

    test::TempFolder temp_, images_;
    std::vector<std::u16string> copies_;
};

TEST_F(RuntimeMedium, WhichImagesGetACopyAndItsName) {
    const std::string adf(901120, 'A');
    const test::Bytes image = test::sample_image(50000);
    const std::string adz = as_text(test::gzip_member(image));
    const struct {
        std::u16string_view name;
        std::string content;
        HResult expected;
        std::u16string_view copy_name; // after "<key>-"
        std::string copy_content;
    } cases[] = {
        {u"Game.ADF", adf, status::ok, u"Game.ADF", adf},
        {u"Work.hdf", "hard disk", status::ok, u"Work.hdf", "hard disk"},
        {u"Disk.Adz", adz, status::ok, u"Disk.Adf", as_text(image)},
        {u"Work.HDZ", adz, status::ok, u"Work.HDf", as_text(image)},
        {u"Game.dms", "DMS!", status::nothing_more, u"", ""},
        {u"Game.adf.bak", "x", status::nothing_more, u"", ""},
        {u"README", "x", status::nothing_more, u"", ""},
    };
    for (const auto& c : cases) {
        images_.create_file(c.name, c.content);
        const std::size_t files_before = runtime_files();
        std::u16string copy;
        EXPECT_EQ(get(c.name, copy), c.expected) << test::printable(c.name);
        if (c.expected != status::ok) {
            EXPECT_TRUE(copy.empty());
            EXPECT_EQ(runtime_files(), files_before) << "nothing is created for " << test::printable(c.name);
            continue;
        }
        const std::u16string name = copy.substr(copy.rfind(u'\\') + 1);
        ASSERT_EQ(name.size(), kRuntimeKeyChars + 1 + c.copy_name.size());
        EXPECT_EQ(name[kRuntimeKeyChars], u'-');
        EXPECT_EQ(name.substr(kRuntimeKeyChars + 1), c.copy_name);
        for (std::size_t i = 0; i < kRuntimeKeyChars; ++i) {
            const char16_t k = name[i];
            const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
            EXPECT_TRUE(hyphen ? k == u'-' : (k >= u'0' && k <= u'9') || (k >= u'A' && k <= u'F')) << i;
        }
        EXPECT_EQ(copy.substr(0, copy.rfind(u'\\') + 1), *runtime_folder());
        EXPECT_EQ(test::read_file(to_fs_path(copy)), c.copy_content) << test::printable(c.name);
    }
}

TEST_F(RuntimeMedium, ShortAndSeparatorlessPaths) {
    RuntimeMediumRequest request;
    std::u16string copy;
    request.image_path = u".adf"; // four characters: too short to have a kind
    EXPECT_EQ(make_runtime_medium(request, copy), status::nothing_more);
    request.image_path = u"x.adf";
    EXPECT_EQ(make_runtime_medium(request, copy), status::invalid_argument);
}

TEST_F(RuntimeMedium, TheRecordHoldsTheCopysTimeAndTheImagesPath) {
    images_.create_file(u"Game.adf", "floppy");
    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy), status::ok);
    const std::string record = test::read_file(to_fs_path(record_of(copy)));
    const std::u16string image = images_.path(u"Game.adf");
    ASSERT_EQ(record.size(), 8 + 2 * image.size());
    const platform::FileTime time = platform::File::open_for_reading(copy)->last_write_time().value_or(0);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(static_cast<unsigned char>(record[i]), time >> (8 * i) & 0xFF) << i;
    for (std::size_t i = 0; i < image.size(); ++i) {
        EXPECT_EQ(static_cast<unsigned char>(record[8 + 2 * i]), image[i] & 0xFF) << i;
        EXPECT_EQ(static_cast<unsigned char>(record[9 + 2 * i]), image[i] >> 8) << i;
    }

    // Without a time stamp the time is zero, and the copy always counts as changed.
    std::u16string untimed;
    ASSERT_EQ(get(u"Game.adf", untimed, kRuntimeMediumNoTimestamp), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(record_of(untimed))).substr(0, 8), std::string(8, '\0'));
    EXPECT_TRUE(changed(untimed));
    EXPECT_FALSE(changed(copy));
    modify(copy, "written");
    EXPECT_TRUE(changed(copy));
}

TEST_F(RuntimeMedium, CallerKeysAndWorkingCopyNames) {
    images_.create_file(u"Game.adf", "floppy");
    const std::u16string key = u"0123456789ABCDEF0123456789abcdef-xyz"; // 36 characters
    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy, 0, key), status::ok);
    EXPECT_EQ(copy, *runtime_folder() + key + u"-Game.adf");
    // The same key again overwrites the copy and record.
    modify(copy, "changed");
    ASSERT_EQ(get(u"Game.adf", copy, 0, key), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "floppy");
    EXPECT_FALSE(changed(copy));

    // Keys that would not name a working copy that can be found again.
    for (const std::u16string_view bad :
         {std::u16string_view(u"0123456789ABCDEF0123456789abcdef-xy"),
          std::u16string_view(u"0123456789ABCDEF0123456789abcdef-xyzw"),
          std::u16string_view(u"0123456789ABCDEF0123456789abcdef\\xyz"), std::u16string_view(u"")}) {
        std::u16string none;
        EXPECT_EQ(get(u"Game.adf", none, 0, bad), status::invalid_argument) << test::printable(bad);
    }

    // Check and dismiss take 36 characters and a hyphen after the last "\", nothing shorter.
    const std::u16string folder = *runtime_folder();
    bool is_changed = true;
    for (const std::u16string& name : {folder + u"0123456789ABCDEF0123456789abcdef-xy-Game.adf", folder + key,
                                       std::u16string(u"no-separator-at-all-0123456789012345678-x")}) {
        EXPECT_EQ(check_runtime_medium(name, is_changed), status::invalid_argument) << test::printable(name);
        EXPECT_EQ(dismiss_runtime_medium(name, kRuntimeMediumWriteBack), status::invalid_argument);
    }
    // A well-formed name without a record: the system's error.
    const std::u16string orphan = folder + u"FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF-Game.adf";
    EXPECT_EQ(check_runtime_medium(orphan, is_changed), status::from_win32(platform::system_error::file_not_found));
    EXPECT_EQ(dismiss_runtime_medium(orphan, 0), status::from_win32(platform::system_error::file_not_found));
}

TEST_F(RuntimeMedium, AlternateFolderIsLookedInFirst) {
    images_.create_file(u"Game.adf", "original");
    images_.create_file(u"alternate\\Game.adf", "alternate");
    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy, 0, std::nullopt, images_.path(u"alternate")), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "alternate");
    // The record names the image that was asked for.
    const std::string record = test::read_file(to_fs_path(record_of(copy)));
    EXPECT_EQ(record.size(), 8 + 2 * images_.path(u"Game.adf").size());
    ASSERT_EQ(get(u"Game.adf", copy, 0, std::nullopt, images_.path(u"elsewhere")), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "original");
}

TEST_F(RuntimeMedium, PathsTooLongAndMissingImages) {
    const std::size_t folder_chars = runtime_folder()->size();
    // Folder + key + "-" + name: 259 characters pass the check, 260 do not.
    const std::size_t longest_name = 259 - folder_chars - kRuntimeKeyChars - 1;
    std::u16string copy;
    const std::u16string fits = std::u16string(longest_name - 4, u'n') + u".adf";
    std::u16string too_long(1, u'n');
    too_long += fits; // (appended: GCC 12 misreads a prepended literal as an overlapping copy)
    EXPECT_EQ(get(too_long, copy), status::from_win32(platform::system_error::buffer_overflow));
    // The name that fits gets as far as copying the missing file.
    EXPECT_EQ(get(fits, copy), status::from_win32(platform::system_error::file_not_found));
    EXPECT_EQ(get(u"missing.adz", copy), static_cast<HResult>(0x80040002u));
}

TEST_F(RuntimeMedium, WritingBackPlainAndCompressedImages) {
    const test::Bytes original = test::sample_image(80000, 3);
    images_.create_file(u"Game.adf", as_text(original));
    images_.create_file(u"Game.hdz", as_text(test::gzip_member(original)));

    std::u16string plain, compressed;
    ASSERT_EQ(get(u"Game.adf", plain), status::ok);
    ASSERT_EQ(get(u"Game.hdz", compressed), status::ok);
    EXPECT_EQ(compressed.substr(compressed.size() - 9), u"-Game.hdf");
    const test::Bytes changed_image = test::sample_image(90000, 4);
    modify(plain, as_text(changed_image));
    modify(compressed, as_text(changed_image));

    ASSERT_EQ(dismiss_runtime_medium(plain, kRuntimeMediumWriteBack), status::ok);
    ASSERT_EQ(dismiss_runtime_medium(compressed, 0x1), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), as_text(changed_image));
    const std::string gzip = test::read_file(images_.native(u"Game.hdz"));
    EXPECT_EQ(gzip.substr(0, 4), std::string("\x1F\x8B\x08\x08", 4));
    EXPECT_EQ(gzip.substr(10, 9), std::string("game.hdz\0", 9));
    MemorySource source(std::as_bytes(std::span(gzip)));
    MemorySink sink;
    EXPECT_EQ(inflate(source, sink), InflateError::none);
    EXPECT_EQ(as_text(sink.bytes()), as_text(changed_image));
    for (const std::u16string& copy : {plain, compressed}) {
        EXPECT_FALSE(exists(copy));
        EXPECT_FALSE(exists(record_of(copy)));
    }
    // Nothing is left beside the images.
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(images_.native(u""))) ++files;
    EXPECT_EQ(files, 2u);
}

TEST_F(RuntimeMedium, DismissingWithoutWriteBackOrChange) {
    images_.create_file(u"Game.adf", "original");
    const auto written = fs::last_write_time(images_.native(u"Game.adf"));
    std::u16string unchanged, unwanted;
    ASSERT_EQ(get(u"Game.adf", unchanged), status::ok);
    ASSERT_EQ(get(u"Game.adf", unwanted), status::ok);
    modify(unwanted, "changed, not wanted");
    EXPECT_EQ(dismiss_runtime_medium(unchanged, kRuntimeMediumWriteBack), status::ok);
    EXPECT_EQ(dismiss_runtime_medium(unwanted, kRuntimeMediumAssumeChanged), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), "original");
    EXPECT_EQ(fs::last_write_time(images_.native(u"Game.adf")), written);
    EXPECT_FALSE(exists(unchanged));
    EXPECT_FALSE(exists(unwanted));
    EXPECT_FALSE(exists(record_of(unwanted)));

    // Assumed changed: written back although its time did not move.
    std::u16string assumed;
    ASSERT_EQ(get(u"Game.adf", assumed), status::ok);
    const auto made = fs::last_write_time(to_fs_path(assumed));
    std::ofstream(to_fs_path(assumed), std::ios::binary) << "same time";
    fs::last_write_time(to_fs_path(assumed), made);
    EXPECT_EQ(dismiss_runtime_medium(assumed, kRuntimeMediumWriteBack | kRuntimeMediumAssumeChanged), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), "same time");
}

TEST_F(RuntimeMedium, SideNamesAreNeverTakenFromOtherFiles) {
    images_.create_file(u"Game.adf", "original");
    const std::u16string image = images_.path(u"Game.adf");
    EXPECT_EQ(free_side_name(image), image + u".temp");
    images_.create_file(u"Game.adf.temp", "someone else's");
    EXPECT_EQ(free_side_name(image), image + u".temp1");
    images_.create_folder(u"Game.adf.temp1");
    EXPECT_EQ(free_side_name(image), image + u".temp2");

    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy), status::ok);
    modify(copy, "changed");
    ASSERT_EQ(dismiss_runtime_medium(copy, kRuntimeMediumWriteBack), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), "changed");
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf.temp")), "someone else's");
    EXPECT_FALSE(fs::exists(images_.native(u"Game.adf.temp2")));
}

TEST_F(RuntimeMedium, AReadOnlyCopyIsStillDeleted) {
    images_.create_file(u"Game.adf", "original");
    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy), status::ok);
    ASSERT_EQ(platform::set_file_attributes(copy, platform::kAttributeReadOnly | platform::kAttributeHidden), 0u);
    EXPECT_EQ(dismiss_runtime_medium(copy, 0), status::ok);
    EXPECT_FALSE(exists(copy));
    EXPECT_FALSE(exists(record_of(copy)));
}

TEST_F(RuntimeMedium, AFailedWriteBackKeepsEverythingForAnotherTry) {
    images_.create_file(u"disks\\Game.adf", "original");
    images_.create_file(u"disks\\Game.adz", as_text(test::gzip_member(test::bytes_of("original"))));
    std::u16string plain, compressed;
    ASSERT_EQ(get(u"disks\\Game.adf", plain), status::ok);
    ASSERT_EQ(get(u"disks\\Game.adz", compressed), status::ok);
    modify(plain, "changed");
    modify(compressed, "changed");

    // The images' folder is gone: writing back fails with the system's error.
    fs::remove_all(images_.native(u"disks"));
    for (const std::u16string& copy : {plain, compressed}) {
        const HResult result = dismiss_runtime_medium(copy, kRuntimeMediumWriteBack);
        EXPECT_LT(result, 0) << test::printable(copy);
        EXPECT_EQ(status::facility(result), 7u);
        EXPECT_TRUE(exists(copy));
        EXPECT_TRUE(exists(record_of(copy)));
    }
    // Once it is back, the same calls succeed.
    images_.create_folder(u"disks");
    for (const std::u16string& copy : {plain, compressed}) {
        EXPECT_EQ(dismiss_runtime_medium(copy, kRuntimeMediumWriteBack), status::ok);
        EXPECT_FALSE(exists(copy));
    }
    EXPECT_EQ(test::read_file(images_.native(u"disks\\Game.adf")), "changed");
}

TEST_F(RuntimeMedium, AnInflaterFailureLeavesThePartialCopy) {
    const test::Bytes image = test::sample_image(100000, 5);
    images_.create_file(u"Game.adz", as_text(test::gzip_member(image, {.crc_xor = 0x100})));
    std::u16string copy;
    EXPECT_EQ(get(u"Game.adz", copy), static_cast<HResult>(0x80040012u));
    // The copy was written before the check failed, and it stays.
    ASSERT_EQ(copies_.size(), 1u);
    EXPECT_EQ(test::read_file(to_fs_path(copies_[0])), as_text(image));
    EXPECT_FALSE(exists(record_of(copies_[0])));
}

} // namespace
} // namespace kq::media
