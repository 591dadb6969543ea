#include "platform/clock.h"

#include <windows.h>

namespace kq::platform {

std::uint32_t tick_count() noexcept { return GetTickCount(); }

FileTime local_time_now() noexcept {
    SYSTEMTIME local;
    GetLocalTime(&local);
    FILETIME time{};
    SystemTimeToFileTime(&local, &time);
    return static_cast<FileTime>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

} // namespace kq::platform
