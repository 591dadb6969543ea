#include "input/keyboard_settings.h"

#include "common/compare.h"
#include "module/settings_key.h"
#include "platform/heap.h"
#include "platform/settings_store.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace kq::input {
namespace {

std::u16string below_platform(std::u16string_view relative) {
    std::u16string key(kPlatformSettingsKey);
    key += u'\\';
    key += relative;
    return key;
}

const std::u16string& keyboard_key() {
    static const std::u16string key = below_platform(u"Keyboard");
    return key;
}
const std::u16string& mappings_key() {
    static const std::u16string key = below_platform(u"Keyboard\\Mappings");
    return key;
}
const std::u16string& backup_key() {
    static const std::u16string key = below_platform(u"KeyboardBackup");
    return key;
}

constexpr std::uint32_t kKeyboardClass = 1;

// The stored mapping that fits the record best: 3 for a keyboard mapping, 2 more for the same
// system, 1 more (only then) for the same layout. The first of the highest score wins; a
// score of 0 never does.
std::optional<std::u16string> choose_mapping(const KeyboardInputData& record) {
    std::optional<std::u16string> best;
    int best_score = 0;
    for (const std::u16string& name : platform::list_setting_subkeys(mappings_key())) {
        const std::u16string key = mappings_key() + u'\\' + name;
        int score = 0;
        if (platform::read_setting_dword(key, u"KeyClass") == kKeyboardClass) {
            score = 3;
            if (equal_ignoring_case(platform::read_setting_string(key, u"System").value_or(u""), record.system_id)) {
                score += 2;
                if (equal_ignoring_case(platform::read_setting_string(key, u"Layout").value_or(u""), record.layout_id))
                    score += 1;
            }
        }
        if (score > best_score) {
            best_score = score;
            best = key;
        }
    }
    return best;
}

// A global-heap copy of `bytes`, or nullptr when the heap has none to give.
template <class T>
T* heap_copy(const std::uint8_t* bytes, std::size_t size) {
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(platform::Heap::global, size);
    if (!block) return nullptr;
    std::memcpy(block.data(), bytes, size);
    return static_cast<T*>(block.release());
}

void use_built_in_tables(KeyboardInputData& record) {
    record.key_table = heap_copy<KeyTableEntry>(reinterpret_cast<const std::uint8_t*>(kBuiltInKeyTable.data()),
                                                sizeof(KeyTableEntry) * kBuiltInKeyTable.size());
    std::vector<std::uint8_t> flags;
    for (std::uint8_t raw = 0; raw < 128; ++raw) flags.insert(flags.end(), {raw, 1});
    record.default_flags = heap_copy<KeyDefaultFlag>(flags.data(), flags.size());
    if (record.key_table == nullptr || record.default_flags == nullptr) {
        free_keyboard_tables(record);
        throw std::bad_alloc();
    }
    record.key_count = static_cast<std::uint32_t>(kBuiltInKeyTable.size());
    record.default_flag_count = 128;
}

bool has_marker_for(const KeyboardInputData& record, std::uint8_t raw) {
    for (std::uint32_t i = 0; i < record.builtin_key_count; ++i)
        if ((record.builtin_key_table[i].flags & kEntryMarker) && record.builtin_key_table[i].raw == raw) return true;
    return false;
}

// A key on a configurable host key is at its default while that host key is.
bool configurable_keys_at_default(const KeyboardInputData& record, std::uint8_t raw) {
    constexpr std::pair<std::uint8_t, ConfigurableKey> kMarkers[] = {
        {kMarkerA, kDefaultKeyA}, {kMarkerB, kDefaultKeyB}, {kMarkerC, kDefaultKeyC}};
    for (std::uint32_t i = 0; i < record.builtin_key_count; ++i) {
        const KeyTableEntry& entry = record.builtin_key_table[i];
        if ((entry.flags & kEntryMarker) == 0 || entry.raw != raw) continue;
        for (std::size_t slot = 0; slot < std::size(kMarkers); ++slot) {
            if (kMarkers[slot].first != entry.key) continue;
            const ConfigurableKey& key = record.configurable[slot];
            if (key.virtual_key != kMarkers[slot].second.virtual_key ||
                (key.extended != 0) != (kMarkers[slot].second.extended != 0))
                return false;
        }
    }
    return true;
}

} // namespace

void load_keyboard_settings(KeyboardInputData& record) {
    free_keyboard_tables(record);
    const std::optional<std::u16string> mapping = choose_mapping(record);
    const std::optional<std::vector<std::uint8_t>> data =
        mapping ? platform::read_setting_binary(*mapping, u"Data") : std::nullopt;
    KeyTableEntry* table = data && !data->empty() ? heap_copy<KeyTableEntry>(data->data(), data->size()) : nullptr;
    if (table == nullptr) { // nothing stored, or no memory for it: the built-in table
        use_built_in_tables(record);
        return;
    }
    record.key_table = table;
    record.key_count = static_cast<std::uint32_t>(data->size() / sizeof(KeyTableEntry));

    const std::optional<std::vector<std::uint8_t>> stored_flags =
        platform::read_setting_binary(*mapping, u"DefaultInfo");
    std::vector<std::uint8_t> flags;
    if (stored_flags && !stored_flags->empty()) {
        flags = *stored_flags;
    } else {
        for (std::uint8_t raw = 0; raw < 128; ++raw)
            flags.insert(flags.end(), {raw, static_cast<std::uint8_t>(is_key_at_default(record, raw, false))});
        platform::write_setting_binary(*mapping, u"DefaultInfo", flags); // once: later loads read it
    }
    record.default_flags = heap_copy<KeyDefaultFlag>(flags.data(), flags.size());
    if (record.default_flags == nullptr) {
        free_keyboard_tables(record);
        throw std::bad_alloc();
    }
    record.default_flag_count = static_cast<std::uint32_t>(flags.size() / sizeof(KeyDefaultFlag));
}

bool is_key_at_default(const KeyboardInputData& record, std::uint8_t raw, bool use_stored_flags) {
    if (has_marker_for(record, raw)) return configurable_keys_at_default(record, raw);
    if (use_stored_flags) {
        for (std::uint32_t i = 0; i < record.default_flag_count; ++i)
            if (record.default_flags[i].raw == raw) return record.default_flags[i].is_default != 0;
        return true;
    }
    // The tables agree on r when each entry for r in one has its twin (same host key, same
    // flags) in the other, both ways round: a key moved away from r changes r too.
    const auto has_twin = [raw](const KeyTableEntry* table, std::uint32_t count, const KeyTableEntry& entry) {
        for (std::uint32_t i = 0; i < count; ++i)
            if (table[i].raw == raw && table[i].key == entry.key && table[i].flags == entry.flags) return true;
        return false;
    };
    for (std::uint32_t i = 0; i < record.key_count; ++i)
        if (record.key_table[i].raw == raw &&
            !has_twin(record.builtin_key_table, record.builtin_key_count, record.key_table[i]))
            return false;
    for (std::uint32_t i = 0; i < record.builtin_key_count; ++i)
        if (record.builtin_key_table[i].raw == raw &&
            !has_twin(record.key_table, record.key_count, record.builtin_key_table[i]))
            return false;
    return true;
}

bool all_keys_at_default(const KeyboardInputData& record) {
    for (std::uint32_t i = 0; i < record.default_flag_count; ++i) {
        const std::uint8_t raw = record.default_flags[i].raw;
        const bool at_default = has_marker_for(record, raw) ? configurable_keys_at_default(record, raw)
                                                            : record.default_flags[i].is_default != 0;
        if (!at_default) return false;
    }
    return true;
}

HResult back_up_keyboard_settings(std::uint32_t action) {
    switch (static_cast<KeyboardBackupAction>(action)) {
    case KeyboardBackupAction::back_up:
        if (platform::setting_key_exists(keyboard_key())) {
            platform::delete_setting_tree(backup_key());
            platform::copy_setting_tree(keyboard_key(), backup_key());
        }
        return status::ok;
    case KeyboardBackupAction::restore:
        if (platform::setting_key_exists(backup_key())) {
            platform::delete_setting_tree(keyboard_key());
            platform::copy_setting_tree(backup_key(), keyboard_key());
            platform::delete_setting_tree(backup_key());
        }
        return status::ok;
    case KeyboardBackupAction::discard:
        if (platform::setting_key_exists(backup_key())) platform::delete_setting_tree(backup_key());
        return status::ok;
    }
    return status::invalid_argument;
}

} // namespace kq::input
