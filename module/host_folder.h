#pragma once
// The host folder: where the host keeps its data-access library, the parent of the folder
// that holds the module (a module at X\Platforms\Amiga\amiga.dll has the host folder
// X\Platforms).

#include <string>
#include <string_view>

namespace kq {

// Cuts `module_path` at its second backslash from the end; the cut is purely by position.
// A path with fewer than two backslashes has no host folder (empty).
std::u16string host_folder_of(std::u16string_view module_path);

// The host folder of this module.
std::u16string host_folder();

} // namespace kq
