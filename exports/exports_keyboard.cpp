// Exports of keyboard translation, layouts, key names, raw key strings, keyboard settings and
// controller button names. The first five return their status in a 64-bit value.

#include "exports/host_text.h"
#include "input/buttons.h"
#include "input/key_names.h"
#include "input/key_translation.h"
#include "input/keyboard_input_data.h"
#include "input/keyboard_settings.h"
#include "input/raw_key_strings.h"
#include "kq_amiga.h"
#include "module/guard.h"
#include "platform/heap.h"
#include "platform/string_table.h"
#include "platform/system_error.h"

namespace {

using kq::input::KeyboardInputData;

KeyboardInputData* record_of(KQKeyboardInputData* data) { return reinterpret_cast<KeyboardInputData*>(data); }

const char16_t* chars(const kq_char* text) { return reinterpret_cast<const char16_t*>(text); }

int64_t make_record(const kq_char* system_id, const kq_char* layout_id, const uint8_t* keymap, uint32_t keymap_bytes,
                    uint32_t key_a, uint32_t key_b, uint32_t key_c, KQKeyboardInputData** data) {
    return kq::guard([&] {
        return kq::input::make_keyboard_input_data(reinterpret_cast<KeyboardInputData**>(data), chars(system_id),
                                                   chars(layout_id), keymap, keymap != nullptr ? keymap_bytes : 0,
                                                   key_a, key_b, key_c);
    });
}

} // namespace

extern "C" int64_t KQGetKeyboardInputData2(const kq_char* system_id, const kq_char* layout_id, const uint8_t* keymap,
                                           uint32_t keymap_bytes, uint32_t key_a, uint32_t key_b, uint32_t key_c,
                                           uint32_t, KQKeyboardInputData** data) {
    return make_record(system_id, layout_id, keymap, keymap_bytes, key_a, key_b, key_c, data);
}

extern "C" int64_t KQGetKeyboardInputData(const kq_char* system_id, const kq_char* layout_id, const uint8_t* keymap,
                                          uint32_t keymap_bytes, uint32_t key_a, uint32_t key_b, uint32_t,
                                          KQKeyboardInputData** data) {
    return make_record(system_id, layout_id, keymap, keymap_bytes, key_a, key_b, 0, data);
}

extern "C" int64_t KQFreeKeyboardInputData(KQKeyboardInputData* data) {
    kq::input::free_keyboard_input_data(record_of(data));
    return KQ_S_OK;
}

extern "C" int64_t KQPreprocessKeyboardInput(uint64_t host_key, uint64_t, KQKeyboardInputData* data, uint32_t,
                                             uint32_t* answer) {
    if (data == nullptr) return KQ_E_INVALIDARG;
    return kq::input::preprocess_keyboard_input(*record_of(data), host_key, answer);
}

extern "C" int64_t KQProcessKeyboardInput(uint64_t host_key, uint64_t character, KQKeyboardInputData* data, uint32_t,
                                          uint32_t* answer) {
    if (data == nullptr) return KQ_E_INVALIDARG;
    return kq::input::process_keyboard_input(*record_of(data), host_key, character, answer);
}

extern "C" kq_status KQGetKeyboardLayout(uint32_t, const uint8_t* keymap, uint32_t keymap_bytes, kq_char* buffer,
                                         uint32_t buffer_chars) {
    if (keymap == nullptr || keymap_bytes == 0 || buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        return kq::copy_whole(kq::input::keyboard_layout_text(std::span(keymap, keymap_bytes)), buffer, buffer_chars);
    });
}

extern "C" kq_status KQGetKeyDisplayName(const kq_char* key_text, const kq_char* system_id, const kq_char* layout_id,
                                         kq_char* buffer, uint32_t buffer_chars, uint32_t key_a, uint32_t key_b) {
    if (key_text == nullptr || buffer == nullptr || buffer_chars == 0) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        const kq::input::ScopedKeyboardInputData record;
        if (!kq::input::fill_keyboard_input_data(record.get(), chars(system_id), chars(layout_id), {}, key_a, key_b, 0))
            return kq::status::from_win32(kq::platform::system_error::not_found);
        return kq::input::key_display_name(record.get(), kq::text_view(key_text),
                                           std::span(reinterpret_cast<char16_t*>(buffer), buffer_chars));
    });
}

extern "C" kq_status KQGetStringRawKeys(const kq_char* text, KQKeyboardInputData* data, uint32_t mode, kq_char** keys) {
    if (keys == nullptr) return KQ_E_POINTER;
    *keys = nullptr;
    if (text == nullptr) return KQ_S_OK;
    if (data == nullptr) return KQ_E_INVALIDARG;
    return kq::guard([&] {
        // Written straight into the host's block, which is counted first: no copy of a long text's
        // keys is ever held twice.
        return kq::hand_to_host(
            kq::input::raw_key_string_block(kq::platform::Heap::global, *record_of(data), kq::text_view(text), mode),
            keys);
    });
}

extern "C" kq_status KQFreeStringRawKeys(kq_char* keys) {
    kq::platform::heap_free(kq::platform::Heap::global, keys);
    return KQ_S_OK;
}

extern "C" kq_status KQBackupKeyboardSettings(uint32_t action) {
    return kq::guard([&] { return kq::input::back_up_keyboard_settings(action); });
}

extern "C" kq_status KQGetInputButtonName(uint32_t mask, uint32_t, uint32_t kind, kq_char* buffer,
                                          uint32_t buffer_chars) {
    const std::optional<kq::StringId> name = kq::input::button_name_id(mask, kind);
    if (!name) return kq::status::from_win32(kq::platform::system_error::not_found); // the buffer is left alone
    if (buffer == nullptr || buffer_chars == 0) return KQ_S_OK;
    return kq::guard([&] {
        kq::copy_truncated(kq::platform::load_string(*name, buffer_chars - 1), buffer, buffer_chars);
        return kq::status::ok;
    });
}
