#include "platform/message_box.h"

#include <windows.h>

#include <string>

namespace kq::platform {

int show_message_box(void* parent_window, std::u16string_view text, std::u16string_view caption,
                     std::uint32_t flags) noexcept {
    try {
        const std::u16string text_z(text), caption_z(caption);
        return MessageBoxW(static_cast<HWND>(parent_window), reinterpret_cast<const wchar_t*>(text_z.c_str()),
                           reinterpret_cast<const wchar_t*>(caption_z.c_str()), flags);
    } catch (...) {
        return 0;
    }
}

} // namespace kq::platform
