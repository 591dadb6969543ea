// The empty-medium and medium-copy exports of the built DLL, as a host calls them: the global
// heap path and its release, arguments, buffers.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace kq {
namespace {

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

class MediaFilesDll : public test::AmigaDllTest {};

TEST_F(MediaFilesDll, EmptyMediaFromTheInstalledTemplates) {
    const auto get2 = resolve<decltype(KQGetEmptyMedium2)>("KQGetEmptyMedium2");
    const auto get = resolve<decltype(KQGetEmptyMedium)>("KQGetEmptyMedium");
    const auto release = resolve<decltype(KQFreeEmptyMedium)>("KQFreeEmptyMedium");
    ASSERT_TRUE(get2 && get && release);

    for (const auto& [kind, size] :
         {std::pair{0u, 901120ull}, std::pair{1u, 1802240ull}, std::pair{0x100u, 901120ull}}) {
        kq_char* path = reinterpret_cast<kq_char*>(1);
        ASSERT_EQ(get2(&path, nullptr, 0, kind), KQ_S_OK) << kind;
        ASSERT_NE(path, nullptr);
        EXPECT_GE(GlobalSize(path), (wcslen(path) + 1) * sizeof(wchar_t)) << "from the global heap";
        WIN32_FILE_ATTRIBUTE_DATA data{};
        ASSERT_TRUE(GetFileAttributesExW(path, GetFileExInfoStandard, &data));
        EXPECT_EQ((static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow, size);
        EXPECT_EQ(data.dwFileAttributes & FILE_ATTRIBUTE_READONLY, 0u);
        const std::wstring file(path), folder = file.substr(0, file.rfind(L'\\'));
        EXPECT_EQ(folder.substr(folder.rfind(L'\\') + 1, 3), L"AEM");
        EXPECT_EQ(release(path), KQ_S_OK);
        EXPECT_EQ(GetFileAttributesW(file.c_str()), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    }
    kq_char* path = nullptr;
    ASSERT_EQ(get(&path, nullptr, 0), KQ_S_OK);
    EXPECT_NE(std::wstring(path).find(L"a-dd-ofs-empty.adf"), std::wstring::npos);
    EXPECT_EQ(release(path), KQ_S_OK);

    EXPECT_EQ(get2(nullptr, nullptr, 0, 1), KQ_S_OK) << "only checks the template";
    path = reinterpret_cast<kq_char*>(1);
    EXPECT_EQ(get2(&path, nullptr, 0, 2), KQ_E_INVALIDARG);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(get2(&path, nullptr, 1, 0), KQ_E_INVALIDARG);
    EXPECT_EQ(get(&path, nullptr, 7), KQ_E_INVALIDARG);
    EXPECT_EQ(release(nullptr), KQ_S_OK);
}

TEST_F(MediaFilesDll, CopyingMediumFiles) {
    const auto copy = resolve<decltype(KQCopyMediumFile)>("KQCopyMediumFile");
    ASSERT_NE(copy, nullptr);
    test::TempFolder source, target;
    source.create_file(u"Game.adf", "floppy");
    const std::wstring image = wide(source.path(u"Game.adf")), folder = wide(target.path());
    wchar_t buffer[MAX_PATH + 1];
    EXPECT_EQ(copy(nullptr, folder.c_str(), 0, buffer, MAX_PATH), KQ_E_INVALIDARG);
    EXPECT_EQ(copy(image.c_str(), nullptr, 0, buffer, MAX_PATH), KQ_E_INVALIDARG);
    EXPECT_EQ(copy(image.c_str(), folder.c_str(), 0, nullptr, MAX_PATH), KQ_E_INVALIDARG);
    EXPECT_EQ(copy(image.c_str(), folder.c_str(), 0, buffer, 0), KQ_E_INVALIDARG);

    ASSERT_EQ(copy(image.c_str(), folder.c_str(), 0, buffer, MAX_PATH + 1), KQ_S_OK);
    EXPECT_EQ(std::wstring(buffer), folder + L"\\Game.adf");
    EXPECT_EQ(copy(image.c_str(), folder.c_str(), KQ_COPY_MEDIUM_NO_OVERWRITE, buffer, MAX_PATH + 1),
              KQ_STATUS_FROM_WIN32(80));
    EXPECT_EQ(copy(image.c_str(), folder.c_str(), KQ_COPY_MEDIUM_SKIP_SAME_NAME, buffer, MAX_PATH + 1), KQ_S_FALSE);

    // A short buffer gets the path cut short; nothing past it is touched.
    wchar_t guarded[12];
    std::fill(std::begin(guarded), std::end(guarded), L'#');
    ASSERT_EQ(copy(image.c_str(), folder.c_str(), KQ_COPY_MEDIUM_UNIQUE_NAME, guarded, 10), KQ_S_OK);
    EXPECT_EQ(std::wstring(guarded), folder.substr(0, 9));
    EXPECT_EQ(guarded[10], L'#');
    EXPECT_NE(GetFileAttributesW((folder + L"\\Game(2).adf").c_str()), INVALID_FILE_ATTRIBUTES);
}

// Windows takes "/" as a separator too, and so does every export that takes a path: a CUE sheet
// named with it finds its data file beside it.
TEST_F(MediaFilesDll, PathsWithForwardSlashes) {
    const auto copy = resolve<decltype(KQCopyMediumFile)>("KQCopyMediumFile");
    const auto volume_name = resolve<decltype(KQGetVolumeName)>("KQGetVolumeName");
    const auto get = resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
    const auto dismiss = resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    ASSERT_TRUE(copy && volume_name && get && dismiss);
    test::TempFolder source, target;
    source.create_file(u"Game.bin", test::as_string(test::iso_image({.volume = "GAME_DISC"})));
    source.create_file(u"Game.cue", "FILE \"Game.bin\" BINARY\n  TRACK 01 MODE1/2048\n    INDEX 01 00:00:00\n");
    source.create_file(u"Disk.adf", test::as_string(test::floppy_image({.name = "Slashed"})));
    const auto slashed = [](std::u16string path) {
        std::replace(path.begin(), path.end(), u'\\', u'/');
        return wide(path);
    };
    const std::wstring sheet = slashed(source.path(u"Game.cue"));
    wchar_t buffer[MAX_PATH + 1];

    ASSERT_EQ(volume_name(sheet.c_str(), buffer, MAX_PATH), KQ_S_OK);
    EXPECT_EQ(std::wstring(buffer), L"GAME_DISC");
    ASSERT_EQ(volume_name(slashed(source.path(u"Disk.adf")).c_str(), buffer, MAX_PATH), KQ_S_OK);
    EXPECT_EQ(std::wstring(buffer), L"Slashed");

    ASSERT_EQ(copy(sheet.c_str(), slashed(target.path()).c_str(), 0, buffer, MAX_PATH), KQ_S_OK);
    EXPECT_EQ(std::wstring(buffer), slashed(target.path()) + L"\\Game.cue");
    EXPECT_NE(GetFileAttributesW(wide(target.path(u"Game.bin")).c_str()), INVALID_FILE_ATTRIBUTES);

    ASSERT_EQ(get(slashed(source.path(u"Disk.adf")).c_str(), slashed(target.path()).c_str(), buffer, MAX_PATH, 0),
              KQ_S_OK);
    EXPECT_NE(std::wstring(buffer).find(L"-Disk.adf"), std::wstring::npos);
    EXPECT_EQ(dismiss(buffer, nullptr, 0), KQ_S_OK);
    EXPECT_EQ(GetFileAttributesW(buffer), INVALID_FILE_ATTRIBUTES);
}

} // namespace
} // namespace kq
