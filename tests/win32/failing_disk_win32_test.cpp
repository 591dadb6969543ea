// Failing disks under Wine, through the built amiga.dll: writing back into a read-only image is
// refused, and on a full disk write-back, copies and blank media fail without losing or
// half-writing the user's image, keep the working copy and its record for another try, and
// leave no half-made file or folder behind.
//
// The full disk is a file-size limit. Wine starts a Unix program when a Windows program asks
// for one, so this test runs /bin/sh, which starts this test program again under Wine with
// `prlimit --fsize` (and SIGXFSZ ignored): in that second process no file can grow past the
// limit, and a write past it fails (Wine reports the EFBIG as ERROR_GEN_FAILURE; on a really
// full disk it is ERROR_DISK_FULL). The second process runs one test that ordinary runs leave
// out (its name begins with DISABLED_): it makes the calls listed in a job file, writes their
// results beside it and signals a named event. Everything else, preparing and checking, happens
// here, without a limit.

#include "kq_amiga.h"
#include "media/compression/inflate.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace kq {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLimitBytes = 16384; // what a write may still add: the disk is nearly full
constexpr std::size_t kImageBytes = 98304;   // 96 KB, well past the limit
constexpr DWORD kChildTimeoutMs = 120000;
constexpr uint32_t kWriteBackChanged = KQ_RUNTIME_MEDIUM_WRITE_BACK | KQ_RUNTIME_MEDIUM_ASSUME_CHANGED;
constexpr const wchar_t* kJobVariable = L"KQ_FAILING_DISK_JOB";
constexpr const wchar_t* kDoneVariable = L"KQ_FAILING_DISK_DONE";

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }
// ASCII text (the paths and names here) as narrow text.
std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

std::wstring environment_value(const wchar_t* name) {
    wchar_t value[MAX_PATH + 1];
    const DWORD length = GetEnvironmentVariableW(name, value, MAX_PATH + 1);
    return length == 0 || length > MAX_PATH ? std::wstring() : std::wstring(value, length);
}

// Bytes that do not compress, so that a compressed image is as large as a plain one.
std::string noise(std::size_t size, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::string gzip_of(const std::string& data) {
    const test::Bytes gzip = test::gzip_member(test::bytes_of(data));
    return std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size());
}

std::string inflated(const std::string& gzip) {
    media::MemorySource source(std::as_bytes(std::span(gzip)));
    media::MemorySink sink;
    if (media::inflate(source, sink) != media::InflateError::none) return "(not a gzip file)";
    return std::string(reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size());
}

// Compares file contents without printing them (they are binary and large).
testing::AssertionResult same_bytes(const std::string& actual, const std::string& expected) {
    if (actual == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual.size() << " bytes where " << expected.size() << " were expected";
}

std::set<std::wstring> names_in(const fs::path& folder) {
    std::set<std::wstring> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().wstring());
    return names;
}

bool exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::wstring record_of(const std::wstring& copy) { return copy.substr(0, copy.rfind(L'\\') + 37) + L".info"; }

// A Windows path as a Unix path, through Wine.
std::string unix_path(const std::wstring& path) {
    using UnixName = char* (*)(const wchar_t*);
    const auto unix_name = reinterpret_cast<UnixName>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (unix_name == nullptr) return {};
    char* name = unix_name(path.c_str());
    if (name == nullptr) return {};
    std::string result(name);
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

// The same file through Wine's drive Z:, which shows the whole Unix file system: another drive.
std::wstring through_drive_z(const std::wstring& path) {
    std::wstring other = L"Z:";
    for (const char c : unix_path(path)) other += c == '/' ? L'\\' : static_cast<wchar_t>(c);
    return other;
}

std::string quoted_for_shell(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Text files of the job and its results: UTF-16 lines, fields separated by "|".
void write_lines(const fs::path& file, const std::vector<std::wstring>& lines) {
    std::wstring text;
    for (const std::wstring& line : lines) text += line + L"\n";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(text.data()), static_cast<std::streamsize>(text.size() * sizeof(wchar_t)));
}

std::vector<std::vector<std::wstring>> read_lines(const fs::path& file) {
    const std::string bytes = test::read_file(file);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(bytes.data(), text.size() * sizeof(wchar_t), reinterpret_cast<char*>(text.data()));
    std::vector<std::vector<std::wstring>> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        std::vector<std::wstring> fields;
        for (std::size_t field = start; field <= end;) {
            const std::size_t bar = std::min(text.find(L'|', field), end);
            fields.push_back(text.substr(field, bar - field));
            field = bar + 1;
        }
        lines.push_back(std::move(fields));
        start = end + 1;
    }
    return lines;
}

class FailingDiskDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        get_ = resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
        dismiss_ = resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
        copy_ = resolve<decltype(KQCopyMediumFile)>("KQCopyMediumFile");
        get_empty_ = resolve<decltype(KQGetEmptyMedium2)>("KQGetEmptyMedium2");
        free_empty_ = resolve<decltype(KQFreeEmptyMedium)>("KQFreeEmptyMedium");
        ASSERT_TRUE(get_ && dismiss_ && copy_ && get_empty_ && free_empty_);
    }

    // A working copy of `image` (a path as the host gives it) that the emulator changed.
    std::wstring changed_copy(const std::wstring& image, const std::string& changed) {
        wchar_t buffer[MAX_PATH + 1] = {};
        EXPECT_EQ(get_(image.c_str(), nullptr, buffer, MAX_PATH + 1, 0), KQ_S_OK);
        std::ofstream(fs::path(buffer), std::ios::binary) << changed;
        return buffer;
    }

    // One call of a job line: its status and the path it gave back.
    std::wstring call(const std::vector<std::wstring>& fields) {
        kq_status result = KQ_E_INVALIDARG;
        std::wstring path;
        if (fields[0] == L"dismiss" && fields.size() == 3) {
            result = dismiss_(fields[1].c_str(), nullptr, std::stoul(fields[2]));
        } else if (fields[0] == L"copy" && fields.size() == 4) {
            wchar_t buffer[MAX_PATH + 1] = {};
            result = copy_(fields[1].c_str(), fields[2].c_str(), std::stoul(fields[3]), buffer, MAX_PATH + 1);
            path = buffer;
        } else if (fields[0] == L"empty" && fields.size() == 2) {
            kq_char* made = nullptr;
            result = get_empty_(&made, nullptr, 0, std::stoul(fields[1]));
            if (made != nullptr) path = made;
            free_empty_(made);
        }
        return std::to_wstring(static_cast<std::uint32_t>(result)) + L"|" + path;
    }

    // Makes the calls of `job` (lines "dismiss|copy|flags", "copy|source|folder|flags",
    // "empty|kind") in a second process of this program in which no file can grow past
    // kLimitBytes. Their results, "status|path" by line; `failure` says what went wrong when
    // the process gave none.
    std::vector<std::vector<std::wstring>> on_a_full_disk(const std::vector<std::wstring>& job, std::string& failure) {
        const fs::path job_file = folder_.native(u"job.txt"), log = folder_.native(u"child.log");
        write_lines(job_file, job);
        const std::wstring done_name = L"KQFailingDiskDone-" + std::to_wstring(GetCurrentProcessId());
        HANDLE done = CreateEventW(nullptr, TRUE, FALSE, done_name.c_str());
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        const std::string script =
            "trap '' XFSZ\n"
            "export " +
            narrow(kJobVariable) + "=" + quoted_for_shell(narrow(job_file.wstring())) + "\n" + "export " +
            narrow(kDoneVariable) + "=" + quoted_for_shell(narrow(done_name)) + "\n" +
            "PATH=/usr/local/bin:/usr/bin:/bin:$PATH\n"
            "wine=${KQ_WINE:-/usr/lib/wine/wine64}\n"
            "[ -x \"$wine\" ] || wine=$(command -v wine64 || command -v wine)\n"
            "exec prlimit --fsize=" +
            std::to_string(kLimitBytes) + " \"$wine\" " + quoted_for_shell(unix_path(program)) +
            " --gtest_also_run_disabled_tests --gtest_filter=FailingDiskChild.DISABLED_MakesTheCallsOfItsJob >" +
            quoted_for_shell(unix_path(log.wstring())) + " 2>&1\n";
        std::ofstream(folder_.native(u"child.sh"), std::ios::binary) << script;

        const std::string script_path = unix_path(folder_.native(u"child.sh").wstring());
        std::wstring command = L"/bin/sh \"" + std::wstring(script_path.begin(), script_path.end()) + L"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (done == nullptr || script_path.empty() ||
            !CreateProcessW(L"Z:\\bin\\sh", command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                            &process)) {
            failure = "/bin/sh could not be started: error " + std::to_string(GetLastError());
            if (done != nullptr) CloseHandle(done);
            return {};
        }
        // A Unix program has no Windows process to wait for: the event says when it is done.
        if (process.hProcess != nullptr) CloseHandle(process.hProcess);
        if (process.hThread != nullptr) CloseHandle(process.hThread);
        const DWORD waited = WaitForSingleObject(done, kChildTimeoutMs);
        CloseHandle(done);
        if (waited != WAIT_OBJECT_0) {
            failure = "no result from the process with the file-size limit; its output:\n" + test::read_file(log);
            return {};
        }
        std::vector<std::vector<std::wstring>> results = read_lines(fs::path(job_file.wstring() + L".result"));
        if (results.size() != job.size()) failure = "results missing; the process's output:\n" + test::read_file(log);
        return results;
    }

    decltype(KQGetRuntimeMedium)* get_ = nullptr;
    decltype(KQDismissRuntimeMedium)* dismiss_ = nullptr;
    decltype(KQCopyMediumFile)* copy_ = nullptr;
    decltype(KQGetEmptyMedium2)* get_empty_ = nullptr;
    decltype(KQFreeEmptyMedium)* free_empty_ = nullptr;
    test::TempFolder folder_, images_, sources_, target_;
};

class FailingDiskChild : public FailingDiskDll {};

// Run by on_a_full_disk in the process with the file-size limit.
TEST_F(FailingDiskChild, DISABLED_MakesTheCallsOfItsJob) {
    const std::wstring job = environment_value(kJobVariable), done = environment_value(kDoneVariable);
    ASSERT_FALSE(job.empty() || done.empty()) << "started by FailingDiskDll.FullDisk...";
    std::vector<std::wstring> results;
    for (const std::vector<std::wstring>& fields : read_lines(fs::path(job))) results.push_back(call(fields));
    write_lines(fs::path(job + L".result"), results);
    HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, done.c_str());
    ASSERT_NE(event, nullptr);
    SetEvent(event);
    CloseHandle(event);
}

TEST_F(FailingDiskDll, WriteBackToAReadOnlyImageIsRefused) {
    unsigned seed = 1;
    // On one drive writing back renames, on another it copies; compressed images are packed.
    const struct {
        std::u16string_view name;
        bool other_drive;
    } cases[] = {{u"Game.adf", false}, {u"Game.adf", true}, {u"Game.adz", false}, {u"Work.hdz", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.name.begin(), c.name.end()) + (c.other_drive ? " on drive Z:" : ""));
        const bool compressed = c.name.ends_with(u"z");
        const std::string original = noise(4096, seed++), changed = noise(4096, seed++);
        images_.create_file(c.name, compressed ? gzip_of(original) : original);
        std::wstring image = wide(images_.path(c.name));
        if (c.other_drive) image = through_drive_z(image);
        const std::wstring copy = changed_copy(image, changed);
        ASSERT_FALSE(copy.empty());
        ASSERT_TRUE(SetFileAttributesW(image.c_str(), FILE_ATTRIBUTE_READONLY));
        const std::string stored = test::read_file(images_.native(c.name));

        EXPECT_EQ(dismiss_(copy.c_str(), nullptr, kWriteBackChanged), KQ_STATUS_FROM_WIN32(ERROR_ACCESS_DENIED));
        EXPECT_TRUE(same_bytes(test::read_file(images_.native(c.name)), stored));
        EXPECT_EQ(GetFileAttributesW(image.c_str()) & FILE_ATTRIBUTE_READONLY, DWORD{FILE_ATTRIBUTE_READONLY});
        EXPECT_TRUE(exists(copy)) << "the copy stays";
        EXPECT_TRUE(exists(record_of(copy))) << "its record stays";
        EXPECT_EQ(names_in(images_.native(u"")).size(), 1u) << "nothing beside the image";

        // Once the image may be written, the same call writes back.
        ASSERT_TRUE(SetFileAttributesW(image.c_str(), FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(dismiss_(copy.c_str(), nullptr, kWriteBackChanged), KQ_S_OK);
        const std::string now = test::read_file(images_.native(c.name));
        EXPECT_TRUE(same_bytes(compressed ? inflated(now) : now, changed));
        EXPECT_FALSE(exists(copy));
        EXPECT_FALSE(exists(record_of(copy)));
        fs::remove(images_.native(c.name));
    }
}

// The temporary folder's AEM folders (those of blank media).
std::set<std::wstring> private_folders() {
    wchar_t temp[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temp);
    std::set<std::wstring> folders;
    for (const std::wstring& name : names_in(fs::path(temp)))
        if (name.rfind(L"AEM", 0) == 0) folders.insert(name);
    return folders;
}

TEST_F(FailingDiskDll, FullDiskStopsWriteBackCopiesAndBlankMediaCleanly) {
    const std::string original = noise(kImageBytes, 10), changed = noise(kImageBytes, 11);
    // Working copies of three images: on this drive (renamed into place on write-back), through
    // drive Z: (copied back) and compressed (packed again).
    images_.create_file(u"Near.adf", original);
    images_.create_file(u"Far.adf", original);
    images_.create_file(u"Packed.adz", gzip_of(original));
    const std::string packed = test::read_file(images_.native(u"Packed.adz"));
    const std::wstring near_copy = changed_copy(wide(images_.path(u"Near.adf")), changed);
    const std::wstring far_copy = changed_copy(through_drive_z(wide(images_.path(u"Far.adf"))), changed);
    const std::wstring packed_copy = changed_copy(wide(images_.path(u"Packed.adz")), changed);
    // Sources of copies: plain, to unpack (gzip and DMS), and a CUE sheet whose second data
    // file does not fit.
    sources_.create_file(u"Disk.adf", original);
    sources_.create_file(u"Disk.adz", gzip_of(original));
    sources_.create_file(u"Game.dms", test::read_file(test::to_fs_path(test::test_data_path(u"dms\\rle_small.dms"))));
    sources_.create_file(u"Disc.cue", "FILE \"Small.bin\" BINARY\nFILE \"Disc.bin\" BINARY\n");
    sources_.create_file(u"Small.bin", std::string(512, 'S'));
    sources_.create_file(u"Disc.bin", original);
    const std::wstring target = wide(target_.path());
    const std::set<std::wstring> folders_before = private_folders();

    const auto flags = [](uint32_t value) { return std::to_wstring(value); };
    const std::vector<std::wstring> job = {
        L"dismiss|" + near_copy + L"|" + flags(kWriteBackChanged),
        L"dismiss|" + far_copy + L"|" + flags(kWriteBackChanged),
        L"dismiss|" + packed_copy + L"|" + flags(kWriteBackChanged),
        L"copy|" + wide(sources_.path(u"Disk.adf")) + L"|" + target + L"|0",
        L"copy|" + wide(sources_.path(u"Disk.adz")) + L"|" + target + L"|" + flags(KQ_COPY_MEDIUM_CONVERT),
        L"copy|" + wide(sources_.path(u"Game.dms")) + L"|" + target + L"|" + flags(KQ_COPY_MEDIUM_CONVERT),
        L"copy|" + wide(sources_.path(u"Disc.cue")) + L"|" + target + L"|0",
        L"empty|" + flags(KQ_EMPTY_MEDIUM_DD),
    };
    std::string failure;
    const std::vector<std::vector<std::wstring>> results = on_a_full_disk(job, failure);
    ASSERT_TRUE(failure.empty()) << failure;
    ASSERT_EQ(results.size(), job.size());
    std::vector<kq_status> status;
    for (const auto& fields : results) status.push_back(static_cast<kq_status>(std::stoul(fields.at(0))));
    const auto is_system_failure = [](kq_status s) { return s < 0 && (static_cast<uint32_t>(s) >> 16) == 0x8007; };

    // Renaming on one drive needs no room: that write-back succeeds.
    EXPECT_EQ(status[0], KQ_S_OK);
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Near.adf")), changed));
    EXPECT_FALSE(exists(near_copy));
    // Copying back and packing fail with the system's error; image, copy and record stay.
    for (const std::size_t i : {1u, 2u})
        EXPECT_TRUE(is_system_failure(status[i])) << i << ": " << std::hex << status[i];
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Far.adf")), original));
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Packed.adz")), packed));
    for (const std::wstring& copy : {far_copy, packed_copy}) {
        EXPECT_TRUE(same_bytes(test::read_file(fs::path(copy)), changed)) << "the copy stays";
        EXPECT_TRUE(exists(record_of(copy))) << "its record stays";
    }
    EXPECT_EQ(names_in(images_.native(u"")), (std::set<std::wstring>{L"Near.adf", L"Far.adf", L"Packed.adz"}))
        << "no side file is left";
    // Copies fail (unpacking failures are reported as invalid data, whatever their cause) and
    // leave nothing in the target folder; the blank medium leaves no folder.
    EXPECT_TRUE(is_system_failure(status[3])) << std::hex << status[3];
    EXPECT_EQ(status[4], KQ_STATUS_FROM_WIN32(ERROR_INVALID_DATA));
    EXPECT_EQ(status[5], KQ_STATUS_FROM_WIN32(ERROR_INVALID_DATA));
    EXPECT_TRUE(is_system_failure(status[6])) << std::hex << status[6];
    for (std::size_t i = 3; i < results.size(); ++i) EXPECT_EQ(results[i].at(1), L"") << i;
    EXPECT_TRUE(names_in(target_.native(u"")).empty());
    EXPECT_TRUE(is_system_failure(status[7])) << std::hex << status[7];
    EXPECT_EQ(private_folders(), folders_before);

    // With room again the write-backs that failed succeed.
    for (const std::wstring& copy : {far_copy, packed_copy}) {
        EXPECT_EQ(dismiss_(copy.c_str(), nullptr, kWriteBackChanged), KQ_S_OK);
        EXPECT_FALSE(exists(copy));
        EXPECT_FALSE(exists(record_of(copy)));
    }
    EXPECT_TRUE(same_bytes(test::read_file(images_.native(u"Far.adf")), changed));
    EXPECT_TRUE(same_bytes(inflated(test::read_file(images_.native(u"Packed.adz"))), changed));
}

} // namespace
} // namespace kq
