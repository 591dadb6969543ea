// Where the CAPSImg library is looked for, and binding its entry points, with the native
// platform layer's folders and machine settings pointed at stand-in libraries.

#include "media/caps_library.h"
#include "module/error_report.h"
#include "platform/native/native_controls.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

namespace kq::media {
namespace {

namespace native = platform::native;
using Folder = std::optional<std::u16string>;

constexpr std::u16string_view kKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr std::u16string_view kBelow = u"Software Preservation Society\\CAPSImg.dll";

class CapsLibraryTest : public ::testing::Test {
protected:
    // Program Files and Common Files as the system reports them, then the two machine settings.
    static void set_folders(Folder program, Folder common, Folder program_setting = {}, Folder common_setting = {}) {
        native::set_program_files_folders(std::move(program), std::move(common));
        native::set_machine_setting_string(std::u16string(kKey), u"ProgramFilesDir", std::move(program_setting));
        native::set_machine_setting_string(std::u16string(kKey), u"CommonFilesDir", std::move(common_setting));
    }
    ~CapsLibraryTest() override { set_folders({}, {}); }
};

TEST_F(CapsLibraryTest, TheFoldersInTheirOrder) {
    // "X:\" + padding + "\" + the library's path below it: 259 characters, the longest allowed.
    const std::u16string longest = u"X:\\" + std::u16string(259 - 3 - 1 - kBelow.size(), u'p');
    // Program Files, Common Files, the two settings, which setting is asked for; the library's folder.
    const std::tuple<Folder, Folder, Folder, Folder, bool, Folder> cases[] = {
        {u"C:\\PF", u"C:\\PF\\Common", u"D:\\R", {}, false, u"C:\\PF\\Common\\"},
        {u"C:\\PF\\", {}, u"D:\\R", {}, false, u"C:\\PF\\"},
        {{}, {}, u"D:\\R", u"D:\\C", false, u"D:\\R\\"},
        {{}, {}, u"D:\\R", u"D:\\C\\", true, u"D:\\C\\"},
        {{}, {}, u"D:\\R", {}, true, {}},
        {{}, longest, {}, {}, false, longest + u"\\"},
        {{}, longest + u"p", {}, {}, false, {}},
    };
    for (const auto& [program, common, program_setting, common_setting, common_variant, folder] : cases) {
        set_folders(program, common, program_setting, common_setting);
        EXPECT_EQ(caps_library_path(common_variant), folder ? Folder(*folder + std::u16string(kBelow)) : Folder())
            << test::printable(folder.value_or(u"none"));
    }
}

TEST_F(CapsLibraryTest, LoadingBindsEveryEntryPoint) {
    std::optional<CapsLibrary> caps;
    for (const std::u16string_view variant : {u"with-library", u"without-entries", u"missing", u""}) {
        set_folders({}, variant.empty() ? Folder() : Folder(u"" KQ_TEST_CAPS_DIR "/" + std::u16string(variant)));
        const bool complete = variant == u"with-library";
        ASSERT_EQ(CapsLibrary::load(false, caps), complete ? status::ok : kIpfLibraryMissing)
            << test::printable(variant);
        ASSERT_EQ(caps.has_value(), complete);
        if (!complete) continue;
        for (std::size_t i = 0; i < kCapsEntryPointNames.size(); ++i)
            EXPECT_NE(caps->entry_point(static_cast<CapsEntryPoint>(i)), nullptr) << kCapsEntryPointNames[i];
        const auto platform_name =
            reinterpret_cast<const char* (*)(unsigned)>(caps->entry_point(CapsEntryPoint::get_platform_name));
        EXPECT_STREQ(platform_name(0), "fake");
    }
}

} // namespace
} // namespace kq::media
