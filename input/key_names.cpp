#include "input/key_names.h"
#include "platform/system_error.h"

#include "input/key_tokens.h"
#include "module/message_format.h"
#include "platform/string_table.h"
#include "string_ids.h"

#include <algorithm>

namespace kq::input {
namespace {

struct FixedName {
    std::uint8_t raw;
    StringId name;
};

// Raw key 0x65 (Right Alt) deliberately has no fixed name: it is named like a character key.
constexpr FixedName kFixedNames[] = {
    {0x0F, strings::keypad_0},
    {0x1D, strings::keypad_1},
    {0x1E, strings::keypad_2},
    {0x1F, strings::keypad_3},
    {0x2D, strings::keypad_4},
    {0x2E, strings::keypad_5},
    {0x2F, strings::keypad_6},
    {0x3C, strings::keypad_period},
    {0x3D, strings::keypad_7},
    {0x3E, strings::keypad_8},
    {0x3F, strings::keypad_9},
    {0x40, strings::space_key},
    {0x41, strings::backspace_key},
    {0x42, strings::tab_key},
    {0x43, strings::keypad_enter},
    {0x44, strings::return_key},
    {0x45, strings::escape_key},
    {0x46, strings::delete_key},
    {0x4A, strings::keypad_minus},
    {0x4C, strings::cursor_up_key},
    {0x4D, strings::cursor_down_key},
    {0x4E, strings::cursor_right_key},
    {0x4F, strings::cursor_left_key},
    {0x50, strings::f1_key},
    {0x51, strings::f2_key},
    {0x52, strings::f3_key},
    {0x53, strings::f4_key},
    {0x54, strings::f5_key},
    {0x55, strings::f6_key},
    {0x56, strings::f7_key},
    {0x57, strings::f8_key},
    {0x58, strings::f9_key},
    {0x59, strings::f10_key},
    {0x5A, strings::keypad_bracket_template},
    {0x5B, strings::keypad_bracket_template},
    {0x5C, strings::keypad_slash},
    {0x5D, strings::keypad_asterisk},
    {0x5E, strings::keypad_plus},
    {0x5F, strings::help_key},
    {0x60, strings::left_shift_key},
    {0x61, strings::right_shift_key},
    {0x62, strings::caps_lock_key},
    {0x63, strings::control_key},
    {0x64, strings::alt_key},
    {0x66, strings::left_amiga_key},
    {0x67, strings::right_amiga_key},
    {0x72, strings::stop_button},
    {0x73, strings::play_pause_button},
    {0x74, strings::previous_button},
    {0x75, strings::next_button},
    {0x76, strings::rewind_button},
    {0x77, strings::forward_button},
};

constexpr std::size_t kNameChars = 100;

std::optional<std::u16string> fixed_name(const KeyboardInputData& record, std::uint8_t raw, char16_t suffix) {
    const auto found = std::ranges::find(kFixedNames, raw, &FixedName::raw);
    if (found == std::end(kFixedNames)) return std::nullopt;
    if (raw == raw_key::left_shift && suffix == u'+') return platform::load_string(strings::shift_key, kNameChars);
    std::u16string name = platform::load_string(found->name, kNameChars);
    if (found->name == strings::keypad_bracket_template) {
        const MessageArgument bracket = raw == raw_key::keypad_open ? record.open_bracket : record.close_bracket;
        name = format_message(name, std::span(&bracket, 1)).value_or(name);
    }
    return name;
}

char16_t upper_ascii(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c; }

// A stroke code of `raw` alone without qualifiers, optionally followed by Space.
constexpr StrokeCode alone(std::uint8_t raw) { return stroke::single(raw); }
constexpr StrokeCode before_space(std::uint8_t raw) {
    return 0x07F00000u | static_cast<StrokeCode>(raw_key::space) << 10 | raw;
}

// Writes names one after another, each NUL-terminated; a name that follows one ending in "+"
// continues it ("Shift+" then "A" make "Shift+A").
class NameWriter {
public:
    explicit NameWriter(std::span<char16_t> buffer) : buffer_(buffer) {}

    bool write(std::u16string_view name) {
        std::size_t at = position_;
        if (written_ && !continues_) ++at; // past the NUL of the previous name, which stays
        if (at >= buffer_.size() || buffer_.size() - at < name.size() + 1) return false;
        std::ranges::copy(name, buffer_.begin() + static_cast<std::ptrdiff_t>(at));
        position_ = at + name.size();
        buffer_[position_] = 0;
        written_ = true;
        continues_ = !name.empty() && name.back() == u'+';
        return true;
    }

private:
    std::span<char16_t> buffer_;
    std::size_t position_ = 0;
    bool written_ = false;
    bool continues_ = false;
};

} // namespace

std::optional<std::u16string> raw_key_name(const KeyboardInputData& record, std::uint8_t raw, char16_t suffix) {
    std::optional<std::u16string> name = fixed_name(record, raw, suffix);
    if (!name) {
        const auto table = record.character_table();
        auto entry = std::ranges::find(table, alone(raw), &CharacterEntry::code);
        if (entry == table.end()) entry = std::ranges::find(table, before_space(raw), &CharacterEntry::code);
        if (entry == table.end()) return std::nullopt;
        name = std::u16string(1, upper_ascii(entry->character));
    }
    if (suffix != 0) *name += suffix;
    return name;
}

std::optional<std::u16string> raw_key_label(const KeyboardInputData& record, std::uint8_t raw) {
    if (std::optional<std::u16string> name = fixed_name(record, raw, 0)) return name;
    for (const CharacterEntry& entry : record.character_table())
        if (entry.character != u' ' && stroke::raw(stroke::nth(entry.code, 0)) == raw &&
            (entry.code == alone(raw) || entry.code == before_space(raw)))
            return std::u16string(1, upper_ascii(entry.character));
    return std::nullopt;
}

HResult key_display_name(const KeyboardInputData& record, std::u16string_view text, std::span<char16_t> buffer) {
    constexpr HResult kInsufficientBuffer = status::from_win32(platform::system_error::buffer_overflow);
    constexpr HResult kNotFound = status::from_win32(platform::system_error::not_found);
    // An empty text (or one of "+" alone) names nothing: the host then reads an empty name.
    if (!buffer.empty()) buffer[0] = 0;
    NameWriter writer(buffer);
    while (!text.empty()) {
        if (text.front() == u'+' && text.size() > 1) {
            text.remove_prefix(1);
            continue;
        }
        const std::optional<Token> token = read_token(record, text);
        if (!token) return kNotFound;
        for (int i = 0; i < 3; ++i) {
            const std::uint32_t one_stroke = stroke::nth(token->code, i);
            if (stroke::raw(one_stroke) == raw_key::none) continue;
            const std::pair<std::uint32_t, std::uint8_t> qualifiers[] = {{stroke::shift, raw_key::left_shift},
                                                                         {stroke::alt, raw_key::left_alt},
                                                                         {stroke::control, raw_key::control}};
            for (const auto& [bit, raw] : qualifiers) {
                if ((one_stroke & bit) == 0) continue;
                if (!writer.write(*raw_key_name(record, raw, u'+'))) return kInsufficientBuffer;
            }
            const std::optional<std::u16string> name = raw_key_name(record, stroke::raw(one_stroke));
            if (!name) return kNotFound;
            if (!writer.write(*name)) return kInsufficientBuffer;
        }
        text = token->rest;
    }
    return status::ok;
}

std::u16string keyboard_layout_text(std::span<const std::uint8_t> image) {
    const KeyboardLayout& layout = find_layout(recognize_layout(image));
    std::u16string text(layout.id);
    const std::u16string name = short_layout_name(layout);
    if (!name.empty()) {
        text += u'\t';
        text += name;
    }
    return text;
}

} // namespace kq::input
