#pragma once
// Drives key translation as a host does: a keyboard input data record, host key messages in,
// every raw key event out (the answer, then each queued event fetched).

#include "input/key_translation.h"
#include "input/keyboard_input_data.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kq::test {

class KeyboardDriver {
public:
    explicit KeyboardDriver(std::u16string_view layout, std::uint32_t key_a = 0, std::uint32_t key_b = 0,
                            std::uint32_t key_c = 0);
    ~KeyboardDriver();
    KeyboardDriver(const KeyboardDriver&) = delete;
    KeyboardDriver& operator=(const KeyboardDriver&) = delete;

    input::KeyboardInputData& record() { return *record_; }

    // A host key going down (with the character its layout made, in character mode 1) or up.
    std::vector<std::uint32_t> down(std::uint8_t virtual_key, bool extended = false, char16_t character = 0);
    std::vector<std::uint32_t> up(std::uint8_t virtual_key, bool extended = false);
    // The first answer alone, then each fetched event: how a host reads them.
    std::vector<std::uint32_t> answers(std::uint32_t key_word, char16_t character = 0);

private:
    input::KeyboardInputData* record_ = nullptr;
};

inline constexpr std::uint8_t kVkTyping = 0x41; // a host key that the key table leaves alone

} // namespace kq::test
