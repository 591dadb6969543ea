#include "content/configuration_import/uae_configuration.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "common/utf.h"

#include <algorithm>

namespace kq::content {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr std::string_view trim_spaces(std::string_view text) {
    const auto is_space = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    return text;
}

// Characters that no XML document may hold: the controls other than TAB (line ends never reach
// here), U+FFFE and U+FFFF.
bool is_unwritable(char16_t c) { return (c < 0x20 && c != u'\t') || c == 0xFFFE || c == 0xFFFF; }

// The entry of one line, when it is one.
std::optional<UaeConfiguration::Entry> entry_of(std::string_view line) {
    line = trim_spaces(line);
    if (line.empty() || line.front() == ';' || line.front() == '#') return std::nullopt;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string_view key = trim_spaces(line.substr(0, equals));
    const std::string_view value = trim_spaces(line.substr(equals + 1));
    if (key.empty()) return std::nullopt;
    std::optional<std::u16string> key16 = utf8_to_utf16(key);
    std::optional<std::u16string> value16 = value.empty() ? std::u16string() : utf8_to_utf16(value);
    if (!key16 || !value16 || std::ranges::any_of(*key16, is_unwritable) ||
        std::ranges::any_of(*value16, is_unwritable))
        return std::nullopt;
    return UaeConfiguration::Entry{std::move(*key16), std::move(*value16)};
}

} // namespace

UaeConfiguration UaeConfiguration::parse(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    UaeConfiguration configuration;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("\r\n");
        if (std::optional<Entry> entry = entry_of(text.substr(0, end)))
            configuration.entries_.push_back(std::move(*entry));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return configuration;
}

std::optional<std::u16string_view> UaeConfiguration::value(std::u16string_view key) const {
    const auto last = std::find_if(entries_.rbegin(), entries_.rend(),
                                   [&](const Entry& entry) { return equal_ignoring_case(entry.key, key); });
    if (last == entries_.rend() || last->value.empty()) return std::nullopt;
    return std::u16string_view(last->value);
}

std::vector<std::u16string_view> UaeConfiguration::values(std::u16string_view key) const {
    std::vector<std::u16string_view> found;
    for (const Entry& entry : entries_)
        if (!entry.value.empty() && equal_ignoring_case(entry.key, key)) found.emplace_back(entry.value);
    return found;
}

bool UaeConfiguration::is(std::u16string_view key, std::u16string_view expected) const {
    const std::optional<std::u16string_view> text = value(key);
    return text && equal_ignoring_case(*text, expected);
}

std::optional<std::int32_t> UaeConfiguration::number(std::u16string_view key) const {
    const std::optional<std::u16string_view> text = value(key);
    return text ? read_integer_prefix(*text, 10) : std::nullopt;
}

bool UaeConfiguration::boolean(std::u16string_view key, bool fallback) const {
    const std::optional<std::u16string_view> text = value(key);
    if (!text) return fallback;
    if (equal_ignoring_case(*text, u"true") || equal_ignoring_case(*text, u"yes")) return true;
    if (equal_ignoring_case(*text, u"false") || equal_ignoring_case(*text, u"no")) return false;
    return read_integer_prefix(*text, 10).value_or(0) != 0;
}

HResult read_uae_configuration(std::u16string_view path, UaeConfiguration& out) {
    out = UaeConfiguration();
    std::string text;
    const HResult status = read_whole_file(path, kMaxConfigurationBytes, text);
    if (status::succeeded(status)) out = UaeConfiguration::parse(text);
    return status;
}

} // namespace kq::content
