#include "manifest/shared_folders.h"

#include "common/windows_path.h"
#include "manifest/rom_files.h"
#include "platform/files.h"
#include "platform/string_table.h"
#include "string_ids.h"

namespace kq::manifest {
namespace {

struct SharedFolder {
    std::u16string_view relative_path;
    StringId description;
};

constexpr SharedFolder kRestorableFolders[] = {
    {u"Shared\\adf", strings::shared_floppy_images},
    {u"Shared\\hdf", strings::shared_hard_disk_images},
    {u"Shared\\rom", strings::shared_rom_images},
};

constexpr std::size_t kDescriptionChars = 79; // read into 80-character buffers

} // namespace

std::u16string restore_system_files_paths(std::u16string_view data_folder) {
    std::u16string text;
    const std::u16string root = with_trailing_separator(data_folder);
    for (const SharedFolder& folder : kRestorableFolders) {
        if (!platform::file_attributes(root + std::u16string(folder.relative_path))) continue;
        if (!text.empty()) text += u'\t';
        text += folder.relative_path;
        text += u'\t';
        text += platform::load_string(folder.description, kDescriptionChars);
    }
    return text;
}

} // namespace kq::manifest
