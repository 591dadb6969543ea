// CPU, FPU, JIT compiler and accelerator board.

#include "content/configuration_import/import_steps.h"

#include "common/compare.h"
#include "manifest/system_models.h"

#include <algorithm>
#include <array>

namespace kq::content {
namespace {

// "cpu_type" values that settle the CPU alone; the others depend on "cpu_model" and friends.
struct CpuChoice {
    std::u16string_view cpu_type, cpu;
};
constexpr std::array kPlainCpus{CpuChoice{u"68000", u"68000"}, CpuChoice{u"68010", u"68010"},
                                CpuChoice{u"68ec020", u"68ec020"}, CpuChoice{u"68ec020/68881", u"68ec020"}};

std::optional<std::u16string_view> cpu_of(const UaeConfiguration& configuration) {
    const std::optional<std::u16string_view> type = configuration.value(u"cpu_type");
    if (!type) return std::nullopt;
    const auto plain = std::ranges::find_if(
        kPlainCpus, [&](const CpuChoice& row) { return equal_ignoring_case(row.cpu_type, *type); });
    if (plain != kPlainCpus.end()) return plain->cpu;
    if (equal_ignoring_case(*type, u"68020") || equal_ignoring_case(*type, u"68020/68881"))
        return configuration.is(u"cpu_model", u"68030") ? u"68030" : u"68020";
    if (!equal_ignoring_case(*type, u"68040")) return std::nullopt;
    if (configuration.is(u"cpu_model", u"68060")) return u"68060";
    if (configuration.is(u"mmu_model", u"68ec040")) return u"68EC040";
    if (configuration.is(u"fpu_model", u"68040")) return u"68040";
    return u"68LC040";
}

std::optional<std::u16string_view> fpu_of(const UaeConfiguration& configuration) {
    for (const std::u16string_view fpu : {u"68881", u"68882"})
        if (configuration.is(u"fpu_model", fpu)) return fpu;
    if (configuration.is(u"cpu_type", u"68ec020/68881") || configuration.is(u"cpu_type", u"68020/68881"))
        return u"68881";
    return std::nullopt;
}

} // namespace

void import_processors(const ImportSource& source, CatalogWriter& catalog) {
    const UaeConfiguration& configuration = source.configuration;
    if (const auto cpu = cpu_of(configuration)) {
        std::u16string speed;
        if (configuration.has(u"cpu_speed")) speed = configuration.is(u"cpu_speed", u"max") ? u"max" : u"real";
        catalog.add_peripheral(u"cpu", {{"type", std::u16string(*cpu)}, {"speed", speed}});
    }
    if (const auto fpu = fpu_of(configuration)) catalog.add_peripheral(u"fpu", {{"type", std::u16string(*fpu)}});

    if (const std::int32_t cache_kilobytes = configuration.number_or(u"cachesize", 0); cache_kilobytes > 0)
        catalog.add_peripheral(u"jit", {{"memory", size_text(cache_kilobytes, manifest::K)},
                                        {"fpu", configuration.boolean(u"compfpu", true) ? u"true" : u"false"}});

    if (configuration.is(u"cpuboard_type", u"CyberStormPPC"))
        catalog.add_peripheral(u"ppc",
                               {{"memory", size_text(configuration.number_or(u"cpuboardmem1_size", 0), manifest::M)},
                                {"mode", configuration.is(u"uaeboard", u"full+indirect") ? u"exclusive" : u""},
                                {"type", u"cyberstorm"}});
}

} // namespace kq::content
