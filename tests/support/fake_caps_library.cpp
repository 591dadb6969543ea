// A stand-in for the CAPSImg library, built twice: with all thirteen entry points, and
// (FAKE_WITHOUT_ENTRIES) with CAPSInit only. Its "IPF" images are "FAKEIPF" and a NUL followed
// by a plain double-density ADF; it hands out each track of that ADF as MFM, encoded by the
// tests' encoder, so that the module's whole path from locking an image to decoding sectors
// runs against it.

#include "media/analysis/caps_api.h"
#include "tests/support/mfm_encoder.h"

#include <cstring>
#include <map>
#include <span>
#include <vector>

#ifdef _WIN32
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

FAKE_EXPORT std::int32_t CAPSInit() { return 0; }
#ifndef FAKE_WITHOUT_ENTRIES
namespace {

namespace caps = kq::media::caps;

constexpr char kSignature[8] = "FAKEIPF";
constexpr std::size_t kTrackBytes = 11 * 512;
std::vector<std::byte> g_adf;
std::map<std::uint32_t, std::vector<std::byte>> g_tracks; // kept until the next lock of the track
bool g_loaded = false;

} // namespace

FAKE_EXPORT std::int32_t CAPSExit() { return 0; }
FAKE_EXPORT std::int32_t CAPSAddImage() { return 0; }
FAKE_EXPORT std::int32_t CAPSRemImage(std::int32_t) {
    g_loaded = false;
    return 0;
}
FAKE_EXPORT std::int32_t CAPSLockImage(std::int32_t, char*) { return -1; }
FAKE_EXPORT std::int32_t CAPSLockImageMemory(std::int32_t id, std::uint8_t* buffer, std::uint32_t length,
                                             std::uint32_t) {
    if (id != 0 || length < sizeof kSignature || std::memcmp(buffer, kSignature, sizeof kSignature) != 0) return -1;
    const auto* adf = reinterpret_cast<const std::byte*>(buffer + sizeof kSignature);
    g_adf.assign(adf, adf + (length - sizeof kSignature));
    return 0;
}
FAKE_EXPORT std::int32_t CAPSUnlockImage(std::int32_t) { return 0; }
FAKE_EXPORT std::int32_t CAPSLoadImage(std::int32_t, std::uint32_t) { return (g_loaded = !g_adf.empty()) ? 0 : -1; }
FAKE_EXPORT std::int32_t CAPSGetImageInfo(caps::ImageInfo* info, std::int32_t) {
    if (!g_loaded) return -1;
    *info = caps::ImageInfo{};
    info->max_cylinder = static_cast<std::uint32_t>(g_adf.size() / (2 * kTrackBytes)) - 1;
    info->max_head = 1;
    return 0;
}
FAKE_EXPORT std::int32_t CAPSLockTrack(void* track_info, std::int32_t, std::uint32_t cylinder, std::uint32_t head,
                                       std::uint32_t flags) {
    auto* track = static_cast<caps::TrackInfoT1*>(track_info);
    if (!g_loaded || (flags & caps::kLockType) == 0 || track->type != caps::kTrackInfoType1) return -1;
    const std::uint32_t number = cylinder * 2 + head;
    if ((number + 1) * kTrackBytes > g_adf.size()) return -1;
    const kq::test::RawTrack raw = kq::test::encode_track(
        number, std::span(g_adf).subspan(number * kTrackBytes, kTrackBytes), number % 11, number * 37);
    std::vector<std::byte>& kept = g_tracks[number];
    kept = raw.bytes;
    track->track_buffer = reinterpret_cast<std::uint8_t*>(kept.data());
    track->track_length = static_cast<std::uint32_t>(kept.size());
    return 0;
}
FAKE_EXPORT std::int32_t CAPSUnlockTrack(std::int32_t, std::uint32_t, std::uint32_t) { return 0; }
FAKE_EXPORT std::int32_t CAPSUnlockAllTracks(std::int32_t) { return 0; }
FAKE_EXPORT const char* CAPSGetPlatformName(std::uint32_t) { return "fake"; }
#endif
