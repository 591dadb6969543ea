#include "tests/support/keyboard_driver.h"

#include <stdexcept>
#include <string>

namespace kq::test {

KeyboardDriver::KeyboardDriver(std::u16string_view layout, std::uint32_t key_a, std::uint32_t key_b,
                               std::uint32_t key_c) {
    const std::u16string layout_id(layout);
    if (input::make_keyboard_input_data(&record_, u"system", layout_id.c_str(), nullptr, 0, key_a, key_b, key_c) !=
        status::ok)
        throw std::runtime_error("no keyboard input data");
}

KeyboardDriver::~KeyboardDriver() { input::free_keyboard_input_data(record_); }

std::vector<std::uint32_t> KeyboardDriver::answers(std::uint32_t key_word, char16_t character) {
    std::vector<std::uint32_t> events;
    std::uint32_t answer = 0;
    input::process_keyboard_input(*record_, key_word, character, &answer);
    events.push_back(answer);
    while (answer & input::event::more_pending) {
        if (input::process_keyboard_input(*record_, input::host_key::fetch, 0, &answer) != status::ok) break;
        events.push_back(answer);
    }
    return events;
}

std::vector<std::uint32_t> KeyboardDriver::down(std::uint8_t virtual_key, bool extended, char16_t character) {
    const std::uint32_t mode = character != 0 ? input::host_key::translate_character : 0;
    return answers(virtual_key | (extended ? 0x10000u : 0) | mode << input::host_key::character_mode_shift |
                       input::host_key::key_down,
                   character);
}

std::vector<std::uint32_t> KeyboardDriver::up(std::uint8_t virtual_key, bool extended) {
    return answers(virtual_key | (extended ? 0x10000u : 0));
}

} // namespace kq::test
