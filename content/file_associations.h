#pragma once
// The file types that the platform claims, from which the host registers them with the desktop
// and builds the filters of its open-file dialogs: floppy, hard-disk and CD images and emulator
// configuration files, enumerated by index. Texts come from the string table; the icon is a
// resource of the module's own file.

#include "platform/heap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

inline constexpr std::uint32_t kFileAssociationCount = 10;
// Icon resources (RT_GROUP_ICON) carried by the module's file.
inline constexpr std::uint16_t kFloppyDiskIcon = 144, kHardDiskIcon = 163;

struct FileAssociationTexts {
    std::u16string extension;             // without its dot
    std::u16string type_name;             // empty when the type has none
    std::u16string extension_description; // empty when none
    std::u16string long_description;      // empty when none
    std::u16string filter_pattern;        // "*.<extension>"
    std::u16string filter_name;
    std::u16string icon_location; // "<module path>,-<icon id>"; empty when none
    std::uint32_t category = 0;   // the drive that takes the type: 0 floppy, 1 hard disk, 2 CD
    std::uint32_t flags = 0;      // handed to the host as they stand
};

// Type `index` with its texts loaded, its icon located in the module file `module_path` (no
// icon when the path is empty); nullopt from kFileAssociationCount on.
std::optional<FileAssociationTexts> file_association(std::uint32_t index, std::u16string_view module_path);

// The record handed to the host (local heap): u32 size 72, the seven string pointers, category
// and flags, then the seven strings in field order, each with its NUL, directly after the
// header. Empty when the heap has no room.
platform::HeapBlock pack_file_association(const FileAssociationTexts& association);

} // namespace kq::content
