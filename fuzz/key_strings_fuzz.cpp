// Reads arbitrary text as a host would hand it to the keyboard exports: raw key strings of
// every mode and key combination names, in a layout chosen by the first byte (the rest
// is UTF-16 text, unpaired surrogates and all), and the same bytes as a keymap image. Every raw
// key string is a list of well-formed key events on raw codes below 0x80, written in a block of
// its counted size; typing and combinations release every key they press; names stay inside
// their buffer, NUL-terminated.

#include "fuzz/fuzz_require.h"
#include "input/key_names.h"
#include "input/keyboard_layouts.h"
#include "input/raw_key_strings.h"
#include "tests/support/raw_key_script.h"

#include <array>
#include <map>
#include <memory>

using namespace kq;
using namespace kq::input;
using kq::fuzz::require;

// Whether the events of the raw key strings release every key that they press.
bool releases_every_key(const KeyboardInputData& record, std::u16string_view text, std::initializer_list<int> modes) {
    std::array<int, 0x80> down{};
    for (const int mode : modes) {
        const platform::HeapBlock block = raw_key_string_block(platform::Heap::local, record, text, mode);
        const std::u16string script(block ? reinterpret_cast<const char16_t*>(block.data()) : u"no block");
        require(script.size() == raw_key_string_length(record, text, mode));
        const auto events = test::script_events(script);
        for (const std::uint32_t event : events.value()) {
            int& count = down[event & 0x7F];
            count = (event & event::press_bit) ? count + 1 : std::max(count - 1, 0);
        }
    }
    return std::ranges::all_of(down, [](int count) { return count == 0; });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 8 * 1024) return 0;
    // One record per layout, made once: making one reads the layout's tables.
    static std::map<std::size_t, std::unique_ptr<ScopedKeyboardInputData>> records;
    const std::size_t layout = data[0] % all_layouts().size();
    auto& slot = records[layout];
    if (!slot) {
        slot = std::make_unique<ScopedKeyboardInputData>();
        const std::u16string id(all_layouts()[layout].id);
        require(fill_keyboard_input_data(slot->get(), u"a-1200", id.c_str(), {}, 0, 0, 0));
    }
    const KeyboardInputData& record = slot->get();
    const std::u16string text = fuzz::text_after_first(data, size);
    require(releases_every_key(record, text, {0}) && releases_every_key(record, text, {1, 2}));
    for (const std::size_t chars : {0u, 1u, 8u, 256u}) {
        std::u16string slots(chars + 2, u'#');
        const HResult result = key_display_name(record, text, std::span(slots.data() + 1, chars));
        require(slots.front() == u'#' && slots.back() == u'#');
        require(result != status::ok || chars == 0 || slots.substr(1, chars).find(u'\0') != std::u16string::npos);
    }
    keyboard_layout_text(std::span(data, size));
    return 0;
}
