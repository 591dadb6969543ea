// The volume-name, boot-tag and device-command exports of the built DLL, as a host calls
// them: buffers, heaps and records.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <string>

namespace kq {
namespace {

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

class MediaNamesDll : public test::AmigaDllTest {};

TEST_F(MediaNamesDll, VolumeNames) {
    const auto get = resolve<decltype(KQGetVolumeName)>("KQGetVolumeName");
    ASSERT_NE(get, nullptr);
    test::TempFolder folder;
    folder.create_file(u"Game.adf", test::as_string(test::floppy_image({.name = "GameDisk"})));
    const std::wstring image = wide(folder.path(u"Game.adf"));
    wchar_t name[40];
    std::fill(std::begin(name), std::end(name), L'#');
    ASSERT_EQ(get(image.c_str(), name, 40), KQ_S_OK);
    EXPECT_EQ(std::wstring(name), L"GameDisk");
    // Cut to the buffer; nothing written past it.
    std::fill(std::begin(name), std::end(name), L'#');
    ASSERT_EQ(get(image.c_str(), name, 5), KQ_S_OK);
    EXPECT_EQ(std::wstring(name), L"Game");
    EXPECT_EQ(name[5], L'#');
    // A file that cannot be analysed leaves the buffer alone.
    std::fill(std::begin(name), std::end(name), L'#');
    EXPECT_EQ(get(wide(folder.path(u"missing.adf")).c_str(), name, 40), KQ_E_FAIL);
    EXPECT_EQ(name[0], L'#');
    EXPECT_EQ(get(nullptr, name, 40), KQ_E_INVALIDARG);
    EXPECT_EQ(get(image.c_str(), nullptr, 40), KQ_E_INVALIDARG);
}

TEST_F(MediaNamesDll, BootTags) {
    const auto boot_tag = resolve<decltype(KQBootTag)>("KQBootTag");
    ASSERT_NE(boot_tag, nullptr);
    const char* manifest =
        "<kq9><application><configuration><boot type=\"adf\">310</boot></configuration></application></kq9>";
    kq_char* path = reinterpret_cast<kq_char*>(1);
    ASSERT_EQ(boot_tag(manifest, L"C:\\Data", 0, &path), KQ_S_OK);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(std::wstring(path), L"C:\\Data\\Shared\\adf\\amiga-os-310-workbench.adf");
    EXPECT_GE(GlobalSize(path), (wcslen(path) + 1) * sizeof(wchar_t));
    EXPECT_EQ(GlobalFree(path), nullptr);
    EXPECT_EQ(boot_tag(manifest, L"C:\\Data", 0, nullptr), KQ_S_OK);
    path = reinterpret_cast<kq_char*>(1);
    EXPECT_EQ(boot_tag(manifest, L"C:\\Data", 1, &path), KQ_E_INVALIDARG);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(boot_tag(nullptr, L"C:\\Data", 0, &path), KQ_E_INVALIDARG);
    EXPECT_EQ(boot_tag(manifest, nullptr, 0, &path), KQ_E_INVALIDARG);
}

TEST_F(MediaNamesDll, DeviceCommandRecords) {
    const auto get = resolve<decltype(KQGetDeviceCommand)>("KQGetDeviceCommand");
    const auto release = resolve<decltype(KQFreeDeviceCommand)>("KQFreeDeviceCommand");
    ASSERT_TRUE(get && release);
    KQDeviceCommand* command = nullptr;
    ASSERT_EQ(get(2, 7, 0, 0, L"a-500", &command), KQ_S_OK);
    ASSERT_NE(command, nullptr);
    const auto* block = reinterpret_cast<const std::byte*>(command);
    const std::size_t size = LocalSize(command);
    const std::wstring name(command->name), script(command->command);
    EXPECT_EQ(command->cbSize, 24u);
    EXPECT_GE(size, 24 + 2 * (name.size() + script.size()) + 4);
    for (const kq_char* text : {command->name, command->command}) {
        const auto* at = reinterpret_cast<const std::byte*>(text);
        EXPECT_TRUE(at >= block + 24 && at < block + size) << "inside the record's own block";
    }
    EXPECT_EQ(name.substr(0, 11), L"Soft Reset\t");
    EXPECT_EQ(release(command), KQ_S_OK);

    for (const auto& [category, index, model] : {std::tuple{2u, 0u, L"a-500"}, std::tuple{7u, 4u, L"a-1200"}}) {
        command = reinterpret_cast<KQDeviceCommand*>(1);
        EXPECT_EQ(get(index, category, 0, 0, model, &command), KQ_S_FALSE);
        EXPECT_EQ(command, nullptr);
    }
    ASSERT_EQ(get(0, 2, 0, 0, L"a-cdtv", &command), KQ_S_OK);
    EXPECT_EQ(std::wstring(command->name), L"Play/Pause");
    EXPECT_EQ(release(command), KQ_S_OK);
    EXPECT_EQ(get(0, 7, 0, 0, nullptr, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(release(nullptr), KQ_S_OK);
}

} // namespace
} // namespace kq
