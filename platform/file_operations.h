#pragma once
// File operations built from the platform's primitives, the same on every build.

#include "platform/system_error.h"

#include <string_view>

namespace kq::platform {

// Creates a folder and whichever of its parents are missing, each level in turn; levels that
// exist are no error. A trailing "\" is allowed.
SystemError create_folder_tree(std::u16string_view path);

// Deletes a file. Success and a file or folder that is not there count as done; any other
// failure falls back to the shell's delete. Whether the file is gone.
bool delete_file_robustly(std::u16string_view path);

// Whether a file (not a folder) exists at `path`.
bool file_exists(std::u16string_view path);

} // namespace kq::platform
