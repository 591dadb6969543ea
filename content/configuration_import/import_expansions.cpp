// Expansion devices, host drives, clock, drive sounds, parallel and serial ports, chipset.

#include "content/configuration_import/import_steps.h"

#include "manifest/system_models.h"

#include <array>

namespace kq::content {
namespace {

// A peripheral that one boolean key switches on.
struct SwitchedPeripheral {
    std::u16string_view key, kind;
};
constexpr std::array kHostDrives{SwitchedPeripheral{u"win32.map_drives", u"automount-harddrives"},
                                 SwitchedPeripheral{u"win32.map_net_drives", u"automount-network"},
                                 SwitchedPeripheral{u"win32.map_cd_drives", u"automount-optical"},
                                 SwitchedPeripheral{u"win32.map_drives_auto", u"automount-removable"}};

// Adds `kind` with attribute "type" = `type` unless the type is empty.
void add_typed(CatalogWriter& catalog, std::u16string_view kind, std::u16string_view type) {
    if (!type.empty()) catalog.add_peripheral(kind, {{"type", std::u16string(type)}});
}

std::u16string_view scsi_type(const UaeConfiguration& configuration) {
    if (configuration.has(u"a4091_rom_file")) return u"a4091";
    if (configuration.has(u"a2091_rom_file")) return u"a590";
    return configuration.boolean(u"scsi", false) ? u"synthetic" : u"";
}

std::u16string_view audio_type(const UaeConfiguration& configuration) {
    if (configuration.boolean(u"fm801_pci", false)) return u"fm801";
    return configuration.boolean(u"es1370_pci", false) ? u"es1370" : u"";
}

std::u16string_view network_type(const UaeConfiguration& configuration) {
    if (configuration.is(u"a2065", u"slirp_inbound")) return u"a2065";
    if (configuration.is(u"ne2000_pci", u"slirp")) return u"rtl8029";
    return configuration.boolean(u"bsdsocket_emu", false) ? u"synthetic" : u"";
}

std::u16string_view parallel_mode(const UaeConfiguration& configuration) {
    if (configuration.is(u"parallel_matrix_emulation", u"epson_matrix_48pin")) return u"epsonq";
    if (configuration.boolean(u"parallel_postscript_emulation", false) &&
        configuration.boolean(u"parallel_postscript_detection", false))
        return u"postscript";
    return u"native";
}

std::u16string_view serial_mode(const UaeConfiguration& configuration) {
    if (configuration.has(u"win32.midiin_device_name")) return u"midi";
    return configuration.has(u"win32.serial_port") ? u"native" : u"";
}

void add_clock(const ImportSource& source, CatalogWriter& catalog) {
    if (!source.configuration.is(u"rtc", u"MSM6242B")) return;
    if (source.model == u"a-500") catalog.add_peripheral(u"a-501");
    if (source.model == u"a-600")
        catalog.add_peripheral(
            u"a-601", {{"memory", size_text(source.configuration.number_or(u"chipmem_size", 0), 512 * manifest::K)}});
}

bool are_drives_silent(const UaeConfiguration& configuration) {
    for (std::uint32_t unit = 0; unit <= 3; ++unit)
        if (configuration.number_or(numbered_key(u"floppy", unit, u"sound"), 1) != 0) return false;
    return true;
}

} // namespace

void import_expansions(const ImportSource& source, CatalogWriter& catalog) {
    const UaeConfiguration& configuration = source.configuration;
    if (const std::int32_t megabytes = configuration.number_or(u"gfxcard_size", 0); megabytes > 0)
        catalog.add_peripheral(
            u"rtg", {{"type", configuration.is(u"gfxcard_type", u"PicassoIV_Z3") ? u"picasso-iv" : u"synthetic"},
                     {"memory", size_text(megabytes, manifest::M)}});
    add_typed(catalog, u"scsi", scsi_type(configuration));
    add_typed(catalog, u"audio", audio_type(configuration));
    add_typed(catalog, u"network", network_type(configuration));
    for (const SwitchedPeripheral& drive : kHostDrives)
        if (configuration.boolean(drive.key, false)) catalog.add_peripheral(drive.kind);
    if (configuration.is(u"gfx_lores_mode", u"filtered")) catalog.add_peripheral(u"filter-interpolation");
    add_clock(source, catalog);
    if (are_drives_silent(configuration)) catalog.add_peripheral(u"silent-drives");
    if (configuration.has(u"win32.parallel_port"))
        catalog.add_peripheral(u"parallel", {{"mode", std::u16string(parallel_mode(configuration))}});
    if (const std::u16string_view mode = serial_mode(configuration); !mode.empty())
        catalog.add_peripheral(u"serial", {{"mode", std::u16string(mode)}});
    if (configuration.is(u"chipset", u"ecs_agnus")) add_typed(catalog, u"agnus", u"ecs");
}

} // namespace kq::content
