#pragma once
// The state of the host's keyboard that key translation consults.

namespace kq::platform {

// Whether Caps Lock is toggled on on the host (the low bit of the key state of VK_CAPITAL).
bool caps_lock_on() noexcept;

} // namespace kq::platform
