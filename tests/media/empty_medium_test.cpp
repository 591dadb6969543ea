// Empty media made from the installed templates: kinds and arguments, the private folder, the
// root block's new dates and checksum, freeing; and the blank-disk dialog's names.

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

#include <algorithm>
#include <filesystem>
#include <string>

namespace kq::media {
namespace {

namespace fs = std::filesystem;

constexpr platform::FileTime kTicksPerSecond = 10000000;
// 1978-01-01 00:00:00 as 100-ns ticks since 1601-01-01.
constexpr platform::FileTime k1978 = platform::FileTime{137696} * 86400 * kTicksPerSecond;

TEST(AmigaDate, FromLocalTime) {
    const struct {
        platform::FileTime time;
        AmigaDate expected;
    } cases[] = {
        {k1978, {0, 0, 0}},
        {k1978 + (86400 + 60) * kTicksPerSecond + kTicksPerSecond / 2, {1, 1, 25}}, // 1978-01-02 00:01:00.5
        {k1978 + 86399 * kTicksPerSecond + kTicksPerSecond * 99 / 100, {0, 1439, 2999}},
        // 2024-01-01 12:00:00, the date the templates carry.
        {k1978 + (16801ull * 86400 + 720 * 60) * kTicksPerSecond, {16801, 720, 0}},
        {k1978 - 1, {0, 0, 0}}, // before the epoch
    };
    for (const auto& c : cases) EXPECT_EQ(amiga_date(c.time), c.expected) << c.time;
}

// The templates beside the module; natively the module's path is set to the build's bin folder.
class EmptyMedium : public ::testing::Test {
protected:
    EmptyMedium() {
#ifndef _WIN32
        platform::native::set_module_file_path(utf16(KQ_TEST_MODULE_FOLDER "/amiga.dll"));
#endif
    }
    ~EmptyMedium() override {
#ifndef _WIN32
        platform::native::set_module_file_path(u"");
#endif
    }
    // A Linux path in the module's form, with "\" between the elements.
    static std::u16string utf16(std::string_view text) {
        std::u16string path(text.begin(), text.end());
        std::replace(path.begin(), path.end(), u'/', u'\\');
        return path;
    }

    // The AEM folders in the temporary folder.
    static std::size_t private_folders() {
        std::size_t count = 0;
        const fs::path temp = test::to_fs_path(*platform::temp_folder());
        for (const auto& entry : fs::directory_iterator(temp)) {
            const std::string name = entry.path().filename().string();
            if (entry.is_directory() && name.rfind("AEM", 0) == 0 && name.size() > 4 &&
                name.substr(name.size() - 4) == ".tmp")
                ++count;
        }
        return count;
    }
};

TEST_F(EmptyMedium, KindsAndArguments) {
    const struct {
        std::uint32_t must_be_zero, kind;
        HResult expected;
        std::uintmax_t size;
    } cases[] = {
        {0, 0, status::ok, 901120},
        {0, 1, status::ok, 1802240},
        {0, 0x100, status::ok, 901120}, // only the low byte counts
        {0, 0x1FF01, status::ok, 1802240},
        {0, 2, status::invalid_argument, 0},
        {0, 0xFF, status::invalid_argument, 0},
        {1, 0, status::invalid_argument, 0},
    };
    for (const auto& c : cases) {
        std::u16string path;
        ASSERT_EQ(make_empty_medium(c.must_be_zero, c.kind, &path), c.expected) << c.kind;
        if (c.expected != status::ok) {
            EXPECT_TRUE(path.empty());
            continue;
        }
        const fs::path file = test::to_fs_path(path);
        EXPECT_EQ(fs::file_size(file), c.size) << c.kind;
        EXPECT_EQ(test::printable(file_name_of(path)), c.size == 901120 ? "a-dd-ofs-empty.adf" : "a-hd-ofs-empty.adf");
        const std::string folder = file.parent_path().filename().string();
        EXPECT_EQ(folder.substr(0, 3), "AEM") << folder;
        free_empty_medium(path);
        EXPECT_FALSE(fs::exists(file));
        EXPECT_FALSE(fs::exists(file.parent_path())) << "the folder goes with the image";
    }
}

TEST_F(EmptyMedium, ANullResultOnlyChecksTheTemplate) {
    const std::size_t before = private_folders();
    EXPECT_EQ(make_empty_medium(0, 0, nullptr), status::ok);
    EXPECT_EQ(make_empty_medium(0, 1, nullptr), status::ok);
    EXPECT_EQ(make_empty_medium(0, 2, nullptr), status::invalid_argument);
    EXPECT_EQ(private_folders(), before);
}

TEST_F(EmptyMedium, TheRootBlockIsDatedNow) {
    for (const std::uint32_t kind : {0u, 1u}) {
        const EmptyMediumTemplate& medium = kEmptyMediumTemplates[kind];
        const AmigaDate before = amiga_date(platform::local_time_now());
        std::u16string path;
        ASSERT_EQ(make_empty_medium(0, kind, &path), status::ok);
        const AmigaDate after = amiga_date(platform::local_time_now());
        const std::string image = test::read_file(test::to_fs_path(path));
        const std::string original = test::read_file(test::to_fs_path(empty_medium_template_path(medium)));
        free_empty_medium(path);
        ASSERT_EQ(image.size(), original.size());

        const auto* root_bytes = reinterpret_cast<const std::byte*>(image.data() + medium.root_offset);
        const std::span<const std::byte, kBlockBytes> root(root_bytes, kBlockBytes);
        EXPECT_EQ(sum_of_longs(root), 0u) << "the 128 longs sum to zero";
        const AmigaDate created = load_date(root, kVolumeCreatedDate);
        const auto as_ticks = [](const AmigaDate& d) {
            return (std::uint64_t{d.days} * 1440 + d.minutes) * 3000 + d.ticks;
        };
        EXPECT_GE(as_ticks(created), as_ticks(before));
        EXPECT_LE(as_ticks(created), as_ticks(after));
        EXPECT_EQ(load_date(root, kRootChangedDate), created);
        EXPECT_EQ(load_date(root, kVolumeChangedDate), created);
        // Nothing else changed: the dates and the checksum are the only differences.
        for (std::size_t i = 0; i < image.size(); ++i) {
            const std::size_t in_root = i - medium.root_offset;
            const bool rewritten = i >= medium.root_offset && in_root < kBlockBytes &&
                                   ((in_root >= 20 && in_root < 24) || (in_root >= 420 && in_root < 432) ||
                                    (in_root >= 472 && in_root < 496));
            if (!rewritten && image[i] != original[i]) {
                ADD_FAILURE() << "byte " << i << " changed";
                break;
            }
        }
    }
}

#ifndef _WIN32
TEST_F(EmptyMedium, AMissingTemplate) {
    platform::native::set_module_file_path(u"/nonexistent/folder/amiga.dll");
    std::u16string path;
    EXPECT_EQ(make_empty_medium(0, 0, &path), status::from_win32(platform::system_error::not_found));
    EXPECT_EQ(make_empty_medium(0, 0, nullptr), status::from_win32(platform::system_error::not_found));
    EXPECT_TRUE(path.empty());

    // The blank-disk dialog shows its message for exactly this.
    test::MessageBoxCapture boxes;
    BlankDiskProposal proposal;
    EXPECT_EQ(propose_blank_disk(BlankDiskKind::high_density_floppy, u"/data", u"", u"", nullptr, proposal),
              status::from_win32(platform::system_error::not_found));
    const std::vector<test::CapturedMessageBox> shown = boxes.take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].caption, u"Create Blank Disk");
    EXPECT_EQ(shown[0].text, u"A blank disk template file for the specified medium cannot be found. The missing file "
                             u"can be restored by launching the Ostrelline installer in \"repair\" mode.");
}
#endif

TEST_F(EmptyMedium, BlankDiskNames) {
    const test::TempFolder folder;
    const std::u16string target = folder.path() + u"\\";
    EXPECT_EQ(free_blank_disk_name(target, u"a-dd-ofs-empty.adf"), u"a-dd-ofs-empty.adf");
    folder.create_file(u"a-dd-ofs-empty.adf");
    folder.create_file(u"a-dd-ofs-empty(2).adf");
    EXPECT_EQ(free_blank_disk_name(target, u"a-dd-ofs-empty.adf"), u"a-dd-ofs-empty(3).adf");
    EXPECT_EQ(free_blank_disk_name(target, u"noextension"), u"noextension");

    const struct {
        std::u16string_view field;
        std::u16string_view name;
    } sizes[] = {{u"20", u"a-20mb-empty.hdf"},
                 {u"512 MB", u"a-512mb-empty.hdf"},
                 {u"x20", u"a-0mb-empty.hdf"},
                 {u"", u"a-0mb-empty.hdf"},
                 {u" 20", u"a-0mb-empty.hdf"}};
    for (const auto& s : sizes) EXPECT_EQ(blank_hard_disk_name(s.field), s.name) << test::printable(s.field);

    // Proposals: the picked folder or the shared one, a floppy made from its template.
    BlankDiskProposal proposal;
    ASSERT_EQ(propose_blank_disk(BlankDiskKind::hard_disk, u"C:\\Data", u"", u"40", nullptr, proposal), status::ok);
    EXPECT_EQ(proposal.folder, u"C:\\Data\\Shared\\hdf\\");
    EXPECT_EQ(proposal.name, u"a-40mb-empty.hdf");
    EXPECT_TRUE(proposal.empty_medium.empty());
    ASSERT_EQ(propose_blank_disk(BlankDiskKind::none, u"C:\\Data\\", folder.path(), u"", nullptr, proposal),
              status::ok);
    EXPECT_EQ(proposal.folder, target);
    EXPECT_EQ(proposal.name, u"a-dd-ofs-empty(3).adf");
    ASSERT_FALSE(proposal.empty_medium.empty());
    EXPECT_TRUE(fs::exists(test::to_fs_path(proposal.empty_medium)));
    free_empty_medium(proposal.empty_medium);
    ASSERT_EQ(propose_blank_disk(BlankDiskKind::high_density_floppy, u"D:\\Data", u"", u"", nullptr, proposal),
              status::ok);
    EXPECT_EQ(proposal.folder, u"D:\\Data\\Shared\\adf\\");
    EXPECT_EQ(proposal.name, u"a-hd-ofs-empty.adf");
    free_empty_medium(proposal.empty_medium);
}

} // namespace
} // namespace kq::media
