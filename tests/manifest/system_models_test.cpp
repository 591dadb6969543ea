#include "manifest/system_models.h"

#include "platform/string_table.h"

#include <gtest/gtest.h>

#include <vector>

namespace kq::manifest {
namespace {

using Sizes = std::vector<std::uint32_t>;
using Ids = std::vector<std::u16string_view>;

// The memory lists and ROM tables, written out again from the model description.
const Sizes chip1{1 * M, 1536 * K, 2 * M}, chip2{256 * K, 512 * K}, chip3{512 * K, 1 * M, 2 * M}, chip4{2 * M},
    chip5{2 * M, 4 * M, 8 * M}, chip6{1 * M, 2 * M};
const Sizes fast1{0, 1 * M, 2 * M, 4 * M, 8 * M}, fast2{0, 1 * M, 2 * M, 4 * M, 8 * M, 16 * M, 32 * M, 64 * M};
const Sizes slow1{0}, slow2{0, 256 * K, 512 * K};
const Ids roms_a500{u"120", u"130", u"204", u"205-a600", u"300-a1200", u"310-a600", u"3x0-a600", u"logica-dialoga-200"};
const Ids roms_a600{u"120",       u"130-a3000", u"204",      u"205-a600",
                    u"300-a1200", u"310-a600",  u"3x0-a600", u"logica-dialoga-200"};

struct ExpectedModel {
    std::u16string_view id, display, rom, cpu, fpu;
    Sizes chip;
    std::uint32_t chip_default;
    Sizes fast;
    std::uint32_t fast_default;
    Sizes slow;
    std::uint32_t slow_default;
    std::uint32_t agnus_limit;
    bool f1, f2, f3;
    Ids roms;
};

// clang-format off
const ExpectedModel kExpected[] = {
    {u"a-500", u"Amiga 500", u"120", u"68000", u"", chip3, 512 * K, fast1, 0, slow2, 0, 512 * K, 0, 0, 0, roms_a500},
    {u"a-500plus", u"Amiga 500 Plus", u"204", u"68000", u"", chip1, 1 * M, fast1, 0, slow1, 0, 0, 0, 0, 0, roms_a600},
    {u"a-600", u"Amiga 600", u"205-a600", u"68000", u"", chip1, 1 * M, fast1, 0, slow1, 0, 0, 0, 0, 0, roms_a600},
    {u"a-1000", u"Amiga 1000", u"110-ntsc", u"68000", u"", chip2, 256 * K, fast1, 0, slow1, 0, 0, 0, 0, 0,
     {u"amiga-boot-a1000", u"070", u"100", u"110-ntsc", u"110-pal", u"120", u"130", u"logica-dialoga-200"}},
    {u"a-1200", u"Amiga 1200", u"310-a1200", u"68EC020", u"", chip4, 2 * M, fast1, 0, slow1, 0, 0, 0, 0, 0,
     {u"130-a3000", u"300-a1200", u"310-a1200", u"3x0-a1200", u"logica-dialoga-200"}},
    {u"a-2000", u"Amiga 2000", u"130", u"68000", u"", chip3, 512 * K, fast1, 0, slow2, 512 * K, 512 * K, 0, 0, 0,
     roms_a500},
    {u"a-3000", u"Amiga 3000", u"310-a3000", u"68030", u"68882", chip1, 1 * M, fast2, 1 * M, slow1, 0, 0, 1, 0, 0,
     {u"130-a3000", u"140-a3000", u"204-a3000", u"310-a3000", u"3x0-a3000", u"logica-dialoga-200"}},
    {u"a-4000", u"Amiga 4000", u"310-a4000", u"68040", u"", chip4, 2 * M, fast2, 4 * M, slow1, 0, 0, 0, 0, 0,
     {u"130-a3000", u"300-a4000", u"310-a4000", u"3x0-a4000", u"logica-dialoga-200"}},
    {u"a-4000t", u"Amiga 4000T", u"310-a4000t", u"68040", u"", chip4, 2 * M, fast2, 4 * M, slow1, 0, 0, 0, 1, 0,
     {u"310-a4000t", u"3x0-a4000t", u"logica-dialoga-200"}},
    {u"a-4xxx", u"Amiga 4XXX", u"3x0-a4000", u"68020", u"68882", chip5, 2 * M, fast2, 0, slow1, 0, 2 * M, 1, 1, 1,
     {u"3x0-a4000", u"logica-dialoga-200"}},
    {u"a-whdload", u"WHDLoad", u"3x0-a4000", u"68020", u"68882", chip5, 2 * M, fast2, 0, slow1, 0, 2 * M, 1, 1, 1,
     {u"3x0-a4000", u"logica-dialoga-200"}},
    {u"a-aros", u"AROS", u"aros-latest", u"68020", u"68882", chip5, 2 * M, fast2, 0, slow1, 0, 2 * M, 1, 1, 1,
     {u"3x0-a4000", u"aros-latest"}},
    {u"a-cdtv", u"CDTV", u"130", u"68000", u"", chip6, 1 * M, fast1, 0, slow1, 0, 1 * M, 0, 0, 0,
     {u"130", u"204", u"205-a600", u"300-a1200", u"310-a600", u"3x0-a600", u"logica-dialoga-200"}},
    {u"a-cd32", u"CD\u00b3\u00b2", u"310-cd32", u"68EC020", u"", chip4, 2 * M, fast1, 0, slow1, 0, 0, 0, 0, 0,
     {u"310-cd32", u"logica-dialoga-200"}},
    {u"a-walker", u"Walker", u"320-walker", u"68030", u"68882", chip4, 2 * M, fast1, 4 * M, slow1, 0, 0, 1, 0, 0,
     {u"320-walker"}},
};
// clang-format on

Sizes sizes(const MemoryChoice& choice) { return Sizes(choice.sizes.begin(), choice.sizes.end()); }

TEST(SystemModels, EveryRowAsDescribed) {
    for (const ExpectedModel& expected : kExpected) {
        SCOPED_TRACE(std::string(expected.id.begin(), expected.id.end()));
        const SystemDefaults d = fill_system_defaults(expected.id);
        EXPECT_EQ(d.model->id, expected.id);
        EXPECT_EQ(platform::load_string(d.model->display_name, 79), expected.display);
        EXPECT_EQ(d.rom, expected.rom);
        EXPECT_EQ(d.cpu, expected.cpu);
        EXPECT_EQ(d.fpu, expected.fpu);
        EXPECT_EQ(sizes(d.chip), expected.chip);
        EXPECT_EQ(d.chip.default_size, expected.chip_default);
        EXPECT_EQ(sizes(d.fast), expected.fast);
        EXPECT_EQ(d.fast.default_size, expected.fast_default);
        EXPECT_EQ(sizes(d.slow), expected.slow);
        EXPECT_EQ(d.slow.default_size, expected.slow_default);
        EXPECT_EQ(d.agnus_limit, expected.agnus_limit);
        EXPECT_EQ(d.flag1, expected.f1);
        EXPECT_EQ(d.flag2, expected.f2);
        EXPECT_EQ(d.flag3, expected.f3);
        EXPECT_EQ(Ids(d.selectable_roms.begin(), d.selectable_roms.end()), expected.roms);
        for (std::u16string_view rom : expected.roms)
            EXPECT_NE(rom_display_name(rom), 0) << "every selectable ROM has a name";
    }
    EXPECT_EQ(fill_system_defaults(u"A-1200").rom, u"310-a1200");
    EXPECT_EQ(fill_system_defaults(u"a-9000").model->id, u"a-500") << "unknown ids are the a-500 row";
    EXPECT_EQ(fill_system_defaults(u"").model->id, u"a-500");
    EXPECT_FALSE(is_known_model(u"a-9000"));
    EXPECT_TRUE(is_known_model(u"A-CD32"));
}

TEST(SystemModels, Z3AndCpuBoardListsFollowCpuAndRom) {
    const Sizes z3_small{0, 1 * M, 2 * M, 4 * M, 8 * M, 16 * M, 32 * M, 64 * M, 128 * M};
    const Sizes z3_large{0,       1 * M,   2 * M,   4 * M,   8 * M,   16 * M,   32 * M,   64 * M,   128 * M,  256 * M,
                         384 * M, 512 * M, 768 * M, 896 * M, 960 * M, 1024 * M, 1536 * M, 1664 * M, 1728 * M, 1792 * M};
    const Sizes board1{0, 8 * M, 16 * M, 32 * M, 64 * M, 128 * M, 256 * M, 512 * M};
    const Sizes board2{8 * M, 16 * M, 32 * M, 64 * M, 128 * M, 256 * M, 512 * M};
    const Sizes none{0};
    const struct {
        std::u16string_view model;
        std::optional<std::u16string_view> cpu, rom;
        Sizes z3;
        std::uint32_t z3_default;
        Sizes board;
        std::uint32_t board_default;
    } rows[] = {
        {u"a-4000", u"68EC020", std::nullopt, none, 0, none, 0},
        {u"a-4000", u"68030", std::nullopt, z3_large, 0, board1, 0},
        {u"a-4000", std::nullopt, std::nullopt, z3_large, 0, board1, 0},
        {u"a-1200", std::nullopt, std::nullopt, none, 0, none, 0}, // 68EC020 is not 32-bit
        {u"a-1200", u"68030", std::nullopt, z3_small, 0, board1, 0},
        {u"a-1200", u"68030", u"130-a3000", z3_small, 0, none, 0}, // ROM below 3.0
        {u"a-500", u"68040", u"310-a600", none, 0, board1, 0},
        {u"a-4xxx", std::nullopt, std::nullopt, z3_large, 64 * M, board2, 16 * M},
        {u"a-4xxx", std::nullopt, u"120", z3_large, 64 * M, none, 0},
        {u"a-4xxx", u"68000", std::nullopt, none, 0, none, 0},
        {u"a-aros", std::nullopt, std::nullopt, z3_large, 64 * M, board2, 16 * M}, // aros is 3.95
        {u"a-whdload", u"68LC040", u"3x0-a4000", z3_large, 64 * M, board2, 16 * M},
        {u"a-3000", std::nullopt, std::nullopt, z3_small, 0, board1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.model.begin(), row.model.end()) + " " +
                     std::string(row.cpu.value_or(u"-").begin(), row.cpu.value_or(u"-").end()));
        const SystemDefaults d = fill_system_defaults(row.model, row.cpu, row.rom);
        EXPECT_EQ(sizes(d.z3), row.z3);
        EXPECT_EQ(d.z3.default_size, row.z3_default);
        EXPECT_EQ(sizes(d.cpu_board), row.board);
        EXPECT_EQ(d.cpu_board.default_size, row.board_default);
    }
    EXPECT_EQ(fill_system_defaults(u"a-whdload").cpu, u"68020") << "overrides are not stored";
}

TEST(SystemModels, RomNamesAndVersions) {
    const struct {
        std::u16string_view id, name;
        std::uint32_t version;
    } rows[] = {
        {u"070", u"Amiga 0.7 (NTSC, Beta)", 70},   {u"110-pal", u"Amiga 1.1 (PAL)", 110},
        {u"130-a3000", u"Amiga 1.3", 130},         {u"140-a3000", u"Amiga 1.4 (Beta)", 140},
        {u"204-a3000", u"Amiga 2.04", 204},        {u"205-a600", u"Amiga 2.05", 205},
        {u"310-a1200", u"Amiga 3.1", 310},         {u"3x0-a4000", u"Amiga 3.X", 395},
        {u"320-walker", u"Amiga 3.2 (beta)", 320}, {u"logica-dialoga-200", u"Logica Test 2.0", 0},
        {u"aros-latest", u"AROS Latest", 395},     {u"amiga-boot-a1000", u"No Kickstart", 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(platform::load_string(rom_display_name(row.id), 79), row.name);
        EXPECT_EQ(rom_version(row.id), row.version);
    }
    EXPECT_EQ(rom_display_name(u"999"), 0);
}

} // namespace
} // namespace kq::manifest
