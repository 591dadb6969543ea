#include "platform/keyboard_state.h"

#include <windows.h>

namespace kq::platform {

bool caps_lock_on() noexcept { return (GetKeyState(VK_CAPITAL) & 1) != 0; }

} // namespace kq::platform
