// Commands of the file associations: the file types that the DLL claims, as the host registers
// them with the desktop and offers them in its open-file dialogs.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"

#include <array>
#include <cstdio>
#include <string>

namespace kqhost {
namespace {

constexpr std::array<const char*, 3> kCategoryNames{"floppy", "hard disk", "CD"};

// One block per type: the extension, then every field of the record.
void print_association(const KQFileAssociation& association) {
    const struct {
        const char* label;
        const kq_char* text;
    } fields[] = {
        {"type name", association.typeName},
        {"extension description", association.extensionDescription},
        {"long description", association.longDescription},
        {"filter pattern", association.filterPattern},
        {"filter name", association.filterName},
        {"icon location", association.iconLocation},
    };
    std::string block = to_utf8(association.extension) + "\n";
    for (const auto& field : fields) {
        block += "  ";
        block += field.label;
        block += ": ";
        block += field.text[0] != 0 ? to_utf8(field.text) : "(none)";
        block += "\n";
    }
    char numbers[96];
    std::snprintf(numbers, sizeof numbers, "  category: %u (%s)\n  flags: 0x%X\n", association.category,
                  association.category < kCategoryNames.size() ? kCategoryNames[association.category] : "unknown",
                  association.flags);
    block += numbers;
    print(block);
}

int associations(const Context& context) {
    if (!context.arguments.empty()) {
        print_error("usage: kqhost associations\n");
        return kExitUsage;
    }
    const auto get = find_export<decltype(KQGetFileAssociation)>(context.module, "KQGetFileAssociation");
    const auto release = find_export<decltype(KQFreeFileAssociation)>(context.module, "KQFreeFileAssociation");
    if (get == nullptr || release == nullptr) {
        print_error("kqhost: the DLL has no KQGetFileAssociation/KQFreeFileAssociation\n");
        return kExitFailure;
    }
    uint32_t index = 0;
    kq_status status = KQ_S_OK;
    for (KQFileAssociation* association = nullptr; (status = get(index, &association)) == KQ_S_OK; ++index) {
        print_association(*association);
        release(association);
    }
    // The list ends with S_FALSE after the last type; anything else is a failure.
    print_status("KQGetFileAssociation", status);
    return status == KQ_S_FALSE ? kExitOk : kExitFailure;
}

constexpr Command kCommands[] = {
    {L"associations", "associations",
     "List the file types that the platform claims, with their texts, filter, icon, category and flags.", true,
     associations},
};

} // namespace

std::span<const Command> association_commands() { return kCommands; }

} // namespace kqhost
