// Commands of the platform options: list them, store one.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"

#include <cstdio>
#include <initializer_list>
#include <string>

namespace kqhost {
namespace {

std::string quoted(const kq_char* value) {
    if (value == nullptr) return "(none)";
    std::string out(1, '"');
    out += to_utf8(value);
    out += '"';
    return out;
}

// One line of the listing: a label, then the parts as they come.
void print_line(std::initializer_list<std::string_view> parts) {
    std::string line;
    for (std::string_view part : parts) line += part;
    line += '\n';
    print(line);
}

int options(const Context& context) {
    const auto get = find_export<decltype(KQGetOption)>(context.module, "KQGetOption");
    const auto release = find_export<decltype(KQFreeOption)>(context.module, "KQFreeOption");
    if (get == nullptr || release == nullptr) {
        print_error("kqhost: the DLL has no KQGetOption/KQFreeOption\n");
        return kExitFailure;
    }
    for (uint32_t index = 0;; ++index) {
        KQOption* option = nullptr;
        const kq_status status = get(index, 0, &option, nullptr);
        if (status == KQ_S_FALSE) return kExitOk;
        if (status != KQ_S_OK) {
            char line[80];
            std::snprintf(line, sizeof line, "kqhost: KQGetOption(%u) failed (0x%08X)\n", index,
                          static_cast<unsigned>(status));
            print_error(line);
            return kExitFailure;
        }
        print_line({to_utf8(option->name), option->type == 1 ? " (boolean): " : " (choice): ", to_utf8(option->label)});
        if (option->groupLabel != nullptr) print_line({"  group:   ", to_utf8(option->groupLabel)});
        print_line({"  current: ", quoted(option->currentValue)});
        print_line({"  default: ", quoted(option->defaultValue)});
        for (uint32_t choice = 0; choice < option->count; ++choice)
            print_line(
                {"  choice:  ", quoted(option->choiceValues[choice]), " = ", to_utf8(option->choiceLabels[choice])});
        release(option);
    }
}

int set_option(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost set-option NAME VALUE\n");
        return kExitUsage;
    }
    const auto set = find_export<decltype(KQSetOption)>(context.module, "KQSetOption");
    if (set == nullptr) {
        print_error("kqhost: the DLL has no KQSetOption\n");
        return kExitFailure;
    }
    const kq_status status = set(context.arguments[0].c_str(), context.arguments[1].c_str(), nullptr, nullptr);
    char line[120];
    std::snprintf(line, sizeof line, "KQSetOption: 0x%08X\n", static_cast<unsigned>(status));
    print(line);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

constexpr Command kCommands[] = {
    {L"options", "options", "List the platform options with their choices and values.", true, options},
    {L"set-option", "set-option NAME VALUE", "Store an option (an empty VALUE deletes a choice option's value).", true,
     set_option},
};

} // namespace

std::span<const Command> option_commands() { return kCommands; }

} // namespace kqhost
