#pragma once
// The kinds of path that a drive's description holds: files and folders, drive roots ("E:\")
// and paths in the system's device namespace ("\\.\PhysicalDrive2") for directly attached disks.

#include <cstdint>
#include <optional>
#include <string_view>

namespace kq::content {

// Whether `path` begins with two backslashes and "?" or ".".
bool is_device_path(std::u16string_view path);

// Whether `path` is a drive letter and a colon, alone or followed by one backslash.
bool is_drive_root(std::u16string_view path);

// Whether `path` is a drive root with its backslash ("E:\").
bool is_full_drive_root(std::u16string_view path);

// The attributes of the file, folder or drive root at `path`; nullopt when it does not exist
// (an empty path never does).
std::optional<std::uint32_t> path_attributes(std::u16string_view path);

} // namespace kq::content
