#include "manifest/rom_files.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <vector>

namespace kq::manifest {
namespace {

using Files = std::vector<std::u16string_view>;

// Fills a shared data folder with the ROM files of the given ids.
void add_roms(const test::TempFolder& folder, const Files& rom_ids) {
    folder.create_folder(u"Shared\\rom");
    for (std::u16string_view id : rom_ids) folder.create_file(u"Shared\\rom\\" + rom_file_name(id), "rom");
}

TEST(RomFiles, NamesAndExtensions) {
    EXPECT_EQ(rom_file_name(u"310-a1200"), u"amiga-os-310-a1200.rom");
    EXPECT_EQ(rom_file_name(u"aros-latest"), u"aros-latest.rom");
    EXPECT_EQ(rom_folder(u"C:\\Data"), u"C:\\Data\\Shared\\rom\\");
    EXPECT_EQ(rom_folder(u"C:\\Data\\"), u"C:\\Data\\Shared\\rom\\");
    EXPECT_EQ(extension_rom_file_name(u"aros-2024", u"a-aros"), u"aros-2024-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"130", u"A-CDTV"), u"amiga-os-130-cdtv-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"3x0-a4000", u"a-cdtv"), u"amiga-os-230-cdtv-ext.rom")
        << "3x0 counts as version 395";
    EXPECT_EQ(extension_rom_file_name(u"310-cd32", u"a-cd32"), u"amiga-os-310-cd32-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"310-a1200", u"a-1200"), std::nullopt);
}

TEST(RomFiles, FallbacksPickAnExistingFileInTheirOrder) {
    const struct {
        const char* name;
        Files present;
        std::u16string_view id, model, video, resolved;
    } rows[] = {
        {"130 is the A3000 ROM beyond the first models", {}, u"130", u"a-1200", u"", u"130-a3000"},
        {"130 stays on the A500 when its file exists", {u"130"}, u"130", u"a-500", u"", u"130"},
        {"130 on the A500 without a file", {}, u"130", u"a-500", u"", u"130"},
        {"the given file exists", {u"3x0", u"3x0-a4000"}, u"3x0", u"a-1200", u"", u"3x0"},
        {"110 on NTSC", {u"110-ntsc", u"110-pal"}, u"110", u"a-1000", u"NTSC", u"110-ntsc"},
        {"110 on PAL", {u"110-ntsc", u"110-pal"}, u"110", u"a-1000", u"pal", u"110-pal"},
        {"110 on PAL, only NTSC", {u"110-ntsc"}, u"110", u"a-1000", u"", u"110-ntsc"},
        {"205", {u"205-a600"}, u"205", u"a-600", u"", u"205-a600"},
        {"300 on the A1200", {u"300-a1200", u"300-a4000"}, u"300", u"a-1200", u"", u"300-a1200"},
        {"300 elsewhere", {u"300-a1200", u"300-a4000"}, u"300", u"a-3000", u"", u"300-a4000"},
        {"310 on the A600", {u"310-a600"}, u"310", u"a-600", u"", u"310-a600"},
        {"310 on the 4000T answers the desktop id", {u"310-a4000t"}, u"310", u"a-4000t", u"", u"310-a4000"},
        {"310 on the 4000T without its file", {u"310-a4000"}, u"310", u"a-4000t", u"", u"310-a4000"},
        {"3x0 with only the A4000 file", {u"3x0-a4000"}, u"3x0", u"a-1200", u"", u"3x0-a4000"},
        {"3x0 on the A1200", {u"3x0-a1200", u"3x0-a4000"}, u"3x0", u"a-1200", u"", u"3x0-a1200"},
        {"3x0 on the A3000", {u"3x0-a3000", u"3x0-a4000"}, u"3x0", u"a-3000", u"", u"3x0-a3000"},
        {"310-a500", {u"310-a600"}, u"310-a500", u"a-500", u"", u"310-a600"},
        {"110-ntsc to 110", {u"110", u"110-pal"}, u"110-ntsc", u"a-1000", u"", u"110"},
        {"110-pal to 110-ntsc", {u"110-ntsc"}, u"110-pal", u"a-1000", u"", u"110-ntsc"},
        {"205-a600 to 205", {u"205"}, u"205-a600", u"a-600", u"", u"205"},
        {"300-a1200 to 300", {u"300"}, u"300-a1200", u"a-1200", u"", u"300"},
        {"310-a600 to 310-a500", {u"310-a500", u"310"}, u"310-a600", u"a-600", u"", u"310-a500"},
        {"310-a1200 to 310", {u"310"}, u"310-a1200", u"a-1200", u"", u"310"},
        {"3x0-a1200 to 3x0", {u"3x0"}, u"3x0-a1200", u"a-1200", u"", u"3x0"},
        {"nothing to fall back on", {u"120"}, u"310-a1200", u"a-1200", u"", u"310-a1200"},
        {"ids compare without regard to case", {u"3x0-a4000"}, u"3X0", u"A-1200", u"", u"3x0-a4000"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::TempFolder data;
        add_roms(data, row.present);
        EXPECT_EQ(resolve_rom_file(row.id, row.model, row.video, rom_folder(data.path())), row.resolved);
    }
}

TEST(RomFiles, ExistenceWithFallbacksAndAros) {
    const struct {
        const char* name;
        Files present;
        std::u16string_view id, model;
        bool exists;
    } rows[] = {
        {"130 on the A1200 looks for 130-a3000", {u"130"}, u"130", u"a-1200", false},
        {"130 on the A1200 finds 130-a3000", {u"130-a3000"}, u"130", u"a-1200", true},
        {"3x0 with only the A4000 file", {u"3x0-a4000"}, u"3x0", u"a-1200", true},
        {"310 on the 4000T with only its own file", {u"310-a4000t"}, u"310", u"a-4000t", false},
        {"a named aros ROM with its extension", {u"aros-2024", u"aros-2024-ext"}, u"aros-2024", u"a-aros", true},
        {"a named aros ROM without its extension", {u"aros-2024"}, u"aros-2024", u"a-aros", false},
        {"latest aros with its extension", {u"aros-2024", u"aros-2024-ext"}, u"aros-latest", u"a-aros", true},
        {"latest aros without its extension", {u"aros-2024"}, u"aros-latest", u"a-aros", false},
        {"latest aros: only an extension file", {u"aros-2024-ext"}, u"aros-latest", u"a-aros", false},
        {"latest aros: none", {u"120"}, u"aros-latest", u"a-aros", false},
        {"an unknown id that begins with a digit", {u"120"}, u"999", u"a-500", false},
        {"a plain id", {u"logica-dialoga-200"}, u"logica-dialoga-200", u"a-500", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::TempFolder data;
        add_roms(data, row.present);
        EXPECT_EQ(rom_exists(row.id, row.model, u"", data.path()), row.exists);
    }
    const test::TempFolder data;
    add_roms(data, {u"aros-2025", u"aros-2023", u"aros-2023-ext"});
    EXPECT_EQ(find_latest_aros_rom(data.path()), u"aros-2023.rom") << "the first in name order";
}

TEST(RomFiles, ShortLegacyIdsAreCompleted) {
    const struct {
        std::u16string_view id, model;
        std::optional<std::u16string_view> video;
        std::optional<std::u16string_view> normalized;
    } rows[] = {
        {u"110", u"a-1000", std::nullopt, u"110-ntsc"}, // no video on the A1000 counts as NTSC
        {u"110", u"a-1000", u"pal", u"110-pal"},
        {u"110", u"a-500", std::nullopt, u"110-pal"},
        {u"110", u"a-500", u"NTSC", u"110-ntsc"},
        {u"205", u"a-600", std::nullopt, u"205-a600"},
        {u"300", u"a-4000", std::nullopt, u"300-a4000"},
        {u"300", u"a-1200", std::nullopt, u"300-a1200"},
        {u"310-a500", u"a-500", std::nullopt, u"310-a600"},
        {u"310", u"a-1200", std::nullopt, u"310-a4000"},
        {u"3x0", u"a-600", std::nullopt, u"3x0-a4000"},
        {u"310-a1200", u"a-1200", std::nullopt, std::nullopt},
        {u"120", u"a-500", std::nullopt, std::nullopt},
    };
    for (const auto& row : rows) {
        const auto normalized = normalize_rom_id(row.id, row.model, row.video);
        EXPECT_EQ(normalized, row.normalized ? std::optional<std::u16string>(*row.normalized) : std::nullopt)
            << std::string(row.id.begin(), row.id.end());
    }
}

} // namespace
} // namespace kq::manifest
