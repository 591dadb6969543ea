// The model, ROM, configuration and port exports of the built DLL, on a real folder tree.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <string>

namespace kq {
namespace {

// A string from the global heap, freed as the host frees it.
class HostString {
public:
    ~HostString() {
        if (text_ != nullptr) {
            EXPECT_EQ(GlobalFree(text_), nullptr);
        }
    }
    kq_char** out() { return &text_; }
    const kq_char* get() const { return text_; }
    std::u16string text() const { return text_ ? std::u16string(reinterpret_cast<const char16_t*>(text_)) : u"<null>"; }
    bool from_global_heap() const { return GlobalSize(text_) >= (wcslen(text_) + 1) * sizeof(wchar_t); }

private:
    kq_char* text_ = nullptr;
};

const wchar_t* w(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

class ConfigurationDll : public test::AmigaDllTest {};

TEST_F(ConfigurationDll, DefaultSystemRom) {
    const auto default_rom = resolve<decltype(KQGetDefaultSystemROM)>("KQGetDefaultSystemROM");
    ASSERT_NE(default_rom, nullptr);
    for (const auto& [model, rom] : {std::pair{L"A-1200", u"310-a1200"}, std::pair{L"a-9000", u"120"},
                                     std::pair{L"", u"120"}, std::pair{L"a-aros", u"aros-latest"}}) {
        HostString result;
        EXPECT_EQ(default_rom(result.out(), model), KQ_S_OK);
        EXPECT_EQ(result.text(), rom);
        EXPECT_TRUE(result.from_global_heap());
    }
    kq_char* stale = reinterpret_cast<kq_char*>(1);
    EXPECT_EQ(default_rom(&stale, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(stale, nullptr) << "cleared before the argument check";
    EXPECT_EQ(default_rom(nullptr, L"a-500"), KQ_E_INVALIDARG);
}

TEST_F(ConfigurationDll, RomExistsOnASharedFolder) {
    const auto rom_exists = resolve<decltype(KQROMExists)>("KQROMExists");
    ASSERT_NE(rom_exists, nullptr);
    const test::TempFolder data;
    data.create_file(u"Shared\\rom\\amiga-os-130-a3000.rom", "rom");
    data.create_file(u"Shared\\rom\\amiga-os-3x0-a4000.rom", "rom");
    data.create_file(u"Shared\\rom\\aros-2024.rom", "rom");
    const std::u16string root = data.path();
    EXPECT_EQ(rom_exists(L"130", L"a-1200", L"pal", w(root)), KQ_S_OK) << "looks for 130-a3000";
    EXPECT_EQ(rom_exists(L"130", L"a-500", L"pal", w(root)), KQ_S_FALSE);
    EXPECT_EQ(rom_exists(L"3x0", L"a-1200", nullptr, w(root + u"\\")), KQ_S_OK);
    EXPECT_EQ(rom_exists(L"aros-latest", L"a-aros", nullptr, w(root)), KQ_S_FALSE) << "no -ext.rom";
    data.create_file(u"Shared\\rom\\aros-2024-ext.rom", "rom");
    EXPECT_EQ(rom_exists(L"aros-latest", nullptr, nullptr, w(root)), KQ_S_OK);
    EXPECT_EQ(rom_exists(L"", L"a-500", nullptr, w(root)), KQ_E_INVALIDARG);
    EXPECT_EQ(rom_exists(nullptr, L"a-500", nullptr, w(root)), KQ_E_INVALIDARG);
    EXPECT_EQ(rom_exists(L"120", L"a-500", nullptr, L""), KQ_E_INVALIDARG);
    EXPECT_EQ(rom_exists(L"120", L"a-500", nullptr, nullptr), KQ_E_INVALIDARG);
}

TEST_F(ConfigurationDll, RestorePathsListTheFoldersThatExist) {
    const auto restore = resolve<decltype(KQGetRestoreSystemFilesPaths)>("KQGetRestoreSystemFilesPaths");
    ASSERT_NE(restore, nullptr);
    const test::TempFolder data;
    {
        HostString text;
        EXPECT_EQ(restore(text.out(), w(data.path())), KQ_S_OK);
        EXPECT_EQ(text.text(), u"") << "no folder: an empty text";
    }
    data.create_folder(u"Shared\\adf");
    data.create_folder(u"Shared\\rom");
    for (const std::u16string& root : {data.path(), data.path() + u"\\"}) {
        HostString text;
        EXPECT_EQ(restore(text.out(), w(root)), KQ_S_OK);
        EXPECT_EQ(text.text(), u"Shared\\adf\tShared system floppy disk images (ADF files)\t"
                               u"Shared\\rom\tShared system ROM images (ROM files)");
        EXPECT_TRUE(text.from_global_heap());
    }
    HostString text;
    EXPECT_EQ(restore(text.out(), nullptr), KQ_S_OK);
    EXPECT_EQ(text.get(), nullptr);
    EXPECT_EQ(restore(nullptr, w(data.path())), KQ_S_OK);
}

TEST_F(ConfigurationDll, ApplicationInfo) {
    const auto info = resolve<decltype(KQGetApplicationInfo)>("KQGetApplicationInfo");
    ASSERT_NE(info, nullptr);
    HostString text;
    EXPECT_EQ(info(text.out(), "<kq9><application><configuration><system>a-cd32</system>"
                               "</configuration></application></kq9>"),
              KQ_S_OK);
    EXPECT_EQ(text.text(), u"Model: CD\u00b3\u00b2\r\nROM: Amiga 3.1\r\nCPU: 68EC020\r\n");
    HostString none;
    EXPECT_EQ(info(none.out(), "<kq9>"), static_cast<kq_status>(0x8007000D));
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_EQ(info(nullptr, "<kq9/>"), KQ_E_POINTER);
}

TEST_F(ConfigurationDll, InputPorts) {
    const auto content = resolve<decltype(KQGetDefaultInputPortContent)>("KQGetDefaultInputPortContent");
    const auto ports = resolve<decltype(KQGetInputPortsInfo)>("KQGetInputPortsInfo");
    ASSERT_TRUE(content && ports);
    uint32_t value = 99;
    EXPECT_EQ(content(L"A-CD32", 0, &value), KQ_S_OK);
    EXPECT_EQ(value, 4u);
    EXPECT_EQ(content(L"A-CD32", 1, &value), KQ_S_OK);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(content(nullptr, 1, &value), KQ_E_INVALIDARG);
    EXPECT_EQ(content(L"a-500", 0, nullptr), KQ_E_INVALIDARG);
    uint32_t count = 0, multitap = 99, third = 99, fourth = 99;
    EXPECT_EQ(ports(L"a-500", nullptr, &count, &multitap, &third, &fourth), KQ_S_OK);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(multitap, 0u);
    EXPECT_EQ(third, 0u);
    EXPECT_EQ(fourth, 1u);
    EXPECT_EQ(ports(L"a-500", L"Parallel", nullptr, &multitap, nullptr, nullptr), KQ_S_OK);
    EXPECT_EQ(multitap, 3u);
    EXPECT_EQ(ports(nullptr, L"parallel", &count, nullptr, nullptr, nullptr), KQ_E_INVALIDARG);
}

} // namespace
} // namespace kq
