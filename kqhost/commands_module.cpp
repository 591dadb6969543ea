// Commands of the module frame: the platform name and the export table.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "kqhost/pe_image.h"

#include <cstdio>

namespace kqhost {
namespace {

int platform_name(const Context& context) {
    const auto get_name = find_export<decltype(KQGetPlatformName)>(context.module, "KQGetPlatformName");
    if (get_name == nullptr) {
        print_error("kqhost: the DLL has no KQGetPlatformName\n");
        return kExitFailure;
    }
    print(std::wstring_view(get_name()));
    print("\n");
    return kExitOk;
}

int exports(const Context& context) {
    for (const PeExport& entry : list_exports(context.module)) {
        char line[160];
        std::snprintf(line, sizeof line, "%3u  %s\n", entry.ordinal,
                      entry.name.empty() ? "(by ordinal only)" : entry.name.c_str());
        print(line);
    }
    return kExitOk;
}

constexpr Command kCommands[] = {
    {L"name", "name", "Print the platform name (KQGetPlatformName).", true, platform_name},
    {L"exports", "exports", "List the DLL's exports with their ordinals.", true, exports},
};

} // namespace

std::span<const Command> module_commands() { return kCommands; }

} // namespace kqhost
