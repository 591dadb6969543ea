// Reads arbitrary text as a host would hand it to the keyboard exports: raw key strings of
// every mode, key combination names and tokens, in a layout chosen by the first byte (the rest
// is UTF-16 text, unpaired surrogates and all), and the same bytes as a keymap image. Every raw
// key string is a list of well-formed key events on raw codes below 0x80; typing and
// combinations release every key they press; names stay inside their buffer, NUL-terminated.

#include "fuzz/fuzz_require.h"
#include "input/key_names.h"
#include "input/key_tokens.h"
#include "input/keyboard_input_data.h"
#include "input/keyboard_layouts.h"
#include "input/raw_key_strings.h"
#include "module/status.h"
#include "platform/heap.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>

using namespace kq;
using namespace kq::input;

namespace {

using kq::fuzz::require;

constexpr std::size_t kMaxInputBytes = 8 * 1024;
constexpr std::u16string_view kDown = u"KEY_RAW_DOWN 0x", kUp = u"KEY_RAW_UP 0x";

// One record per layout, made once: making one reads the layout's tables.
const KeyboardInputData& record_for(std::size_t layout) {
    static std::map<std::size_t, std::unique_ptr<ScopedKeyboardInputData>> records;
    auto& slot = records[layout];
    if (!slot) {
        slot = std::make_unique<ScopedKeyboardInputData>();
        const std::u16string id(all_layouts()[layout].id);
        require(fill_keyboard_input_data(slot->get(), u"a-1200", id.c_str(), {}, 0, 0, 0));
    }
    return slot->get();
}

int hex_digit(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

// Checks the events' form ("0x%X": upper-case hexadecimal without leading zeros, each event
// followed by one blank) and returns how many keys are still down at the end.
int keys_left_down(std::u16string_view keys) {
    std::array<int, 0x80> down{};
    int pressed = 0;
    while (!keys.empty()) {
        const bool is_down = keys.starts_with(kDown);
        require(is_down || keys.starts_with(kUp));
        keys.remove_prefix(is_down ? kDown.size() : kUp.size());
        int raw = 0;
        std::size_t digits = 0;
        for (; digits < keys.size() && hex_digit(keys[digits]) >= 0; ++digits) raw = raw * 16 + hex_digit(keys[digits]);
        require(digits >= 1 && digits <= 2 && (digits == 1 || keys[0] != u'0') && raw < 0x80);
        require(digits < keys.size() && keys[digits] == u' ');
        keys.remove_prefix(digits + 1);
        const auto slot = static_cast<std::size_t>(raw);
        if (is_down) {
            pressed += down[slot]++ == 0 ? 1 : 0;
        } else if (down[slot] > 0) {
            pressed -= --down[slot] == 0 ? 1 : 0;
        }
    }
    return pressed;
}

// The raw key string in a block of its counted size, as KQGetStringRawKeys makes it: a count
// too short writes past the block, one too long leaves the text shorter than the count.
std::u16string written(const KeyboardInputData& record, std::u16string_view text, std::uint32_t mode) {
    const platform::HeapBlock block = raw_key_string_block(platform::Heap::local, record, text, mode);
    require(static_cast<bool>(block));
    std::u16string keys(reinterpret_cast<const char16_t*>(block.data()));
    require(keys.size() == raw_key_string_length(record, text, mode));
    return keys;
}

void check_names(const KeyboardInputData& record, std::u16string_view text, std::size_t chars) {
    std::u16string slots(chars + 2, u'#');
    const HResult result = key_display_name(record, text, std::span(slots.data() + 1, chars));
    require(slots.front() == u'#' && slots.back() == u'#');
    if (result == status::ok && chars > 0)
        require(std::u16string_view(slots.data() + 1, chars).find(u'\0') != std::u16string_view::npos);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > kMaxInputBytes) return 0;
    const KeyboardInputData& record = record_for(data[0] % all_layouts().size());
    std::u16string text((size - 1) / 2, u'\0');
    std::memcpy(text.data(), data + 1, text.size() * sizeof(char16_t));

    require(keys_left_down(written(record, text, 0)) == 0);
    const std::u16string presses = written(record, text, 1), releases = written(record, text, 2);
    require(keys_left_down(presses + releases) == 0);
    for (std::u16string_view rest = text; !rest.empty();) {
        const std::optional<Token> token = read_token(record, rest);
        if (!token) break;
        require(token->rest.size() < rest.size());
        rest = token->rest.empty() ? token->rest : token->rest.substr(1);
    }
    for (const std::size_t chars : {std::size_t{0}, std::size_t{1}, std::size_t{8}, std::size_t{256}})
        check_names(record, text, chars);
    keyboard_layout_text(std::span(data, size));
    return 0;
}
