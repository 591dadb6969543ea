#pragma once
// Stored key tables: users may remap guest keys per guest system and layout. The settings live
// per user below the platform key:
//   Keyboard\Mappings\<any name>   one stored mapping: "KeyClass" (number; keyboards are 1),
//                                  "System" and "Layout" (the ids it is for), "Data" (the key
//                                  table, 4 bytes an entry), "DefaultInfo" (2 bytes per raw key:
//                                  the key, and 1 while its mapping is still the default one)
//   Keyboard                       all live keyboard settings
//   KeyboardBackup                 a copy of Keyboard made by a backup

#include "input/keyboard_input_data.h"
#include "module/status.h"

#include <cstdint>

namespace kq::input {

// Sets the record's active key table and per-key default flags: from the best stored mapping
// for its system and layout (writing its "DefaultInfo" once when it has none), else a copy of
// the built-in table with every key at its default. May throw std::bad_alloc.
void load_keyboard_settings(KeyboardInputData& record);

// Whether raw key `raw` is mapped as by default: by the configurable keys when the built-in
// table has markers for it; otherwise by the stored flag (`use_stored_flags`) or by comparing
// the active table with the built-in one (each entry for the key must be in both).
bool is_key_at_default(const KeyboardInputData& record, std::uint8_t raw, bool use_stored_flags);
// Whether every key of the per-key default flags is at its default.
bool all_keys_at_default(const KeyboardInputData& record);

enum class KeyboardBackupAction : std::uint32_t { back_up = 1, restore = 2, discard = 3 };
// S_OK (also when there is nothing to copy); E_INVALIDARG for any other action.
HResult back_up_keyboard_settings(std::uint32_t action);

} // namespace kq::input
