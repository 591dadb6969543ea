// Recognition of Kickstart ROM files by size and CRC-32: plain, byte-swapped, doubled and
// SuperKickstart files, against a small table of the test's own and against the real table
// (with files forged to a row's CRC); the table checker; the choice between two ids.

#include "content/configuration_import/kickstart_roms.h"
#include "tests/content/rom_image_builder.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace kq::content {
namespace {

using test::byte_swapped;
using test::rom_image;

std::string identified(const std::string& file, std::span<const KickstartRom> table) {
    const KickstartRom* rom = identify_rom_image(std::as_bytes(std::span(file)), table);
    return rom == nullptr ? "none" : test::printable(rom->id);
}

TEST(KickstartRoms, RecognisesImagesInTheirStoredForms) {
    constexpr std::array<KickstartRom, 3> table{
        KickstartRom{.image_bytes = 8'192, .crc32 = 0x11111111, .id = u"small"},
        KickstartRom{.image_bytes = 65'536, .crc32 = 0x22222222, .id = u"middle"},
        KickstartRom{.image_bytes = 262'144, .crc32 = 0x33333333, .id = u"large"}};
    const std::string small = rom_image(8'192, 0x11111111);
    const std::string other = rom_image(8'192, 0x44444444, 7);
    std::string changed = small;
    changed[100] ^= 1;
    const struct {
        const char* what;
        std::string file;
        const char* id;
    } rows[] = {
        {"plain", small, "small"},
        {"byte-swapped", byte_swapped(small), "small"},
        {"doubled", small + small, "small"},
        {"doubled and byte-swapped", byte_swapped(small + small), "small"},
        {"another size", rom_image(65'536, 0x22222222), "middle"},
        {"SuperKickstart bonus after 256 KiB", rom_image(262'144, 0x33333333) + std::string(17'408, 'b'), "large"},
        {"one byte changed", changed, "none"},
        {"one byte more", small + '\0', "none"},
        {"one byte less", small.substr(1), "none"},
        {"two different halves", small + other, "none"},
        {"bonus after an unknown image", rom_image(262'144, 0x55555555) + std::string(17'408, 'b'), "none"},
        {"empty", "", "none"},
    };
    for (const auto& row : rows) EXPECT_EQ(identified(row.file, table), row.id) << row.what;
}

TEST(KickstartRoms, TableCheckerRefusesMalformedTables) {
    EXPECT_TRUE(is_well_formed_rom_table(known_kickstart_roms()));
    const KickstartRom good{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a1200"};
    const struct {
        const char* what;
        std::array<KickstartRom, 2> table;
        bool is_well_formed;
    } rows[] = {
        {"distinct rows", {good, {.image_bytes = 524'288, .crc32 = 2, .id = u"x"}}, true},
        {"same CRC at another size", {good, {.image_bytes = 262'144, .crc32 = 1, .id = u"x"}}, true},
        {"same size and CRC twice", {good, {.image_bytes = 524'288, .crc32 = 1, .id = u"x"}}, false},
        {"a size ROMs never have", {good, {.image_bytes = 524'289, .crc32 = 2, .id = u"x"}}, false},
        {"no id", {good, {.image_bytes = 262'144, .crc32 = 2, .id = u""}}, false},
    };
    for (const auto& row : rows) EXPECT_EQ(is_well_formed_rom_table(row.table), row.is_well_formed) << row.what;
}

TEST(KickstartRoms, PicksTheIdThatTheModelOffers) {
    const KickstartRom a600_first{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a600", .other_id = u"310-a500"};
    const KickstartRom a500_first{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a500", .other_id = u"310-a600"};
    const KickstartRom single{.image_bytes = 524'288, .crc32 = 1, .id = u"3x0-a500"};
    const struct {
        const KickstartRom& rom;
        std::u16string_view model, id;
    } rows[] = {
        {a600_first, u"a-500", u"310-a600"},  {a600_first, u"a-1200", u"310-a600"},
        {a500_first, u"A-600", u"310-a600"},  // offered by the model: the other id
        {a500_first, u"a-4000", u"310-a500"}, // offered by neither: the preferred id
        {single, u"a-600", u"3x0-a500"},
    };
    for (const auto& row : rows) EXPECT_EQ(rom_id_for_model(row.rom, row.model), row.id) << test::printable(row.model);
}

TEST(KickstartRoms, RecognisesSystemRomFilesWithTheRealTable) {
    test::TempFolder folder;
    const std::string kick13 = rom_image(262'144, 0xc4f0f55f);
    const struct {
        const char* name;
        std::string content;
        std::u16string_view model;
        std::optional<std::u16string> id;
    } rows[] = {
        {"kick13.rom", kick13, u"a-500", u"130"},
        {"kick13-overdump.rom", kick13 + kick13, u"a-500", u"130"},
        {"kick31-swapped.rom", byte_swapped(rom_image(524'288, 0x1483a091)), u"a-1200", u"310-a1200"},
        {"kick31-a500.rom", rom_image(524'288, 0xfc24ae0d), u"a-500", u"310-a600"},
        {"cd32-joined.rom", rom_image(1'048'576, 0xf5d4f3c8), u"a-cd32", u"310-cd32"},
        {"cd32-extension.rom", rom_image(524'288, 0x87746be2), u"a-cd32", std::nullopt},
        {"unknown.rom", rom_image(524'288, 0x12345678), u"a-500", std::nullopt},
        {"too-large.rom", std::string(kMaxRomFileBytes + 2, '\0'), u"a-500", std::nullopt},
    };
    for (const auto& row : rows) {
        const std::u16string name(row.name, row.name + std::char_traits<char>::length(row.name));
        folder.create_file(name, row.content);
        EXPECT_EQ(recognise_system_rom(folder.path(name), row.model), row.id) << row.name;
    }
    EXPECT_EQ(recognise_system_rom(folder.path(u"missing.rom"), u"a-500"), std::nullopt);
}

} // namespace
} // namespace kq::content
