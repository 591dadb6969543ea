#pragma once
// The host's shared data folders whose system files can be restored.

#include <string>
#include <string_view>

namespace kq::manifest {

// For each of "Shared\adf", "Shared\hdf" and "Shared\rom" that exists under `data_folder`, in
// that order: the relative folder name, a tab and its description; entries separated by tabs.
// Empty when none exists.
std::u16string restore_system_files_paths(std::u16string_view data_folder);

} // namespace kq::manifest
