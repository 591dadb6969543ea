#pragma once
// Drives key translation as a host does: a keyboard input data record, host key messages in,
// every raw key event out (the answer, then each queued event fetched).

#include "input/key_translation.h"
#include "input/keyboard_input_data.h"
#include "input/stroke_code.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kq::test {

inline constexpr std::uint8_t kVkTyping = 0x41; // a host key that the key table leaves alone

class KeyboardDriver {
public:
    explicit KeyboardDriver(std::u16string_view layout, std::uint32_t key_a = 0, std::uint32_t key_c = 0) {
        const std::u16string id(layout);
        if (input::make_keyboard_input_data(&record_, u"system", id.c_str(), nullptr, 0, key_a, 0, key_c) != status::ok)
            throw std::runtime_error("no keyboard input data");
    }
    ~KeyboardDriver() { input::free_keyboard_input_data(record_); }
    KeyboardDriver(const KeyboardDriver&) = delete;
    KeyboardDriver& operator=(const KeyboardDriver&) = delete;

    input::KeyboardInputData& record() { return *record_; }

    // The first answer alone, then each fetched event: how a host reads them.
    std::vector<std::uint32_t> answers(std::uint32_t key_word, char16_t character = 0) {
        std::uint32_t answer = 0;
        input::process_keyboard_input(*record_, key_word, character, &answer);
        std::vector<std::uint32_t> events{answer};
        while ((answer & input::event::more_pending) &&
               input::process_keyboard_input(*record_, input::host_key::fetch, 0, &answer) == status::ok)
            events.push_back(answer);
        return events;
    }
    // A host key going down (with the character its layout made, in character mode 1) or up.
    std::vector<std::uint32_t> key(std::uint8_t virtual_key, bool extended, bool down, char16_t character = 0) {
        const std::uint32_t mode = character != 0 ? input::host_key::translate_character : 0;
        return answers(virtual_key | (extended ? 0x10000u : 0) |
                           (down ? mode << input::host_key::character_mode_shift | input::host_key::key_down : 0),
                       character);
    }
    std::vector<std::uint32_t> down(std::uint8_t virtual_key, char16_t character = 0) {
        return key(virtual_key, false, true, character);
    }

private:
    input::KeyboardInputData* record_ = nullptr;
};

} // namespace kq::test
