// The media: floppy images, hard-disk images, host folders mounted as drives and the CD image,
// each with an absolute path.

#include "content/configuration_import/drive_lines.h"
#include "content/configuration_import/import_paths.h"
#include "content/configuration_import/import_steps.h"

#include "common/integer_text.h"
#include "platform/files.h"

namespace kq::content {
namespace {

// The media section's running priorities: one count for floppies, one shared by hard drives
// and folders.
struct MediaPriorities {
    std::int64_t floppy = 0, hard_drive = 0;
};

std::u16string optional_number(const std::optional<std::int32_t>& number) {
    return number ? decimal_text(*number) : std::u16string();
}

std::u16string_view flag(bool is_set) { return is_set ? u"true" : u""; }

void add_floppies(const ImportSource& source, CatalogWriter& catalog, MediaPriorities& priorities) {
    const std::u16string folder = configured_folder(source, u"win32.floppy_path");
    for (std::uint32_t unit = 0; unit <= 3; ++unit) {
        const auto image = source.configuration.value(numbered_key(u"floppy", unit));
        if (!image) continue;
        const std::u16string path = resolved_path(*image, folder);
        const std::optional<std::uint32_t> attributes = source.files.attributes(path);
        const bool is_read_only = attributes && (*attributes & platform::kAttributeReadOnly) != 0;
        catalog.add(CatalogSection::media, "floppy", path,
                    {{"root", u"absolute"},
                     {"priority", decimal_text(++priorities.floppy)},
                     {"readonly", std::u16string(flag(is_read_only))}});
    }
}

void add_hard_files(const ImportSource& source, CatalogWriter& catalog, MediaPriorities& priorities) {
    const std::u16string folder = configured_folder(source, u"win32.hardfile_path");
    for (const std::u16string_view value : source.configuration.values(u"hardfile2")) {
        const std::optional<HardfileLine> line = read_hardfile_line(value);
        if (!line) continue;
        catalog.add(CatalogSection::media, "harddrive", resolved_path(line->path, folder),
                    {{"root", u"absolute"},
                     {"priority", decimal_text(++priorities.hard_drive)},
                     {"readonly", std::u16string(flag(line->is_read_only))},
                     {"devicename", line->device_name},
                     {"sectors", optional_number(line->sectors)},
                     {"surfaces", optional_number(line->surfaces)},
                     {"reserved", optional_number(line->reserved)},
                     {"blocksize", optional_number(line->block_size)},
                     {"bootpriority", optional_number(line->boot_priority)},
                     {"filesystem", contains_ignoring_case(line->file_system, u"ffs") ? u"ffs-130" : u""},
                     {"controller", line->controller}});
    }
}

void add_folders(const ImportSource& source, CatalogWriter& catalog, MediaPriorities& priorities) {
    const std::u16string folder = configured_folder(source, u"win32.hardfile_path");
    for (const std::u16string_view value : source.configuration.values(u"filesystem2")) {
        const std::optional<FolderLine> line = read_folder_line(value);
        if (!line) continue;
        const std::u16string path = resolved_path(line->path, folder);
        const std::optional<std::uint32_t> attributes = source.files.attributes(path);
        if (!attributes || (*attributes & platform::kAttributeDirectory) == 0) continue;
        catalog.add(CatalogSection::media, "harddrive", path,
                    {{"root", u"absolute"},
                     {"priority", decimal_text(++priorities.hard_drive)},
                     {"readonly", std::u16string(flag(line->is_read_only))},
                     {"devicename", line->device_name},
                     {"volumename", line->volume_name},
                     {"bootpriority", optional_number(line->boot_priority)}});
    }
}

void add_cd(const ImportSource& source, CatalogWriter& catalog) {
    const auto value = source.configuration.value(u"cdimage0");
    if (!value) return;
    // The image may be followed by options (",image"); the path is the first field.
    const std::u16string image = split_fields(*value).front();
    if (image.empty()) return;
    catalog.add(CatalogSection::media, "cd", resolved_path(image, configured_folder(source, u"win32.cd_path")),
                {{"root", u"absolute"}, {"priority", u"1"}, {"readonly", u"true"}});
}

} // namespace

void import_media(const ImportSource& source, CatalogWriter& catalog) {
    MediaPriorities priorities;
    add_floppies(source, catalog, priorities);
    add_hard_files(source, catalog, priorities);
    add_folders(source, catalog, priorities);
    add_cd(source, catalog);
}

} // namespace kq::content
