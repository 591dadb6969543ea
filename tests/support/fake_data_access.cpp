// Built twice: as a complete stand-in, and (FAKE_WITHOUT_ENTRIES) as a library that lacks the
// two functions the module binds.

#include "tests/support/fake_data_access.h"

#include <algorithm>
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
#else
[[maybe_unused]] int mutex_owned_elsewhere() { return -1; }
#endif

} // namespace

FAKE_EXPORT const FakeDataAccessLog* FakeDataAccessGetLog() { return &g_log; }

FAKE_EXPORT void FakeDataAccessReset(std::int32_t status_to_return) {
    g_log = {};
    g_status = status_to_return;
}

#ifndef FAKE_WITHOUT_ENTRIES
FAKE_EXPORT std::int32_t KQShowErrorMessage2(std::uint64_t instance, const char16_t* context,
                                             std::uint32_t error_code, void* parent_window,
                                             const char16_t* text, std::uint32_t flags) {
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
    ++g_log.close_calls;
    g_log.closed_instance = instance;
    g_log.mutex_owned_during_call = mutex_owned_elsewhere();
    return g_status;
}
#endif
