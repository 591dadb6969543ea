#include "module/error_report.h"
#include "platform/system_error.h"

#include "module/host_folder.h"
#include "module/host_library_link.h"
#include "module/message_format.h"
#include "module/record_packer.h"
#include "platform/message_box.h"
#include "platform/string_table.h"
#include "string_ids.h"

namespace kq {
namespace {

// The host library's context text for the missing IPF library: it names the kind of file the
// user was adding.
constexpr std::u16string_view kIpfContext = u"file.ipf";
constexpr std::size_t kIpfMessageMaxChars = 80;

void show_report(std::u16string_view host_folder, void* parent_window, HResult code) {
    if (code == kIpfLibraryMissing) {
        const std::u16string text = platform::load_string(strings::ipf_library_missing, kIpfMessageMaxChars);
        HostLibraryLink link(host_folder);
        link.show_error_message(kIpfContext,
                                static_cast<std::uint32_t>(status::from_win32(platform::system_error::dll_not_found)),
                                parent_window, text, 0);
        return;
    }
    if (status::facility(code) != status::kFacilityInterface) return;

    const auto text_id = static_cast<StringId>(static_cast<std::uint32_t>(code) & 0xFFFFu);
    const std::u16string message = platform::load_string(text_id, kMaxLoadedTextChars);
    // A status that names no text of the module has nothing to tell the user.
    if (message.empty()) return;
    const std::optional<std::u16string> text = format_message_keeping_inserts(message);
    const std::u16string caption = platform::load_string(strings::add_media_files, kMaxLoadedTextChars);
    platform::show_message_box(parent_window, text.value_or(message), caption, platform::kMessageBoxDefault);
}

} // namespace

void report_error(void* parent_window, HResult code) noexcept {
    try {
        report_error_from(host_folder(), parent_window, code);
    } catch (...) {
        // Nothing to report with: a report that fails is dropped.
    }
}

void report_error_from(std::u16string_view host_folder, void* parent_window, HResult code) noexcept {
    try {
        show_report(host_folder, parent_window, code);
    } catch (...) {
        // A failed report never becomes an error of its own.
    }
}

} // namespace kq
