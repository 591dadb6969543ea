#pragma once
// Per-user settings: keys below HKEY_CURRENT_USER (the real registry on Windows, an in-memory
// store in the native build), named like "Software\Mervane\Quennet\Platforms\Amiga". Key and
// value names compare without regard to case, as the registry's do.

#include "platform/system_error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq::platform {

// A 32-bit number value; nullopt when it is absent or of another type.
std::optional<std::uint32_t> read_setting_dword(std::u16string_view key, std::u16string_view name);
// A string value (stored as a string or an unexpanded expandable string); nullopt when it is
// absent or of another type.
std::optional<std::u16string> read_setting_string(std::u16string_view key, std::u16string_view name);
// A string value below HKEY_LOCAL_MACHINE (read only; in the native build, what
// native::set_machine_setting_string stored).
std::optional<std::u16string> read_machine_setting_string(std::u16string_view key, std::u16string_view name);

// Writers create the key (and its parents) when needed.
SystemError write_setting_dword(std::u16string_view key, std::u16string_view name, std::uint32_t value);
SystemError write_setting_string(std::u16string_view key, std::u16string_view name, std::u16string_view value);
// Deletes a value; a missing key or value counts as deleted.
SystemError delete_setting(std::u16string_view key, std::u16string_view name);

// A binary value; nullopt when it is absent or of another type.
std::optional<std::vector<std::uint8_t>> read_setting_binary(std::u16string_view key, std::u16string_view name);
SystemError write_setting_binary(std::u16string_view key, std::u16string_view name,
                                 const std::vector<std::uint8_t>& value);

bool setting_key_exists(std::u16string_view key);
// The names of the direct subkeys of `key`, in the store's own order (by name).
std::vector<std::u16string> list_setting_subkeys(std::u16string_view key);
// Copies every value and subkey of `from` into `to`, which is created when needed.
SystemError copy_setting_tree(std::u16string_view from, std::u16string_view to);
// Deletes a key with everything below it; a missing key counts as deleted.
SystemError delete_setting_tree(std::u16string_view key);

} // namespace kq::platform
