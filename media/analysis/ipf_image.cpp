#include "media/analysis/ipf_image.h"

#include "media/analysis/caps_api.h"
#include "media/caps_library.h"
#include "media/mfm_track.h"
#include "platform/files.h"

#include <algorithm>

namespace kq::media {
namespace {

constexpr std::uint32_t kMaxCylinders = 84, kMaxHeads = 2;
constexpr std::uint32_t kImageFlags = caps::kLockIndex | caps::kLockDensityAuto;
constexpr std::uint32_t kTrackFlags = caps::kLockIndex | caps::kLockDensityAuto | caps::kLockType;

template <class Function>
Function entry(const CapsLibrary& library, CapsEntryPoint which) {
    return reinterpret_cast<Function>(library.entry_point(which));
}

bool read_file(std::u16string_view path, std::vector<std::uint8_t>& bytes) {
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return false;
    const std::optional<std::uint64_t> size = file->size();
    if (!size || *size == 0 || *size > kMaxIpfFileBytes) return false;
    bytes.resize(static_cast<std::size_t>(*size));
    for (std::size_t taken = 0; taken < bytes.size();) {
        const std::optional<std::size_t> got = file->read(std::as_writable_bytes(std::span(bytes).subspan(taken)));
        if (!got || *got == 0) return false;
        taken += *got;
    }
    return true;
}

// One image in the library: added, then released again whatever happens.
class LoadedImage {
public:
    explicit LoadedImage(const CapsLibrary& library) : library_(library) {
        if (entry<caps::Init>(library_, CapsEntryPoint::init)() != 0) return;
        initialised_ = true;
        id_ = entry<caps::AddImage>(library_, CapsEntryPoint::add_image)();
    }
    ~LoadedImage() {
        if (locked_) {
            entry<caps::UnlockAllTracks>(library_, CapsEntryPoint::unlock_all_tracks)(id_);
            entry<caps::UnlockImage>(library_, CapsEntryPoint::unlock_image)(id_);
        }
        if (id_ >= 0) entry<caps::RemoveImage>(library_, CapsEntryPoint::remove_image)(id_);
        if (initialised_) entry<caps::Exit>(library_, CapsEntryPoint::exit)();
    }
    LoadedImage(const LoadedImage&) = delete;
    LoadedImage& operator=(const LoadedImage&) = delete;

    bool lock(std::vector<std::uint8_t>& bytes) {
        if (id_ < 0) return false;
        locked_ = entry<caps::LockImageMemory>(library_, CapsEntryPoint::lock_image_memory)(
                      id_, bytes.data(), static_cast<std::uint32_t>(bytes.size()), 0) == 0;
        return locked_ && entry<caps::LoadImage>(library_, CapsEntryPoint::load_image)(id_, kImageFlags) == 0;
    }
    bool info(caps::ImageInfo& image) {
        return entry<caps::GetImageInfo>(library_, CapsEntryPoint::get_image_info)(&image, id_) == 0;
    }
    // Decodes one track's sectors into `sectors` (22 × 512 bytes): which were found.
    MfmTrackSectors track(std::uint32_t cylinder, std::uint32_t head, std::span<std::byte> sectors) {
        caps::TrackInfoT1 track{};
        track.type = caps::kTrackInfoType1;
        MfmTrackSectors found;
        if (entry<caps::LockTrack>(library_, CapsEntryPoint::lock_track)(&track, id_, cylinder, head, kTrackFlags) != 0)
            return found;
        if (track.track_buffer != nullptr && track.track_length > 0)
            found = decode_mfm_track(std::as_bytes(std::span(track.track_buffer, track.track_length)), 0,
                                     kHighDensitySectors, sectors);
        entry<caps::UnlockTrack>(library_, CapsEntryPoint::unlock_track)(id_, cylinder, head);
        return found;
    }

private:
    const CapsLibrary& library_;
    bool initialised_ = false, locked_ = false;
    std::int32_t id_ = -1;
};

} // namespace

IpfResult read_ipf_image(std::u16string_view path, std::vector<std::byte>& adf, bool& high_density) {
    adf.clear();
    high_density = false;
    std::optional<CapsLibrary> library;
    if (CapsLibrary::load(false, library) != status::ok) return IpfResult::library_missing;
    std::vector<std::uint8_t> bytes;
    if (!read_file(path, bytes)) return IpfResult::unreadable;

    LoadedImage image(*library);
    caps::ImageInfo info{};
    if (!image.lock(bytes) || !image.info(info)) return IpfResult::unreadable;
    const std::uint32_t last_cylinder = std::min(info.max_cylinder, kMaxCylinders - 1);
    const std::uint32_t last_head = std::min(info.max_head, kMaxHeads - 1);
    if (info.min_cylinder > last_cylinder || info.min_head > last_head) return IpfResult::unreadable;

    // Every track in 22 sector slots first; the density is known only when all are decoded.
    const std::uint32_t tracks = (last_cylinder + 1) * kMaxHeads;
    std::vector<std::byte> slots(tracks * kHighDensitySectors * kSectorBytes);
    for (std::uint32_t cylinder = info.min_cylinder; cylinder <= last_cylinder; ++cylinder) {
        for (std::uint32_t head = info.min_head; head <= last_head; ++head) {
            const std::size_t track = cylinder * kMaxHeads + head;
            const MfmTrackSectors found =
                image.track(cylinder, head,
                            std::span(slots).subspan(track * kHighDensitySectors * kSectorBytes,
                                                     kHighDensitySectors * kSectorBytes));
            for (unsigned sector = kDoubleDensitySectors; sector < kHighDensitySectors; ++sector)
                high_density = high_density || found.found[sector];
        }
    }
    const std::size_t per_track = (high_density ? kHighDensitySectors : kDoubleDensitySectors) * kSectorBytes;
    adf.resize(tracks * per_track);
    for (std::size_t track = 0; track < tracks; ++track)
        std::copy_n(slots.begin() + static_cast<std::ptrdiff_t>(track * kHighDensitySectors * kSectorBytes), per_track,
                    adf.begin() + static_cast<std::ptrdiff_t>(track * per_track));
    return IpfResult::ok;
}

} // namespace kq::media
