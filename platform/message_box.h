#pragma once
// Modal message boxes shown to the user.

#include <cstdint>
#include <string_view>

namespace kq::platform {

// Default message-box flags: an OK button, no icon.
inline constexpr std::uint32_t kMessageBoxDefault = 0;

// Shows a modal message box over `parent_window` (may be null) and returns the id of the
// button chosen, 0 when the box could not be shown.
int show_message_box(void* parent_window, std::u16string_view text, std::u16string_view caption,
                     std::uint32_t flags) noexcept;

} // namespace kq::platform
