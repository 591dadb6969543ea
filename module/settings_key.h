#pragma once
// Where the module keeps its per-user settings, below HKEY_CURRENT_USER.

#include <string_view>

namespace kq {

inline constexpr std::u16string_view kPlatformSettingsKey = u"Software\\Mervane\\Quennet\\Platforms\\Amiga";

} // namespace kq
