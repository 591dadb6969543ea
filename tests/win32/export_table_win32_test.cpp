// The built amiga.dll as a host sees it: loaded with LoadLibraryW, its export table read from
// the mapped image.

#include "kq_amiga.h"
#include "kqhost/pe_image.h"
#include "tests/support/amiga_dll.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

namespace {

// The export table, written from the module's interface description (not from the .def).
struct ExpectedExport {
    const char* name;
    unsigned ordinal;
};
// clang-format off
constexpr ExpectedExport kExports[] = {
    {"DllMain", 1}, {"KQGetPlatformName", 2}, {"KQGetOption", 3}, {"KQFreeOption", 4},
    {"KQSetOption", 5}, {"KQGetFileAssociation", 7}, {"KQFreeFileAssociation", 8},
    {"KQGetContentTooltip", 29}, {"KQGetContentInfo", 41}, {"KQAutoConfigureApplication", 12},
    {"KQGetApplicationInfo", 28}, {"KQROMExists", 26}, {"KQGetDefaultSystemROM", 27},
    {"KQGetRestoreSystemFilesPaths", 25}, {"KQGetInputPortsInfo", 40},
    {"KQGetDefaultInputPortContent", 16}, {"KQGetRuntimeMedium", 9},
    {"KQCheckRuntimeMedium", 10}, {"KQDismissRuntimeMedium", 11}, {"KQGetEmptyMedium", 13},
    {"KQGetEmptyMedium2", 22}, {"KQFreeEmptyMedium", 14}, {"KQCopyMediumFile", 21},
    {"KQGetVolumeName", 18}, {"KQBootTag", 17}, {"KQGetDeviceCommand", 19},
    {"KQFreeDeviceCommand", 20}, {"KQPreprocessKeyboardInput", 30},
    {"KQProcessKeyboardInput", 33}, {"KQGetKeyboardInputData", 31},
    {"KQGetKeyboardInputData2", 42}, {"KQFreeKeyboardInputData", 32},
    {"KQGetKeyboardLayout", 44}, {"KQGetKeyDisplayName", 36}, {"KQGetStringRawKeys", 34},
    {"KQFreeStringRawKeys", 35}, {"KQBackupKeyboardSettings", 49},
    {"KQGetInputButtonName", 38}, {"KQProcessVButtonEditMessage", 39},
    {"KQProcessVButtonEditMessage2", 43}, {"KQOpenKeyboardWindow", 47},
    {"KQSetKeyboardWindow", 45}, {"KQResetKeyboardWindow", 50}, {"KQGetKeyboardWindowInfo", 46},
    {"KQGetKeyDialog2", 48}, {"KQ9Editor", 15}, {"KQEditScreenClip", 23},
    {"KQEditScreenClip2", 24}, {"KQROMToolbox", 51},
};
// clang-format on
static_assert(std::size(kExports) == 49);

// DLLs that come with every Windows installation.
const std::set<std::string> kSystemDlls = {
    "advapi32.dll", "bcrypt.dll", "comdlg32.dll", "gdi32.dll",  "kernel32.dll", "msvcrt.dll",
    "ntdll.dll",    "ole32.dll",  "oleaut32.dll", "rpcrt4.dll", "setupapi.dll", "shell32.dll",
    "shlwapi.dll",  "user32.dll", "version.dll",  "winmm.dll",  "winspool.drv", "ws2_32.dll",
};

class AmigaDll : public kq::test::AmigaDllTest {
protected:
    FARPROC by_ordinal(unsigned ordinal) const {
        return GetProcAddress(module_, reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(ordinal)));
    }
};

TEST_F(AmigaDll, EveryExportResolvesByOrdinalToItsNamedAddress) {
    for (const ExpectedExport& expected : kExports) {
        const FARPROC by_name = GetProcAddress(module_, expected.name);
        EXPECT_NE(by_name, nullptr) << expected.name;
        EXPECT_EQ(by_ordinal(expected.ordinal), by_name) << expected.name;
    }
    for (unsigned empty : {0u, 6u, 37u, 52u}) EXPECT_EQ(by_ordinal(empty), nullptr) << "ordinal " << empty;
}

TEST_F(AmigaDll, ExportTableHoldsExactlyTheNamedEntryPoints) {
    const auto exports = kqhost::list_exports(module_);
    ASSERT_EQ(exports.size(), std::size(kExports));
    for (const kqhost::PeExport& entry : exports) {
        const auto expected = std::find_if(std::begin(kExports), std::end(kExports),
                                           [&](const ExpectedExport& e) { return entry.name == e.name; });
        ASSERT_NE(expected, std::end(kExports)) << "unexpected export " << entry.name;
        EXPECT_EQ(entry.ordinal, expected->ordinal) << entry.name;
    }
}

TEST_F(AmigaDll, ImportsWindowsSystemDllsOnly) {
    const auto dlls = kqhost::list_imported_dlls(module_);
    EXPECT_FALSE(dlls.empty());
    for (std::string dll : dlls) {
        std::transform(dll.begin(), dll.end(), dll.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_TRUE(kSystemDlls.count(dll) == 1 || dll.rfind("api-ms-win-", 0) == 0) << "imports " << dll;
    }
}

TEST_F(AmigaDll, PlatformNameIsAConstantAmiga) {
    const auto get_name = resolve<decltype(KQGetPlatformName)>("KQGetPlatformName");
    ASSERT_NE(get_name, nullptr);
    const kq_char* first = get_name();
    EXPECT_STREQ(first, L"Amiga");
    EXPECT_EQ(get_name(), first) << "the same pointer on every call";
    MEMORY_BASIC_INFORMATION region{};
    ASSERT_NE(VirtualQuery(first, &region, sizeof region), 0u);
    EXPECT_EQ(region.AllocationBase, module_) << "the text lives in the module's image";
}

TEST_F(AmigaDll, ShellWindowsAreNotProvided) {
    for (const char* name :
         {"KQ9Editor", "KQEditScreenClip", "KQEditScreenClip2", "KQROMToolbox", "KQOpenKeyboardWindow",
          "KQSetKeyboardWindow", "KQResetKeyboardWindow", "KQGetKeyboardWindowInfo", "KQGetKeyDialog2",
          "KQProcessVButtonEditMessage", "KQProcessVButtonEditMessage2"}) {
        const auto window = resolve<kq_status()>(name);
        ASSERT_NE(window, nullptr) << name;
        EXPECT_EQ(window(), KQ_E_NOTIMPL) << name;
    }
}

TEST_F(AmigaDll, LoadsAgainAfterBeingUnloaded) {
    FreeLibrary(module_);
    module_ = LoadLibraryW((kq::test::folder_of_this_program() + L"\\amiga.dll").c_str());
    ASSERT_NE(module_, nullptr);
    const auto get_name = resolve<decltype(KQGetPlatformName)>("KQGetPlatformName");
    EXPECT_STREQ(get_name(), L"Amiga");
}

} // namespace
