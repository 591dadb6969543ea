#pragma once
// The token grammar of key combinations ("CONTROL+LEFT AMIGA+RIGHT AMIGA"), shared by raw key
// strings and key display names. A token is a single character, a character name ("PLUS",
// "EURO" ...) or a key name ("LEFT AMIGA", "NUMPAD ENTER" ...), compared without regard to case;
// tokens are separated by "+", and a lone "+" at the end is the plus character.

#include "input/keyboard_input_data.h"

#include <optional>
#include <string>
#include <string_view>

namespace kq::input {

// The key token of a raw key ("" for a key without one); keypad keys 0x5A and 0x5B take the
// record's bracket characters.
std::u16string key_token(const KeyboardInputData& record, std::uint8_t raw);

struct Token {
    StrokeCode code;
    std::u16string_view rest; // the text after the token: at its "+", or empty
};

// Reads one token from the start of `text`: its stroke code (a character's from the layout's
// character table, a key's as a single stroke) and where the text goes on; nullopt when the
// token names nothing the layout has.
std::optional<Token> read_token(const KeyboardInputData& record, std::u16string_view text);

} // namespace kq::input
