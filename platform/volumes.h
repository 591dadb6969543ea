#pragma once
// Drive roots ("C:\"): whether a volume is there, its label, and whether the drive is of the
// removable type. While asking, the system's critical-error dialogs (the "insert a disk" box
// of an empty floppy or card drive) are suppressed, so a question never blocks on the user.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::platform {

// The longest volume label that volume_label() returns: a cap of ours, far above what any
// file system stores (32 characters on NTFS, 11 on FAT).
inline constexpr std::size_t kMaxVolumeLabelChars = 100;

// The attributes of the drive root `root` ("C:\", with its backslash), as file_attributes()
// reports them; nullopt when the drive does not exist or holds no readable volume.
std::optional<std::uint32_t> drive_root_attributes(std::u16string_view root);

// The label of the volume in the drive whose root is `root` ("C:\"); empty when the volume
// has none or cannot be read.
std::u16string volume_label(std::u16string_view root);

// Whether the drive whose root is `root` is of the removable type (floppy drives, card
// readers, most USB sticks; CD drives are not).
bool is_removable_drive(std::u16string_view root);

} // namespace kq::platform
