#pragma once
// The system's clocks.

#include <cstdint>

namespace kq::platform {

// A time as Windows keeps it for files: 100-ns ticks since 1601-01-01 (UTC for file times).
using FileTime = std::uint64_t;

// Milliseconds since the system started, wrapping at 2^32 (GetTickCount).
std::uint32_t tick_count() noexcept;

// The local wall-clock time now, as a FileTime taken as it stands (no conversion to UTC).
FileTime local_time_now() noexcept;

} // namespace kq::platform
