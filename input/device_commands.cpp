#include "input/device_commands.h"

#include "common/compare.h"
#include "input/key_names.h"
#include "input/keyboard_input_data.h"
#include "module/record_packer.h"
#include "platform/string_table.h"
#include "string_ids.h"

#include <array>
#include <span>

namespace kq::input {
namespace {

constexpr std::uint8_t kNoKey = 0x80;
constexpr std::size_t kMaxNameChars = 100;

struct DeviceCommandEntry {
    StringId name_id;
    std::array<std::uint8_t, 4> keys; // shown with the name, up to the first kNoKey
    std::u16string_view command;
};

constexpr DeviceCommandEntry kCdButtons[] = {
    {strings::play_pause_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x73 KEY_RAW_UP 0x73"},
    {strings::previous_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x74 KEY_RAW_UP 0x74"},
    {strings::next_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x75 KEY_RAW_UP 0x75"},
    {strings::stop_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x72 KEY_RAW_UP 0x72"},
    {strings::forward_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x77 KEY_RAW_UP 0x77"},
    {strings::rewind_button, {kNoKey, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x76 KEY_RAW_UP 0x76"},
};

constexpr DeviceCommandEntry kKeyboard[] = {
    {strings::left_amiga_key, {0x66, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x66 KEY_RAW_UP 0x66"},
    {strings::right_amiga_key, {0x67, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x67 KEY_RAW_UP 0x67"},
    {strings::soft_reset,
     {0x63, 0x66, 0x67, kNoKey},
     u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 KEY_RAW_DOWN 0x67 KEY_RAW_UP 0x67 KEY_RAW_UP 0x66 KEY_RAW_UP 0x63"},
    {strings::help_key, {0x5F, kNoKey, kNoKey, kNoKey}, u"KEY_RAW_DOWN 0x5F KEY_RAW_UP 0x5F"},
};

// The keys' names joined with "+"; empty when a key has no name. A key that the naming reports
// as two host keys ("Ctrl, Right Ctrl") is shown by its first.
std::u16string key_names(const std::array<std::uint8_t, 4>& keys) {
    ScopedKeyboardInputData record;
    if (!fill_keyboard_input_data(record.get(), u"a-500", nullptr, {}, 0, 0, 0)) return {};
    std::u16string joined;
    for (const std::uint8_t key : keys) {
        if (key == kNoKey) break;
        std::optional<std::u16string> name = raw_key_name(record.get(), key);
        if (!name) return {};
        if (const std::size_t comma = name->find(u", "); comma != std::u16string::npos) name->resize(comma);
        if (!joined.empty()) joined += u'+';
        joined += *name;
    }
    return joined;
}

} // namespace

std::optional<DeviceCommandText> device_command(std::uint32_t index, std::uint32_t category,
                                                std::u16string_view model_id) {
    std::span<const DeviceCommandEntry> table;
    const std::uint32_t category_byte = category & 0xFF;
    if (category_byte == kDeviceCategoryCdButtons && equal_ignoring_case(model_id, u"a-cdtv"))
        table = kCdButtons;
    else if (category_byte == kDeviceCategoryKeyboard)
        table = kKeyboard;
    if (index >= table.size()) return std::nullopt;
    const DeviceCommandEntry& entry = table[index];
    DeviceCommandText text{platform::load_string(entry.name_id, kMaxNameChars), std::u16string(entry.command)};
    if (const std::u16string keys = key_names(entry.keys); !keys.empty()) {
        text.name += u'\t';
        text.name += keys;
    }
    return text;
}

platform::HeapBlock pack_device_command(const DeviceCommandText& text) {
    constexpr std::size_t kHeaderBytes = 24, kNameField = 8, kCommandField = 16;
    RecordPacker packer(kHeaderBytes);
    packer.add_text(kNameField, TextRef(std::u16string_view(text.name)));
    packer.add_text(kCommandField, TextRef(std::u16string_view(text.command)));
    return packer.pack(platform::Heap::local);
}

} // namespace kq::input
