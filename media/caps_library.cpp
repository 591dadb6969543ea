#include "media/caps_library.h"

#include "common/windows_path.h"
#include "module/error_report.h"
#include "platform/files.h"
#include "platform/settings_store.h"

namespace kq::media {
namespace {

constexpr std::u16string_view kLibraryBelowFolder = u"Software Preservation Society\\CAPSImg.dll";
constexpr std::u16string_view kWindowsVersionKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

} // namespace

std::optional<std::u16string> caps_library_path(bool common_files_setting) {
    std::optional<std::u16string> folder = platform::program_files_folder(true);
    if (!folder) folder = platform::program_files_folder(false);
    if (!folder)
        folder = platform::read_machine_setting_string(kWindowsVersionKey,
                                                       common_files_setting ? u"CommonFilesDir" : u"ProgramFilesDir");
    if (!folder) return std::nullopt;
    std::u16string path = with_trailing_separator(*folder);
    path += kLibraryBelowFolder;
    if (path.size() >= platform::kMaxPathChars) return std::nullopt;
    return path;
}

HResult CapsLibrary::load(bool common_files_setting, std::optional<CapsLibrary>& out) {
    out.reset();
    const std::optional<std::u16string> path = caps_library_path(common_files_setting);
    if (!path) return kIpfLibraryMissing;
    CapsLibrary caps;
    caps.library_ = platform::Library::load(*path);
    if (!caps.library_.is_loaded()) return kIpfLibraryMissing;
    for (std::size_t i = 0; i < kCapsEntryPointNames.size(); ++i) {
        caps.entry_points_[i] = caps.library_.find(kCapsEntryPointNames[i]);
        if (caps.entry_points_[i] == nullptr) return kIpfLibraryMissing;
    }
    out.emplace(std::move(caps));
    return status::ok;
}

} // namespace kq::media
