// Empty media made from the installed templates: kinds and arguments, the private folder, the
// root block's new dates and checksum, freeing; and the blank-disk dialog's proposals.

#include "common/windows_path.h"
#include "media/amiga_blocks.h"
#include "media/blank_disk_name.h"
#include "media/empty_medium.h"
#include "platform/files.h"
#include "tests/support/message_box_capture.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#ifndef _WIN32
#include "platform/native/native_controls.h"
#endif

#include <gtest/gtest.h>

#include <filesystem>

namespace kq::media {
namespace {

TEST(AmigaDate, FromLocalTime) {
    constexpr platform::FileTime kSecond = 10000000;
    constexpr platform::FileTime k1978 = platform::FileTime{137696} * 86400 * kSecond; // 100-ns ticks since 1601
    const std::pair<platform::FileTime, AmigaDate> cases[] = {
        {k1978, {0, 0, 0}},
        {k1978 + (86400 + 60) * kSecond + kSecond / 2, {1, 1, 25}},
        {k1978 + 86399 * kSecond + kSecond * 99 / 100, {0, 1439, 2999}},
        {k1978 - 1, {0, 0, 0}}, // before the epoch
    };
    for (const auto& [time, expected] : cases) EXPECT_EQ(amiga_date(time), expected) << time;
}

// The templates beside the module; natively the module's path is set to the build's bin folder.
class EmptyMedium : public ::testing::Test {
#ifndef _WIN32
protected:
    EmptyMedium() {
        const std::string_view path = KQ_TEST_MODULE_FOLDER "/amiga.dll";
        platform::native::set_module_file_path(std::u16string(path.begin(), path.end()));
    }
    ~EmptyMedium() override { platform::native::set_module_file_path(u""); }
#endif
};

TEST_F(EmptyMedium, KindsArgumentsAndTheRootBlock) {
    // The root block is block 880 of a double-density disk, 1760 of a high-density one.
    constexpr EmptyMediumTemplate kDD{u"a-dd-ofs-empty.adf", 880 * 512}, kHD{u"a-hd-ofs-empty.adf", 1760 * 512};
    const std::tuple<std::uint32_t, std::uint32_t, EmptyMediumTemplate> cases[] = {
        {0, 0, kDD}, {0, 1, kHD}, {0, 0x100, kDD}, {0, 0x1FF01, kHD}, {0, 2, {}}, {0, 0xFF, {}}, {1, 0, {}}};
    const auto ticks = [](const AmigaDate& d) { return (std::uint64_t{d.days} * 1440 + d.minutes) * 3000 + d.ticks; };
    for (const auto& [must_be_zero, kind, medium] : cases) {
        SCOPED_TRACE(kind);
        const HResult expected = medium.file_name.empty() ? status::invalid_argument : status::ok;
        EXPECT_EQ(make_empty_medium(must_be_zero, kind, nullptr), expected);
        const AmigaDate before = amiga_date(platform::local_time_now());
        std::u16string path;
        ASSERT_EQ(make_empty_medium(must_be_zero, kind, &path), expected);
        const AmigaDate after = amiga_date(platform::local_time_now());
        if (expected != status::ok) continue;
        const std::filesystem::path file = test::to_fs_path(path);
        EXPECT_EQ(test::printable(file_name_of(path)), test::printable(medium.file_name));
        EXPECT_EQ(file.parent_path().filename().string().substr(0, 3), "AEM");
        std::string image = test::read_file(file);
        std::string original = test::read_file(test::to_fs_path(empty_medium_template_path(medium)));
        free_empty_medium(path);
        EXPECT_FALSE(std::filesystem::exists(file.parent_path())) << "the folder goes with the image";
        ASSERT_EQ(image.size(), original.size());
        const std::span<const std::byte, kBlockBytes> root(
            reinterpret_cast<const std::byte*>(image.data()) + medium.root_offset, kBlockBytes);
        EXPECT_EQ(sum_of_longs(root), 0u);
        const AmigaDate created = load_date(root, kVolumeCreatedDate);
        EXPECT_LE(ticks(before), ticks(created));
        EXPECT_LE(ticks(created), ticks(after));
        EXPECT_EQ(load_date(root, kRootChangedDate), created);
        EXPECT_EQ(load_date(root, kVolumeChangedDate), created);
        // Nothing else changed: only the checksum (at 20) and the dates (at 420, 472 and 484) differ.
        for (const auto& [at, size] : {std::pair{20u, 4u}, {420u, 12u}, {472u, 24u}}) {
            image.replace(medium.root_offset + at, size, size, '\0');
            original.replace(medium.root_offset + at, size, size, '\0');
        }
        EXPECT_TRUE(image == original);
    }
}

TEST_F(EmptyMedium, BlankDiskProposals) {
    const test::TempFolder picked;
    picked.create_file(u"a-dd-ofs-empty.adf");
    picked.create_file(u"a-dd-ofs-empty(2).adf");
    const struct {
        BlankDiskKind kind;
        std::u16string_view data_root, size_field, folder, name; // no folder: the picked one
    } cases[] = {
        {BlankDiskKind::hard_disk, u"C:\\Data", u"512 MB", u"C:\\Data\\Shared\\hdf\\", u"a-512mb-empty.hdf"},
        {BlankDiskKind::hard_disk_other, u"C:\\Data\\", u" 20", u"C:\\Data\\Shared\\hdf\\", u"a-0mb-empty.hdf"},
        {BlankDiskKind::high_density_floppy, u"D:\\Data", u"", u"D:\\Data\\Shared\\adf\\", u"a-hd-ofs-empty.adf"},
        {BlankDiskKind::none, u"C:\\Data", u"", u"", u"a-dd-ofs-empty(3).adf"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(test::printable(c.name));
        BlankDiskProposal proposal;
        const std::u16string folder = c.folder.empty() ? picked.path() : u"";
        ASSERT_EQ(propose_blank_disk(c.kind, c.data_root, folder, c.size_field, nullptr, proposal), status::ok);
        EXPECT_EQ(proposal.folder, c.folder.empty() ? folder + u"\\" : std::u16string(c.folder));
        EXPECT_EQ(proposal.name, c.name);
        EXPECT_EQ(proposal.empty_medium.empty(), c.name.ends_with(u".hdf"));
        if (!proposal.empty_medium.empty()) free_empty_medium(proposal.empty_medium);
    }
#ifndef _WIN32
    // A missing template: the dialog says so.
    platform::native::set_module_file_path(u"/nonexistent/folder/amiga.dll");
    test::MessageBoxCapture boxes;
    BlankDiskProposal proposal;
    EXPECT_EQ(propose_blank_disk(BlankDiskKind::none, u"/data", u"", u"", nullptr, proposal),
              status::from_win32(platform::system_error::not_found));
    const std::vector<test::CapturedMessageBox> shown = boxes.take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].caption, u"Create Blank Disk");
    EXPECT_TRUE(shown[0].text.starts_with(u"A blank disk template file for the specified medium cannot be found."));
#endif
}

} // namespace
} // namespace kq::media
