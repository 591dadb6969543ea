#pragma once
// Tells the user about a failure of a media-adding path, given the status it ended with:
//   0x00040000 (the IPF support library CAPSImg.dll is missing): the host library shows
//       "IPF Support Library Not Found" in the host's own style (context "file.ipf", error
//       HRESULT_FROM_WIN32(ERROR_DLL_NOT_FOUND)); never a message box, although its facility is also 4;
//   any other status of facility 4 (interface-specific): its low 16 bits are the id of a
//       string of the module, shown in a message box captioned "Add Media Files";
//   anything else: nothing.
// A failed report is not an error of its own: nothing comes back.

#include "module/status.h"

#include <string_view>

namespace kq {

inline constexpr HResult kIpfLibraryMissing = 0x00040000;

void report_error(void* parent_window, HResult code) noexcept;
// The same with the host library looked for in `host_folder`.
void report_error_from(std::u16string_view host_folder, void* parent_window, HResult code) noexcept;

} // namespace kq
