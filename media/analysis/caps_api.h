#pragma once
// The parts of the CAPSImg library's published interface that the module calls: its records
// (natural alignment), flags and function types. All functions return 0 (imgeOk) on success.

#include <cstdint>

namespace kq::media::caps {

struct DateTime {
    std::uint32_t year, month, day, hour, minute, second, tick;
};

struct ImageInfo {
    std::uint32_t type, release, revision;
    std::uint32_t min_cylinder, max_cylinder, min_head, max_head;
    DateTime created;
    std::uint32_t platform[4];
};

// A locked track in the "type 1" form, which the caller asks for by setting `type` to 1.
struct TrackInfoT1 {
    std::uint32_t type, cylinder, head, sector_count, sector_size;
    std::uint8_t* track_buffer;
    std::uint32_t track_length; // bytes
    std::uint8_t* time_buffer;
    std::uint32_t time_length;
    std::int32_t overlap;
    std::uint32_t start_bit, write_seed, weak_count;
};

inline constexpr std::uint32_t kTrackInfoType1 = 1;
inline constexpr std::uint32_t kLockIndex = 1u << 0, kLockDensityAuto = 1u << 3, kLockType = 1u << 9;

using Init = std::int32_t (*)();
using Exit = std::int32_t (*)();
using AddImage = std::int32_t (*)();
using RemoveImage = std::int32_t (*)(std::int32_t id);
using LockImageMemory = std::int32_t (*)(std::int32_t id, std::uint8_t* buffer, std::uint32_t length,
                                         std::uint32_t flags);
using UnlockImage = std::int32_t (*)(std::int32_t id);
using LoadImage = std::int32_t (*)(std::int32_t id, std::uint32_t flags);
using GetImageInfo = std::int32_t (*)(ImageInfo* info, std::int32_t id);
using LockTrack = std::int32_t (*)(void* track, std::int32_t id, std::uint32_t cylinder, std::uint32_t head,
                                   std::uint32_t flags);
using UnlockTrack = std::int32_t (*)(std::int32_t id, std::uint32_t cylinder, std::uint32_t head);
using UnlockAllTracks = std::int32_t (*)(std::int32_t id);

} // namespace kq::media::caps
