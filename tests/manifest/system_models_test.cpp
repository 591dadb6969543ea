// The models' rows checked by what must hold of every row and against the machines' known
// facts; the Z3 and CPU-board rules; ROM names, files, fallbacks and boot tags.

#include "content/configuration_import/kickstart_roms.h"
#include "manifest/boot_tag.h"
#include "manifest/rom_files.h"
#include "manifest/system_models.h"
#include "platform/string_table.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace kq::manifest {
namespace {

using test::printable;
using Sizes = std::vector<std::uint32_t>;

constexpr std::u16string_view kModelIds[] = {u"a-500",     u"a-500plus", u"a-600",  u"a-1000",  u"a-1200",
                                             u"a-2000",    u"a-3000",    u"a-4000", u"a-4000t", u"a-4xxx",
                                             u"a-whdload", u"a-aros",    u"a-cdtv", u"a-cd32",  u"a-walker"};

Sizes sizes(const MemoryChoice& choice) { return Sizes(choice.sizes.begin(), choice.sizes.end()); }

bool is_known_rom(std::u16string_view id) {
    return std::ranges::any_of(content::known_kickstart_roms(),
                               [&](const content::KickstartRom& rom) { return rom.id == id || rom.other_id == id; });
}

TEST(SystemModels, EveryRowIsConsistent) {
    std::set<std::u16string> names;
    for (const std::u16string_view id : kModelIds) {
        SCOPED_TRACE(printable(id));
        const SystemDefaults d = fill_system_defaults(id);
        EXPECT_EQ(d.model->id, id);
        EXPECT_TRUE(is_known_model(id));
        names.insert(platform::load_string(d.model->display_name, 79));
        EXPECT_NE(std::ranges::find(d.selectable_roms, d.rom), d.selectable_roms.end()) << "the default is offered";
        for (const std::u16string_view rom : d.selectable_roms) {
            EXPECT_NE(rom_display_name(rom), 0) << printable(rom);
            EXPECT_TRUE(is_known_rom(rom) || rom == kLatestAros) << printable(rom);
        }
        for (const MemoryChoice& choice : {d.chip, d.fast, d.slow}) {
            EXPECT_TRUE(std::ranges::is_sorted(choice.sizes) &&
                        std::ranges::adjacent_find(choice.sizes) == choice.sizes.end());
            for (const std::uint32_t size : choice.sizes) EXPECT_EQ(size % (256 * K), 0u);
        }
        // A separate FPU sits beside a 68020 or 68030 only; the writer's first switch goes with it, the third
        // with the flexible Zorro III rule, the second with the third or the tower.
        EXPECT_EQ(d.fpu == u"68882", d.cpu == u"68020" || d.cpu == u"68030");
        EXPECT_TRUE(d.fpu.empty() || d.fpu == u"68882");
        EXPECT_EQ(d.flag1, d.fpu == u"68882");
        EXPECT_EQ(d.flag3, fill_system_defaults(id, u"68020").z3.default_size != 0);
        EXPECT_EQ(d.flag2, d.flag3 || id == u"a-4000t");
        EXPECT_TRUE(d.agnus_limit == 0 || d.agnus_limit == d.chip.default_size);
    }
    EXPECT_EQ(names.size(), std::size(kModelIds)) << "every model has a name of its own";
    EXPECT_EQ(fill_system_defaults(u"a-9000").model->id, u"a-500") << "unknown ids are the a-500 row";
    EXPECT_EQ(fill_system_defaults(u"").model->id, u"a-500");
    EXPECT_FALSE(is_known_model(u"a-9000"));
    EXPECT_EQ(fill_system_defaults(u"A-CD32").model->id, u"a-cd32");
}

// The processors and memory that the machines shipped with.
TEST(SystemModels, MachinesAsShipped) {
    const struct {
        std::u16string_view id, display, cpu, fpu;
        std::uint32_t chip, fast, slow;
    } rows[] = {
        {u"a-500", u"Amiga 500", u"68000", u"", 512 * K, 0, 0},
        {u"a-600", u"Amiga 600", u"68000", u"", 1 * M, 0, 0},
        {u"a-1200", u"Amiga 1200", u"68EC020", u"", 2 * M, 0, 0},
        {u"a-2000", u"Amiga 2000", u"68000", u"", 512 * K, 0, 512 * K},
        {u"a-3000", u"Amiga 3000", u"68030", u"68882", 1 * M, 1 * M, 0},
        {u"a-4000", u"Amiga 4000", u"68040", u"", 2 * M, 4 * M, 0},
        {u"a-4000t", u"Amiga 4000T", u"68040", u"", 2 * M, 4 * M, 0},
        {u"a-cd32", u"CD\u00B3\u00B2", u"68EC020", u"", 2 * M, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(printable(row.id));
        const SystemDefaults d = fill_system_defaults(row.id);
        EXPECT_EQ(platform::load_string(d.model->display_name, 79), row.display);
        EXPECT_EQ(std::tuple(d.cpu, d.fpu, d.chip.default_size, d.fast.default_size, d.slow.default_size),
                  std::tuple(row.cpu, row.fpu, row.chip, row.fast, row.slow));
    }
    EXPECT_EQ(fill_system_defaults(u"a-500").rom, u"120") << "Kickstart 1.2";
    EXPECT_EQ(sizes(fill_system_defaults(u"a-1200").chip), Sizes{2 * M}) << "soldered chip memory";
}

TEST(SystemModels, Z3AndCpuBoardListsFollowCpuAndRom) {
    const struct {
        std::u16string_view model;
        std::optional<std::u16string_view> cpu, rom;
        std::size_t z3_count;
        std::uint32_t z3_default, z3_last;
        std::size_t board_count;
        std::uint32_t board_default;
    } rows[] = {
        {u"a-4000", std::nullopt, std::nullopt, 20, 0, 1792 * M, 8, 0},
        {u"a-1200", u"68030", std::nullopt, 9, 0, 128 * M, 8, 0},
        {u"a-1200", u"68030", u"130-a3000", 9, 0, 128 * M, 1, 0}, // ROM below 3.0
        {u"a-500", u"68040", u"310-a600", 1, 0, 0, 8, 0},
        {u"a-4xxx", std::nullopt, std::nullopt, 20, 64 * M, 1792 * M, 7, 16 * M},
        {u"a-4xxx", std::nullopt, u"120", 20, 64 * M, 1792 * M, 1, 0},
        {u"a-whdload", u"68LC040", u"3x0-a4000", 20, 64 * M, 1792 * M, 7, 16 * M},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(printable(row.model) + " " + printable(row.cpu.value_or(u"-")));
        const SystemDefaults d = fill_system_defaults(row.model, row.cpu, row.rom);
        EXPECT_EQ(std::tuple(d.z3.sizes.size(), d.z3.default_size, d.z3.sizes.back()),
                  std::tuple(row.z3_count, row.z3_default, row.z3_last));
        EXPECT_EQ(std::tuple(d.cpu_board.sizes.size(), d.cpu_board.default_size),
                  std::tuple(row.board_count, row.board_default));
        EXPECT_EQ(d.cpu_board.sizes.back(), row.board_count > 1 ? 512 * M : 0);
    }
    EXPECT_EQ(fill_system_defaults(u"a-whdload").cpu, u"68020") << "overrides are not stored";
}

TEST(SystemModels, RomNamesAndVersions) {
    const struct {
        std::u16string_view id, name;
        std::uint32_t version;
    } rows[] = {
        {u"070", u"Amiga 0.7 (NTSC, Beta)", 70},   {u"110-pal", u"Amiga 1.1 (PAL)", 110},
        {u"130-a3000", u"Amiga 1.3", 130},         {u"3X0-a4000", u"Amiga 3.X", 395},
        {u"320-walker", u"Amiga 3.2 (beta)", 320}, {u"aros-latest", u"AROS Latest", 395},
        {u"amiga-boot-a1000", u"No Kickstart", 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(platform::load_string(rom_display_name(row.id), 79), row.name);
        EXPECT_EQ(rom_version(row.id), row.version);
    }
    EXPECT_EQ(rom_display_name(u"999"), 0);
}

TEST(RomFiles, NamesAndExtensions) {
    EXPECT_EQ(rom_file_name(u"310-a1200"), u"amiga-os-310-a1200.rom");
    EXPECT_EQ(rom_file_name(u"aros-latest"), u"aros-latest.rom");
    EXPECT_EQ(rom_folder(u"C:\\Data"), u"C:\\Data\\Shared\\rom\\");
    EXPECT_EQ(rom_folder(u"C:\\Data\\"), u"C:\\Data\\Shared\\rom\\");
    EXPECT_EQ(extension_rom_file_name(u"aros-2024", u"a-aros"), u"aros-2024-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"130", u"A-CDTV"), u"amiga-os-130-cdtv-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"3x0-a4000", u"a-cdtv"), u"amiga-os-230-cdtv-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"310-cd32", u"a-cd32"), u"amiga-os-310-cd32-ext.rom");
    EXPECT_EQ(extension_rom_file_name(u"310-a1200", u"a-1200"), std::nullopt);
}

// Each row: the ROM files present, the id asked for on a model, and the file that is used
// (empty: the row checks rom_exists instead, "+"/"-" for the answer).
TEST(RomFiles, FallbacksPickAnExistingFileInTheirOrder) {
    const struct {
        std::vector<std::u16string_view> present;
        std::u16string_view id, model, video, resolved;
    } rows[] = {
        {{}, u"130", u"a-1200", u"", u"130-a3000"},
        {{u"130"}, u"130", u"a-500", u"", u"130"},
        {{u"110-ntsc", u"110-pal"}, u"110", u"a-1000", u"NTSC", u"110-ntsc"},
        {{u"110-ntsc", u"110-pal"}, u"110", u"a-1000", u"pal", u"110-pal"},
        {{u"205-a600"}, u"205", u"a-600", u"", u"205-a600"},
        {{u"300-a1200", u"300-a4000"}, u"300", u"a-1200", u"", u"300-a1200"},
        {{u"300-a1200", u"300-a4000"}, u"300", u"a-3000", u"", u"300-a4000"},
        {{u"310-a600"}, u"310", u"a-600", u"", u"310-a600"},
        {{u"310-a4000t"}, u"310", u"a-4000t", u"", u"310-a4000"},
        {{u"3x0-a1200", u"3x0-a4000"}, u"3x0", u"a-1200", u"", u"3x0-a1200"},
        {{u"310-a600"}, u"310-a500", u"a-500", u"", u"310-a600"},
        {{u"110", u"110-pal"}, u"110-ntsc", u"a-1000", u"", u"110"},
        {{u"205"}, u"205-a600", u"a-600", u"", u"205"},
        {{u"310-a500", u"310"}, u"310-a600", u"a-600", u"", u"310-a500"},
        {{u"3x0"}, u"3x0-a1200", u"a-1200", u"", u"3x0"},
        {{u"120"}, u"310-a1200", u"a-1200", u"", u"310-a1200"},
        {{u"3x0-a4000"}, u"3X0", u"A-1200", u"", u"3x0-a4000"},
        {{u"130"}, u"130", u"a-1200", u"", u"-"},
        {{u"130-a3000"}, u"130", u"a-1200", u"", u"+"},
        {{u"310-a4000t"}, u"310", u"a-4000t", u"", u"-"},
        {{u"aros-2024", u"aros-2024-ext"}, u"aros-2024", u"a-aros", u"", u"+"},
        {{u"aros-2024", u"aros-2024-ext"}, u"aros-latest", u"a-aros", u"", u"+"},
        {{u"aros-2024"}, u"aros-latest", u"a-aros", u"", u"-"},
        {{u"120"}, u"999", u"a-500", u"", u"-"},
        {{u"logica-dialoga-200"}, u"logica-dialoga-200", u"a-500", u"", u"+"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(printable(row.id) + " on " + printable(row.model));
        const test::TempFolder data;
        data.create_folder(u"Shared\\rom");
        for (const std::u16string_view id : row.present) data.create_file(u"Shared\\rom\\" + rom_file_name(id), "rom");
        if (row.resolved == u"+" || row.resolved == u"-")
            EXPECT_EQ(rom_exists(row.id, row.model, u"", data.path()), row.resolved == u"+");
        else
            EXPECT_EQ(resolve_rom_file(row.id, row.model, row.video, rom_folder(data.path())), row.resolved);
    }
    const test::TempFolder data;
    for (const std::u16string_view name : {u"aros-2025", u"aros-2023", u"aros-2023-ext"})
        data.create_file(u"Shared\\rom\\" + rom_file_name(name), "rom");
    EXPECT_EQ(find_latest_aros_rom(data.path()), u"aros-2023.rom") << "the first in name order";
}

TEST(RomFiles, ShortLegacyIdsAreCompleted) {
    const struct {
        std::u16string_view id, model;
        std::optional<std::u16string_view> video, normalized;
    } rows[] = {
        {u"110", u"a-1000", std::nullopt, u"110-ntsc"}, // no video on the A1000 counts as NTSC
        {u"110", u"a-1000", u"pal", u"110-pal"},
        {u"110", u"a-500", std::nullopt, u"110-pal"},
        {u"205", u"a-600", std::nullopt, u"205-a600"},
        {u"300", u"a-4000", std::nullopt, u"300-a4000"},
        {u"310-a500", u"a-500", std::nullopt, u"310-a600"},
        {u"310", u"a-1200", std::nullopt, u"310-a4000"},
        {u"3x0", u"a-600", std::nullopt, u"3x0-a4000"},
        {u"310-a1200", u"a-1200", std::nullopt, std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(normalize_rom_id(row.id, row.model, row.video), row.normalized) << printable(row.id);
}

std::string manifest_with_boot(std::string_view tag, std::string_view type) {
    return "<kq9><application><configuration><system>a-1200</system><boot type=\"" + std::string(type) + "\">" +
           std::string(tag) + "</boot></configuration></application></kq9>";
}

TEST(BootTag, EveryTypesRules) {
    const test::TempFolder root;
    root.create_file(u"Shared\\hdf\\mydisk.hdf");
    root.create_file(u"Shared\\hdf\\310.hdf");
    const struct {
        std::string_view tag, type;
        std::u16string_view path; // below the root; empty: refused
    } rows[] = {
        {"310", "adf", u"Shared\\adf\\amiga-os-310-workbench.adf"},
        {"mydisk", "ADF", u"Shared\\adf\\mydisk.adf"},
        {"aros-latest", "adf", u"Shared\\adf\\aros-latest.adf"}, // no AROS disk there
        {"310", "hdf", u"Shared\\hdf\\workbench-310.hdf"},       // although 310.hdf exists
        {"other", "Hdf", u"Shared\\hdf\\workbench-other.hdf"},
        {"mydisk", "hdf", u"Shared\\hdf\\mydisk.hdf"}, // an existing image by its own name
        {"3x0", "dir", u"Shared\\dir\\System"},
        {"aros", "DIR", u"Shared\\dir\\AROS"},
        {"3x1", "dir", u""},
        {"310", "iso", u""},
    };
    for (const auto& row : rows) {
        std::u16string path;
        EXPECT_EQ(boot_tag_path(manifest_with_boot(row.tag, row.type).c_str(), root.path(), 0, path),
                  row.path.empty() ? status::invalid_argument : status::ok)
            << row.tag;
        EXPECT_EQ(row.path.empty() ? u"" : path,
                  row.path.empty() ? u"" : root.path() + u"\\" + std::u16string(row.path));
    }
    std::u16string path;
    EXPECT_LT(boot_tag_path("<kq9><application><configuration/></application></kq9>", u"C:\\D", 0, path), 0);
    EXPECT_LT(boot_tag_path("<kq9><application><configuration><boot>310</boot></configuration></application></kq9>",
                            u"C:\\D", 0, path),
              0)
        << "no type";
    EXPECT_LT(boot_tag_path("not xml", u"C:\\D", 0, path), 0);
    EXPECT_EQ(boot_tag_path(manifest_with_boot("310", "adf").c_str(), u"C:\\D", 1, path), status::invalid_argument);
}

TEST(BootTag, TheNewestArosBootDisk) {
    const test::TempFolder root;
    for (const std::u16string_view name : {u"aros-20120101-boot.adf", u"aros-20130502-boot.adf", u"aros-2013-boot.adf",
                                           u"aros-20130502-extra.adf", u"AROS-20121231-BOOT.ADF"})
        root.create_file(u"Shared\\adf\\" + std::u16string(name));
    std::u16string path;
    ASSERT_EQ(boot_tag_path(manifest_with_boot("aros-latest", "adf").c_str(), root.path() + u"\\", 0, path),
              status::ok);
    EXPECT_EQ(path, root.path() + u"\\Shared\\adf\\aros-20130502-boot.adf") << printable(path);
    const test::TempFolder versions;
    for (const std::u16string_view name : {u"aros-1.9-boot.adf", u"aros-1.10-boot.adf", u"aros-1.2-boot.adf"})
        versions.create_file(name);
    EXPECT_EQ(newest_aros_boot_disk(versions.path()), u"aros-1.10-boot");
    EXPECT_EQ(newest_aros_boot_disk(versions.path(u"missing")), std::nullopt);
}

} // namespace
} // namespace kq::manifest
