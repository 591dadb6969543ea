#include "media/blank_disk_name.h"

#include "common/integer_text.h"
#include "common/windows_path.h"
#include "media/empty_medium.h"
#include "platform/file_operations.h"
#include "platform/files.h"
#include "platform/message_box.h"
#include "platform/string_table.h"
#include "string_ids.h"

#include <cstdio>

namespace kq::media {
namespace {

constexpr int kMaxNameNumber = 9999;
constexpr std::u16string_view kFloppyFolder = u"Shared\\adf\\", kHardDiskFolder = u"Shared\\hdf\\";
constexpr std::size_t kMaxMessageChars = 512;

std::u16string ascii_text(const char* text) {
    return std::u16string(text, text + std::char_traits<char>::length(text));
}

bool is_hard_disk(BlankDiskKind kind) {
    return kind == BlankDiskKind::hard_disk || kind == BlankDiskKind::hard_disk_other;
}

} // namespace

std::optional<std::u16string> free_blank_disk_name(std::u16string_view folder, std::u16string_view name) {
    return platform::first_free_file_name(folder, name, kMaxNameNumber);
}

std::u16string blank_hard_disk_name(std::u16string_view size_field) {
    const bool digit_first = !size_field.empty() && size_field[0] >= u'0' && size_field[0] <= u'9';
    const int megabytes = digit_first ? read_integer_prefix(size_field, 10).value_or(0) : 0;
    char name[40];
    std::snprintf(name, sizeof name, "a-%dmb-empty.hdf", megabytes);
    return ascii_text(name);
}

HResult propose_blank_disk(BlankDiskKind kind, std::u16string_view data_root, std::u16string_view picked_folder,
                           std::u16string_view size_field, void* parent_window, BlankDiskProposal& proposal) {
    proposal = BlankDiskProposal();
    const bool hard_disk = is_hard_disk(kind);
    proposal.folder = picked_folder.empty() ? with_trailing_separator(data_root) +
                                                  std::u16string(hard_disk ? kHardDiskFolder : kFloppyFolder)
                                            : with_trailing_separator(picked_folder);
    std::u16string name;
    if (hard_disk) {
        name = blank_hard_disk_name(size_field);
    } else {
        const std::uint32_t medium_kind = kind == BlankDiskKind::high_density_floppy ? 1 : 0;
        const HResult made = make_empty_medium(0, medium_kind, &proposal.empty_medium);
        if (made == status::from_win32(platform::system_error::not_found)) {
            platform::show_message_box(
                parent_window, platform::load_string(strings::blank_disk_template_missing, kMaxMessageChars),
                platform::load_string(strings::create_blank_disk, kMaxMessageChars), platform::kMessageBoxDefault);
        }
        if (made != status::ok) return made;
        name = std::u16string(file_name_of(proposal.empty_medium));
    }
    proposal.name = free_blank_disk_name(proposal.folder, name).value_or(std::u16string());
    return status::ok;
}

} // namespace kq::media
