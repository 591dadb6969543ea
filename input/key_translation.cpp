#include "input/key_translation.h"

#include "input/character_lookup.h"
#include "platform/keyboard_state.h"

namespace kq::input {
namespace {

// Temporary-modifier flags: what a host key's press did to the guest modifiers, undone at its
// release. A press and a release of the same key cancel each other out.
namespace temporary {
inline constexpr std::uint32_t left_shift_pressed = 1, left_shift_released = 2, right_shift_pressed = 4,
                               right_shift_released = 8, alt_pressed = 16, alt_released = 32, control_pressed = 64,
                               control_released = 128, caps_released = 256;
} // namespace temporary

void enqueue(KeyboardInputData& record, std::uint32_t event) {
    // One host message makes at most 21 events; the queue has room for them behind what the
    // host has not fetched yet, and never writes past its end.
    if (record.queue_length >= 0 && record.queue_length < static_cast<std::int32_t>(kQueueCapacity))
        record.queue[record.queue_length++] = event;
}

std::uint32_t dequeue(KeyboardInputData& record) {
    const std::uint32_t event = record.queue[0];
    --record.queue_length;
    for (std::int32_t i = 0; i < record.queue_length; ++i) record.queue[i] = record.queue[i + 1];
    return event;
}

bool queue_empty(const KeyboardInputData& record) { return record.queue_length <= 0; }

// The guest modifier bit and the "released" flag of a modifier raw key.
struct ModifierKey {
    std::uint8_t raw;
    std::uint32_t bit;
    std::uint32_t released_flag;
};
constexpr ModifierKey kModifierKeys[] = {
    {raw_key::left_shift, modifier::left_shift, temporary::left_shift_released},
    {raw_key::right_shift, modifier::right_shift, temporary::right_shift_released},
    {raw_key::control, modifier::control, temporary::control_released},
    {raw_key::left_alt, modifier::left_alt, temporary::alt_released},
};

// How a host key's release undoes one temporary flag: in this order.
struct Undo {
    std::uint32_t flag, opposite;
    bool press;
    std::uint8_t raw;
    std::uint32_t bit;
};
constexpr Undo kUndoOrder[] = {
    {temporary::left_shift_pressed, temporary::left_shift_released, false, raw_key::left_shift, modifier::left_shift},
    {temporary::right_shift_pressed, temporary::right_shift_released, false, raw_key::right_shift,
     modifier::right_shift},
    {temporary::alt_pressed, temporary::alt_released, false, raw_key::left_alt, modifier::left_alt},
    {temporary::control_pressed, temporary::control_released, false, raw_key::control, modifier::control},
    {temporary::left_shift_released, temporary::left_shift_pressed, true, raw_key::left_shift, modifier::left_shift},
    {temporary::right_shift_released, temporary::right_shift_pressed, true, raw_key::right_shift,
     modifier::right_shift},
    {temporary::alt_released, temporary::alt_pressed, true, raw_key::left_alt, modifier::left_alt},
    {temporary::control_released, temporary::control_pressed, true, raw_key::control, modifier::control},
    {temporary::caps_released, 0, true, raw_key::caps_lock, modifier::caps_lock},
};

void send_modifier(KeyboardInputData& record, std::uint32_t& flags, bool press, std::uint8_t raw, std::uint32_t bit,
                   std::uint32_t flag) {
    enqueue(record, press ? event::press(raw) : event::release(raw));
    flags |= flag;
    if (press)
        record.modifiers |= bit;
    else
        record.modifiers &= ~bit;
}

// Brings the guest modifiers to what one stroke needs, recording each change for host key v.
void adjust_modifiers(KeyboardInputData& record, std::uint32_t one_stroke, std::uint8_t v) {
    std::uint32_t& flags = record.temporary_modifiers[v];
    const bool caps = keymap_caps_affects(record.keymap(), stroke::raw(one_stroke));
    const std::uint32_t& held = record.modifiers;
    if ((one_stroke & stroke::shift) == 0) {
        if (held & modifier::left_shift)
            send_modifier(record, flags, false, raw_key::left_shift, modifier::left_shift,
                          temporary::left_shift_released);
        if (held & modifier::right_shift)
            send_modifier(record, flags, false, raw_key::right_shift, modifier::right_shift,
                          temporary::right_shift_released);
        if ((held & modifier::caps_lock) && caps)
            send_modifier(record, flags, false, raw_key::caps_lock, modifier::caps_lock, temporary::caps_released);
    }
    if ((one_stroke & stroke::alt) == 0 && (held & modifier::left_alt))
        send_modifier(record, flags, false, raw_key::left_alt, modifier::left_alt, temporary::alt_released);
    if ((one_stroke & stroke::control) == 0 && (held & modifier::control))
        send_modifier(record, flags, false, raw_key::control, modifier::control, temporary::control_released);
    // Caps Lock counts as Shift only for the keys that it affects.
    const std::uint32_t shifting = modifier::left_shift | modifier::right_shift | (caps ? modifier::caps_lock : 0);
    if ((one_stroke & stroke::shift) && (held & shifting) == 0)
        send_modifier(record, flags, true, raw_key::left_shift, modifier::left_shift, temporary::left_shift_pressed);
    if ((one_stroke & stroke::alt) && (held & modifier::left_alt) == 0)
        send_modifier(record, flags, true, raw_key::left_alt, modifier::left_alt, temporary::alt_pressed);
    if ((one_stroke & stroke::control) && (held & modifier::control) == 0)
        send_modifier(record, flags, true, raw_key::control, modifier::control, temporary::control_pressed);
}

constexpr bool is_ascii_letter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

void key_up(KeyboardInputData& record, std::uint8_t v, std::uint32_t& answer) {
    const std::uint32_t pressed = record.key_down[v];
    if (static_cast<std::int32_t>(pressed) >= 0) { // no press was sent for this key
        answer = event::nothing;
        return;
    }
    const std::uint32_t raw = pressed & 0xFFFFFF;
    record.key_down[v] = 0;
    bool released_elsewhere = false;
    for (const ModifierKey& key : kModifierKeys) {
        if (key.raw != raw) continue;
        record.modifiers &= ~key.bit;
        for (std::uint32_t& flags : record.temporary_modifiers) {
            released_elsewhere |= (flags & key.released_flag) != 0;
            flags &= ~key.released_flag;
        }
    }
    // A modifier that another key released for its character has already been seen released.
    if ((pressed & event::press_bit) && !released_elsewhere) answer = event::release(raw);
    std::uint32_t flags = record.temporary_modifiers[v];
    for (const Undo& undo : kUndoOrder) {
        if ((flags & undo.flag) == 0 || (flags & undo.opposite) != 0) continue;
        std::uint32_t ignored = 0;
        send_modifier(record, ignored, undo.press, undo.raw, undo.bit, 0);
    }
    record.temporary_modifiers[v] = 0;
    if (!queue_empty(record)) answer |= event::more_pending;
}

void key_down(KeyboardInputData& record, std::uint8_t v, bool extended, std::uint32_t mode, char16_t character,
              std::uint32_t& answer) {
    if (mode != host_key::translate_character) {
        record.deferred_character = mode == host_key::defer_character ? character : 0;
        character = 0;
        record.character_pending = 0;
    } else {
        record.deferred_character = 0;
    }
    if (const auto raw = look_up_key(record.active_key_table(), v, extended, record.configurable)) {
        if (*raw != raw_key::caps_lock) {
            enqueue(record, event::press(*raw));
            record.key_down[v] = event::press(*raw);
            for (const ModifierKey& key : kModifierKeys)
                if (key.raw == *raw) record.modifiers |= key.bit;
        } else if (platform::caps_lock_on()) {
            // The host's toggle already reads on: the guest's Caps Lock goes the other way
            // round, deliberately, and the key's release sends nothing.
            enqueue(record, event::release(raw_key::caps_lock));
            record.modifiers &= ~modifier::caps_lock;
        } else {
            enqueue(record, event::press(raw_key::caps_lock));
            record.modifiers |= modifier::caps_lock;
        }
        if (record.deferred_character != 0) record.pending_virtual_key = v;
    } else if (character != 0) {
        if (const CharacterEntry* entry = find_character(record, character)) {
            const StrokeCode code = entry->code;
            const std::uint32_t mask = is_ascii_letter(character)
                                           ? modifier::left_shift | modifier::right_shift | modifier::caps_lock
                                           : modifier::left_shift | modifier::right_shift;
            const bool skip_adjusting = (code & (stroke::alt | stroke::control)) == 0 &&
                                        stroke::raw(stroke::nth(code, 1)) == raw_key::none &&
                                        stroke::raw(stroke::nth(code, 2)) == raw_key::none &&
                                        ((record.modifiers & mask) != 0) == ((code & stroke::shift) != 0);
            std::uint32_t last = raw_key::none;
            for (int i = 0; i < 3; ++i) {
                const std::uint32_t one_stroke = stroke::nth(code, i);
                if (stroke::raw(one_stroke) == raw_key::none) continue;
                if (last != raw_key::none) enqueue(record, event::release(last));
                if (!skip_adjusting) adjust_modifiers(record, one_stroke, v);
                enqueue(record, event::press(stroke::raw(one_stroke)));
                last = stroke::raw(one_stroke);
            }
            record.key_down[v] = event::press(last);
        }
    }
    if (queue_empty(record)) {
        answer = event::nothing;
        return;
    }
    answer = dequeue(record);
    if (!queue_empty(record)) answer |= event::more_pending;
}

bool is_host_modifier(std::uint8_t v) { return v == 16 || v == 17 || v == 18 || v == 20 || (v >= 160 && v <= 165); }

} // namespace

HResult process_keyboard_input(KeyboardInputData& record, std::uint64_t key_word, std::uint64_t character_word,
                               std::uint32_t* answer) noexcept {
    const auto key = static_cast<std::uint32_t>(key_word);
    std::uint32_t result = event::nothing;
    if (key & host_key::fetch) {
        if (queue_empty(record)) return status::failed;
        result = dequeue(record);
        if (!queue_empty(record)) result |= event::more_pending;
    } else {
        const auto v = static_cast<std::uint8_t>(key & 0xFF);
        if (key & host_key::key_down)
            key_down(record, v, (key & host_key::extended_bits) != 0, (key >> host_key::character_mode_shift) & 3,
                     static_cast<char16_t>(character_word & 0xFFFF), result);
        else
            key_up(record, v, result);
    }
    if (answer != nullptr) *answer = result;
    return status::ok;
}

HResult preprocess_keyboard_input(KeyboardInputData& record, std::uint64_t key_word, std::uint32_t* answer) noexcept {
    const auto key = static_cast<std::uint32_t>(key_word);
    const auto v = static_cast<std::uint8_t>(key & 0xFF);
    const bool extended = (key & host_key::extended_bits) != 0;
    std::uint32_t result = key | event::valid;
    bool clear_bits = true;
    const bool is_keypad = (v >= 96 && v <= 107) || (v >= 109 && v <= 111);
    const bool never_wants_character =
        v == 8 || v == 13 || v == 9 || v == 27 || v == record.configurable[0].virtual_key ||
        v == record.configurable[1].virtual_key || v == record.configurable[2].virtual_key ||
        (is_keypad && look_up_key(record.active_key_table(), v, extended, record.configurable).has_value());
    if (!never_wants_character) {
        result = key | 0xC0000000u;
        if (!is_host_modifier(v) && (key & (1u << 24)) && (key & (1u << 27))) {
            record.character_pending = 1;
            clear_bits = false;
        }
        if (record.pending_virtual_key != 0 && record.pending_virtual_key != v) {
            record.pending_virtual_key = 0;
            result = key | 0xC0040000u;
        }
    }
    if (clear_bits) result &= ~0x38000000u;
    if (answer != nullptr) *answer = result;
    return status::ok;
}

} // namespace kq::input
