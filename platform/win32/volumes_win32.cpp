#include "platform/volumes.h"

#include <windows.h>

#include <array>

namespace kq::platform {
namespace {

std::wstring terminated(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

// Suppresses the critical-error and open-file dialogs on this thread while it lives (the
// host's other threads keep their own mode).
class CriticalErrorDialogsSuppressed {
public:
    CriticalErrorDialogsSuppressed() {
        if (!SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_)) is_set_ = false;
    }
    ~CriticalErrorDialogsSuppressed() {
        if (is_set_) SetThreadErrorMode(previous_, nullptr);
    }
    CriticalErrorDialogsSuppressed(const CriticalErrorDialogsSuppressed&) = delete;
    CriticalErrorDialogsSuppressed& operator=(const CriticalErrorDialogsSuppressed&) = delete;

private:
    DWORD previous_ = 0;
    bool is_set_ = true;
};

} // namespace

std::optional<std::uint32_t> drive_root_attributes(std::u16string_view root) {
    const CriticalErrorDialogsSuppressed quiet;
    const DWORD attributes = GetFileAttributesW(terminated(root).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return std::nullopt;
    return attributes;
}

std::u16string volume_label(std::u16string_view root) {
    const CriticalErrorDialogsSuppressed quiet;
    std::array<wchar_t, kMaxVolumeLabelChars + 1> label{};
    if (!GetVolumeInformationW(terminated(root).c_str(), label.data(), static_cast<DWORD>(label.size()), nullptr,
                               nullptr, nullptr, nullptr, 0))
        return {};
    const std::wstring_view text(label.data()); // the system ends it with a NUL inside the buffer
    return std::u16string(text.begin(), text.end());
}

bool is_removable_drive(std::u16string_view root) { return GetDriveTypeW(terminated(root).c_str()) == DRIVE_REMOVABLE; }

} // namespace kq::platform
