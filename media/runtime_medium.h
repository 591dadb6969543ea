#pragma once
// Runtime media: private working copies of the user's ADF and HDF images (inflated on the way
// from ".adz"/".hdz") that the emulator may write, checked for changes and, on dismissal,
// written back and removed. Nothing is kept in memory between the calls: a working copy
//   <temp>\Quennet\<key>-<image file name>   (".adz"/".hdz" become ".adf"/".hdf")
// is linked to the user's image only by its record
//   <temp>\Quennet\<key>.info: the copy's last-write time as made (8 bytes, FILETIME; zero
//   when no time was kept), then the image's path as the caller gave it (UTF-16LE, no NUL).
// The key is 36 characters: a new GUID printed without braces, or the caller's own.

#include "module/status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::media {

inline constexpr std::uint32_t kRuntimeMediumNoTimestamp = 0x1;    // the copy always counts as changed
inline constexpr std::uint32_t kRuntimeMediumCallerKey = 0x2;      // the caller supplies the key
inline constexpr std::uint32_t kRuntimeMediumWriteBack = 0x0F;     // any of these: write changes back
inline constexpr std::uint32_t kRuntimeMediumAssumeChanged = 0x10; // skip the time comparison

inline constexpr std::size_t kRuntimeKeyChars = 36;

struct RuntimeMediumRequest {
    std::u16string_view image_path;
    // A folder to take a file of the image's name from first, when it has one.
    std::optional<std::u16string_view> alternate_folder;
    // The caller's key; nullopt: a new GUID.
    std::optional<std::u16string_view> caller_key;
    bool no_timestamp = false;
};

// Makes the working copy and its record; `working_copy` receives the copy's path. Returns 0,
// 1 when the image is not an ADF, ADZ, HDF or HDZ (nothing done), or a failure:
// E_INVALIDARG (no "\" in the path; a caller key that is not 36 characters of a file name),
// E_FAIL (no temporary folder; the copy's time cannot be read),
// HRESULT_FROM_WIN32(ERROR_BUFFER_OVERFLOW) (paths too long), 0x80040000 | the inflater's error code, or the
// system's error in HRESULT form. A copy made before a later failure stays.
HResult make_runtime_medium(const RuntimeMediumRequest& request, std::u16string& working_copy);

// Whether the working copy changed since it was made: 0, or E_INVALIDARG (not a working
// copy's name), the system's error opening the record or the copy, E_FAIL.
HResult check_runtime_medium(std::u16string_view working_copy, bool& changed);

// Writes the copy back when `flags` ask for it and it changed, then deletes the copy and its
// record. A failed write-back returns its error (the system's, such as a full disk, or
// HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED) for an image with the read-only attribute) and leaves both in place;
// the user's image is then as it was.
HResult dismiss_runtime_medium(std::u16string_view working_copy, std::uint32_t flags);

// The name beside the user's image that writing back goes through: the first of
// "<image>.temp", "<image>.temp1" ... "<image>.temp999" that does not exist.
std::optional<std::u16string> free_side_name(std::u16string_view image_path);

// The runtime folder: the temporary folder with "Quennet\" below it (not created here).
std::optional<std::u16string> runtime_folder();

} // namespace kq::media
