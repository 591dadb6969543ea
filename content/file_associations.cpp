#include "content/file_associations.h"

#include "common/integer_text.h"
#include "content/configuration_import/configuration_import.h"
#include "content/content_info.h"
#include "content/content_texts.h"
#include "media/image_formats.h"
#include "module/record_packer.h"
#include "string_ids.h"

#include <algorithm>
#include <array>

namespace kq::content {
namespace {

constexpr std::uint16_t kNone = 0;              // no text, no icon
constexpr std::size_t kMaxShortTextChars = 100; // type name, extension description, filter name

// The flag sets as the host expects them; the module gives them no meaning of its own.
constexpr std::uint32_t kWritableImageFlags = 3, kReadOnlyFlags = 0, kConfigurationFileFlags = 7;

// The texts and icon of each type. Every type but the emulator configuration file is an image
// format, whose table says which drive takes it and whether it is writable.
struct FileAssociationRow {
    std::u16string_view extension;
    StringId type_name, extension_description, long_description, filter_name;
    std::uint16_t icon;
};

// clang-format off
constexpr std::array kRows{
    FileAssociationRow{.extension = u"adf", .type_name = strings::amiga_floppy_image,
                       .extension_description = strings::adf_extension_description,
                       .long_description = strings::adf_long_description, .filter_name = strings::adf_filter_name,
                       .icon = kFloppyDiskIcon},
    FileAssociationRow{.extension = u"adz", .type_name = strings::amiga_floppy_image,
                       .extension_description = strings::adz_extension_description,
                       .long_description = strings::adz_long_description, .filter_name = strings::adz_filter_name,
                       .icon = kFloppyDiskIcon},
    FileAssociationRow{.extension = u"cue", .type_name = kNone, .extension_description = kNone,
                       .long_description = kNone, .filter_name = strings::cue_filter_name, .icon = kNone},
    FileAssociationRow{.extension = u"dms", .type_name = strings::amiga_floppy_image,
                       .extension_description = strings::dms_extension_description,
                       .long_description = strings::dms_long_description, .filter_name = strings::dms_filter_name,
                       .icon = kFloppyDiskIcon},
    FileAssociationRow{.extension = u"hdf", .type_name = strings::amiga_hard_disk_image,
                       .extension_description = strings::hdf_extension_description,
                       .long_description = strings::hdf_long_description, .filter_name = strings::hdf_filter_name,
                       .icon = kHardDiskIcon},
    FileAssociationRow{.extension = u"hdz", .type_name = strings::amiga_hard_disk_image,
                       .extension_description = strings::hdz_extension_description,
                       .long_description = strings::hdz_long_description, .filter_name = strings::hdz_filter_name,
                       .icon = kHardDiskIcon},
    FileAssociationRow{.extension = u"ipf", .type_name = strings::amiga_floppy_image,
                       .extension_description = strings::ipf_extension_description,
                       .long_description = strings::ipf_long_description, .filter_name = strings::ipf_filter_name,
                       .icon = kFloppyDiskIcon},
    FileAssociationRow{.extension = u"iso", .type_name = kNone, .extension_description = kNone,
                       .long_description = kNone, .filter_name = strings::iso_filter_name, .icon = kNone},
    FileAssociationRow{.extension = u"scp", .type_name = strings::amiga_floppy_image,
                       .extension_description = strings::scp_extension_description,
                       .long_description = strings::scp_long_description, .filter_name = strings::scp_filter_name,
                       .icon = kFloppyDiskIcon},
    FileAssociationRow{.extension = kConfigurationFileExtension, .type_name = strings::uae_configuration_file,
                       .extension_description = strings::uae_extension_description,
                       .long_description = strings::uae_long_description, .filter_name = strings::uae_filter_name,
                       .icon = kFloppyDiskIcon},
};
// clang-format on

static_assert(kRows.size() == kFileAssociationCount);
static_assert(std::ranges::adjacent_find(kRows, std::ranges::greater_equal{}, &FileAssociationRow::extension) ==
                  kRows.end(),
              "one row per extension, in alphabetical order");
// Every image format is claimed, and every other type is the configuration file.
static_assert(kRows.size() == media::kImageFormats.size() + 1);
static_assert(std::ranges::all_of(kRows, [](const FileAssociationRow& row) {
    return media::is_image_extension(row.extension) != (row.extension == kConfigurationFileExtension);
}));
// A type either is described in full, with an icon, or has only its filter (the CD types).
static_assert(std::ranges::all_of(kRows, [](const FileAssociationRow& row) {
    const bool described = row.type_name != kNone && row.extension_description != kNone &&
                           row.long_description != kNone && row.icon != kNone;
    const bool bare = row.type_name == kNone && row.extension_description == kNone && row.long_description == kNone &&
                      row.icon == kNone;
    return row.filter_name != kNone && (described || bare);
}));

// The drive that takes a type (the record's category) and its flags.
struct TypeUse {
    DriveType drive;
    std::uint32_t flags;
};
TypeUse use_of(const FileAssociationRow& row) {
    const media::ImageFormat* format = media::find_image_format(row.extension);
    if (format == nullptr) return {DriveType::floppy, kConfigurationFileFlags};
    constexpr DriveType kDrives[] = {DriveType::floppy, DriveType::hard_disk, DriveType::cd}; // by MediumKind
    return {kDrives[static_cast<std::size_t>(format->kind)],
            format->is_writable ? kWritableImageFlags : kReadOnlyFlags};
}

std::u16string loaded_text(StringId id, std::size_t max_chars) {
    return id == kNone ? std::u16string() : platform::load_string(id, max_chars);
}

namespace field {
constexpr std::size_t extension = 8, type_name = 16, extension_description = 24, long_description = 32,
                      filter_pattern = 40, filter_name = 48, icon_location = 56, category = 64, flags = 68;
} // namespace field
constexpr std::size_t kRecordBytes = 72;

} // namespace

std::optional<FileAssociationTexts> file_association(std::uint32_t index, std::u16string_view module_path) {
    if (index >= kRows.size()) return std::nullopt;
    const FileAssociationRow& row = kRows[index];
    FileAssociationTexts texts{.extension = std::u16string(row.extension),
                               .type_name = loaded_text(row.type_name, kMaxShortTextChars),
                               .extension_description = loaded_text(row.extension_description, kMaxShortTextChars),
                               .long_description = loaded_text(row.long_description, kMaxStringChars),
                               .filter_pattern = u"*." + std::u16string(row.extension),
                               .filter_name = loaded_text(row.filter_name, kMaxShortTextChars),
                               .icon_location = {},
                               .category = static_cast<std::uint32_t>(use_of(row).drive),
                               .flags = use_of(row).flags};
    // The desktop's form for an icon resource: the file, a comma and the negated resource id.
    if (row.icon != kNone && !module_path.empty())
        texts.icon_location = std::u16string(module_path) + u"," + decimal_text(-std::int64_t{row.icon});
    return texts;
}

platform::HeapBlock pack_file_association(const FileAssociationTexts& association) {
    RecordPacker packer(kRecordBytes);
    // Added in field order: the packer lays the strings out in the order they come.
    packer.add_text(field::extension, std::u16string_view(association.extension));
    packer.add_text(field::type_name, std::u16string_view(association.type_name));
    packer.add_text(field::extension_description, std::u16string_view(association.extension_description));
    packer.add_text(field::long_description, std::u16string_view(association.long_description));
    packer.add_text(field::filter_pattern, std::u16string_view(association.filter_pattern));
    packer.add_text(field::filter_name, std::u16string_view(association.filter_name));
    packer.add_text(field::icon_location, std::u16string_view(association.icon_location));
    packer.set_u32(field::category, association.category);
    packer.set_u32(field::flags, association.flags);
    return packer.pack(platform::Heap::local);
}

} // namespace kq::content
