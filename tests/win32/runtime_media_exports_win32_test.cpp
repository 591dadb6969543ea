// The runtime-medium exports of the built DLL on real files: arguments and buffers as a host
// passes them, and writing back by renaming on one drive and by copying across drives (the
// test's folder seen through a second drive letter).

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <fstream>
#include <string>

namespace kq {
namespace {

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

// The file's identity on its volume: the same after a rename, new for a copy.
std::uint64_t file_index(const std::wstring& path) {
    HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 0;
    BY_HANDLE_FILE_INFORMATION information{};
    GetFileInformationByHandle(file, &information);
    CloseHandle(file);
    return static_cast<std::uint64_t>(information.nFileIndexHigh) << 32 | information.nFileIndexLow;
}

// Writes new content into a working copy and moves its time on, as an emulator's write does.
void modify(const std::wstring& path, const std::string& content) {
    { std::ofstream(std::filesystem::path(path), std::ios::binary) << content; }
    HANDLE file = CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t later = (static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime) + 50000000;
    const FILETIME written{static_cast<DWORD>(later), static_cast<DWORD>(later >> 32)}; // 5 s on
    SetFileTime(file, nullptr, nullptr, &written);
    CloseHandle(file);
}

std::wstring runtime_folder() {
    wchar_t temp[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temp);
    return std::wstring(temp) + L"Quennet\\";
}

class RuntimeMediaDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        get_ = resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
        check_ = resolve<decltype(KQCheckRuntimeMedium)>("KQCheckRuntimeMedium");
        dismiss_ = resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
        ASSERT_TRUE(get_ && check_ && dismiss_);
    }

    // A working copy's path, or empty with the failure recorded.
    std::wstring get(const std::wstring& image, uint32_t flags = 0) {
        wchar_t buffer[MAX_PATH + 1] = {};
        const kq_status status = get_(image.c_str(), nullptr, buffer, MAX_PATH + 1, flags);
        EXPECT_EQ(status, KQ_S_OK) << std::hex << status;
        return status == KQ_S_OK ? std::wstring(buffer) : std::wstring();
    }

    decltype(KQGetRuntimeMedium)* get_ = nullptr;
    decltype(KQCheckRuntimeMedium)* check_ = nullptr;
    decltype(KQDismissRuntimeMedium)* dismiss_ = nullptr;
    test::TempFolder folder_;
};

TEST_F(RuntimeMediaDll, ArgumentsAndBuffers) {
    folder_.create_file(u"Game.adf", "floppy");
    const std::wstring image = wide(folder_.path(u"Game.adf"));
    wchar_t buffer[64];
    uint32_t changed = 7;
    EXPECT_EQ(get_(nullptr, nullptr, buffer, 64, 0), KQ_E_INVALIDARG);
    EXPECT_EQ(get_(image.c_str(), nullptr, nullptr, 64, 0), KQ_E_INVALIDARG);
    EXPECT_EQ(get_(image.c_str(), nullptr, buffer, 0, 0), KQ_E_INVALIDARG);
    EXPECT_EQ(check_(nullptr, &changed), KQ_E_INVALIDARG);
    EXPECT_EQ(check_(image.c_str(), nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(dismiss_(nullptr, nullptr, KQ_RUNTIME_MEDIUM_WRITE_BACK), KQ_E_INVALIDARG);
    EXPECT_EQ(changed, 7u);

    // The caller's key in a buffer too short for the path: the path comes back truncated, and
    // nothing past the buffer is touched.
    const std::wstring key = L"00000000-1111-2222-3333-444444444444";
    wchar_t guarded[50];
    std::fill(std::begin(guarded), std::end(guarded), L'#');
    std::copy(key.begin(), key.end(), guarded);
    guarded[key.size()] = 0;
    ASSERT_EQ(get_(image.c_str(), L"", guarded, 40, KQ_RUNTIME_MEDIUM_CALLER_KEY | KQ_RUNTIME_MEDIUM_NO_TIMESTAMP),
              KQ_S_OK);
    const std::wstring copy = runtime_folder() + key + L"-Game.adf";
    EXPECT_EQ(std::wstring(guarded), copy.substr(0, 39));
    EXPECT_EQ(guarded[40], L'#');
    EXPECT_EQ(check_(copy.c_str(), &changed), KQ_S_OK);
    EXPECT_EQ(changed, 1u) << "no time stamp: always changed";
    EXPECT_EQ(dismiss_(copy.c_str(), reinterpret_cast<void*>(1), 0), KQ_S_OK);
    EXPECT_EQ(GetFileAttributesW(copy.c_str()), INVALID_FILE_ATTRIBUTES);

    // Other kinds of file and names without a key.
    EXPECT_EQ(get_(wide(folder_.path(u"Game.DMS")).c_str(), nullptr, buffer, 64, 0), KQ_S_FALSE);
    EXPECT_EQ(check_(L"C:\\Quennet\\0000-Game.adf", &changed), KQ_E_INVALIDARG);
    EXPECT_EQ(dismiss_(L"C:\\Quennet\\0000-Game.adf", nullptr, 0), KQ_E_INVALIDARG);
}

TEST_F(RuntimeMediaDll, OnOneDriveTheCopyIsRenamedIntoPlace) {
    folder_.create_file(u"Game.adf", "original");
    const std::wstring image = wide(folder_.path(u"Game.adf"));
    const std::wstring copy = get(image);
    ASSERT_FALSE(copy.empty());
    ASSERT_EQ(towlower(copy[0]), towlower(image[0]));
    uint32_t changed = 7;
    EXPECT_EQ(check_(copy.c_str(), &changed), KQ_S_OK);
    EXPECT_EQ(changed, 0u);
    modify(copy, "changed");
    EXPECT_EQ(check_(copy.c_str(), &changed), KQ_S_OK);
    EXPECT_EQ(changed, 1u);

    const std::uint64_t copy_index = file_index(copy);
    ASSERT_EQ(dismiss_(copy.c_str(), nullptr, KQ_RUNTIME_MEDIUM_WRITE_BACK), KQ_S_OK);
    EXPECT_EQ(file_index(image), copy_index) << "renamed, not copied";
    EXPECT_EQ(test::read_file(folder_.native(u"Game.adf")), "changed");
    EXPECT_EQ(GetFileAttributesW(copy.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesW((image + L".temp").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(RuntimeMediaDll, OnAnotherDriveTheCopyIsCopied) {
    folder_.create_file(u"Game.adf", "original");
    // The same folder through Wine's drive Z:, which shows the whole Unix file system.
    using UnixName = char* (*)(const wchar_t*);
    const auto unix_name = reinterpret_cast<UnixName>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    ASSERT_NE(unix_name, nullptr) << "runs under Wine";
    char* unix_folder = unix_name(wide(folder_.path()).c_str());
    ASSERT_NE(unix_folder, nullptr);
    std::wstring image = L"Z:";
    for (const char* c = unix_folder; *c != 0; ++c) image += *c == '/' ? L'\\' : static_cast<wchar_t>(*c);
    HeapFree(GetProcessHeap(), 0, unix_folder);
    image += L"\\Game.adf";
    ASSERT_NE(GetFileAttributesW(image.c_str()), INVALID_FILE_ATTRIBUTES) << "drive Z: shows the folder";
    const std::wstring copy = get(image);
    ASSERT_FALSE(copy.empty());
    modify(copy, "changed on another drive");
    const std::uint64_t copy_index = file_index(copy);
    ASSERT_EQ(dismiss_(copy.c_str(), nullptr, KQ_RUNTIME_MEDIUM_WRITE_BACK), KQ_S_OK);
    EXPECT_NE(file_index(image), copy_index) << "copied, not renamed";
    EXPECT_EQ(test::read_file(folder_.native(u"Game.adf")), "changed on another drive");
    EXPECT_EQ(GetFileAttributesW(copy.c_str()), INVALID_FILE_ATTRIBUTES);
}

} // namespace
} // namespace kq
