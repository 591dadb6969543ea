#include "platform/keyboard_state.h"
#include "platform/native/native_controls.h"

#include <atomic>

namespace kq::platform {
namespace {

std::atomic<bool> g_caps_lock_on{false};

} // namespace

bool caps_lock_on() noexcept { return g_caps_lock_on.load(); }

void native::set_caps_lock(bool on) { g_caps_lock_on.store(on); }

} // namespace kq::platform
