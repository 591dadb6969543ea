#include "input/keyboard_input_data.h"
#include "platform/system_error.h"

#include "input/keyboard_settings.h"
#include "platform/heap.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kq::input {
namespace {

template <std::size_t N>
void copy_id(char16_t (&target)[N], std::u16string_view id) {
    const std::size_t length = std::min(id.size(), N - 1);
    std::copy_n(id.begin(), length, target);
    target[length] = 0;
}

std::u16string_view view_of(const char16_t* text) { return text ? std::u16string_view(text) : std::u16string_view(); }

} // namespace

bool fill_keyboard_input_data(KeyboardInputData& record, const char16_t* system_id, const char16_t* layout_id,
                              std::span<const std::uint8_t> keymap_image, std::uint32_t key_a, std::uint32_t key_b,
                              std::uint32_t key_c) {
    if (system_id == nullptr) return false;
    copy_id(record.system_id, view_of(system_id));
    if (layout_id == nullptr && !keymap_image.empty())
        copy_id(record.layout_id, recognize_layout(keymap_image));
    else
        copy_id(record.layout_id, view_of(layout_id));
    const KeyboardLayout& layout = find_layout(record.layout_id);
    record.keymap_image = layout.keymap_image.data();
    record.characters = layout.characters.data();
    record.character_count = static_cast<std::uint32_t>(layout.characters.size());
    record.open_bracket = layout.open_bracket;
    record.close_bracket = layout.close_bracket;
    record.configurable[0] = decode_configurable_key(key_a, kDefaultKeyA);
    record.configurable[1] = decode_configurable_key(key_b, kDefaultKeyB);
    record.configurable[2] = decode_configurable_key(key_c, kDefaultKeyC);
    record.builtin_key_table = kBuiltInKeyTable.data();
    record.builtin_key_count = static_cast<std::uint32_t>(kBuiltInKeyTable.size());
    record.observer = nullptr;
    load_keyboard_settings(record);
    return true;
}

void free_keyboard_tables(KeyboardInputData& record) noexcept {
    platform::heap_free(platform::Heap::global, std::exchange(record.key_table, nullptr));
    platform::heap_free(platform::Heap::global, std::exchange(record.default_flags, nullptr));
    record.key_count = record.default_flag_count = 0;
}

void free_keyboard_input_data(KeyboardInputData* record) noexcept {
    if (record == nullptr) return;
    free_keyboard_tables(*record);
    platform::heap_free(platform::Heap::global, record);
}

HResult make_keyboard_input_data(KeyboardInputData** record, const char16_t* system_id, const char16_t* layout_id,
                                 const std::uint8_t* keymap_image, std::uint32_t keymap_bytes, std::uint32_t key_a,
                                 std::uint32_t key_b, std::uint32_t key_c) {
    if (record == nullptr) return status::null_pointer;
    KeyboardInputData* old_record = *record;
    KeyboardObserver* observer = old_record != nullptr ? old_record->observer : nullptr;
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(platform::Heap::global, kKeyboardInputDataBytes);
    if (!block) return status::out_of_memory;
    // The zeroed block is the record: every field of it is a plain number, array or pointer.
    auto* fresh = reinterpret_cast<KeyboardInputData*>(block.data());
    const std::span<const std::uint8_t> image = keymap_image != nullptr
                                                    ? std::span<const std::uint8_t>(keymap_image, keymap_bytes)
                                                    : std::span<const std::uint8_t>();
    try {
        if (!fill_keyboard_input_data(*fresh, system_id, layout_id, image, key_a, key_b, key_c)) {
            free_keyboard_tables(*fresh);
            return status::from_win32(platform::system_error::not_found);
        }
    } catch (...) {
        free_keyboard_tables(*fresh);
        throw;
    }
    block.release();
    fresh->observer = observer;
    if (observer != nullptr && observer->record_replaced != nullptr) observer->record_replaced(observer, fresh);
    // The old record goes, with the tables it owns: nothing else refers to them.
    free_keyboard_input_data(old_record);
    *record = fresh;
    return status::ok;
}

} // namespace kq::input
