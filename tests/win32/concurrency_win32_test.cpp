// Concurrency: two processes that report through the host library at the same time take turns
// under the machine-wide mutex "KQlayerDataAccessMx", and working copies of one image made at
// the same time by several threads are distinct and are all dismissed correctly.
//
// The processes are this test program started again to run one test that ordinary runs leave
// out (its name begins with DISABLED_). In them the stand-in KQDataAccess.dll holds each call
// for a while and records when it was entered and left; the test reads the record.

#include "kq_amiga.h"
#include "media/compression/inflate.h"
#include "module/error_report.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/compressed_files.h"
#include "tests/support/fake_data_access.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <latch>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace kq {
namespace {

namespace fs = std::filesystem;

constexpr int kCallsPerProcess = 8;
constexpr std::uint32_t kHoldMs = 20;
constexpr DWORD kStartTimeoutMs = 60000, kRunTimeoutMs = 120000;

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

std::wstring environment(const wchar_t* name) {
    wchar_t value[MAX_PATH + 1];
    const DWORD length = GetEnvironmentVariableW(name, value, MAX_PATH + 1);
    return length == 0 || length > MAX_PATH ? std::wstring() : std::wstring(value, length);
}

std::int64_t ticks_now() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

// What the children are told, through their environment.
constexpr const wchar_t* kTraceVariable = L"KQ_CONCURRENCY_TRACE"; // the stand-in's record
constexpr const wchar_t* kAskedVariable = L"KQ_CONCURRENCY_ASKED"; // the child's own record
constexpr const wchar_t* kModeVariable = L"KQ_CONCURRENCY_MODE";   // "module" or "unlocked"
constexpr const wchar_t* kReadyVariable = L"KQ_CONCURRENCY_READY"; // a semaphore to release
constexpr const wchar_t* kGoVariable = L"KQ_CONCURRENCY_GO";       // an event to wait for

// In a child: report kCallsPerProcess times through the module's host-library link (mode
// "module"), or call the stand-in directly without the mutex ("unlocked", the control that
// shows that overlapping calls would be seen). Before each call, the time it was asked for
// goes to the child's own record.
TEST(ConcurrencyChild, DISABLED_CallsTheHostLibrary) {
    const std::wstring trace = environment(kTraceVariable), asked = environment(kAskedVariable),
                       mode = environment(kModeVariable);
    ASSERT_FALSE(trace.empty() || asked.empty() || mode.empty()) << "started by HostLibraryLinkAcrossProcesses";
    // Kept loaded here, the stand-in keeps its settings while the module loads and unloads it.
    HMODULE fake = LoadLibraryW(wide(test::data_access_library(u"with-library")).c_str());
    ASSERT_NE(fake, nullptr);
    const auto set_trace = reinterpret_cast<FakeDataAccessTraceFn>(
        reinterpret_cast<void (*)()>(GetProcAddress(fake, "FakeDataAccessTrace")));
    using ShowFn =
        std::int32_t (*)(std::uint64_t, const char16_t*, std::uint32_t, void*, const char16_t*, std::uint32_t);
    const auto show =
        reinterpret_cast<ShowFn>(reinterpret_cast<void (*)()>(GetProcAddress(fake, "KQShowErrorMessage2")));
    ASSERT_TRUE(set_trace && show);
    const std::u16string trace16(trace.begin(), trace.end());
    set_trace(trace16.c_str(), kHoldMs);

    HANDLE ready = OpenSemaphoreW(SEMAPHORE_MODIFY_STATE, FALSE, environment(kReadyVariable).c_str());
    HANDLE go = OpenEventW(SYNCHRONIZE, FALSE, environment(kGoVariable).c_str());
    ASSERT_TRUE(ready && go);
    ReleaseSemaphore(ready, 1, nullptr);
    ASSERT_EQ(WaitForSingleObject(go, kStartTimeoutMs), WAIT_OBJECT_0);

    const std::u16string host = test::host_folder(u"with-library");
    std::ostringstream asked_at;
    for (int call = 0; call < kCallsPerProcess; ++call) {
        asked_at << ticks_now() << "\n";
        if (mode == L"module")
            report_error_from(host, nullptr, kIpfLibraryMissing);
        else
            show(0, u"file.ipf", 0, nullptr, u"unlocked", 0);
    }
    std::ofstream(fs::path(asked), std::ios::binary) << asked_at.str();
    set_trace(nullptr, 0);
    CloseHandle(ready);
    CloseHandle(go);
    FreeLibrary(fake);
}

struct Call {
    std::int64_t entered, left;
};

// A child process of this program running one test; its output goes to `log`.
class Child {
public:
    Child(const std::wstring& test_name, const fs::path& log) {
        wchar_t program[MAX_PATH];
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::wstring command =
            L"\"" + std::wstring(program) + L"\" --gtest_also_run_disabled_tests --gtest_filter=" + test_name;
        SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
        output_ = CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = output_;
        PROCESS_INFORMATION process{};
        if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
            CloseHandle(process.hThread);
            process_ = process.hProcess;
        }
    }
    ~Child() {
        if (process_ != nullptr) {
            if (WaitForSingleObject(process_, 0) == WAIT_TIMEOUT) TerminateProcess(process_, 1);
            CloseHandle(process_);
        }
        if (output_ != INVALID_HANDLE_VALUE) CloseHandle(output_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    HANDLE process() const { return process_; }
    DWORD exit_code() const {
        DWORD code = 1;
        GetExitCodeProcess(process_, &code);
        return code;
    }

private:
    HANDLE process_ = nullptr;
    HANDLE output_ = INVALID_HANDLE_VALUE;
};

// The stand-in's record: each process's calls, by process id.
std::map<unsigned long, std::vector<Call>> read_calls(const fs::path& trace) {
    std::map<unsigned long, std::vector<Call>> calls;
    std::ifstream in(trace);
    unsigned long process = 0;
    Call call{};
    while (in >> process >> call.entered >> call.left) calls[process].push_back(call);
    return calls;
}

std::vector<std::int64_t> read_times(const fs::path& record) {
    std::vector<std::int64_t> times;
    std::ifstream in(record);
    for (std::int64_t time = 0; in >> time;) times.push_back(time);
    return times;
}

TEST(HostLibraryLinkAcrossProcesses, CallsOfTwoProcessesNeverOverlap) {
    const struct {
        const wchar_t* mode;
        bool overlaps;
    } cases[] = {
        {L"module", false},  // through the module: the named mutex lets one call in at a time
        {L"unlocked", true}, // the control: the same calls without the mutex are seen to overlap
    };
    int round = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.mode, c.mode + wcslen(c.mode)));
        const test::TempFolder folder;
        const fs::path trace = folder.native(u"calls.txt");
        const std::wstring suffix = std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(round++);
        const std::wstring ready_name = L"KQConcurrencyReady-" + suffix, go_name = L"KQConcurrencyGo-" + suffix;
        HANDLE ready = CreateSemaphoreW(nullptr, 0, 2, ready_name.c_str());
        HANDLE go = CreateEventW(nullptr, TRUE, FALSE, go_name.c_str());
        ASSERT_TRUE(ready && go);

        SetEnvironmentVariableW(kTraceVariable, trace.c_str());
        SetEnvironmentVariableW(kModeVariable, c.mode);
        SetEnvironmentVariableW(kReadyVariable, ready_name.c_str());
        SetEnvironmentVariableW(kGoVariable, go_name.c_str());
        SetEnvironmentVariableW(kAskedVariable, folder.native(u"asked-a.txt").c_str());
        const Child a(L"ConcurrencyChild.DISABLED_CallsTheHostLibrary", folder.native(u"a.log"));
        SetEnvironmentVariableW(kAskedVariable, folder.native(u"asked-b.txt").c_str());
        const Child b(L"ConcurrencyChild.DISABLED_CallsTheHostLibrary", folder.native(u"b.log"));
        for (const wchar_t* name : {kTraceVariable, kModeVariable, kReadyVariable, kGoVariable, kAskedVariable})
            SetEnvironmentVariableW(name, nullptr);
        ASSERT_TRUE(a.process() && b.process());

        // Both children are ready before either may call.
        for (int child = 0; child < 2; ++child)
            ASSERT_EQ(WaitForSingleObject(ready, kStartTimeoutMs), WAIT_OBJECT_0) << "child " << child << " ready";
        SetEvent(go);
        const HANDLE processes[] = {a.process(), b.process()};
        ASSERT_EQ(WaitForMultipleObjects(2, processes, TRUE, kRunTimeoutMs), WAIT_OBJECT_0);
        EXPECT_EQ(a.exit_code(), 0u) << test::read_file(folder.native(u"a.log"));
        EXPECT_EQ(b.exit_code(), 0u) << test::read_file(folder.native(u"b.log"));
        CloseHandle(ready);
        CloseHandle(go);

        const std::map<unsigned long, std::vector<Call>> by_process = read_calls(trace);
        ASSERT_EQ(by_process.size(), 2u) << test::read_file(trace);
        std::vector<Call> all;
        for (const auto& [process, calls] : by_process) {
            EXPECT_EQ(calls.size(), static_cast<std::size_t>(kCallsPerProcess)) << process;
            all.insert(all.end(), calls.begin(), calls.end());
        }
        std::sort(all.begin(), all.end(), [](const Call& x, const Call& y) { return x.entered < y.entered; });
        int overlaps = 0;
        for (std::size_t i = 1; i < all.size(); ++i)
            if (all[i].entered < all[i - 1].left) ++overlaps;
        EXPECT_EQ(overlaps > 0, c.overlaps) << overlaps << " calls began before the one before them ended";

        // The processes did compete: one asked for a call while the other was inside one.
        const std::vector<std::vector<Call>> calls = {by_process.begin()->second, by_process.rbegin()->second};
        const std::vector<std::int64_t> asked[] = {read_times(folder.native(u"asked-a.txt")),
                                                   read_times(folder.native(u"asked-b.txt"))};
        bool contended = false;
        for (const auto& times : asked)
            for (const std::int64_t time : times)
                for (const Call& call : all) contended = contended || (time > call.entered && time < call.left);
        EXPECT_TRUE(contended) << "the calls did not run at the same time";
    }
}

// Working copies of one image made at the same time: distinct keys, each a full copy, and each
// dismissed as asked (one written back, the others not).
class RuntimeMediaAtOnce : public test::AmigaDllTest {};

TEST_F(RuntimeMediaAtOnce, CopiesOfOneImageHaveTheirOwnKeysAndAreAllDismissed) {
    const auto get = resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
    const auto dismiss = resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    ASSERT_TRUE(get && dismiss);
    constexpr int kThreads = 8;
    const test::Bytes image = test::sample_image(200000, 7);
    const std::string plain(reinterpret_cast<const char*>(image.data()), image.size());
    const test::Bytes gzip = test::gzip_member(image);
    const struct {
        std::u16string_view name;
        std::string stored;
    } cases[] = {
        {u"Game.adf", plain},
        {u"Game.adz", std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size())},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.name.begin(), c.name.end()));
        const test::TempFolder folder;
        folder.create_file(c.name, c.stored);
        const std::wstring path = wide(folder.path(c.name));

        std::vector<std::wstring> copies(kThreads);
        std::vector<kq_status> made(kThreads, KQ_E_FAIL);
        std::latch start(kThreads);
        {
            std::vector<std::jthread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    wchar_t buffer[MAX_PATH + 1] = {};
                    start.arrive_and_wait();
                    made[t] = get(path.c_str(), nullptr, buffer, MAX_PATH + 1, 0);
                    copies[t] = buffer;
                });
        }
        std::set<std::wstring> keys;
        for (int t = 0; t < kThreads; ++t) {
            ASSERT_EQ(made[t], KQ_S_OK) << t;
            const std::wstring name = copies[t].substr(copies[t].rfind(L'\\') + 1);
            keys.insert(name.substr(0, 36));
            EXPECT_EQ(test::read_file(fs::path(copies[t])), plain) << "copy " << t << " is the whole image";
        }
        EXPECT_EQ(keys.size(), static_cast<std::size_t>(kThreads)) << "every copy has its own key";

        // The emulators change every copy; only the first is written back.
        for (int t = 0; t < kThreads; ++t) std::ofstream(fs::path(copies[t]), std::ios::binary) << "changed by " << t;
        std::vector<kq_status> dismissed(kThreads, KQ_E_FAIL);
        std::latch again(kThreads);
        {
            std::vector<std::jthread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    const uint32_t flags = t == 0 ? KQ_RUNTIME_MEDIUM_WRITE_BACK | KQ_RUNTIME_MEDIUM_ASSUME_CHANGED
                                                  : KQ_RUNTIME_MEDIUM_ASSUME_CHANGED;
                    again.arrive_and_wait();
                    dismissed[t] = dismiss(copies[t].c_str(), nullptr, flags);
                });
        }
        for (int t = 0; t < kThreads; ++t) {
            EXPECT_EQ(dismissed[t], KQ_S_OK) << t;
            EXPECT_EQ(GetFileAttributesW(copies[t].c_str()), INVALID_FILE_ATTRIBUTES) << "copy " << t << " is gone";
            const std::wstring record = copies[t].substr(0, copies[t].rfind(L'\\') + 37) + L".info";
            EXPECT_EQ(GetFileAttributesW(record.c_str()), INVALID_FILE_ATTRIBUTES) << "record " << t << " is gone";
        }
        const std::string stored = test::read_file(folder.native(c.name));
        std::string content = stored;
        if (c.name.ends_with(u".adz")) {
            media::MemorySource source(std::as_bytes(std::span(stored)));
            media::MemorySink sink;
            EXPECT_EQ(media::inflate(source, sink), media::InflateError::none) << "compressed again";
            content.assign(reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size());
        }
        EXPECT_EQ(content, "changed by 0");
        std::size_t files = 0;
        for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.native(u""))) ++files;
        EXPECT_EQ(files, 1u) << "no side file is left";
    }
}

} // namespace
} // namespace kq
