#pragma once
// The Amiga models: their defaults, memory choices and selectable ROMs. Model ids compare
// without regard to case; an unknown or missing id is the "a-500" row.

#include "string_ids.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kq::manifest {

inline constexpr std::uint32_t K = 1024, M = 1024 * K;

// A memory kind's allowed sizes in bytes, and the size used when nothing is chosen.
struct MemoryChoice {
    std::span<const std::uint32_t> sizes;
    std::uint32_t default_size;
};

enum class Z3Rule { none, small, large, flexible };

struct ModelRow {
    std::u16string_view id;
    StringId display_name;
    std::u16string_view rom, cpu, fpu; // default ROM, CPU and FPU ids; fpu empty: none
    MemoryChoice chip, fast, slow;
    Z3Rule z3;
    std::uint32_t agnus_limit; // chip size up to which no ECS Agnus is needed; 0: no such choice
    bool flag1, flag2, flag3;  // switches of the emulator configuration writer
    bool a4xxx_row;            // "a-4xxx", "a-whdload" and "a-aros" share one row of defaults
    std::span<const std::u16string_view> selectable_roms;
};

// Everything a model offers once its CPU and ROM are settled.
struct SystemDefaults {
    const ModelRow* model;
    MemoryChoice chip, fast, slow, z3, cpu_board;
    std::u16string_view rom, cpu, fpu;
    std::span<const std::u16string_view> selectable_roms;
    std::uint32_t agnus_limit;
    bool flag1, flag2, flag3;
};

// The model's row; the "a-500" row for an unknown or missing id.
const ModelRow& find_model(std::u16string_view model_id);
// Whether `model_id` is one of the known ids.
bool is_known_model(std::u16string_view model_id);

// The defaults of `model_id`. The overrides replace the model's default CPU and ROM in the
// rules that depend on them (the Z3 and CPU-board lists); they are not stored.
SystemDefaults fill_system_defaults(std::u16string_view model_id,
                                    std::optional<std::u16string_view> cpu_override = std::nullopt,
                                    std::optional<std::u16string_view> rom_override = std::nullopt);

// The CPU ids, as the configuration names them.
inline constexpr std::array<std::u16string_view, 9> kCpuIds{u"68000",   u"68010",   u"68ec020", u"68020", u"68030",
                                                            u"68ec040", u"68lc040", u"68040",   u"68060"};
// Whether the CPU addresses 32 bits ("68EC020" deliberately does not count).
bool is_32bit_cpu(std::u16string_view cpu_id);

// A ROM id's display name, 0 for an id that has none.
StringId rom_display_name(std::u16string_view rom_id);
// 395 for "3x0" and "aros" ids; otherwise the decimal number at the start of the id (0: none).
std::uint32_t rom_version(std::u16string_view rom_id);

} // namespace kq::manifest
