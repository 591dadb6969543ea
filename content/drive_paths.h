#pragma once
// The kinds of path that a drive's description holds: files and folders, drive roots ("E:\")
// and paths in the system's device namespace ("\\.\PhysicalDrive2") for directly attached disks
// (their shapes are told apart by common/windows_path.h).

#include <cstdint>
#include <optional>
#include <string_view>

namespace kq::content {

// The attributes of the file, folder or drive root at `path`; nullopt when it does not exist
// (an empty path never does).
std::optional<std::uint32_t> path_attributes(std::u16string_view path);

} // namespace kq::content
