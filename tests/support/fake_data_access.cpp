// Built twice: as a complete stand-in, and (FAKE_WITHOUT_ENTRIES) as a library that lacks the
// two functions the module binds.

#include "tests/support/fake_data_access.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <span>
#include <string_view>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

FakeDataAccessLog g_log;
std::int32_t g_status = 0;
std::uint32_t g_hold_ms = 0;
std::mutex g_mutex;
int g_inside = 0;

[[maybe_unused]] void copy_text(std::span<char16_t> target, const char16_t* text) {
    target[std::u16string_view(text != nullptr ? text : u"").copy(target.data(), target.size() - 1)] = 0;
}

// Counts the calls inside the library and holds each one on for g_hold_ms.
struct HeldCall {
    HeldCall() {
        {
            const std::lock_guard lock(g_mutex);
            g_log.most_calls_at_once = std::max(g_log.most_calls_at_once, ++g_inside);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(g_hold_ms));
    }
    ~HeldCall() {
        const std::lock_guard lock(g_mutex);
        --g_inside;
    }
};

#ifdef _WIN32
// Whether the calling thread owns the mutex, asked of the system rather than by waiting (a wait
// by the owner always succeeds) or from a thread of our own (starting one inside the call could
// wait on the loader lock that another caller of the module holds).
[[maybe_unused]] int mutex_owned_elsewhere() {
    struct MutantBasicInformation {
        LONG current_count;
        BOOLEAN owned_by_caller;
        BOOLEAN abandoned;
    } information{};
    using QueryMutant = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
    const auto query = reinterpret_cast<QueryMutant>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryMutant")));
    HANDLE mutex = OpenMutexW(SYNCHRONIZE | MUTANT_QUERY_STATE, FALSE, L"KQlayerDataAccessMx");
    const bool owned = mutex != nullptr && query != nullptr &&
                       query(mutex, 0, &information, sizeof information, nullptr) >= 0 && information.owned_by_caller;
    if (mutex != nullptr) CloseHandle(mutex);
    return owned ? 1 : 0;
}
#else
[[maybe_unused]] int mutex_owned_elsewhere() { return -1; }
#endif

} // namespace

FAKE_EXPORT const FakeDataAccessLog* FakeDataAccessGetLog() { return &g_log; }

FAKE_EXPORT void FakeDataAccessReset(std::int32_t status_to_return, std::uint32_t hold_ms) {
    g_log = {};
    g_status = status_to_return;
    g_hold_ms = hold_ms;
}

#ifndef FAKE_WITHOUT_ENTRIES
FAKE_EXPORT std::int32_t KQShowErrorMessage2(std::uint64_t instance, const char16_t* context, std::uint32_t error_code,
                                             void* parent_window, const char16_t* text, std::uint32_t flags) {
    [[maybe_unused]] const HeldCall held;
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
    [[maybe_unused]] const HeldCall held;
    ++g_log.close_calls;
    g_log.closed_instance = instance;
    g_log.mutex_owned_during_call = mutex_owned_elsewhere();
    return g_status;
}
#endif
