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
#include <regex>

namespace kq::media {
namespace {

namespace fs = std::filesystem;
using test::to_fs_path;

std::string as_text(const test::Bytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

class RuntimeMedium : public ::testing::Test {
protected:
#ifndef _WIN32
    // Natively the temporary folder is one of the test's own.
    RuntimeMedium() { platform::native::set_temp_folder(temp_.path() + u"\\"); }
    ~RuntimeMedium() override { platform::native::set_temp_folder(u""); }
#else
    // Under Wine the copies go to the real temporary folder: they are removed with their records.
    ~RuntimeMedium() override {
        for (const std::u16string& copy : copies_) dismiss_runtime_medium(copy, 0);
    }
#endif
    static std::u16string record_of(std::u16string_view copy) {
        return std::u16string(copy.substr(0, copy.rfind(u'\\') + 1 + kRuntimeKeyChars)) + u".info";
    }
    // Makes a working copy of `image` (below the images folder); the path, or the failure.
    HResult get(std::u16string_view image, std::u16string& copy, bool no_timestamp = false,
                std::optional<std::u16string_view> key = std::nullopt,
                std::optional<std::u16string_view> alternate = std::nullopt) {
        const std::u16string path = images_.path(image);
        copy.clear();
        const HResult result = make_runtime_medium(
            {.image_path = path, .alternate_folder = alternate, .caller_key = key, .no_timestamp = no_timestamp}, copy);
        copies_.push_back(copy);
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
        std::ofstream(path, std::ios::binary) << content;
        fs::last_write_time(path, before + std::chrono::seconds(5));
    }
    static bool exists(std::u16string_view path) { return fs::exists(to_fs_path(path)); }
    static std::size_t files_in(const fs::path& folder) {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
    test::TempFolder temp_, images_;
    std::vector<std::u16string> copies_;
};

TEST_F(RuntimeMedium, WhichImagesGetACopyItsNameAndItsRecord) {
    const test::Bytes image = test::sample_image(50000);
    const std::string adz = as_text(test::gzip_member(image));
    // The image, its content, the status, the copy's name after "<key>-", its content.
    const std::tuple<std::u16string_view, std::string, HResult, std::u16string_view, std::string> cases[] = {
        {u"Game.ADF", "floppy", status::ok, u"Game.ADF", "floppy"},
        {u"Work.hdf", "hard disk", status::ok, u"Work.hdf", "hard disk"},
        {u"Disk.Adz", adz, status::ok, u"Disk.Adf", as_text(image)},
        {u"Work.HDZ", adz, status::ok, u"Work.HDf", as_text(image)},
        {u"Game.dms", "DMS!", status::nothing_more, u"", ""},
        {u"Game.adf.bak", "x", status::nothing_more, u"", ""},
        {u"README", "x", status::nothing_more, u"", ""}};
    const fs::path folder = to_fs_path(*runtime_folder());
    for (const auto& [name, content, expected, copy_name, copy_content] : cases) {
        SCOPED_TRACE(test::printable(name));
        images_.create_file(name, content);
        const std::size_t files_before = fs::exists(folder) ? files_in(folder) : 0;
        std::u16string copy;
        EXPECT_EQ(get(name, copy), expected);
        if (expected != status::ok) {
            EXPECT_TRUE(copy.empty());
            EXPECT_EQ(fs::exists(folder) ? files_in(folder) : 0, files_before) << "nothing is created";
            continue;
        }
        // "<runtime folder>\\XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX-<name>", in upper-case hex digits.
        const std::string narrow(copy.begin() + static_cast<std::ptrdiff_t>(runtime_folder()->size()), copy.end());
        EXPECT_EQ(copy.substr(0, runtime_folder()->size()), *runtime_folder());
        EXPECT_TRUE(std::regex_match(narrow, std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}-.+"))) << narrow;
        EXPECT_EQ(copy.substr(runtime_folder()->size() + kRuntimeKeyChars), std::u16string(1, u'-').append(copy_name));
        EXPECT_EQ(test::read_file(to_fs_path(copy)), copy_content);
    }
    // The record: the copy's time, then the image's path, both little-endian.
    std::u16string copy, untimed;
    ASSERT_EQ(get(u"Game.ADF", copy), status::ok);
    const std::string record = test::read_file(to_fs_path(record_of(copy)));
    const std::u16string image_path = images_.path(u"Game.ADF");
    std::string expected(8, '\0');
    const platform::FileTime time = platform::File::open_for_reading(copy)->last_write_time().value_or(0);
    for (std::size_t i = 0; i < 8; ++i) expected[i] = static_cast<char>(time >> (8 * i));
    for (const char16_t c : image_path) expected += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    EXPECT_EQ(record, expected);
    // Without a time stamp the time is zero, and the copy always counts as changed.
    ASSERT_EQ(get(u"Game.ADF", untimed, true), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(record_of(untimed))).substr(0, 8), std::string(8, '\0'));
    EXPECT_TRUE(changed(untimed));
    EXPECT_FALSE(changed(copy));
    modify(copy, "written");
    EXPECT_TRUE(changed(copy));
    // The alternate folder is looked in first; the record names the image asked for.
    images_.create_file(u"alternate\\Game.ADF", "alternate");
    ASSERT_EQ(get(u"Game.ADF", copy, false, std::nullopt, images_.path(u"alternate")), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "alternate");
    EXPECT_EQ(test::read_file(to_fs_path(record_of(copy))).size(), record.size());
    ASSERT_EQ(get(u"Game.ADF", copy, false, std::nullopt, images_.path(u"elsewhere")), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "floppy");
}

TEST_F(RuntimeMedium, KeysNamesAndPaths) {
    images_.create_file(u"Game.adf", "floppy");
    const std::u16string key = u"0123456789ABCDEF0123456789abcdef-xyz", folder = *runtime_folder();
    std::u16string copy;
    ASSERT_EQ(get(u"Game.adf", copy, false, key), status::ok);
    EXPECT_EQ(copy, folder + key + u"-Game.adf");
    modify(copy, "changed"); // the same key again overwrites the copy and record
    ASSERT_EQ(get(u"Game.adf", copy, false, key), status::ok);
    EXPECT_EQ(test::read_file(to_fs_path(copy)), "floppy");
    EXPECT_FALSE(changed(copy));
    // Keys that would not name a working copy that can be found again.
    for (const std::u16string_view bad :
         {u"0123456789ABCDEF0123456789abcdef-xy", u"0123456789ABCDEF0123456789abcdef-xyzw",
          u"0123456789ABCDEF0123456789abcdef\\xyz", u""})
        EXPECT_EQ(get(u"Game.adf", copy, false, bad), status::invalid_argument) << test::printable(bad);
    // Check and dismiss take 36 characters and a hyphen after the last "\", nothing shorter; a
    // well-formed name without a record is the system's error.
    bool is_changed = true;
    for (const std::u16string& name : {folder + key.substr(0, 35) + u"-Game.adf", folder + key,
                                       std::u16string(u"no-separator-at-all-0123456789012345678-x")}) {
        EXPECT_EQ(check_runtime_medium(name, is_changed), status::invalid_argument) << test::printable(name);
        EXPECT_EQ(dismiss_runtime_medium(name, kRuntimeMediumWriteBack), status::invalid_argument);
    }
    const std::u16string orphan = folder + u"FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF-Game.adf";
    EXPECT_EQ(check_runtime_medium(orphan, is_changed), status::from_win32(platform::system_error::file_not_found));
    EXPECT_EQ(dismiss_runtime_medium(orphan, 0), status::from_win32(platform::system_error::file_not_found));
    // Folder + key + "-" + name: 259 characters pass the check, 260 do not; paths too short to
    // have a kind, or without a separator.
    const std::u16string fits = std::u16string(259 - folder.size() - kRuntimeKeyChars - 1 - 4, u'n') + u".adf";
    EXPECT_EQ(get(std::u16string(1, u'n').append(fits), copy),
              status::from_win32(platform::system_error::buffer_overflow));
    EXPECT_EQ(get(fits, copy), status::from_win32(platform::system_error::file_not_found));
    EXPECT_EQ(get(u"missing.adz", copy), static_cast<HResult>(0x80040002u));
    EXPECT_EQ(make_runtime_medium({.image_path = u".adf"}, copy), status::nothing_more);
    EXPECT_EQ(make_runtime_medium({.image_path = u"x.adf"}, copy), status::invalid_argument);
}

TEST_F(RuntimeMedium, WritingBack) {
    const test::Bytes original = test::sample_image(80000, 3), changed_image = test::sample_image(90000, 4);
    images_.create_file(u"Game.adf", as_text(original));
    images_.create_file(u"Game.hdz", as_text(test::gzip_member(original)));
    const auto written = fs::last_write_time(images_.native(u"Game.adf"));
    std::u16string plain, compressed, unchanged, unwanted, assumed;
    for (std::u16string* copy : {&plain, &compressed, &unchanged, &unwanted, &assumed})
        ASSERT_EQ(get(copy == &compressed ? u"Game.hdz" : u"Game.adf", *copy), status::ok);
    EXPECT_TRUE(compressed.ends_with(u"-Game.hdf"));
    // Unchanged, or changed without write-back: the image stays as it was, the copy goes.
    modify(unwanted, "changed, not wanted");
    EXPECT_EQ(dismiss_runtime_medium(unchanged, kRuntimeMediumWriteBack), status::ok);
    EXPECT_EQ(dismiss_runtime_medium(unwanted, kRuntimeMediumAssumeChanged), status::ok);
    EXPECT_EQ(fs::last_write_time(images_.native(u"Game.adf")), written);
    // Assumed changed: written back although its time did not move. Side names are never taken
    // from other files.
    const auto made = fs::last_write_time(to_fs_path(assumed));
    std::ofstream(to_fs_path(assumed), std::ios::binary) << "same time";
    fs::last_write_time(to_fs_path(assumed), made);
    EXPECT_EQ(free_side_name(images_.path(u"Game.adf")), images_.path(u"Game.adf") + u".temp");
    images_.create_file(u"Game.adf.temp", "someone else's");
    EXPECT_EQ(free_side_name(images_.path(u"Game.adf")), images_.path(u"Game.adf") + u".temp1");
    images_.create_folder(u"Game.adf.temp1");
    EXPECT_EQ(free_side_name(images_.path(u"Game.adf")), images_.path(u"Game.adf") + u".temp2");
    EXPECT_EQ(dismiss_runtime_medium(assumed, kRuntimeMediumWriteBack | kRuntimeMediumAssumeChanged), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), "same time");
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf.temp")), "someone else's");
    // Changed: written back, compressed again where the image was.
    modify(plain, as_text(changed_image));
    modify(compressed, as_text(changed_image));
    ASSERT_EQ(dismiss_runtime_medium(plain, kRuntimeMediumWriteBack), status::ok);
    ASSERT_EQ(dismiss_runtime_medium(compressed, 0x1), status::ok);
    EXPECT_EQ(test::read_file(images_.native(u"Game.adf")), as_text(changed_image));
    const std::string gzip = test::read_file(images_.native(u"Game.hdz"));
    EXPECT_EQ(gzip.substr(10, 9), std::string("game.hdz\0", 9));
    MemorySource source(std::as_bytes(std::span(gzip)));
    MemorySink sink;
    EXPECT_EQ(inflate(source, sink), InflateError::none);
    EXPECT_EQ(as_text(sink.bytes()), as_text(changed_image));
    for (const std::u16string& copy : {plain, compressed, unchanged, unwanted, assumed})
        EXPECT_FALSE(exists(copy) || exists(record_of(copy))) << test::printable(copy);
    EXPECT_EQ(files_in(images_.native(u"")), 4u) << "nothing is left beside the images";
}

TEST_F(RuntimeMedium, WhatStaysWhenSomethingFails) {
    images_.create_file(u"disks\\Game.adf", "original");
    std::u16string locked;
    ASSERT_EQ(get(u"disks\\Game.adf", locked), status::ok);
    // A read-only copy is still deleted.
    ASSERT_EQ(platform::set_file_attributes(locked, platform::kAttributeReadOnly | platform::kAttributeHidden), 0u);
    EXPECT_EQ(dismiss_runtime_medium(locked, 0), status::ok);
    EXPECT_FALSE(exists(locked) || exists(record_of(locked)));
    // An inflater failure leaves the copy as written before the check failed, without a record.
    const test::Bytes image = test::sample_image(100000, 5);
    images_.create_file(u"Bad.adz", as_text(test::gzip_member(image, {.crc_xor = 0x100})));
    const fs::path folder = to_fs_path(*runtime_folder());
    const std::size_t before = files_in(folder);
    std::u16string copy;
    EXPECT_EQ(get(u"Bad.adz", copy), static_cast<HResult>(0x80040012u));
    EXPECT_EQ(files_in(folder), before + 1);
    for (const auto& entry : fs::directory_iterator(folder))
        EXPECT_TRUE(!entry.path().filename().string().ends_with("-Bad.adf") ||
                    test::read_file(entry.path()) == as_text(image));
}

} // namespace
} // namespace kq::media
