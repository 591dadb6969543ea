#pragma once
// The file name that the blank-disk dialog proposes for a new medium in the shared media
// folders: the empty floppy's template name, or "a-<size>mb-empty.hdf", made free in the target
// folder by a "(2)", "(3)" ... before the extension.

#include "module/status.h"

#include <optional>
#include <string>
#include <string_view>

namespace kq::media {

// The dialog's medium kinds.
enum class BlankDiskKind : unsigned {
    none = 0, // nothing selected: a double-density floppy
    double_density_floppy = 1,
    high_density_floppy = 2,
    hard_disk = 3,
    hard_disk_other = 4,
};

// The first of name, stem(2).ext ... stem(9999).ext that does not exist in `folder` (which ends
// in "\"); nullopt when all do.
std::optional<std::u16string> free_blank_disk_name(std::u16string_view folder, std::u16string_view name);

// "a-<n>mb-empty.hdf" with n read from the dialog's size field (decimal when its first
// character is a digit, else 0).
std::u16string blank_hard_disk_name(std::u16string_view size_field);

struct BlankDiskProposal {
    std::u16string folder;       // ending in "\"
    std::u16string name;         // empty when every candidate exists
    std::u16string empty_medium; // for a floppy: the empty medium made (free_empty_medium it)
};

// What the dialog proposes: the folder (the one the user picked, else data_root + "Shared\adf\"
// or "Shared\hdf\") and a free name. For a floppy an empty medium is made; when its template is
// missing, a message box over `parent_window` says so and the result is
// HRESULT_FROM_WIN32(ERROR_NOT_FOUND). Other failures of making the medium are returned as they are.
HResult propose_blank_disk(BlankDiskKind kind, std::u16string_view data_root, std::u16string_view picked_folder,
                           std::u16string_view size_field, void* parent_window, BlankDiskProposal& proposal);

} // namespace kq::media
