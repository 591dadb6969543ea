#include "manifest/system_models.h"

#include "common/compare.h"

#include <algorithm>

namespace kq::manifest {
namespace {

// clang-format off
// Memory size lists.
constexpr std::uint32_t kChip1[] = {1 * M, 1 * M + 512 * K, 2 * M};
constexpr std::uint32_t kChip2[] = {256 * K, 512 * K};
constexpr std::uint32_t kChip3[] = {512 * K, 1 * M, 2 * M};
constexpr std::uint32_t kChip4[] = {2 * M};
constexpr std::uint32_t kChip5[] = {2 * M, 4 * M, 8 * M};
constexpr std::uint32_t kChip6[] = {1 * M, 2 * M};
constexpr std::uint32_t kFast1[] = {0, 1 * M, 2 * M, 4 * M, 8 * M};
constexpr std::uint32_t kFast2[] = {0, 1 * M, 2 * M, 4 * M, 8 * M, 16 * M, 32 * M, 64 * M};
constexpr std::uint32_t kSlow1[] = {0};
constexpr std::uint32_t kSlow2[] = {0, 256 * K, 512 * K};
constexpr std::uint32_t kZ3None[] = {0};
constexpr std::uint32_t kZ3Small[] = {0, 1 * M, 2 * M, 4 * M, 8 * M, 16 * M, 32 * M, 64 * M, 128 * M};
constexpr std::uint32_t kZ3Large[] = {0,        1 * M,    2 * M,    4 * M,    8 * M,
                                      16 * M,   32 * M,   64 * M,   128 * M,  256 * M,
                                      384 * M,  512 * M,  768 * M,  896 * M,  960 * M,
                                      1024 * M, 1536 * M, 1664 * M, 1728 * M, 1792 * M};
constexpr std::uint32_t kBoardNone[] = {0};
constexpr std::uint32_t kBoard1[] = {0, 8 * M, 16 * M, 32 * M, 64 * M, 128 * M, 256 * M, 512 * M};
constexpr std::uint32_t kBoard2[] = {8 * M, 16 * M, 32 * M, 64 * M, 128 * M, 256 * M, 512 * M};

// Selectable ROMs, in order.
constexpr std::u16string_view kRomsA500[] = {u"120", u"130", u"204", u"205-a600", u"300-a1200",
                                             u"310-a600", u"3x0-a600", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA600[] = {u"120", u"130-a3000", u"204", u"205-a600", u"300-a1200",
                                             u"310-a600", u"3x0-a600", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA1000[] = {u"amiga-boot-a1000", u"070", u"100", u"110-ntsc",
                                              u"110-pal", u"120", u"130", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA1200[] = {u"130-a3000", u"300-a1200", u"310-a1200", u"3x0-a1200",
                                              u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA3000[] = {u"130-a3000", u"140-a3000", u"204-a3000",
                                              u"310-a3000", u"3x0-a3000", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA4000[] = {u"130-a3000", u"300-a4000", u"310-a4000", u"3x0-a4000",
                                              u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA4000T[] = {u"310-a4000t", u"3x0-a4000t", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsA4xxx[] = {u"3x0-a4000", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsAros[] = {u"3x0-a4000", u"aros-latest"};
constexpr std::u16string_view kRomsCdtv[] = {u"130", u"204", u"205-a600", u"300-a1200", u"310-a600",
                                             u"3x0-a600", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsCd32[] = {u"310-cd32", u"logica-dialoga-200"};
constexpr std::u16string_view kRomsWalker[] = {u"320-walker"};

constexpr ModelRow kModels[] = {
    {u"a-500", strings::model_a500, u"120", u"68000", u"", {kChip3, 512 * K}, {kFast1, 0}, {kSlow2, 0},
     Z3Rule::none, 512 * K, false, false, false, false, kRomsA500},
    {u"a-500plus", strings::model_a500_plus, u"204", u"68000", u"", {kChip1, 1 * M}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::none, 0, false, false, false, false, kRomsA600},
    {u"a-600", strings::model_a600, u"205-a600", u"68000", u"", {kChip1, 1 * M}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::none, 0, false, false, false, false, kRomsA600},
    {u"a-1000", strings::model_a1000, u"110-ntsc", u"68000", u"", {kChip2, 256 * K}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::none, 0, false, false, false, false, kRomsA1000},
    {u"a-1200", strings::model_a1200, u"310-a1200", u"68EC020", u"", {kChip4, 2 * M}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::small, 0, false, false, false, false, kRomsA1200},
    {u"a-2000", strings::model_a2000, u"130", u"68000", u"", {kChip3, 512 * K}, {kFast1, 0}, {kSlow2, 512 * K},
     Z3Rule::none, 512 * K, false, false, false, false, kRomsA500},
    {u"a-3000", strings::model_a3000, u"310-a3000", u"68030", u"68882", {kChip1, 1 * M}, {kFast2, 1 * M},
     {kSlow1, 0}, Z3Rule::small, 0, true, false, false, false, kRomsA3000},
    {u"a-4000", strings::model_a4000, u"310-a4000", u"68040", u"", {kChip4, 2 * M}, {kFast2, 4 * M}, {kSlow1, 0},
     Z3Rule::large, 0, false, false, false, false, kRomsA4000},
    {u"a-4000t", strings::model_a4000t, u"310-a4000t", u"68040", u"", {kChip4, 2 * M}, {kFast2, 4 * M}, {kSlow1, 0},
     Z3Rule::large, 0, false, true, false, false, kRomsA4000T},
    {u"a-4xxx", strings::model_a4xxx, u"3x0-a4000", u"68020", u"68882", {kChip5, 2 * M}, {kFast2, 0}, {kSlow1, 0},
     Z3Rule::flexible, 2 * M, true, true, true, true, kRomsA4xxx},
    {u"a-whdload", strings::model_whdload, u"3x0-a4000", u"68020", u"68882", {kChip5, 2 * M}, {kFast2, 0},
     {kSlow1, 0}, Z3Rule::flexible, 2 * M, true, true, true, true, kRomsA4xxx},
    {u"a-aros", strings::model_aros, u"aros-latest", u"68020", u"68882", {kChip5, 2 * M}, {kFast2, 0}, {kSlow1, 0},
     Z3Rule::flexible, 2 * M, true, true, true, true, kRomsAros},
    {u"a-cdtv", strings::model_cdtv, u"130", u"68000", u"", {kChip6, 1 * M}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::none, 1 * M, false, false, false, false, kRomsCdtv},
    {u"a-cd32", strings::model_cd32, u"310-cd32", u"68EC020", u"", {kChip4, 2 * M}, {kFast1, 0}, {kSlow1, 0},
     Z3Rule::none, 0, false, false, false, false, kRomsCd32},
    {u"a-walker", strings::model_walker, u"320-walker", u"68030", u"68882", {kChip4, 2 * M}, {kFast1, 4 * M},
     {kSlow1, 0}, Z3Rule::small, 0, true, false, false, false, kRomsWalker},
};
// clang-format on

// Every default size is one of its list's sizes.
static_assert(std::ranges::all_of(kModels, [](const ModelRow& row) {
    return std::ranges::find(row.chip.sizes, row.chip.default_size) != row.chip.sizes.end() &&
           std::ranges::find(row.fast.sizes, row.fast.default_size) != row.fast.sizes.end() &&
           std::ranges::find(row.slow.sizes, row.slow.default_size) != row.slow.sizes.end();
}));

constexpr std::u16string_view k32BitCpus[] = {u"68020", u"68030", u"68040", u"68ec040", u"68lc040", u"68060"};

// ROM display names: exact ids first, then the version prefixes.
struct RomName {
    std::u16string_view id;
    bool is_prefix;
    StringId display_name;
};
constexpr RomName kRomNames[] = {
    {u"070", false, strings::rom_070},
    {u"100", false, strings::rom_100},
    {u"110-ntsc", false, strings::rom_110_ntsc},
    {u"110-pal", false, strings::rom_110_pal},
    {u"120", false, strings::rom_120},
    {u"130", true, strings::rom_130},
    {u"140", true, strings::rom_140},
    {u"204", true, strings::rom_204},
    {u"205", true, strings::rom_205},
    {u"300", true, strings::rom_300},
    {u"310", true, strings::rom_310},
    {u"3x0", true, strings::rom_3x0},
    {u"320-walker", false, strings::rom_320_walker},
    {u"logica-dialoga-200", false, strings::rom_logica_dialoga_200},
    {u"aros-latest", false, strings::rom_aros_latest},
    {u"amiga-boot-a1000", false, strings::no_kickstart},
};

} // namespace

const ModelRow& find_model(std::u16string_view model_id) {
    const auto row =
        std::ranges::find_if(kModels, [&](const ModelRow& model) { return equal_ignoring_case(model.id, model_id); });
    return row != std::end(kModels) ? *row : kModels[0];
}

bool is_known_model(std::u16string_view model_id) {
    return std::ranges::any_of(kModels, [&](const ModelRow& model) { return equal_ignoring_case(model.id, model_id); });
}

bool is_32bit_cpu(std::u16string_view cpu_id) {
    return std::ranges::any_of(k32BitCpus, [&](std::u16string_view cpu) { return equal_ignoring_case(cpu, cpu_id); });
}

StringId rom_display_name(std::u16string_view rom_id) {
    for (const RomName& name : kRomNames)
        if (name.is_prefix ? starts_with_ignoring_case(rom_id, name.id) : equal_ignoring_case(rom_id, name.id))
            return name.display_name;
    return 0;
}

std::uint32_t rom_version(std::u16string_view rom_id) {
    if (starts_with_ignoring_case(rom_id, u"3x0") || starts_with_ignoring_case(rom_id, u"aros")) return 395;
    std::uint32_t version = 0;
    for (std::size_t i = 0; i < rom_id.size() && rom_id[i] >= u'0' && rom_id[i] <= u'9'; ++i)
        version = version * 10 + (rom_id[i] - u'0');
    return version;
}

SystemDefaults fill_system_defaults(std::u16string_view model_id, std::optional<std::u16string_view> cpu_override,
                                    std::optional<std::u16string_view> rom_override) {
    const ModelRow& model = find_model(model_id);
    const std::u16string_view cpu = cpu_override && !cpu_override->empty() ? *cpu_override : model.cpu;
    const std::u16string_view rom = rom_override && !rom_override->empty() ? *rom_override : model.rom;
    const bool wide_cpu = is_32bit_cpu(cpu);

    MemoryChoice z3{kZ3None, 0};
    switch (model.z3) {
    case Z3Rule::small:
        if (wide_cpu) z3 = {kZ3Small, 0};
        break;
    case Z3Rule::large:
        if (wide_cpu) z3 = {kZ3Large, 0};
        break;
    case Z3Rule::flexible:
        if (wide_cpu) z3 = {kZ3Large, 64 * M};
        break;
    case Z3Rule::none: break;
    }
    MemoryChoice board{kBoardNone, 0};
    if (wide_cpu && rom_version(rom) >= 300)
        board = model.a4xxx_row ? MemoryChoice{kBoard2, 16 * M} : MemoryChoice{kBoard1, 0};

    return SystemDefaults{&model,
                          model.chip,
                          model.fast,
                          model.slow,
                          z3,
                          board,
                          model.rom,
                          model.cpu,
                          model.fpu,
                          model.selectable_roms,
                          model.agnus_limit,
                          model.flag1,
                          model.flag2,
                          model.flag3};
}

} // namespace kq::manifest
