// Empty media made from the installed templates: kinds and arguments, the private folder, the
// root block's new dates and checksum, freeing; and the blank-disk dialog's proposals.

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

constexpr platform::FileTime kSecond = 10000000;
constexpr platform::FileTime k1978 = platform::FileTime{137696} * 86400 * kSecond; // 100-ns ticks since 1601

// The templates beside the module; natively the module's path is set to the build's bin folder.
class EmptyMedium : public ::testing::Test {
#ifndef _WIN32
protected:
    EmptyMedium() { platform::native::set_module_file_path(u"" KQ_TEST_MODULE_FOLDER "/amiga.dll"); }
    ~EmptyMedium() override { platform::native::set_module_file_path(u""); }
#endif
};

TEST_F(EmptyMedium, KindsArgumentsAndTheRootBlock) {
    EXPECT_EQ(amiga_date(k1978 + (86400 + 60) * kSecond + kSecond / 2), (AmigaDate{1, 1, 25}));
    EXPECT_EQ(amiga_date(k1978 - 1), (AmigaDate{0, 0, 0})); // before the epoch
    // The time an Amiga date stands for.
    const auto time = [](const auto& d) { return k1978 + ((d.days * 1440ull + d.minutes) * 3000 + d.ticks) * 200000; };
    // The root block is block 880 of a double-density disk, 1760 of a high-density one.
    constexpr EmptyMediumTemplate kDD{u"a-dd-ofs-empty.adf", 880 * 512}, kHD{u"a-hd-ofs-empty.adf", 1760 * 512};
    const std::tuple<std::uint32_t, std::uint32_t, EmptyMediumTemplate> cases[] = {
        {0, 0, kDD}, {0, 1, kHD}, {0, 0x100, kDD}, {0, 0x1FF01, kHD}, {0, 2, {}}, {0, 0xFF, {}}, {1, 0, {}}};
    for (const auto& [must_be_zero, kind, medium] : cases) {
        SCOPED_TRACE(kind);
        const HResult expected = medium.file_name.empty() ? status::invalid_argument : status::ok;
        EXPECT_EQ(make_empty_medium(must_be_zero, kind, nullptr), expected);
        const platform::FileTime before = platform::local_time_now();
        std::u16string path;
        ASSERT_EQ(make_empty_medium(must_be_zero, kind, &path), expected);
        const platform::FileTime after = platform::local_time_now();
        if (expected != status::ok) continue;
        const std::filesystem::path file = test::to_fs_path(path);
        EXPECT_EQ(file.parent_path().filename().string().substr(0, 3), "AEM");
        const std::string image = test::read_file(file);
        std::string original = test::read_file(test::to_fs_path(empty_medium_template_path(medium)));
        free_empty_medium(path);
        EXPECT_FALSE(std::filesystem::exists(file.parent_path())) << "the folder goes with the image";
        ASSERT_EQ(image.size(), original.size());
        const std::span<const std::byte, kBlockBytes> root(
            reinterpret_cast<const std::byte*>(image.data()) + medium.root_offset, kBlockBytes);
        EXPECT_EQ(sum_of_longs(root), 0u);
        const AmigaDate created = load_date(root, kVolumeCreatedDate);
        EXPECT_LE(before - kSecond / 50, time(created));
        EXPECT_LE(time(created), after);
        // The template with the root block's three dates (at 420, 472 and 484) set to the creation date and
        // its checksum (at 20) as found: nothing else changed.
        for (const std::size_t at : {420, 472, 484})
            original.replace(medium.root_offset + at, 12, image, medium.root_offset + 484, 12);
        original.replace(medium.root_offset + 20, 4, image, medium.root_offset + 20, 4);
        EXPECT_TRUE(image == original);
    }
}

TEST_F(EmptyMedium, BlankDiskProposals) {
    using Text = std::u16string_view;
    // The kind, the data folder, the picked folder and the size field; the folder and the name proposed.
    const std::tuple<BlankDiskKind, Text, Text, Text, Text, Text> cases[] = {
        {BlankDiskKind::hard_disk, u"C:\\Data", u"", u"512 MB", u"C:\\Data\\Shared\\hdf\\", u"a-512mb-empty.hdf"},
        {BlankDiskKind::hard_disk_other, u"C:\\Data\\", u"", u" 20", u"C:\\Data\\Shared\\hdf\\", u"a-0mb-empty.hdf"},
        {BlankDiskKind::high_density_floppy, u"D:\\Data", u"", u"", u"D:\\Data\\Shared\\adf\\", u"a-hd-ofs-empty.adf"},
        {BlankDiskKind::none, u"C:\\Data", u"E:\\Picked", u"", u"E:\\Picked\\", u"a-dd-ofs-empty.adf"},
    };
    for (const auto& [kind, data_root, picked, size_field, folder, name] : cases) {
        SCOPED_TRACE(test::printable(name));
        BlankDiskProposal proposal;
        ASSERT_EQ(propose_blank_disk(kind, data_root, picked, size_field, nullptr, proposal), status::ok);
        EXPECT_EQ(proposal.folder, folder);
        EXPECT_EQ(proposal.name, name);
        EXPECT_EQ(proposal.empty_medium.empty(), name.ends_with(u".hdf"));
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
