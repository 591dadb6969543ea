#pragma once
// Windows error codes, as the platform layer reports failures (the native build maps its own
// errors onto them).

#include <cstdint>

namespace kq::platform {

// A Windows error code; 0 is success.
using SystemError = std::uint32_t;

// The error of the last platform call that failed on this thread (GetLastError).
SystemError last_system_error() noexcept;

namespace system_error {
inline constexpr SystemError file_not_found = 2, path_not_found = 3, access_denied = 5, invalid_data = 13,
                             too_many_names = 68, file_exists = 80, invalid_parameter = 87,
                             buffer_overflow = 111, // also "insufficient buffer"
    bad_pathname = 161, already_exists = 183, file_too_large = 223, invalid_dll = 1154, dll_not_found = 1157,
                             not_found = 1168,
                             empty = 4306; // ERROR_EMPTY: the library, drive or media pool is empty
} // namespace system_error

} // namespace kq::platform
