#include "platform/message_box.h"
#include "platform/native/native_controls.h"

#include <mutex>
#include <utility>

namespace kq::platform {
namespace {

std::mutex g_lock;
std::vector<native::ShownMessageBox> g_shown;

} // namespace

int show_message_box(void* parent_window, std::u16string_view text, std::u16string_view caption,
                     std::uint32_t flags) noexcept {
    try {
        std::lock_guard lock(g_lock);
        g_shown.push_back({parent_window, std::u16string(text), std::u16string(caption), flags});
        return 1; // the OK button
    } catch (...) {
        return 0;
    }
}

std::vector<native::ShownMessageBox> native::take_shown_message_boxes() {
    std::lock_guard lock(g_lock);
    return std::exchange(g_shown, {});
}

} // namespace kq::platform
