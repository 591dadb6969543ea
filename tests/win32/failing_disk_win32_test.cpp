// Failing disks under Wine, through the built amiga.dll: writing back into a read-only image is
// refused, and on a full disk a write-back across drives, a copy and a blank medium fail without
// losing or half-writing the user's image, keep the working copy and its record for another try,
// and leave no half-made file or folder behind.
//
// The full disk is a file-size limit. Wine starts a Unix program when a Windows program asks
// for one, so this test runs /bin/sh, which starts this test program again under Wine with
// `prlimit --fsize` (and SIGXFSZ ignored): in that second process no file can grow past the
// limit (Wine reports the EFBIG as ERROR_GEN_FAILURE; a really full disk gives ERROR_DISK_FULL).
// It runs the one test that ordinary runs leave out (DISABLED_), which makes the calls and
// writes their results into a file that it renames into place when complete.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace kq {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kWriteBack = KQ_RUNTIME_MEDIUM_WRITE_BACK | KQ_RUNTIME_MEDIUM_ASSUME_CHANGED;

std::wstring wide(std::string_view text) { return std::wstring(text.begin(), text.end()); }
std::string narrow(std::wstring_view text) { return std::string(text.begin(), text.end()); } // ASCII paths
bool exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }
std::wstring record_of(const std::wstring& copy) { return copy.substr(0, copy.rfind(L'\\') + 37) + L".info"; }

// The entries of `folder` whose names begin with `prefix`.
long entries(const fs::path& folder, std::wstring_view prefix = L"") {
    return std::count_if(fs::directory_iterator(folder), {},
                         [&](const auto& entry) { return entry.path().filename().wstring().starts_with(prefix); });
}

// A Windows path as a Unix path, through Wine.
std::string unix_path(const std::wstring& path) {
    using UnixName = char* (*)(const wchar_t*);
    const auto unix_name = reinterpret_cast<UnixName>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    char* name = unix_name != nullptr ? unix_name(path.c_str()) : nullptr;
    const std::string result = name != nullptr ? name : "";
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

class FailingDisk : public test::AmigaDllTest {
protected:
    // A working copy of image `name`, through Wine's drive Z: (another drive that shows the whole
    // Unix file system) when asked, that the emulator changed to `changed`.
    std::wstring changed_copy(std::u16string_view name, bool other_drive, const std::string& original,
                              const std::string& changed) {
        images_.create_file(name, original);
        const std::u16string path = images_.path(name);
        std::wstring image(path.begin(), path.end());
        if (other_drive) {
            image = L"Z:";
            for (const char c : unix_path(images_.native(name).wstring()))
                image += c == '/' ? L'\\' : static_cast<wchar_t>(c);
        }
        wchar_t buffer[MAX_PATH + 1] = {};
        EXPECT_EQ(resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium")(image.c_str(), nullptr, buffer,
                                                                              MAX_PATH + 1, 0),
                  KQ_S_OK);
        std::ofstream(fs::path(buffer), std::ios::binary) << changed;
        return buffer;
    }
    kq_status dismiss(const std::wstring& copy) {
        return resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium")(copy.c_str(), nullptr, kWriteBack);
    }
    test::TempFolder folder_, images_, target_;
};

class FailingDiskChild : public FailingDisk {};

// Run by the full-disk test in the process with the file-size limit: writes back the two working
// copies, copies an image, makes a blank medium, and records the statuses and the lengths of the
// paths given back.
TEST_F(FailingDiskChild, DISABLED_MakesTheCalls) {
    const wchar_t* job = _wgetenv(L"KQ_FAILING_DISK_JOB");
    ASSERT_NE(job, nullptr) << "started by FailingDisk.FullDisk...";
    std::vector<std::wstring> fields;
    std::wistringstream line(job);
    for (std::wstring field; std::getline(line, field, L'|');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 5u);
    wchar_t copied[MAX_PATH + 1] = {};
    kq_char* blank = nullptr;
    std::ofstream(fs::path(fields[4] + L".part"))
        << dismiss(fields[0]) << " " << dismiss(fields[1]) << " "
        << resolve<decltype(KQCopyMediumFile)>("KQCopyMediumFile")(fields[2].c_str(), fields[3].c_str(), 0, copied,
                                                                   MAX_PATH + 1)
        << " " << wcslen(copied) << " "
        << resolve<decltype(KQGetEmptyMedium2)>("KQGetEmptyMedium2")(&blank, nullptr, 0, 0) << " " << (blank != nullptr)
        << "\n";
    MoveFileW((fields[4] + L".part").c_str(), fields[4].c_str());
}

TEST_F(FailingDisk, WriteBackToAReadOnlyImageIsRefused) {
    // On one drive writing back renames, on another it copies.
    for (const bool other_drive : {false, true}) {
        SCOPED_TRACE(other_drive ? "through drive Z:" : "on one drive");
        const std::wstring copy = changed_copy(u"Game.adf", other_drive, "original", "changed");
        const std::wstring image = images_.native(u"Game.adf").wstring();
        ASSERT_TRUE(SetFileAttributesW(image.c_str(), FILE_ATTRIBUTE_READONLY));
        EXPECT_EQ(dismiss(copy), KQ_STATUS_FROM_WIN32(ERROR_ACCESS_DENIED));
        EXPECT_EQ(test::read_file(image), "original");
        EXPECT_EQ(GetFileAttributesW(image.c_str()) & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
        EXPECT_TRUE(exists(copy) && exists(record_of(copy))) << "the copy and its record stay";
        EXPECT_EQ(entries(images_.native(u"")), 1) << "nothing beside the image";
        // Once the image may be written, the same call writes back.
        ASSERT_TRUE(SetFileAttributesW(image.c_str(), FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(dismiss(copy), KQ_S_OK);
        EXPECT_EQ(test::read_file(image), "changed");
        EXPECT_FALSE(exists(copy) || exists(record_of(copy)));
    }
}

TEST_F(FailingDisk, FullDiskStopsWriteBackCopiesAndBlankMediaCleanly) {
    // 96 KB images where a write may still add 16 KB: the disk is nearly full.
    const std::string original(98304, 'o'), changed(98304, 'c');
    const std::wstring near_copy = changed_copy(u"Near.adf", false, original, changed);
    const std::wstring far_copy = changed_copy(u"Far.adf", true, original, changed);
    wchar_t temp[MAX_PATH + 1];
    const fs::path temp_folder(std::wstring(temp, GetTempPathW(MAX_PATH + 1, temp)));
    const long blank_media_folders = entries(temp_folder, L"AEM");

    const fs::path result = folder_.native(u"result.txt"), log = folder_.native(u"child.log");
    const std::wstring job = near_copy + L"|" + far_copy + L"|" + images_.native(u"Far.adf").wstring() + L"|" +
                             target_.native(u"").wstring() + L"|" + result.wstring();
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::ofstream(folder_.native(u"child.sh"), std::ios::binary)
        << "trap '' XFSZ\nexport KQ_FAILING_DISK_JOB='" << narrow(job) << "'\nPATH=/usr/local/bin:/usr/bin:/bin:$PATH\n"
        << "wine=${KQ_WINE:-/usr/lib/wine/wine64}\n[ -x \"$wine\" ] || wine=$(command -v wine64 || command -v wine)\n"
        << "exec prlimit --fsize=16384 \"$wine\" '" << unix_path(program) << "' --gtest_also_run_disabled_tests "
        << "--gtest_filter=FailingDiskChild.DISABLED_MakesTheCalls >'" << unix_path(log.wstring()) << "' 2>&1\n";
    std::wstring command = L"/bin/sh \"" + wide(unix_path(folder_.native(u"child.sh").wstring())) + L"\"";
    STARTUPINFOW startup{.cb = sizeof startup};
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(CreateProcessW(L"Z:\\bin\\sh", command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                               &process))
        << "/bin/sh could not be started: error " << GetLastError();
    // A Unix program has no Windows process to wait for: the result file appears when it is done.
    for (int waited = 0; waited < 1200 && !fs::exists(result); ++waited) Sleep(100);
    std::vector<long long> status;
    std::ifstream in(result);
    for (long long value = 0; in >> value;) status.push_back(value);
    ASSERT_EQ(status.size(), 6u) << test::read_file(log);
    const auto is_system_failure = [](long long s) { return s < 0 && (static_cast<uint32_t>(s) >> 16) == 0x8007; };

    // Renaming on one drive needs no room: that write-back succeeds.
    EXPECT_EQ(status[0], KQ_S_OK);
    EXPECT_TRUE(test::read_file(images_.native(u"Near.adf")) == changed);
    EXPECT_FALSE(exists(near_copy));
    // Copying back across drives fails with the system's error; the image, the copy and its
    // record stay, and nothing is left beside the image.
    EXPECT_TRUE(is_system_failure(status[1])) << status[1];
    EXPECT_TRUE(test::read_file(images_.native(u"Far.adf")) == original);
    EXPECT_TRUE(test::read_file(far_copy) == changed && exists(record_of(far_copy)));
    EXPECT_EQ(entries(images_.native(u"")), 2);
    // A copy and a blank medium fail, give no path back and leave no file or folder behind.
    EXPECT_TRUE(is_system_failure(status[2]) && is_system_failure(status[4])) << status[2] << " " << status[4];
    EXPECT_EQ(status[3] + status[5], 0) << "no path given back";
    EXPECT_EQ(entries(target_.native(u"")), 0);
    EXPECT_EQ(entries(temp_folder, L"AEM"), blank_media_folders);

    // With room again the write-back that failed succeeds.
    EXPECT_EQ(dismiss(far_copy), KQ_S_OK);
    EXPECT_TRUE(test::read_file(images_.native(u"Far.adf")) == changed);
    EXPECT_FALSE(exists(far_copy) || exists(record_of(far_copy)));
}

} // namespace
} // namespace kq
