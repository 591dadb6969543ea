#include "input/key_tokens.h"

#include "common/compare.h"
#include "input/character_lookup.h"

#include <array>

namespace kq::input {
namespace {

struct KeyToken {
    std::uint8_t raw;
    std::u16string_view token;
};

// Raw keys with a token name; 0x5A and 0x5B are "NUMPAD " and the layout's bracket.
// clang-format off
constexpr KeyToken kKeyTokens[] = {
    {0x0F, u"NUMPAD 0"},     {0x1D, u"NUMPAD 1"},       {0x1E, u"NUMPAD 2"},      {0x1F, u"NUMPAD 3"},
    {0x2D, u"NUMPAD 4"},     {0x2E, u"NUMPAD 5"},       {0x2F, u"NUMPAD 6"},      {0x3C, u"NUMPAD PERIOD"},
    {0x3D, u"NUMPAD 7"},     {0x3E, u"NUMPAD 8"},       {0x3F, u"NUMPAD 9"},      {0x40, u"SPACE"},
    {0x41, u"BACKSPACE"},    {0x42, u"TAB"},            {0x43, u"NUMPAD ENTER"},  {0x44, u"ENTER"},
    {0x45, u"ESCAPE"},       {0x46, u"DELETE"},         {0x4A, u"NUMPAD MINUS"},  {0x4C, u"CURSOR UP"},
    {0x4D, u"CURSOR DOWN"},  {0x4E, u"CURSOR RIGHT"},   {0x4F, u"CURSOR LEFT"},   {0x50, u"F1"},
    {0x51, u"F2"},           {0x52, u"F3"},             {0x53, u"F4"},            {0x54, u"F5"},
    {0x55, u"F6"},           {0x56, u"F7"},             {0x57, u"F8"},            {0x58, u"F9"},
    {0x59, u"F10"},          {0x5A, u"NUMPAD "},        {0x5B, u"NUMPAD "},       {0x5C, u"NUMPAD /"},
    {0x5D, u"NUMPAD *"},     {0x5E, u"NUMPAD PLUS"},    {0x5F, u"HELP"},          {0x60, u"LEFT SHIFT"},
    {0x61, u"RIGHT SHIFT"},  {0x62, u"CAPS LOCK"},      {0x63, u"CONTROL"},       {0x64, u"ALT"},
    {0x66, u"LEFT AMIGA"},   {0x67, u"RIGHT AMIGA"},    {0x72, u"REMOTE STOP"},   {0x73, u"REMOTE PLAY"},
    {0x74, u"REMOTE PREVIOUS"}, {0x75, u"REMOTE NEXT"}, {0x76, u"REMOTE REWIND"}, {0x77, u"REMOTE FORWARD"},
};
// clang-format on

struct CharacterName {
    std::u16string_view token;
    char16_t character;
};

// Characters that clash with the grammar or are hard to type, in search order.
constexpr CharacterName kCharacterNames[] = {
    {u"PLUS", u'+'},   {u"MINUS", u'-'},        {u"HYPHEN", 0x00AD},   {u"PERIOD", u'.'},
    {u"COMMA", u','},  {u"EURO", 0x20AC},       {u"POUND", 0x00A3},    {u"YEN", 0x00A5},
    {u"EQUALS", u'='}, {u"DOUBLE QUOTE", u'"'}, {u"BACKSLASH", u'\\'}, {u"SEMICOLON", u';'},
};

constexpr bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

std::optional<StrokeCode> character_code(const KeyboardInputData& record, char16_t character) {
    if (character >= u'A' && character <= u'Z') character = static_cast<char16_t>(character - u'A' + u'a');
    if (const CharacterEntry* entry = find_character(record, character)) return entry->code;
    return std::nullopt;
}

} // namespace

std::u16string key_token(const KeyboardInputData& record, std::uint8_t raw) {
    for (const KeyToken& key : kKeyTokens) {
        if (key.raw != raw) continue;
        std::u16string token(key.token);
        if (raw == raw_key::keypad_open) token += record.open_bracket;
        if (raw == raw_key::keypad_close) token += record.close_bracket;
        return token;
    }
    return {};
}

std::optional<Token> read_token(const KeyboardInputData& record, std::u16string_view text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    std::u16string_view token, rest;
    if (text == u"+") {
        token = text;
    } else {
        const std::size_t plus = text.find(u'+');
        token = text.substr(0, plus);
        rest = plus == std::u16string_view::npos ? std::u16string_view() : text.substr(plus);
        while (!token.empty() && is_blank(token.back())) token.remove_suffix(1);
    }

    std::optional<char16_t> character;
    if (token.size() == 1) {
        character = token.front();
    } else {
        for (const CharacterName& name : kCharacterNames)
            if (equal_ignoring_case(name.token, token)) {
                character = name.character;
                break;
            }
    }
    if (character) {
        const std::optional<StrokeCode> code = character_code(record, *character);
        if (!code) return std::nullopt;
        return Token{*code, rest};
    }
    const std::u16string_view key = equal_ignoring_case(token, u"SHIFT") ? u"LEFT SHIFT" : token;
    for (std::uint8_t raw = 0; raw < 128; ++raw)
        if (const std::u16string name = key_token(record, raw); !name.empty() && equal_ignoring_case(name, key))
            return Token{stroke::single(raw), rest};
    return std::nullopt;
}

} // namespace kq::input
