#pragma once
// The test stand-in for the host's data-access library (KQDataAccess.dll): it records each
// call it receives, so that a test can see what the module passed and in which state.

#include <cstdint>

struct FakeDataAccessLog {
    int show_calls;
    int close_calls;
    std::uint64_t instance;
    char16_t context[64];
    std::uint32_t error_code;
    void* parent_window;
    char16_t text[128];
    std::uint32_t flags;
    const void* context_address;
    const void* text_address;
    std::uint64_t closed_instance;
    // Whether another thread found "KQlayerDataAccessMx" owned during the call:
    // 1 owned, 0 free, -1 not observable (the native build has no machine-wide mutex).
    int mutex_owned_during_call;
    // The most calls that were inside the library at one time.
    int most_calls_at_once;
};

// Exported by the stand-in under these names.
using FakeDataAccessGetLogFn = const FakeDataAccessLog* (*)();
// Clears the record; from then on the functions return `status_to_return`, each after waiting
// `hold_ms`.
using FakeDataAccessResetFn = void (*)(std::int32_t status_to_return, std::uint32_t hold_ms);
