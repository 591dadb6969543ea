// Commands of models, ROMs, configuration and input ports.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "kqhost/file_input.h"

#include <windows.h>

#include <cstdio>
#include <optional>
#include <string>

namespace kqhost {
namespace {

// Prints a global-heap string that the DLL handed out and frees it as a host does; the exit
// code follows the status.
int print_and_free(kq_status status, kq_char* text) {
    if (text != nullptr) {
        print(std::wstring_view(text));
        print("\n");
        GlobalFree(text);
    }
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

const wchar_t* argument_or_null(const Context& context, std::size_t index) {
    return index < context.arguments.size() ? context.arguments[index].c_str() : nullptr;
}

// default-rom MODEL
int default_rom(const Context& context) {
    const auto call = find_export<decltype(KQGetDefaultSystemROM)>(context.module, "KQGetDefaultSystemROM");
    if (call == nullptr || context.arguments.size() != 1) return kExitUsage;
    kq_char* rom = nullptr;
    const kq_status status = call(&rom, context.arguments[0].c_str());
    return print_and_free(status, rom);
}

// rom-exists DATA_FOLDER ROM [MODEL [VIDEO]]
int rom_exists(const Context& context) {
    const auto call = find_export<decltype(KQROMExists)>(context.module, "KQROMExists");
    if (call == nullptr || context.arguments.size() < 2 || context.arguments.size() > 4) return kExitUsage;
    const kq_status status = call(context.arguments[1].c_str(), argument_or_null(context, 2),
                                  argument_or_null(context, 3), context.arguments[0].c_str());
    print(status == KQ_S_OK ? "present\n" : status == KQ_S_FALSE ? "missing\n" : "");
    if (status != KQ_S_OK && status != KQ_S_FALSE) print_status("KQROMExists", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// restore-paths DATA_FOLDER
int restore_paths(const Context& context) {
    const auto call =
        find_export<decltype(KQGetRestoreSystemFilesPaths)>(context.module, "KQGetRestoreSystemFilesPaths");
    if (call == nullptr || context.arguments.size() != 1) return kExitUsage;
    kq_char* text = nullptr;
    const kq_status status = call(&text, context.arguments[0].c_str());
    return print_and_free(status, text);
}

// app-info FILE: the file's bytes are the manifest text.
int app_info(const Context& context) {
    const auto call = find_export<decltype(KQGetApplicationInfo)>(context.module, "KQGetApplicationInfo");
    if (call == nullptr || context.arguments.size() != 1) return kExitUsage;
    const std::optional<std::string> manifest = read_file_bytes(context.arguments[0]);
    if (!manifest) {
        print_error("kqhost: cannot read " + to_utf8(context.arguments[0]) + "\n");
        return kExitFailure;
    }
    kq_char* text = nullptr;
    const kq_status status = call(&text, manifest->c_str());
    if (text != nullptr) {
        print(std::wstring_view(text));
        GlobalFree(text);
    }
    if (status != KQ_S_OK) print_status("KQGetApplicationInfo", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// ports MODEL [MULTITAP_TYPE]
int ports(const Context& context) {
    const auto info = find_export<decltype(KQGetInputPortsInfo)>(context.module, "KQGetInputPortsInfo");
    const auto content =
        find_export<decltype(KQGetDefaultInputPortContent)>(context.module, "KQGetDefaultInputPortContent");
    if (info == nullptr || content == nullptr || context.arguments.empty() || context.arguments.size() > 2)
        return kExitUsage;
    const wchar_t* model = context.arguments[0].c_str();
    uint32_t count = 0, multitap = 0;
    if (info(model, argument_or_null(context, 1), &count, &multitap, nullptr, nullptr) != KQ_S_OK) return kExitFailure;
    static const char* const kContents[] = {"empty", "mouse", "joystick", "game pad", "joypad"};
    char line[120];
    std::snprintf(line, sizeof line, "ports: %u, multitap ports: 0x%X\n", count, multitap);
    print(line);
    for (uint32_t port = 0; port < count; ++port) {
        uint32_t code = 0;
        content(model, port, &code);
        std::snprintf(line, sizeof line, "port %u: %s\n", port, code < 5 ? kContents[code] : "?");
        print(line);
    }
    return kExitOk;
}

constexpr Command kCommands[] = {
    {L"default-rom", "default-rom MODEL", "Print a model's default ROM id.", true, default_rom},
    {L"rom-exists", "rom-exists DATA ROM [MODEL [VIDEO]]", "Say whether a ROM's files are in DATA\\Shared\\rom.", true,
     rom_exists},
    {L"restore-paths", "restore-paths DATA", "List the shared folders whose system files can be restored.", true,
     restore_paths},
    {L"app-info", "app-info FILE", "Print the hardware summary of a kq9 manifest.", true, app_info},
    {L"ports", "ports MODEL [MULTITAP]", "Describe a model's game ports and their defaults.", true, ports},
};

} // namespace

std::span<const Command> configuration_commands() { return kCommands; }

} // namespace kqhost
