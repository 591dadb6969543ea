#pragma once
// Statuses in the HRESULT form, as every export returns them: 0 success, 1 "nothing more" or
// "not applicable", negative values failures.

#include "platform/system_error.h"

#include <cstdint>

namespace kq {

using HResult = std::int32_t;

namespace status {

inline constexpr HResult ok = 0;
inline constexpr HResult nothing_more = 1;                                     // S_FALSE
inline constexpr HResult not_implemented = static_cast<HResult>(0x80004001u);  // E_NOTIMPL
inline constexpr HResult null_pointer = static_cast<HResult>(0x80004003u);     // E_POINTER
inline constexpr HResult failed = static_cast<HResult>(0x80004005u);           // E_FAIL
inline constexpr HResult out_of_memory = static_cast<HResult>(0x8007000Eu);    // E_OUTOFMEMORY
inline constexpr HResult invalid_argument = static_cast<HResult>(0x80070057u); // E_INVALIDARG
inline constexpr HResult unexpected = static_cast<HResult>(0x8000FFFFu);       // E_UNEXPECTED

// A Windows error code in HRESULT form (HRESULT_FROM_WIN32).
constexpr HResult from_win32(std::uint32_t error) {
    return error == 0 ? ok : static_cast<HResult>((error & 0xFFFFu) | 0x80070000u);
}

// A failed operation's Windows error in HRESULT form; E_FAIL when the system left no error
// code (a short write that reported success), so that a failure never reads as success.
constexpr HResult failure_from_win32(std::uint32_t error) { return error == 0 ? failed : from_win32(error); }

// The error of the platform call that just failed on this thread, in HRESULT form.
inline HResult system_failure() { return failure_from_win32(platform::last_system_error()); }

// The facility field of a status: bits 16 to 28.
constexpr std::uint32_t facility(HResult status) { return static_cast<std::uint32_t>(status) >> 16 & 0x1FFFu; }
inline constexpr std::uint32_t kFacilityInterface = 4; // FACILITY_ITF

constexpr bool succeeded(HResult status) { return status >= 0; }

} // namespace status

} // namespace kq
