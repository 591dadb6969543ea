// Commands of keyboard translation, layouts and key names.

#include "input/keyboard_layouts.h"
#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "kqhost/file_input.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace kqhost {
namespace {

// "--layout ID" at the front of the arguments; what follows it.
struct LayoutArguments {
    std::wstring layout = L"en-us";
    std::vector<std::wstring> rest;
};

LayoutArguments layout_arguments(const Context& context) {
    LayoutArguments parsed;
    for (std::size_t i = 0; i < context.arguments.size(); ++i) {
        if (context.arguments[i] == L"--layout" && i + 1 < context.arguments.size())
            parsed.layout = context.arguments[++i];
        else
            parsed.rest.push_back(context.arguments[i]);
    }
    return parsed;
}

std::string event_text(uint32_t event) {
    char text[80];
    if ((event & 0x60000000u) == 0)
        std::snprintf(text, sizeof text, "0x%08X  (no event)", event);
    else
        std::snprintf(text, sizeof text, "0x%08X  %s 0x%02X%s", event, (event & 0x20000000u) ? "press  " : "release",
                      event & 0x7F, (event & 0x10000000u) ? "  (more pending)" : "");
    return text;
}

// One line of a key script: "down|up VK [ext] [CHARACTER | U+XXXX]".
bool parse_key_line(const std::wstring& line, uint32_t& key_word, wchar_t& character) {
    std::wistringstream words(line);
    std::wstring action, vk, word;
    if (!(words >> action >> vk) || (action != L"down" && action != L"up")) return false;
    key_word = static_cast<uint32_t>(std::wcstoul(vk.c_str(), nullptr, 0)) & 0xFF;
    character = 0;
    while (words >> word) {
        if (word == L"ext")
            key_word |= 0x10000;
        else if (word.size() > 2 && word.rfind(L"U+", 0) == 0)
            character = static_cast<wchar_t>(std::wcstoul(word.c_str() + 2, nullptr, 16));
        else if (word.size() == 1)
            character = word[0];
        else
            return false;
    }
    if (action == L"down") key_word |= 1u << 20 | (character != 0 ? 1u << 18 : 0);
    return true;
}

// keys [--layout ID] SCRIPT
int keys(const Context& context) {
    const LayoutArguments arguments = layout_arguments(context);
    const auto get = find_export<decltype(KQGetKeyboardInputData2)>(context.module, "KQGetKeyboardInputData2");
    const auto release = find_export<decltype(KQFreeKeyboardInputData)>(context.module, "KQFreeKeyboardInputData");
    const auto process = find_export<decltype(KQProcessKeyboardInput)>(context.module, "KQProcessKeyboardInput");
    if (!get || !release || !process || arguments.rest.size() != 1) return kExitUsage;
    const std::optional<std::wstring> script = read_utf8_file(arguments.rest[0]);
    if (!script) {
        print_error("kqhost: cannot read " + to_utf8(arguments.rest[0]) + "\n");
        return kExitFailure;
    }
    KQKeyboardInputData* data = nullptr;
    if (get(L"kqhost", arguments.layout.c_str(), nullptr, 0, 0, 0, 0, 0, &data) != KQ_S_OK) return kExitFailure;
    std::wistringstream lines(*script);
    std::wstring line;
    int result = kExitOk;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == L'\r') line.pop_back();
        if (line.empty() || line[0] == L'#') continue;
        uint32_t key_word = 0;
        wchar_t character = 0;
        if (!parse_key_line(line, key_word, character)) {
            print_error("kqhost: not a key line: " + to_utf8(line) + "\n");
            result = kExitUsage;
            break;
        }
        print("> " + to_utf8(line) + "\n");
        uint32_t answer = 0;
        process(key_word, character, data, 0, &answer);
        print("  " + event_text(answer) + "\n");
        while ((answer & 0x10000000u) && process(1u << 28, 0, data, 0, &answer) == KQ_S_OK)
            print("  " + event_text(answer) + "\n");
    }
    release(data);
    return result;
}

// layout FILE: the layout that a keymap image file represents.
int layout(const Context& context) {
    const auto call = find_export<decltype(KQGetKeyboardLayout)>(context.module, "KQGetKeyboardLayout");
    if (call == nullptr || context.arguments.size() != 1) return kExitUsage;
    const std::optional<std::string> image = read_file_bytes(context.arguments[0]);
    if (!image) {
        print_error("kqhost: cannot read " + to_utf8(context.arguments[0]) + "\n");
        return kExitFailure;
    }
    wchar_t text[128];
    const kq_status status =
        call(0, reinterpret_cast<const uint8_t*>(image->data()), static_cast<uint32_t>(image->size()), text, 128);
    if (status != KQ_S_OK) return kExitFailure;
    print(std::wstring_view(text));
    print("\n");
    return kExitOk;
}

// keymap-image ID FILE: writes a layout's keymap image, from the module's own tables.
int keymap_image(const Context& context) {
    if (context.arguments.size() != 2) return kExitUsage;
    const std::wstring& id = context.arguments[0];
    const kq::input::KeyboardLayout& chosen = kq::input::find_layout(module_text(id));
    return with_output_file(context.arguments[1], [&] {
        std::ofstream file(std::filesystem::path(context.arguments[1]), std::ios::binary);
        file.write(reinterpret_cast<const char*>(chosen.keymap_image.data()),
                   static_cast<std::streamsize>(chosen.keymap_image.size()));
        file.close(); // before a failed file is removed
        if (!file.good()) return kExitFailure;
        print("wrote the keymap image of " + to_utf8(std::wstring(chosen.id.begin(), chosen.id.end())) + "\n");
        return kExitOk;
    });
}

// key-name [--layout ID] TEXT
int key_name(const Context& context) {
    const LayoutArguments arguments = layout_arguments(context);
    const auto call = find_export<decltype(KQGetKeyDisplayName)>(context.module, "KQGetKeyDisplayName");
    if (call == nullptr || arguments.rest.size() != 1) return kExitUsage;
    std::vector<wchar_t> names(512, L'\0');
    const kq_status status = call(arguments.rest[0].c_str(), L"kqhost", arguments.layout.c_str(), names.data(),
                                  static_cast<uint32_t>(names.size()), 0, 0);
    if (status != KQ_S_OK) {
        char line[80];
        std::snprintf(line, sizeof line, "KQGetKeyDisplayName: 0x%08X\n", static_cast<unsigned>(status));
        print(line);
        return kExitFailure;
    }
    // One name per stroke, each NUL-terminated.
    for (std::size_t at = 0; at < names.size() && names[at] != 0; at += std::wcslen(names.data() + at) + 1) {
        print(std::wstring_view(names.data() + at));
        print("\n");
    }
    return kExitOk;
}

// The raw key string of a text in one of KQGetStringRawKeys's modes.
int raw_key_string(const Context& context, uint32_t mode) {
    const LayoutArguments arguments = layout_arguments(context);
    const auto get = find_export<decltype(KQGetKeyboardInputData2)>(context.module, "KQGetKeyboardInputData2");
    const auto release = find_export<decltype(KQFreeKeyboardInputData)>(context.module, "KQFreeKeyboardInputData");
    const auto keys = find_export<decltype(KQGetStringRawKeys)>(context.module, "KQGetStringRawKeys");
    const auto free_keys = find_export<decltype(KQFreeStringRawKeys)>(context.module, "KQFreeStringRawKeys");
    if (!get || !release || !keys || !free_keys || arguments.rest.size() != 1) return kExitUsage;
    KQKeyboardInputData* data = nullptr;
    if (get(L"kqhost", arguments.layout.c_str(), nullptr, 0, 0, 0, 0, 0, &data) != KQ_S_OK) return kExitFailure;
    // Escapes for what a command line cannot hold: "\n" is a line feed, "\t" a tab.
    std::wstring text;
    for (std::size_t i = 0; i < arguments.rest[0].size(); ++i) {
        const wchar_t c = arguments.rest[0][i];
        if (c == L'\\' && i + 1 < arguments.rest[0].size() &&
            (arguments.rest[0][i + 1] == L'n' || arguments.rest[0][i + 1] == L't'))
            text += arguments.rest[0][++i] == L'n' ? L'\n' : L'\t';
        else
            text += c;
    }
    kq_char* script = nullptr;
    const kq_status status = keys(text.c_str(), data, mode, &script);
    if (script != nullptr) {
        print(std::wstring_view(script));
        print("\n");
        free_keys(script);
    }
    release(data);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

int type(const Context& context) { return raw_key_string(context, 0); }
int combo(const Context& context) {
    const int pressed = raw_key_string(context, 1);
    return pressed == kExitOk ? raw_key_string(context, 2) : pressed;
}

// button-name MASK KIND
int button_name(const Context& context) {
    const auto call = find_export<decltype(KQGetInputButtonName)>(context.module, "KQGetInputButtonName");
    if (call == nullptr || context.arguments.size() != 2) return kExitUsage;
    const auto mask = static_cast<uint32_t>(std::wcstoul(context.arguments[0].c_str(), nullptr, 0));
    const auto kind = static_cast<uint32_t>(std::wcstoul(context.arguments[1].c_str(), nullptr, 0));
    wchar_t name[64] = {};
    const kq_status status = call(mask, 0, kind, name, 64);
    if (status != KQ_S_OK) {
        char line[80];
        std::snprintf(line, sizeof line, "KQGetInputButtonName: 0x%08X\n", static_cast<unsigned>(status));
        print(line);
        return kExitFailure;
    }
    print(std::wstring_view(name));
    print("\n");
    return kExitOk;
}

constexpr Command kCommands[] = {
    {L"type", "type [--layout ID] TEXT", "The raw key string that types TEXT (\\n: Return, \\t: Tab).", true, type},
    {L"combo", "combo [--layout ID] KEYS", "The presses, then the releases, of a combination such as \"CONTROL+A\".",
     true, combo},
    {L"button-name", "button-name MASK KIND", "The name of a controller button (kind 2, 3 or 4).", true, button_name},
    {L"keys", "keys [--layout ID] SCRIPT",
     "Translate host key events (lines \"down|up VK [ext] [CHARACTER|U+XXXX]\") into raw keys.", true, keys},
    {L"layout", "layout FILE", "Recognise the layout of a keymap image file.", true, layout},
    {L"keymap-image", "keymap-image ID FILE", "Write a layout's keymap image to FILE.", false, keymap_image},
    {L"key-name", "key-name [--layout ID] TEXT", "Name the keys of a combination such as \"CONTROL+A\".", true,
     key_name},
};

} // namespace

std::span<const Command> keyboard_commands() { return kCommands; }

} // namespace kqhost
