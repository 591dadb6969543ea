#pragma once
// A whole file read into memory, refused when it is larger than the caller's cap.

#include "module/status.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kq::content {

// HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE).
inline constexpr HResult kFileTooLarge = status::from_win32(platform::system_error::file_too_large);

// The file's bytes in `out`. The system error of the failed open or read as an HRESULT (E_FAIL
// when the system left none), kFileTooLarge when the file holds more than `max_bytes` (nothing
// is read then).
HResult read_whole_file(std::u16string_view path, std::size_t max_bytes, std::string& out);

} // namespace kq::content
