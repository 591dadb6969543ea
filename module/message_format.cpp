#include "module/message_format.h"

#include <array>
#include <charconv>

namespace kq {
namespace {

constexpr bool is_digit(char16_t c) { return c >= u'0' && c <= u'9'; }

struct Conversion {
    bool left_align = false;
    bool zero_pad = false;
    std::size_t width = 0;
    char16_t type = u's';
};

// Parses "flags width type" of a !spec!; nullopt for anything else.
std::optional<Conversion> parse_conversion(std::u16string_view spec) {
    Conversion conversion;
    std::size_t i = 0;
    for (; i < spec.size() && (spec[i] == u'-' || spec[i] == u'0'); ++i)
        (spec[i] == u'-' ? conversion.left_align : conversion.zero_pad) = true;
    for (; i < spec.size() && is_digit(spec[i]); ++i) {
        conversion.width = conversion.width * 10 + (spec[i] - u'0');
        if (conversion.width > 1024) return std::nullopt; // a safety cap, not a format limit
    }
    if (i + 1 != spec.size()) return std::nullopt;
    conversion.type = spec[i];
    if (std::u16string_view(u"scdiuxX").find(conversion.type) == std::u16string_view::npos) return std::nullopt;
    return conversion;
}

std::u16string ascii_to_utf16(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::u16string number_text(std::int64_t value, char16_t type) {
    std::array<char, 24> digits{};
    std::to_chars_result result{};
    switch (type) {
    case u'd':
    case u'i':
        result = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::int32_t>(value));
        break;
    case u'u':
        result = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(value));
        break;
    default: // x, X
        result = std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(value), 16);
        if (type == u'X')
            for (char* c = digits.data(); c != result.ptr; ++c)
                if (*c >= 'a' && *c <= 'f') *c = static_cast<char>(*c - 'a' + 'A');
        break;
    }
    return ascii_to_utf16(std::string_view(digits.data(), result.ptr - digits.data()));
}

std::u16string argument_text(const MessageArgument& argument, char16_t type) {
    if (const auto* number = std::get_if<std::int64_t>(&argument)) {
        if (type == u'c') return std::u16string(1, static_cast<char16_t>(*number));
        return number_text(*number, type == u's' ? u'd' : type);
    }
    if (const auto* character = std::get_if<char16_t>(&argument)) {
        if (type == u's' || type == u'c') return std::u16string(1, *character);
        return number_text(*character, type);
    }
    const auto text = std::get<std::u16string_view>(argument);
    if (type == u'c') return std::u16string(text.substr(0, 1));
    return std::u16string(text);
}

void append_padded(std::u16string& out, const std::u16string& text, const Conversion& conversion) {
    const std::size_t padding = conversion.width > text.size() ? conversion.width - text.size() : 0;
    const bool is_number = conversion.type != u's' && conversion.type != u'c';
    if (conversion.left_align) {
        out += text;
        out.append(padding, u' ');
    } else if (conversion.zero_pad && is_number && !text.empty() && text[0] == u'-') {
        out += u'-';
        out.append(padding, u'0');
        out.append(text, 1);
    } else {
        out.append(padding, conversion.zero_pad && is_number ? u'0' : u' ');
        out += text;
    }
}

std::optional<std::u16string> expand(std::u16string_view in, std::span<const MessageArgument> arguments,
                                     bool keep_inserts) {
    std::u16string out;
    out.reserve(in.size());
    for (std::size_t i = 0; i < in.size();) {
        const char16_t c = in[i];
        if (c == u'\r' || c == u'\n') {
            out += u"\r\n";
            i += (c == u'\r' && i + 1 < in.size() && in[i + 1] == u'\n') ? 2 : 1;
            continue;
        }
        if (c != u'%') {
            out += c;
            ++i;
            continue;
        }
        if (i + 1 >= in.size()) return std::nullopt; // a lone "%" at the end
        const char16_t escape = in[i + 1];
        i += 2;
        switch (escape) {
        case u'0': return out;
        case u'n': out += u"\r\n"; continue;
        case u'r': out += u'\r'; continue;
        case u't': out += u'\t'; continue;
        default: break;
        }
        if (keep_inserts) {
            out += u'%';
            out += escape;
            continue;
        }
        if (!is_digit(escape)) {
            out += escape;
            continue;
        }
        std::size_t number = escape - u'0';
        if (i < in.size() && is_digit(in[i])) number = number * 10 + (in[i++] - u'0');
        Conversion conversion;
        if (i < in.size() && in[i] == u'!') {
            const std::size_t end = in.find(u'!', i + 1);
            if (end == std::u16string_view::npos) return std::nullopt;
            const auto parsed = parse_conversion(in.substr(i + 1, end - i - 1));
            if (!parsed) return std::nullopt;
            conversion = *parsed;
            i = end + 1;
        }
        if (number == 0 || number > arguments.size()) return std::nullopt;
        append_padded(out, argument_text(arguments[number - 1], conversion.type), conversion);
    }
    return out;
}

} // namespace

std::optional<std::u16string> format_message(std::u16string_view message_template,
                                             std::span<const MessageArgument> arguments) {
    return expand(message_template, arguments, false);
}

std::optional<std::u16string> format_message_keeping_inserts(std::u16string_view message_template) {
    return expand(message_template, {}, true);
}

} // namespace kq
