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
    std::uint16_t template_id;
};

constexpr DriveText kDriveTexts[] = {
    {DriveType::floppy, text_id::floppy_drive},
    {DriveType::hard_disk, text_id::hard_disk_drive},
    {DriveType::cd, text_id::cd_drive},
    {DriveType::network, text_id::network_drive},
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
    std::uint16_t template_id;
    std::u16string description;  // the %2 of the template
};

DriveContent hard_disk_content(std::u16string_view list, std::u16string_view records,
                               const MediumNameReaders& readers) {
    const std::optional<std::u16string> summary = content_info_text(list, records, kContentInfoShort, readers);
    if (!summary || summary->size() >= kTooltipSummaryChars) return {text_id::hard_disk_drive, {}};
    const bool has_several_lines = summary->find(kLineSeparator) != std::u16string::npos;
    return {has_several_lines ? text_id::hard_disk_drives : text_id::hard_disk_drive, *summary};
}

std::u16string medium_content(DriveType type, std::u16string_view path, std::u16string_view label,
                              const MediumNameReaders& readers) {
    if (path.empty()) return content_text(text_id::empty_drive);
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
