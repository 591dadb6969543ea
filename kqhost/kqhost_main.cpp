// kqhost: the reference host. It loads amiga.dll by path, as a host player does, and drives
// its exports from the command line.

#include "common/windows_path.h"
#include "kqhost/command.h"
#include "kqhost/console.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace kqhost {
namespace {

const std::array<std::span<const Command>, 10> kCommandFamilies{
    module_commands(),  option_commands(),      configuration_commands(), keyboard_commands(), media_commands(),
    content_commands(), association_commands(), autoconfig_commands(),    manifest_commands(), version_commands()};

const Command* find_command(std::wstring_view name) {
    for (std::span<const Command> family : kCommandFamilies)
        for (const Command& command : family)
            if (name == command.name) return &command;
    return nullptr;
}

// "  synopsis" and the summary below it, indented and wrapped at word breaks to fit 80 columns.
void print_command_help(std::string_view synopsis, std::string_view summary) {
    constexpr std::size_t kWidth = 80;
    constexpr std::string_view kIndent = "      ";
    std::string text = "  ";
    text += synopsis;
    text += '\n';
    std::string line(kIndent);
    while (!summary.empty()) {
        const std::size_t space = summary.find(' ');
        const std::string_view word = summary.substr(0, space);
        summary = space == std::string_view::npos ? std::string_view() : summary.substr(space + 1);
        if (line.size() > kIndent.size() && line.size() + 1 + word.size() > kWidth) {
            text += line + '\n';
            line = kIndent;
        }
        if (line.size() > kIndent.size()) line += ' ';
        line += word;
    }
    text += line + '\n';
    print(text);
}

void print_usage() {
    print("Usage: kqhost [--dll PATH] COMMAND [ARGUMENTS]\n\n"
          "Loads the Amiga platform module (by default ..\\Platforms\\Amiga\\amiga.dll beside\n"
          "this program, else amiga.dll in its own folder) and calls its exports.\n\n"
          "Commands:\n");
    for (std::span<const Command> family : kCommandFamilies)
        for (const Command& command : family) print_command_help(command.synopsis, command.summary);
    print_command_help("help", "Print this text.");
}

std::wstring default_dll_path() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::u16string_view program = module_text(std::wstring_view(path, length));
    const std::u16string_view folder = kq::parent_of(program).value_or(std::u16string_view());
    const std::wstring installed = host_text(
        kq::joined_path(kq::parent_of(folder).value_or(std::u16string_view()), u"Platforms\\Amiga\\amiga.dll"));
    if (GetFileAttributesW(installed.c_str()) != INVALID_FILE_ATTRIBUTES) return installed;
    return host_text(kq::joined_path(folder, u"amiga.dll"));
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
    const Command* command = find_command(arguments[0]);
    if (command == nullptr) {
        print_error("kqhost: unknown command '" + to_utf8(arguments[0]) + "' (try kqhost help)\n");
        return kExitUsage;
    }
    const std::span<const std::wstring> command_arguments = std::span<const std::wstring>(arguments).subspan(1);
    if (!command->uses_dll) return command->run(Context{nullptr, command_arguments});

    if (dll_path.empty()) dll_path = default_dll_path();
    HMODULE module = LoadLibraryW(dll_path.c_str());
    if (module == nullptr) {
        print_error("kqhost: cannot load " + to_utf8(dll_path) + " (error " + std::to_string(GetLastError()) + ")\n");
        return kExitFailure;
    }
    const int result = command->run(Context{module, command_arguments});
    if (result == kExitUsage) print_error(std::string("usage: kqhost ") + command->synopsis + "\n");
    FreeLibrary(module);
    return result;
}

} // namespace
} // namespace kqhost

int wmain(int argc, wchar_t** argv) {
    // Output is written as bytes: UTF-8 text and XML whose line ends are already CR LF.
    _setmode(_fileno(stdout), _O_BINARY);
    return kqhost::run(std::vector<std::wstring>(argv + 1, argv + argc));
}
