#pragma once
// The keyboard input data record: one per host keyboard, handed to the host by
// KQGetKeyboardInputData2, passed to every keyboard call and freed by KQFreeKeyboardInputData.
// It is one zero-filled block of kKeyboardInputDataBytes from the global heap; the host never
// looks inside. Its two tables (the active key table and the per-key default flags) are blocks
// of their own that the record owns.

#include "input/key_table.h"
#include "input/keyboard_layouts.h"
#include "module/status.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace kq::input {

inline constexpr std::size_t kKeyboardInputDataBytes = 2440;
inline constexpr std::size_t kIdChars = 32; // 31 characters and a NUL
inline constexpr std::size_t kQueueCapacity = 32;

// Guest modifier state bits.
namespace modifier {
inline constexpr std::uint32_t left_shift = 1, right_shift = 2, left_alt = 4, control = 8, caps_lock = 16;
} // namespace modifier

// Per-key default flag: the key's mapping is still the default one.
struct KeyDefaultFlag {
    std::uint8_t raw;
    std::uint8_t is_default;
};

struct KeyboardInputData;

// An object of the host's side, carried over when the record is rebuilt and told of the new one.
struct KeyboardObserver {
    void (*record_replaced)(KeyboardObserver* self, KeyboardInputData* record);
};

struct KeyboardInputData {
    char16_t system_id[kIdChars];
    char16_t layout_id[kIdChars];
    KeyboardObserver* observer;
    const std::uint8_t* keymap_image;
    const CharacterEntry* characters;
    std::uint32_t character_count;
    KeyTableEntry* key_table;
    std::uint32_t key_count;
    const KeyTableEntry* builtin_key_table;
    std::uint32_t builtin_key_count;
    KeyDefaultFlag* default_flags;
    std::uint32_t default_flag_count;
    ConfigurableKey configurable[3]; // A, B, C
    std::uint32_t modifiers;
    std::uint32_t character_pending;
    std::uint8_t pending_virtual_key;
    char16_t open_bracket, close_bracket;
    std::uint32_t key_down[256];            // the press word of each host key's last press, or 0
    std::uint32_t temporary_modifiers[256]; // what a host key's press did to the modifiers
    std::uint32_t queue[kQueueCapacity];
    std::int32_t queue_length;
    char16_t deferred_character;

    std::span<const CharacterEntry> character_table() const { return {characters, character_count}; }
    std::span<const KeyTableEntry> active_key_table() const { return {key_table, key_count}; }
    std::span<const std::uint8_t> keymap() const { return {keymap_image, keymap_image ? kKeymapImageBytes : 0}; }
};
static_assert(sizeof(KeyboardInputData) <= kKeyboardInputDataBytes);

// Fills a zeroed record: ids (31 characters kept of each; without a layout id, the layout that a
// given keymap image represents), the layout's keymap image, character table and brackets (the
// default layout's when the id names none), the configurable keys from their descriptors, the
// built-in key table, and the active key table with its per-key default flags (the stored
// mapping for the system and layout, if any). Fails (false) only without a system id; may throw
// std::bad_alloc.
bool fill_keyboard_input_data(KeyboardInputData& record, const char16_t* system_id, const char16_t* layout_id,
                              std::span<const std::uint8_t> keymap_image, std::uint32_t key_a, std::uint32_t key_b,
                              std::uint32_t key_c);

// Frees the tables that the record owns (not the record).
void free_keyboard_tables(KeyboardInputData& record) noexcept;

// A record of its own heap block: KQGetKeyboardInputData2's work. `record` holds the caller's
// current record on entry (or null) and the new one on success; the old one's observer moves to
// the new record, is told of it, and the old record is freed. Statuses: E_POINTER, E_OUTOFMEMORY,
// HRESULT_FROM_WIN32(ERROR_NOT_FOUND) without a system id.
HResult make_keyboard_input_data(KeyboardInputData** record, const char16_t* system_id, const char16_t* layout_id,
                                 const std::uint8_t* keymap_image, std::uint32_t keymap_bytes, std::uint32_t key_a,
                                 std::uint32_t key_b, std::uint32_t key_c);
void free_keyboard_input_data(KeyboardInputData* record) noexcept;

// A record that the module makes for itself for the length of one call, with its tables.
class ScopedKeyboardInputData {
public:
    ScopedKeyboardInputData() : record_(std::make_unique<KeyboardInputData>()) {}
    ~ScopedKeyboardInputData() { free_keyboard_tables(*record_); }
    ScopedKeyboardInputData(const ScopedKeyboardInputData&) = delete;
    ScopedKeyboardInputData& operator=(const ScopedKeyboardInputData&) = delete;
    KeyboardInputData& get() const { return *record_; }

private:
    std::unique_ptr<KeyboardInputData> record_;
};

} // namespace kq::input
