#include "input/character_lookup.h"

#include "input/keyboard_layouts.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kq::input {
namespace {

constexpr std::size_t kIndexedCharacters = 0x100;

// For one layout's table: the position + 1 of each indexed character's first entry (0: none).
struct TableIndex {
    const CharacterEntry* table;
    std::array<std::uint16_t, kIndexedCharacters> first;
};

const std::vector<TableIndex>& table_indexes() {
    static const std::vector<TableIndex> indexes = [] {
        std::vector<TableIndex> made;
        for (const KeyboardLayout& layout : all_layouts()) {
            TableIndex& index = made.emplace_back(TableIndex{layout.characters.data(), {}});
            for (std::size_t i = layout.characters.size(); i-- > 0;)
                if (layout.characters[i].character < kIndexedCharacters)
                    index.first[layout.characters[i].character] = static_cast<std::uint16_t>(i + 1);
        }
        return made;
    }();
    return indexes;
}

static_assert(kIndexedCharacters <= 0xFFFF);

} // namespace

const CharacterEntry* find_character(const KeyboardInputData& record, char16_t character) {
    if (character < kIndexedCharacters) {
        for (const TableIndex& index : table_indexes()) {
            if (index.table != record.characters) continue;
            const std::uint16_t first = index.first[character];
            return first != 0 && first <= record.character_count ? &record.characters[first - 1] : nullptr;
        }
    }
    for (const CharacterEntry& entry : record.character_table())
        if (entry.character == character) return &entry;
    return nullptr;
}

} // namespace kq::input
