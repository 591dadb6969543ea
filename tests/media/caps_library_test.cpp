// Where the CAPSImg library is looked for, and binding its entry points, with the native
// platform layer's folders and machine settings pointed at stand-in libraries.

#include "media/caps_library.h"
#include "module/error_report.h"
#include "platform/native/native_controls.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::media {
namespace {

using platform::native::set_machine_setting_string;
using platform::native::set_program_files_folders;

constexpr std::u16string_view kKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr std::u16string_view kBelow = u"Software Preservation Society\\CAPSImg.dll";

std::u16string caps_folder(std::string_view variant) {
    const std::string path = std::string(KQ_TEST_CAPS_DIR) + "/" + std::string(variant);
    return std::u16string(path.begin(), path.end());
}

class CapsLibraryTest : public ::testing::Test {
protected:
    ~CapsLibraryTest() override {
        set_program_files_folders(std::nullopt, std::nullopt);
        set_machine_setting_string(std::u16string(kKey), u"ProgramFilesDir", std::nullopt);
        set_machine_setting_string(std::u16string(kKey), u"CommonFilesDir", std::nullopt);
    }
};

TEST_F(CapsLibraryTest, TheFoldersInTheirOrder) {
    const struct {
        const char* what;
        std::optional<std::u16string> program_files, common_files, program_files_setting, common_files_setting;
        bool common_variant;
        std::optional<std::u16string> expected;
    } cases[] = {
        {"Common Files first", u"C:\\PF", u"C:\\PF\\Common", u"D:\\R", std::nullopt, false,
         std::u16string(u"C:\\PF\\Common\\") + std::u16string(kBelow)},
        {"then Program Files", u"C:\\PF\\", std::nullopt, u"D:\\R", std::nullopt, false,
         std::u16string(u"C:\\PF\\") + std::u16string(kBelow)},
        {"then ProgramFilesDir", std::nullopt, std::nullopt, u"D:\\R", u"D:\\C", false,
         std::u16string(u"D:\\R\\") + std::u16string(kBelow)},
        {"or CommonFilesDir when asked", std::nullopt, std::nullopt, u"D:\\R", u"D:\\C\\", true,
         std::u16string(u"D:\\C\\") + std::u16string(kBelow)},
        {"nowhere", std::nullopt, std::nullopt, std::nullopt, std::nullopt, false, std::nullopt},
        {"the setting asked for is missing", std::nullopt, std::nullopt, u"D:\\R", std::nullopt, true, std::nullopt},
    };
    for (const auto& c : cases) {
        set_program_files_folders(c.program_files, c.common_files);
        set_machine_setting_string(std::u16string(kKey), u"ProgramFilesDir", c.program_files_setting);
        set_machine_setting_string(std::u16string(kKey), u"CommonFilesDir", c.common_files_setting);
        EXPECT_EQ(caps_library_path(c.common_variant), c.expected) << c.what;
    }
}

TEST_F(CapsLibraryTest, PathsOf260CharactersCountAsAbsent) {
    // "X:\" + padding + "\" + the 42 characters below it.
    const std::size_t padding = 259 - 3 - 1 - kBelow.size();
    const std::u16string folder = u"X:\\" + std::u16string(padding, u'p');
    set_program_files_folders(std::nullopt, folder);
    const std::optional<std::u16string> longest = caps_library_path(false);
    ASSERT_TRUE(longest.has_value());
    EXPECT_EQ(longest->size(), 259u);
    set_program_files_folders(std::nullopt, folder + u"p");
    EXPECT_EQ(caps_library_path(false), std::nullopt);
}

TEST_F(CapsLibraryTest, LoadingBindsEveryEntryPoint) {
    std::optional<CapsLibrary> caps;
    set_program_files_folders(std::nullopt, caps_folder("with-library"));
    ASSERT_EQ(CapsLibrary::load(false, caps), status::ok);
    ASSERT_TRUE(caps.has_value());
    for (std::size_t i = 0; i < kCapsEntryPointNames.size(); ++i)
        EXPECT_NE(caps->entry_point(static_cast<CapsEntryPoint>(i)), nullptr) << kCapsEntryPointNames[i];
    const auto platform_name =
        reinterpret_cast<const char* (*)(unsigned)>(caps->entry_point(CapsEntryPoint::get_platform_name));
    EXPECT_STREQ(platform_name(0), "fake");

    for (const char* variant : {"without-entries", "missing"}) {
        set_program_files_folders(std::nullopt, caps_folder(variant));
        EXPECT_EQ(CapsLibrary::load(false, caps), kIpfLibraryMissing) << variant;
        EXPECT_FALSE(caps.has_value()) << variant;
    }
    set_program_files_folders(std::nullopt, std::nullopt);
    EXPECT_EQ(CapsLibrary::load(false, caps), kIpfLibraryMissing);
}

} // namespace
} // namespace kq::media
