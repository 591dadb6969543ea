// Built twice: as a complete stand-in, and (FAKE_WITHOUT_ENTRIES) as a library that lacks the
// two functions the module binds.

#include "tests/support/fake_data_access.h"

#include <algorithm>
#include <string>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakeDataAccessLog g_log;
std::int32_t g_status = 0;

template <std::size_t N>
[[maybe_unused]] void copy_text(char16_t (&target)[N], const char16_t* text) {
    std::fill(std::begin(target), std::end(target), u'\0');
    if (text == nullptr) return;
    const std::u16string_view view(text);
    std::copy_n(view.begin(), std::min(view.size(), N - 1), target);
}

#ifdef _WIN32
// The calling thread owns the mutex recursively, so only another thread can tell whether it is
// held.
DWORD WINAPI probe_mutex(void*) {
    HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"KQlayerDataAccessMx");
    if (mutex == nullptr) return 0;
    const DWORD wait = WaitForSingleObject(mutex, 0);
    if (wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED) ReleaseMutex(mutex);
    CloseHandle(mutex);
    return wait == WAIT_TIMEOUT ? 1 : 0;
}

[[maybe_unused]] int mutex_owned_elsewhere() {
    HANDLE thread = CreateThread(nullptr, 0, probe_mutex, nullptr, 0, nullptr);
    if (thread == nullptr) return -1;
    WaitForSingleObject(thread, INFINITE);
    DWORD owned = 0;
    GetExitCodeThread(thread, &owned);
    CloseHandle(thread);
    return static_cast<int>(owned);
}

// Tracing for tests that run several processes: each call holds on for a while and then appends
// "<process id> <entered> <left>" (performance-counter ticks, which all processes share) to a
// file.
char16_t g_trace_path[MAX_PATH];
DWORD g_hold_ms = 0;

struct TracedCall {
    LARGE_INTEGER entered{};
    TracedCall() {
        QueryPerformanceCounter(&entered);
        if (g_trace_path[0] != 0) Sleep(g_hold_ms);
    }
    ~TracedCall() {
        if (g_trace_path[0] == 0) return;
        LARGE_INTEGER left;
        QueryPerformanceCounter(&left);
        const std::string line = std::to_string(GetCurrentProcessId()) + " " + std::to_string(entered.QuadPart) + " " +
                                 std::to_string(left.QuadPart) + "\n";
        // Appends of several processes are not atomic under Wine: a mutex of the trace's own
        // keeps them apart, also when the calls themselves overlap.
        HANDLE appending = CreateMutexW(nullptr, FALSE, L"KQFakeDataAccessTraceMx");
        if (appending == nullptr) return;
        WaitForSingleObject(appending, INFINITE);
        HANDLE file =
            CreateFileW(reinterpret_cast<const wchar_t*>(g_trace_path), FILE_APPEND_DATA,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            DWORD written = 0;
            WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
            CloseHandle(file);
        }
        ReleaseMutex(appending);
        CloseHandle(appending);
    }
};
#else
[[maybe_unused]] int mutex_owned_elsewhere() { return -1; }
struct TracedCall {};
#endif

} // namespace

FAKE_EXPORT const FakeDataAccessLog* FakeDataAccessGetLog() { return &g_log; }

FAKE_EXPORT void FakeDataAccessReset(std::int32_t status_to_return) {
    g_log = {};
    g_status = status_to_return;
}

FAKE_EXPORT void FakeDataAccessTrace([[maybe_unused]] const char16_t* path, [[maybe_unused]] std::uint32_t hold_ms) {
#ifdef _WIN32
    copy_text(g_trace_path, path);
    g_hold_ms = hold_ms;
#endif
}

#ifndef FAKE_WITHOUT_ENTRIES
FAKE_EXPORT std::int32_t KQShowErrorMessage2(std::uint64_t instance, const char16_t* context, std::uint32_t error_code,
                                             void* parent_window, const char16_t* text, std::uint32_t flags) {
    [[maybe_unused]] const TracedCall traced;
    ++g_log.show_calls;
    g_log.instance = instance;
    copy_text(g_log.context, context);
    g_log.error_code = error_code;
    g_log.parent_window = parent_window;
    copy_text(g_log.text, text);
    g_log.flags = flags;
    g_log.context_address = context;
    g_log.text_address = text;
    g_log.mutex_owned_during_call = mutex_owned_elsewhere();
    return g_status;
}

FAKE_EXPORT std::int32_t KQCloseLibrary(std::uint64_t instance) {
    [[maybe_unused]] const TracedCall traced;
    ++g_log.close_calls;
    g_log.closed_instance = instance;
    g_log.mutex_owned_during_call = mutex_owned_elsewhere();
    return g_status;
}
#endif
