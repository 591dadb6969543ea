#pragma once
// The Software Preservation Society's CAPSImg library, through which IPF floppy images are
// read. It is not linked: it is loaded at run time from its fixed place below Common Files
// (or Program Files) and its entry points are bound by name. Without it, IPF images cannot
// be read and callers report kIpfLibraryMissing.

#include "module/status.h"
#include "platform/library.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kq::media {

// The entry points, in the order of CapsLibrary::entry_point's index.
// clang-format off
inline constexpr std::array<const char*, 13> kCapsEntryPointNames = {
    "CAPSInit",        "CAPSExit",         "CAPSAddImage",     "CAPSRemImage",       "CAPSLockImage",
    "CAPSLockImageMemory", "CAPSUnlockImage", "CAPSLoadImage", "CAPSGetImageInfo", "CAPSLockTrack",
    "CAPSUnlockTrack", "CAPSUnlockAllTracks", "CAPSGetPlatformName"};

enum class CapsEntryPoint {
    init, exit, add_image, remove_image, lock_image, lock_image_memory, unlock_image, load_image,
    get_image_info, lock_track, unlock_track, unlock_all_tracks, get_platform_name
};
// clang-format on

// Where the library is expected: the Common Files folder, else the Program Files folder, else
// the machine's "ProgramFilesDir" setting ("CommonFilesDir" with `common_files_setting`), with
// "Software Preservation Society\CAPSImg.dll" appended. nullopt when no folder is known or the
// path would reach platform::kMaxPathChars characters.
std::optional<std::u16string> caps_library_path(bool common_files_setting);

class CapsLibrary {
public:
    // Loads the library and binds every entry point: 0, or kIpfLibraryMissing when the library
    // is absent or lacks one of them.
    static HResult load(bool common_files_setting, std::optional<CapsLibrary>& out);

    // The bound function, to be cast to its published type.
    platform::Library::Procedure entry_point(CapsEntryPoint which) const {
        return entry_points_[static_cast<std::size_t>(which)];
    }

private:
    CapsLibrary() = default;
    platform::Library library_;
    std::array<platform::Library::Procedure, kCapsEntryPointNames.size()> entry_points_{};
};

} // namespace kq::media
