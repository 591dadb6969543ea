// kqhost: the reference host. It loads amiga.dll by path, as a host player does, and drives
// its exports from the command line.

#include "kq_amiga.h"
#include "kqhost/console.h"
#include "kqhost/pe_image.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace kqhost {
namespace {

constexpr int kExitOk = 0, kExitFailure = 1, kExitUsage = 2;

struct Context {
    HMODULE module;
    std::span<const std::wstring> arguments;  // after the command's name
};

struct Command {
    const wchar_t* name;
    const char* synopsis;
    const char* summary;
    std::function<int(const Context&)> run;
};

int list_exports(const Context& context) {
    for (const PeExport& entry : kqhost::list_exports(context.module)) {
        char line[160];
        std::snprintf(line, sizeof line, "%3u  %s\n", entry.ordinal,
                      entry.name.empty() ? "(by ordinal only)" : entry.name.c_str());
        print(line);
    }
    return kExitOk;
}

int platform_name(const Context& context) {
    const auto get_name = reinterpret_cast<decltype(&KQGetPlatformName)>(
        reinterpret_cast<void (*)()>(GetProcAddress(context.module, "KQGetPlatformName")));
    if (get_name == nullptr) {
        print_error("kqhost: the DLL has no KQGetPlatformName\n");
        return kExitFailure;
    }
    print(std::wstring_view(get_name()));
    print("\n");
    return kExitOk;
}

const Command kCommands[] = {
    {L"name", "name", "Print the platform name (KQGetPlatformName).", platform_name},
    {L"exports", "exports", "List the DLL's exports with their ordinals.", list_exports},
};

void print_usage() {
    print("Usage: kqhost [--dll PATH] COMMAND [ARGUMENTS]\n\n"
          "Loads the Amiga platform module (by default ..\\Platforms\\Amiga\\amiga.dll beside\n"
          "this program, else amiga.dll in its own folder) and calls its exports.\n\n"
          "Commands:\n");
    for (const Command& command : kCommands) {
        char line[200];
        std::snprintf(line, sizeof line, "  %-24s %s\n", command.synopsis, command.summary);
        print(line);
    }
    print("  help                     Print this text.\n");
}

std::wstring own_folder() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path, length);
    return folder.substr(0, folder.rfind(L'\\'));
}

std::wstring default_dll_path() {
    const std::wstring folder = own_folder();
    const std::wstring installed = folder.substr(0, folder.rfind(L'\\')) +
                                   L"\\Platforms\\Amiga\\amiga.dll";
    if (GetFileAttributesW(installed.c_str()) != INVALID_FILE_ATTRIBUTES) return installed;
    return folder + L"\\amiga.dll";
}

int run(std::vector<std::wstring> arguments) {
    std::wstring dll_path;
    if (arguments.size() >= 2 && arguments[0] == L"--dll") {
        dll_path = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    if (arguments.empty() || arguments[0] == L"help" || arguments[0] == L"--help") {
        print_usage();
        return arguments.empty() ? kExitUsage : kExitOk;
    }
    const auto command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                      [&](const Command& c) { return arguments[0] == c.name; });
    if (command == std::end(kCommands)) {
        print_error("kqhost: unknown command '" + to_utf8(arguments[0]) + "' (try kqhost help)\n");
        return kExitUsage;
    }
    if (dll_path.empty()) dll_path = default_dll_path();
    HMODULE module = LoadLibraryW(dll_path.c_str());
    if (module == nullptr) {
        print_error("kqhost: cannot load " + to_utf8(dll_path) + " (error " +
                    std::to_string(GetLastError()) + ")\n");
        return kExitFailure;
    }
    const Context context{module, std::span<const std::wstring>(arguments).subspan(1)};
    const int result = command->run(context);
    FreeLibrary(module);
    return result;
}

} // namespace
} // namespace kqhost

int wmain(int argc, wchar_t** argv) {
    return kqhost::run(std::vector<std::wstring>(argv + 1, argv + argc));
}
