#pragma once
// File operations built from the platform's primitives, the same on every build.

#include "platform/system_error.h"

#include <optional>
#include <string>
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

// The first of `name`, "stem(2).ext", "stem(3).ext" ... "stem(<most>).ext" that names nothing
// in `folder` (which ends with a separator); nullopt when all are taken.
std::optional<std::u16string> first_free_file_name(std::u16string_view folder, std::u16string_view name, int most);

} // namespace kq::platform
