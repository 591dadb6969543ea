#include "input/raw_key_strings.h"

#include "input/character_lookup.h"
#include "input/key_tokens.h"
#include "platform/text_conversion.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kq::input {
namespace {

// "KEY_RAW_DOWN 0x%X " or "KEY_RAW_UP 0x%X ": upper-case hexadecimal without leading zeros (raw
// codes are below 0x80). Written directly, not through a formatter: typing a long text writes
// millions of them. Every string is made twice by the same code: once into an EventCounter,
// which adds up its length, then into an EventWriter over a block of that length.
constexpr std::u16string_view kDown = u"KEY_RAW_DOWN 0x", kUp = u"KEY_RAW_UP 0x";

constexpr std::size_t event_units(bool press, std::uint8_t raw) {
    return (press ? kDown.size() : kUp.size()) + (raw >= 0x10 ? 2 : 1) + 1;
}

class EventCounter {
public:
    void event(bool press, std::uint8_t raw) { units_ += event_units(press, raw); }
    std::size_t units() const { return units_; }

private:
    std::size_t units_ = 0;
};

class EventWriter {
public:
    explicit EventWriter(char16_t* out) : out_(out) {}
    void event(bool press, std::uint8_t raw) {
        constexpr char16_t kDigits[] = u"0123456789ABCDEF";
        const std::u16string_view name = press ? kDown : kUp;
        out_ = std::copy(name.begin(), name.end(), out_);
        if (raw >= 0x10) *out_++ = kDigits[raw >> 4];
        *out_++ = kDigits[raw & 0xF];
        *out_++ = u' ';
    }

private:
    char16_t* out_;
};

struct Qualifier {
    std::uint32_t bit;
    std::uint8_t raw;
};
// The order in which qualifiers are released, and pressed.
constexpr std::array<Qualifier, 3> kQualifiers{
    {{stroke::shift, raw_key::left_shift}, {stroke::alt, raw_key::left_alt}, {stroke::control, raw_key::control}}};

// The qualifiers held while typing, brought to what each stroke needs.
template <class Events>
class Typist {
public:
    explicit Typist(Events& events) : events_(events) {}

    void hold(std::uint32_t needs) {
        for (const Qualifier& q : kQualifiers)
            if ((held_ & q.bit) && !(needs & q.bit)) events_.event(false, q.raw);
        for (const Qualifier& q : kQualifiers)
            if (!(held_ & q.bit) && (needs & q.bit)) events_.event(true, q.raw);
        held_ = needs;
    }

    void tap(std::uint8_t raw) {
        events_.event(true, raw);
        events_.event(false, raw);
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
    Events& events_;
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

template <class Events>
void type_text(const KeyboardInputData& record, std::u16string_view text, Events& events) {
    Typist typist(events);
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
}

template <class Events>
void combination_keys(const KeyboardInputData& record, std::u16string_view text, bool press, Events& events) {
    while (!text.empty()) {
        const std::optional<Token> token = read_token(record, text);
        if (!token) break; // an unknown token ends the list, with what came before it
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t one_stroke = stroke::nth(token->code, i);
            if (stroke::raw(one_stroke) == raw_key::none) continue;
            for (const Qualifier& q : kQualifiers)
                if (one_stroke & q.bit) events.event(press, q.raw);
            events.event(press, stroke::raw(one_stroke));
        }
        text = token->rest;
        if (!text.empty() && text.front() == u'+') text.remove_prefix(1);
    }
}

template <class Events>
void raw_key_events(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode, Events& events) {
    if (mode & 1) return combination_keys(record, text, true, events);
    if (mode & 2) return combination_keys(record, text, false, events);
    type_text(record, text, events);
}

} // namespace

std::size_t raw_key_string_length(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode) {
    EventCounter counter;
    raw_key_events(record, text, mode, counter);
    return counter.units();
}

platform::HeapBlock raw_key_string_block(platform::Heap heap, const KeyboardInputData& record, std::u16string_view text,
                                         std::uint32_t mode) {
    const std::size_t units = raw_key_string_length(record, text, mode);
    platform::HeapBlock block = platform::HeapBlock::allocate_zeroed(heap, (units + 1) * sizeof(char16_t));
    if (!block) return block;
    EventWriter writer(reinterpret_cast<char16_t*>(block.data()));
    raw_key_events(record, text, mode, writer);
    return block;
}

} // namespace kq::input
