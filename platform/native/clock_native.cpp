#include "platform/clock.h"

#include <chrono>
#include <ctime>

namespace kq::platform {
namespace {

constexpr std::int64_t kSecondsFrom1601To1970 = 11644473600;

} // namespace

std::uint32_t tick_count() noexcept {
    const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
}

FileTime local_time_now() noexcept {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    // The local wall clock read as if it were UTC.
    const std::int64_t local_seconds = static_cast<std::int64_t>(seconds) + local.tm_gmtoff;
    const auto sub_second =
        std::chrono::duration_cast<std::chrono::nanoseconds>(now.time_since_epoch()).count() % 1000000000;
    return static_cast<FileTime>((local_seconds + kSecondsFrom1601To1970) * 10000000 + sub_second / 100);
}

} // namespace kq::platform
