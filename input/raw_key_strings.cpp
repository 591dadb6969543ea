#include "input/raw_key_strings.h"

#include "input/character_lookup.h"
#include "input/key_tokens.h"
#include "platform/text_conversion.h"

#include <array>
#include <optional>

namespace kq::input {
namespace {

// "KEY_RAW_DOWN 0x%X " or "KEY_RAW_UP 0x%X ": upper-case hexadecimal without leading zeros.
// Written directly, not through a formatter: typing a long text writes millions of them.
void append_event(std::u16string& out, bool press, std::uint32_t raw) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    out.append(press ? u"KEY_RAW_DOWN 0x" : u"KEY_RAW_UP 0x");
    raw &= 0xFF;
    if (raw >= 0x10) out += kDigits[raw >> 4];
    out += kDigits[raw & 0xF];
    out += u' ';
}

struct Qualifier {
    std::uint32_t bit;
    std::uint8_t raw;
};
// The order in which qualifiers are released, and pressed.
constexpr std::array<Qualifier, 3> kQualifiers{{
    {stroke::shift, raw_key::left_shift}, {stroke::alt, raw_key::left_alt}, {stroke::control, raw_key::control}}};

// The qualifiers held while typing, brought to what each stroke needs.
class Typist {
public:
    explicit Typist(std::u16string& out) : out_(out) {}

    void hold(std::uint32_t needs) {
        for (const Qualifier& q : kQualifiers)
            if ((held_ & q.bit) && !(needs & q.bit)) append_event(out_, false, q.raw);
        for (const Qualifier& q : kQualifiers)
            if (!(held_ & q.bit) && (needs & q.bit)) append_event(out_, true, q.raw);
        held_ = needs;
    }

    void tap(std::uint8_t raw) {
        append_event(out_, true, raw);
        append_event(out_, false, raw);
    }

    void strokes(StrokeCode code) {
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t one_stroke = stroke::nth(code, i);
            if (stroke::raw(one_stroke) == raw_key::none) continue;
            hold(one_stroke & stroke::qualifiers);
            tap(stroke::raw(one_stroke));
        }
    }

private:
    std::u16string& out_;
    std::uint32_t held_ = 0;
};

std::optional<StrokeCode> code_of(const KeyboardInputData& record, char16_t character) {
    if (const CharacterEntry* entry = find_character(record, character)) return entry->code;
    return std::nullopt;
}

// The plain letter of a mathematical italic letter (U+1D434-U+1D467, and U+210E for "h").
std::optional<char16_t> plain_letter(char32_t code_point) {
    if (code_point >= 0x1D44E && code_point <= 0x1D467) return static_cast<char16_t>(u'a' + (code_point - 0x1D44E));
    if (code_point >= 0x1D434 && code_point <= 0x1D44D) return static_cast<char16_t>(u'A' + (code_point - 0x1D434));
    if (code_point == 0x210E) return u'h';
    return std::nullopt;
}

std::optional<StrokeCode> code_with_fallbacks(const KeyboardInputData& record, std::u16string_view character) {
    char32_t code_point = character[0];
    if (character.size() == 2) code_point = 0x10000 + ((character[0] - 0xD800) << 10) + (character[1] - 0xDC00);
    if (character.size() == 1)
        if (auto code = code_of(record, character[0])) return code;
    if (const auto letter = plain_letter(code_point))
        if (auto code = code_of(record, *letter)) return code;
    const std::u16string latin1 = platform::best_fit_latin1(character);
    if (latin1.size() == 1)
        if (auto code = code_of(record, latin1[0])) return code;
    return code_of(record, u'?');
}

bool is_high_surrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }

} // namespace

std::u16string type_text(const KeyboardInputData& record, std::u16string_view text) {
    std::u16string out;
    Typist typist(out);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t units = is_high_surrogate(text[i]) && i + 1 < text.size() ? 2 : 1;
        const std::u16string_view character = text.substr(i, units);
        i += units - 1;
        if (character[0] == u'\n' || character[0] == u'\t') {
            typist.hold(0);
            typist.tap(character[0] == u'\n' ? raw_key::return_key : raw_key::tab);
        } else if (character[0] >= 0x20) {
            if (const auto code = code_with_fallbacks(record, character)) typist.strokes(*code);
        }
    }
    typist.hold(0);
    return out;
}

std::u16string combination_keys(const KeyboardInputData& record, std::u16string_view text, CombinationEvents events) {
    std::u16string out;
    const bool press = events == CombinationEvents::press;
    while (!text.empty()) {
        const std::optional<Token> token = read_token(record, text);
        if (!token) break;  // an unknown token ends the list, with what came before it
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t one_stroke = stroke::nth(token->code, i);
            if (stroke::raw(one_stroke) == raw_key::none) continue;
            for (const Qualifier& q : kQualifiers)
                if (one_stroke & q.bit) append_event(out, press, q.raw);
            append_event(out, press, stroke::raw(one_stroke));
        }
        text = token->rest;
        if (!text.empty() && text.front() == u'+') text.remove_prefix(1);
    }
    return out;
}

std::u16string raw_key_string(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode) {
    if (mode & 1) return combination_keys(record, text, CombinationEvents::press);
    if (mode & 2) return combination_keys(record, text, CombinationEvents::release);
    return type_text(record, text);
}

} // namespace kq::input
