// Description, model, system ROM, memory, video standard and drives.

#include "content/configuration_import/import_paths.h"
#include "content/configuration_import/import_steps.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "manifest/system_models.h"

#include <algorithm>
#include <array>

namespace kq::content {
namespace {

using manifest::K;
using manifest::M;

struct ModelChoice {
    std::u16string_view chipset; // "chipset_compatible"
    std::u16string_view model;
};
constexpr std::array kModelChoices{ModelChoice{u"A500", u"a-500"},   ModelChoice{u"A500+", u"a-500plus"},
                                   ModelChoice{u"A600", u"a-600"},   ModelChoice{u"A1000", u"a-1000"},
                                   ModelChoice{u"A1200", u"a-1200"}, ModelChoice{u"A2000", u"a-2000"},
                                   ModelChoice{u"A3000", u"a-3000"}, ModelChoice{u"A4000", u"a-4000"},
                                   ModelChoice{u"CD32", u"a-cd32"},  ModelChoice{u"CDTV", u"a-cdtv"}};

void add_ram(CatalogWriter& catalog, std::u16string_view type, std::int64_t bytes) {
    if (bytes > 0)
        catalog.add(CatalogSection::configuration, "ram", decimal_text(bytes), {{"type", std::u16string(type)}});
}

void add_memory(const UaeConfiguration& configuration, CatalogWriter& catalog) {
    const auto megabytes = [&](std::u16string_view key) {
        return std::int64_t{std::max(configuration.number_or(key, 0), 0)} * M;
    };
    add_ram(catalog, u"chip", std::int64_t{configuration.number_or(u"chipmem_size", 0)} * 512 * K);
    add_ram(catalog, u"slow", std::int64_t{configuration.number_or(u"bogomem_size", 0)} * 256 * K);
    const std::int64_t a3000_fast = megabytes(u"a3000mem_size");
    add_ram(catalog, u"fast", a3000_fast != 0 ? a3000_fast : megabytes(u"fastmem_size"));
    add_ram(catalog, u"z3",
            megabytes(u"z3mem_size") + megabytes(u"z3mem2_size") + megabytes(u"z3mem3_size") +
                megabytes(u"z3mem4_size"));
}

void add_floppy_drives(const ImportSource& source, CatalogWriter& catalog) {
    // Unit 0 is the internal drive, implied except on the CD machines, which have none.
    for (std::uint32_t unit = is_cd_model(source.model) ? 0 : 1; unit <= 3; ++unit) {
        const std::optional<std::int32_t> type = source.configuration.number(numbered_key(u"floppy", unit, u"type"));
        if (!type || *type < 0) continue; // -1: no drive
        catalog.add_peripheral(u"floppy", {{"unit", decimal_text(unit)}, {"type", *type == 1 ? u"hd" : u"dd"}});
    }
}

} // namespace

std::u16string model_of(const UaeConfiguration& configuration) {
    const std::optional<std::u16string_view> chipset = configuration.value(u"chipset_compatible");
    if (!chipset) return {};
    const auto choice = std::ranges::find_if(
        kModelChoices, [&](const ModelChoice& row) { return equal_ignoring_case(row.chipset, *chipset); });
    if (choice == kModelChoices.end()) return {};
    // 512 KiB of slow memory on an A500 chipset is the A2000's standard equipment.
    if (choice->model == u"a-500" && configuration.number(u"bogomem_size") == 2) return u"a-2000";
    // Switching 24-bit addressing off is taken for the tower; leaving the key out, for the desktop.
    if (choice->model == u"a-4000" && !configuration.boolean(u"cpu_24bit_addressing", true)) return u"a-4000t";
    return std::u16string(choice->model);
}

void import_machine(const ImportSource& source, CatalogWriter& catalog) {
    const UaeConfiguration& configuration = source.configuration;
    if (const auto description = configuration.value(u"config_description"))
        catalog.add(CatalogSection::description, "text", *description, {{"priority", u"1"}});
    if (!source.model.empty()) catalog.add(CatalogSection::configuration, "system", source.model);

    if (const auto rom_file = configuration.value(u"kickstart_rom_file")) {
        const std::u16string path = resolved_path(*rom_file, configured_folder(source, u"win32.rom_path"));
        if (const auto rom_id = source.files.system_rom(path, source.model))
            catalog.add(CatalogSection::configuration, "rom", *rom_id, {{"type", u"system"}});
    }

    add_memory(configuration, catalog);
    if (configuration.has(u"ntsc"))
        catalog.add(CatalogSection::configuration, "video", configuration.boolean(u"ntsc", false) ? u"ntsc" : u"pal");
    add_floppy_drives(source, catalog);
    if (configuration.has(u"cdimage0")) catalog.add_peripheral(u"optical", {{"type", u"cd"}});
}

} // namespace kq::content
