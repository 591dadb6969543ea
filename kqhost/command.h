#pragma once
// The reference host's subcommands: each family of exports has a file of its own that lists
// its commands.

#include <windows.h>

#include <span>
#include <string>

namespace kqhost {

inline constexpr int kExitOk = 0, kExitFailure = 1, kExitUsage = 2;

struct Context {
    HMODULE module;                          // the loaded DLL; null for commands without it
    std::span<const std::wstring> arguments; // after the command's name
};

struct Command {
    const wchar_t* name;
    const char* synopsis;
    const char* summary;
    bool uses_dll;
    int (*run)(const Context&);
};

std::span<const Command> module_commands();
std::span<const Command> manifest_commands();
std::span<const Command> option_commands();
std::span<const Command> configuration_commands();
std::span<const Command> keyboard_commands();
std::span<const Command> media_commands();
std::span<const Command> content_commands();
std::span<const Command> association_commands();
std::span<const Command> autoconfig_commands();
std::span<const Command> version_commands();

// An export of the loaded DLL as its own function type, or null.
template <class Function>
Function* find_export(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

} // namespace kqhost
