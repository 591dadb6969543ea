#include "content/content_tooltip.h"

#include "common/windows_path.h"
#include "content/content_lines.h"
#include "content/content_texts.h"
#include "content/drive_paths.h"
#include "module/message_format.h"
#include "platform/volumes.h"

#include <algorithm>

namespace kq::content {
namespace {

struct DriveText {
    DriveType type;
    StringId template_id;
};

constexpr DriveText kDriveTexts[] = {
    {DriveType::floppy, strings::floppy_drive_template},
    {DriveType::hard_disk, strings::hard_disk_drive_template},
    {DriveType::cd, strings::cd_drive_template},
    {DriveType::network, strings::network_drive},
};

// "name" (display label), or the display label alone when the medium has no name.
std::u16string medium_description(std::u16string_view name, std::u16string_view display_label) {
    if (name.empty()) return std::u16string(display_label);
    std::u16string described(1, u'"');
    described += name;
    described += u"\" (";
    described += display_label;
    described += u')';
    return described;
}

struct DriveContent {
    StringId template_id;
    std::u16string description; // the %2 of the template
};

DriveContent hard_disk_content(std::u16string_view list, std::u16string_view records,
                               const MediumNameReaders& readers) {
    const std::optional<std::u16string> summary = content_info_text(list, records, kContentInfoShort, readers);
    if (!summary || summary->size() >= kTooltipSummaryChars) return {strings::hard_disk_drive_template, {}};
    const bool has_several_lines = summary->find(kLineSeparator) != std::u16string::npos;
    return {has_several_lines ? strings::hard_disk_drives_template : strings::hard_disk_drive_template, *summary};
}

std::u16string medium_content(DriveType type, std::u16string_view path, std::u16string_view label,
                              const MediumNameReaders& readers) {
    if (path.empty()) return content_text(strings::empty_drive);
    if (type == DriveType::cd && is_drive_root(path))
        return medium_description(platform::volume_label(with_trailing_separator(path)), label);
    const std::optional<std::u16string> name = readers.volume_name(path);
    // A lone ":" (the root of a volume without a name) counts as no name.
    if (!name || *name == u":") return std::u16string(label);
    return medium_description(*name, label);
}

} // namespace

std::optional<std::u16string> content_tooltip_text(std::uint8_t drive_type, std::uint32_t drive_index,
                                                   std::u16string_view path, std::u16string_view label,
                                                   const MediumNameReaders& readers) {
    const auto* drive = std::ranges::find(kDriveTexts, static_cast<DriveType>(drive_type), &DriveText::type);
    if (drive == std::end(kDriveTexts)) return std::u16string();
    DriveContent content{drive->template_id, {}};
    if (drive->type == DriveType::hard_disk)
        content = hard_disk_content(path, label, readers);
    else if (drive->type != DriveType::network)
        content.description = medium_content(drive->type, path, label, readers);
    const MessageArgument arguments[] = {std::int64_t{drive_index}, std::u16string_view(content.description)};
    return format_message(content_text(content.template_id), arguments);
}

} // namespace kq::content
