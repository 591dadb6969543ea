// The CAPSImg library's place on a real Windows installation (Wine's), where it is not
// installed: the path below Common Files, and the status that reports it missing.

#include "media/caps_library.h"
#include "module/error_report.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>

namespace kq::media {
namespace {

TEST(CapsLibraryWin32, LookedForBelowCommonFiles) {
    wchar_t common[MAX_PATH];
    ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES_COMMON, nullptr, SHGFP_TYPE_CURRENT, common), S_OK);
    const std::wstring expected = std::wstring(common) + L"\\Software Preservation Society\\CAPSImg.dll";
    const std::optional<std::u16string> path = caps_library_path(false);
    ASSERT_TRUE(path.has_value());
    EXPECT_EQ(std::wstring(path->begin(), path->end()), expected);

    std::optional<CapsLibrary> caps;
    EXPECT_EQ(CapsLibrary::load(false, caps), kIpfLibraryMissing);
    EXPECT_FALSE(caps.has_value());
}

} // namespace
} // namespace kq::media
