#pragma once
// Copying a medium file into a package or a shared media folder: under a name the emulated
// system can use (US-ASCII), unpacked on the way when asked (".adz", ".hdz", ".dms" into
// ".adf"/".hdf"), under a free name when asked, and with the data files of a CUE sheet.

#include "module/status.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kq::media {

inline constexpr std::uint32_t kCopyMediumConvert = 0x1;      // unpack .adz, .hdz and .dms
inline constexpr std::uint32_t kCopyMediumNoOverwrite = 0x2;  // fail when the target exists
inline constexpr std::uint32_t kCopyMediumUniqueName = 0x4;   // take a free name instead
inline constexpr std::uint32_t kCopyMediumSkipSameName = 0x8; // nothing to do for an unchanged name

// `path` with every element that holds a character above 0x7F replaced by its short (8.3)
// name where the file system has one. Failure: the system's error looking an element up.
HResult ascii_safe_path(std::u16string_view path, std::u16string& safe);

// The name that the copy of a file named `file_name` gets: converted to US-ASCII by the
// system's best fit, every "?" then "_".
std::u16string ascii_file_name(std::u16string_view file_name);

// Copies `source` into `target_folder`; `target` receives the path written. Returns 0, 1 when
// the name would not change (kCopyMediumSkipSameName; nothing copied), E_INVALIDARG (no "\" in
// the source), E_FAIL (no free name), HRESULT_FROM_WIN32(ERROR_FILE_EXISTS) (the target exists with
// kCopyMediumNoOverwrite), HRESULT_FROM_WIN32(ERROR_INVALID_DATA) (unpacking failed; the partial image is
// removed), HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME) (a CUE sheet names a file outside its folder), or the
// system's error (such as a full disk; the copies this call made are removed). Every file
// written loses its read-only and hidden attributes.
HResult copy_medium_file(std::u16string_view source, std::u16string_view target_folder, std::uint32_t flags,
                         std::u16string& target);

} // namespace kq::media
