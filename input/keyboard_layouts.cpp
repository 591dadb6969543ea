#include "input/keyboard_layouts.h"

#include "common/compare.h"
#include "platform/string_table.h"

#include <array>
#include <optional>
#include <string>

namespace kq::input {
namespace {

#include "keyboard_layouts.inc"

// The catalogue: the default first, then the searchable layouts in their search order.
constexpr std::array<KeyboardLayout, 15> kLayouts{{
    {u"en-us", strings::keyboard_layout_en_us, kKeymapImage_en_us, kCharacters_en_us, kBrackets_en_us[0],
     kBrackets_en_us[1]},
    {u"en-gb", strings::keyboard_layout_en_gb, kKeymapImage_en_gb, kCharacters_en_gb, kBrackets_en_gb[0],
     kBrackets_en_gb[1]},
    {u"fr-ca", strings::keyboard_layout_fr_ca, kKeymapImage_fr_ca, kCharacters_fr_ca, kBrackets_fr_ca[0],
     kBrackets_fr_ca[1]},
    {u"da-dk", strings::keyboard_layout_da_dk, kKeymapImage_da_dk, kCharacters_da_dk, kBrackets_da_dk[0],
     kBrackets_da_dk[1]},
    {u"de-de", strings::keyboard_layout_de_de, kKeymapImage_de_de, kCharacters_de_de, kBrackets_de_de[0],
     kBrackets_de_de[1]},
    {u"en-dvorak-us", strings::keyboard_layout_en_dvorak_us, kKeymapImage_en_dvorak_us, kCharacters_en_dvorak_us,
     kBrackets_en_dvorak_us[0], kBrackets_en_dvorak_us[1]},
    {u"es-es", strings::keyboard_layout_es_es, kKeymapImage_es_es, kCharacters_es_es, kBrackets_es_es[0],
     kBrackets_es_es[1]},
    {u"fr-fr", strings::keyboard_layout_fr_fr, kKeymapImage_fr_fr, kCharacters_fr_fr, kBrackets_fr_fr[0],
     kBrackets_fr_fr[1]},
    {u"it-it", strings::keyboard_layout_it_it, kKeymapImage_it_it, kCharacters_it_it, kBrackets_it_it[0],
     kBrackets_it_it[1]},
    {u"no-no", strings::keyboard_layout_no_no, kKeymapImage_no_no, kCharacters_no_no, kBrackets_no_no[0],
     kBrackets_no_no[1]},
    {u"pt-pt", strings::keyboard_layout_pt_pt, kKeymapImage_pt_pt, kCharacters_pt_pt, kBrackets_pt_pt[0],
     kBrackets_pt_pt[1]},
    {u"de-ch", strings::keyboard_layout_de_ch, kKeymapImage_de_ch, kCharacters_de_ch, kBrackets_de_ch[0],
     kBrackets_de_ch[1]},
    {u"fr-ch", strings::keyboard_layout_fr_ch, kKeymapImage_fr_ch, kCharacters_fr_ch, kBrackets_fr_ch[0],
     kBrackets_fr_ch[1]},
    {u"sv-se", strings::keyboard_layout_sv_se, kKeymapImage_sv_se, kCharacters_sv_se, kBrackets_sv_se[0],
     kBrackets_sv_se[1]},
    {u"is-is", strings::keyboard_layout_is_is, kKeymapImage_is_is, kCharacters_is_is, kBrackets_is_is[0],
     kBrackets_is_is[1]},
}};

static_assert(kKeymapImage_en_us.size() == kKeymapImageBytes);

// One probe of layout recognition: the character that raw key `raw` gives under `qualifier`.
struct Probe {
    std::uint8_t raw;
    std::uint8_t qualifier;
    char16_t expected;
};
struct Recognition {
    std::u16string_view layout;
    Probe first;
    std::optional<Probe> second;
};

// In this order: "de-ch" is found only when de-de's second probe fails, and "sv-se" only when
// it-it, no-no and es-es have failed on raw key 0x29.
const Recognition kRecognitions[] = {
    {u"en-gb", {0x03, kQualifierShift, 0xA3}, Probe{0x2A, 0, u'#'}},
    {u"fr-ca", {0x3A, 0, 0xE9}, std::nullopt},
    {u"da-dk", {0x2A, 0, 0xF8}, std::nullopt},
    {u"de-de", {0x1A, 0, 0xFC}, Probe{0x0B, 0, 0xDF}},
    {u"en-dvorak-us", {0x3A, 0, u'z'}, std::nullopt},
    {u"es-es", {0x29, 0, 0xF1}, std::nullopt},
    {u"fr-fr", {0x2A, 0, 0xF9}, std::nullopt},
    {u"it-it", {0x29, 0, 0xF2}, std::nullopt},
    {u"no-no", {0x29, 0, 0xF8}, std::nullopt},
    {u"pt-pt", {0x29, 0, 0xE7}, std::nullopt},
    {u"de-ch", {0x1A, 0, 0xFC}, Probe{0x0B, 0, u'\''}},
    {u"fr-ch", {0x29, kQualifierShift, 0xF6}, std::nullopt},
    {u"sv-se", {0x29, 0, 0xF6}, Probe{0x1A, 0, 0xE5}},
    {u"is-is", {0x1A, 0, 0xF0}, std::nullopt},
};

// The qualifier that character i of a key-map word stands for, by key type (-1: none).
constexpr std::int8_t kWordQualifiers[8][4] = {
    {0, -1, -1, -1}, {0, 1, -1, -1}, {0, 2, -1, -1}, {0, 1, 2, 3},
    {0, 4, -1, -1},  {0, 1, 4, 5},   {0, 2, 4, 6},   {0, 1, 2, 3},
};

bool is_valid_image(std::span<const std::uint8_t> image) { return image.size() >= kKeymapImageBytes && image[0] == 1; }

} // namespace

const KeyboardLayout& default_layout() { return kLayouts[0]; }

const KeyboardLayout& find_layout(std::u16string_view id) {
    for (const KeyboardLayout& layout : kLayouts)
        if (equal_ignoring_case(layout.id, id)) return layout;
    return default_layout();
}

std::span<const KeyboardLayout> all_layouts() { return kLayouts; }

char16_t keymap_character(std::span<const std::uint8_t> image, std::uint8_t raw, std::uint8_t qualifier) {
    if (!is_valid_image(image) || raw > 0x7F) return 0;
    const std::uint8_t type = image[2 + raw];
    if (type > 7) return 0;
    const std::size_t word = 130 + 4 * static_cast<std::size_t>(raw);
    for (int i = 0; i < 4; ++i)
        if (kWordQualifiers[type][i] == qualifier)
            return image[word + 3 - i]; // character i counts from the least significant byte
    return 0;
}

bool keymap_caps_affects(std::span<const std::uint8_t> image, std::uint8_t raw) {
    if (!is_valid_image(image) || raw > 0x7F) return false;
    return (image[642 + raw / 8] >> (raw % 8) & 1) != 0;
}

std::u16string_view recognize_layout(std::span<const std::uint8_t> image) {
    if (!is_valid_image(image)) return default_layout().id;
    const auto matches = [&](const Probe& probe) {
        return keymap_character(image, probe.raw, probe.qualifier) == probe.expected;
    };
    for (const Recognition& recognition : kRecognitions)
        if (matches(recognition.first) && (!recognition.second || matches(*recognition.second)))
            return recognition.layout;
    return default_layout().id;
}

std::u16string short_layout_name(const KeyboardLayout& layout) {
    std::u16string name = platform::load_string(layout.display_name, 80);
    if (const std::size_t cut = name.find(u" ("); cut != std::u16string::npos) name.resize(cut);
    return name;
}

} // namespace kq::input
