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
using Folder = std::optional<std::u16string>;

constexpr std::u16string_view kKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr std::u16string_view kBelow = u"Software Preservation Society\\CAPSImg.dll";

class CapsLibraryTest : public ::testing::Test {
protected:
    // Program Files and Common Files as the system reports them, then the two machine settings.
    static void set_folders(Folder program, Folder common, Folder program_setting = {}, Folder common_setting = {}) {
        set_program_files_folders(std::move(program), std::move(common));
        set_machine_setting_string(std::u16string(kKey), u"ProgramFilesDir", std::move(program_setting));
        set_machine_setting_string(std::u16string(kKey), u"CommonFilesDir", std::move(common_setting));
    }
    ~CapsLibraryTest() override { set_folders({}, {}); }
};

TEST_F(CapsLibraryTest, TheFoldersInTheirOrder) {
    // "X:\" + padding + "\" + the library's path below it: 259 characters, the longest allowed.
    const std::u16string longest = u"X:\\" + std::u16string(259 - 3 - 1 - kBelow.size(), u'p');
    const struct {
        Folder program, common, program_setting, common_setting;
        bool common_variant;
        Folder expected_folder;
    } cases[] = {
        {u"C:\\PF", u"C:\\PF\\Common", u"D:\\R", {}, false, u"C:\\PF\\Common\\"},
        {u"C:\\PF\\", {}, u"D:\\R", {}, false, u"C:\\PF\\"},
        {{}, {}, u"D:\\R", u"D:\\C", false, u"D:\\R\\"},
        {{}, {}, u"D:\\R", u"D:\\C\\", true, u"D:\\C\\"},
        {{}, {}, {}, {}, false, {}},
        {{}, {}, u"D:\\R", {}, true, {}},
        {{}, longest, {}, {}, false, longest + u"\\"},
        {{}, longest + u"p", {}, {}, false, {}},
    };
    for (const auto& c : cases) {
        set_folders(c.program, c.common, c.program_setting, c.common_setting);
        const Folder expected = c.expected_folder ? Folder(*c.expected_folder + std::u16string(kBelow)) : Folder();
        EXPECT_EQ(caps_library_path(c.common_variant), expected) << &c - cases;
    }
}

TEST_F(CapsLibraryTest, LoadingBindsEveryEntryPoint) {
    const auto variant = [](std::string_view name) {
        const std::string path = std::string(KQ_TEST_CAPS_DIR "/") + std::string(name);
        return std::u16string(path.begin(), path.end());
    };
    std::optional<CapsLibrary> caps;
    set_folders({}, variant("with-library"));
    ASSERT_EQ(CapsLibrary::load(false, caps), status::ok);
    ASSERT_TRUE(caps.has_value());
    for (std::size_t i = 0; i < kCapsEntryPointNames.size(); ++i)
        EXPECT_NE(caps->entry_point(static_cast<CapsEntryPoint>(i)), nullptr) << kCapsEntryPointNames[i];
    const auto platform_name =
        reinterpret_cast<const char* (*)(unsigned)>(caps->entry_point(CapsEntryPoint::get_platform_name));
    EXPECT_STREQ(platform_name(0), "fake");

    for (const Folder& folder : {Folder(variant("without-entries")), Folder(variant("missing")), Folder()}) {
        set_folders({}, folder);
        EXPECT_EQ(CapsLibrary::load(false, caps), kIpfLibraryMissing) << folder.has_value();
        EXPECT_FALSE(caps.has_value());
    }
}

} // namespace
} // namespace kq::media
