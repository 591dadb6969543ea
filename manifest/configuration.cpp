#include "manifest/configuration.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "manifest/peripheral_types.h"
#include "manifest/rom_files.h"
#include "manifest/system_models.h"

#include <array>

namespace kq::manifest {
namespace {

struct CompatibilitySwitch {
    std::u16string_view name;
    std::uint32_t bit;
};

// The lookup order; "jit" (0x2000) deliberately comes after "hostio".
constexpr std::array<CompatibilitySwitch, 17> kCompatibilitySwitches{{
    {u"flexible-blitter-cycles", 0x1},
    {u"flexible-blitter-immediate", 0x2},
    {u"flexible-sprite-collisions-spritesonly", 0x4},
    {u"flexible-sprite-collisions-spritesplayfield", 0x8},
    {u"flexible-cpu-cycles", 0x10},
    {u"flexible-cpu-compatibility", 0x20},
    {u"flexible-fpu-compatibility", 0x40},
    {u"flexible-sound", 0x80},
    {u"flexible-maxhorizontal-nosuperhires", 0x100},
    {u"flexible-maxhorizontal-nohires", 0x200},
    {u"flexible-maxvertical-nointerlace", 0x400},
    {u"turbo-floppy", 0x800},
    {u"turbo-cpu", 0x1000},
    {u"nosavestate", 0x4000},
    {u"mouseintegration", 0x8000},
    {u"hostio", 0x10000},
    {u"jit", 0x2000},
}};

std::u16string attribute_or(Element element, const char* name, std::u16string_view fallback) {
    Text value;
    get_attribute_text(element, name, value);
    return value ? std::move(*value) : std::u16string(fallback);
}

std::size_t peripheral_type(const ManifestDocument& document, std::u16string_view kind,
                            std::span<const std::u16string_view> table) {
    Text type;
    get_attribute_text(document.find_peripheral(kind), "type", type);
    return type ? peripheral_type_index(table, *type) : 0;
}

Element system_rom_element(const ManifestDocument& document) {
    Element rom = document.find_typed_element("rom", u"system");
    return rom != nullptr ? rom : document.find_typed_element("rom", std::nullopt);
}

} // namespace

std::u16string read_model_id(const ManifestDocument& document) {
    return element_text(find_child_element("system", document.configuration())).value_or(u"");
}

Text read_video(const ManifestDocument& document) {
    return element_text(find_child_element("video", document.configuration()));
}

bool read_is_ntsc(const ManifestDocument& document) {
    return equal_ignoring_case(read_video(document).value_or(u""), u"ntsc");
}

SystemRom read_system_rom(ManifestDocument& document) {
    const std::u16string model = read_model_id(document);
    Element rom = system_rom_element(document);
    const Text text = element_text(rom);
    if (!text) return {std::u16string(find_model(model).rom), false};
    const Text video = read_video(document);
    std::optional<std::u16string> normalized =
        normalize_rom_id(*text, model, video ? std::optional<std::u16string_view>(*video) : std::nullopt);
    if (!normalized) return {*text, false};
    ManifestDocument::set_element_text(rom, *normalized);
    return {std::move(*normalized), true};
}

CpuSetting read_cpu(const ManifestDocument& document) {
    Element cpu = document.find_peripheral(u"cpu");
    const std::u16string model = read_model_id(document);
    return {attribute_or(cpu, "type", find_model(model).cpu),
            equal_ignoring_case(attribute_or(cpu, "speed", u""), u"max")};
}

std::u16string read_fpu(const ManifestDocument& document) {
    Text named;
    get_attribute_text(document.find_peripheral(u"fpu"), "type", named);
    if (named) return std::move(*named);
    const ModelRow& model = find_model(read_model_id(document));
    // Unlike everywhere else, letter case counts here.
    return read_cpu(document).id == model.cpu ? std::u16string(model.fpu) : std::u16string();
}

SecondProcessor read_second_processor(const ManifestDocument& document) {
    Element ppc = document.find_peripheral(u"ppc");
    if (ppc == nullptr) return SecondProcessor::none;
    return attribute_equals(ppc, "mode", u"parallel") ? SecondProcessor::parallel : SecondProcessor::exclusive;
}

JitSetting read_jit(const ManifestDocument& document) {
    Element jit = document.find_peripheral(u"jit");
    if (jit == nullptr) return {};
    const std::u16string memory = attribute_or(jit, "memory", u"");
    return {true, attribute_equals(jit, "fpu", u"true"),
            static_cast<std::uint32_t>(read_integer_prefix(memory, 10).value_or(0))};
}

std::uint32_t read_chip_memory(const ManifestDocument& document) {
    const Text size = element_text(document.find_typed_element("ram", u"chip"));
    if (size) {
        // Sizes are unsigned decimals; digits past the 32-bit range make no size.
        std::uint64_t bytes = 0;
        std::size_t i = 0;
        for (; i < size->size() && (*size)[i] >= u'0' && (*size)[i] <= u'9' && bytes <= 0xFFFFFFFFu; ++i)
            bytes = bytes * 10 + ((*size)[i] - u'0');
        if (i > 0 && bytes <= 0xFFFFFFFFu) return static_cast<std::uint32_t>(bytes);
    }
    return find_model(read_model_id(document)).chip.default_size;
}

bool read_ecs_agnus(const ManifestDocument& document) {
    return attribute_equals(document.find_peripheral(u"agnus"), "type", u"ecs");
}

std::size_t read_network(const ManifestDocument& document) {
    return peripheral_type(document, u"network", kNetworkTypes);
}

std::size_t read_audio(const ManifestDocument& document) { return peripheral_type(document, u"audio", kAudioTypes); }

std::size_t read_scsi(const ManifestDocument& document) { return peripheral_type(document, u"scsi", kScsiTypes); }

Text read_keyboard_layout(const ManifestDocument& document) {
    Text layout;
    document.find_keyboard(&layout);
    return layout;
}

std::uint32_t compatibility_bit(std::u16string_view name) {
    for (const CompatibilitySwitch& entry : kCompatibilitySwitches)
        if (equal_ignoring_case(entry.name, name)) return entry.bit;
    return 0;
}

std::uint32_t read_compatibility(const ManifestDocument& document) {
    std::uint32_t bits = 0;
    Element configuration = document.configuration();
    for (Element e = find_child_element("compatibility", configuration); e != nullptr;
         e = find_child_element("compatibility", configuration, e))
        bits |= compatibility_bit(element_text(e).value_or(u""));
    return bits;
}

HResult write_system_rom(ManifestDocument& document, std::u16string_view rom_id) {
    Element rom = system_rom_element(document);
    if (rom_id.empty()) {
        ManifestDocument::remove_element(rom);
        return status::ok;
    }
    if (rom != nullptr) return ManifestDocument::set_element_text(rom, rom_id);
    return document.set_typed_element("rom", u"system", rom_id);
}

HResult write_cpu(ManifestDocument& document, std::u16string_view cpu_id, bool max_speed) {
    if (const HResult set = document.set_peripheral(u"cpu", "type", cpu_id); set != status::ok || cpu_id.empty())
        return set;
    return ManifestDocument::set_attribute(document.find_peripheral(u"cpu"), "speed", max_speed ? u"max" : u"");
}

HResult write_second_processor(ManifestDocument& document, SecondProcessor mode) {
    switch (mode) {
    case SecondProcessor::none: return document.set_peripheral(u"ppc", "mode", u"");
    case SecondProcessor::parallel: return document.set_peripheral(u"ppc", "mode", u"parallel");
    case SecondProcessor::exclusive: return document.set_peripheral(u"ppc", "mode", u"exclusive");
    }
    return status::invalid_argument;
}

HResult write_chip_memory(ManifestDocument& document, std::uint32_t bytes) {
    const ModelRow& model = find_model(read_model_id(document));
    const HResult written =
        document.set_typed_element("ram", u"chip", bytes == model.chip.default_size ? u"" : decimal_text(bytes));
    if (written != status::ok) return written;
    const bool needs_ecs = model.agnus_limit != 0 && bytes > model.agnus_limit;
    return document.set_peripheral(u"agnus", "type", needs_ecs ? u"ecs" : u"");
}

HResult write_video(ManifestDocument& document, bool ntsc) {
    const std::u16string_view text = ntsc ? u"ntsc" : u"pal";
    if (Element video = find_child_element("video", document.configuration()))
        return ManifestDocument::set_element_text(video, text);
    return document.create_element(document.application_path() + "/configuration", "video", text);
}

HResult write_compatibility(ManifestDocument& document, std::uint32_t bits) {
    Element configuration = document.configuration();
    for (const CompatibilitySwitch& entry : kCompatibilitySwitches) {
        bool present = false;
        for (Element e = find_child_element("compatibility", configuration); e != nullptr;) {
            Element next = find_child_element("compatibility", configuration, e);
            if (equal_ignoring_case(element_text(e).value_or(u""), entry.name)) {
                if ((bits & entry.bit) != 0 && !present)
                    present = true;
                else
                    ManifestDocument::remove_element(e);
            }
            e = next;
        }
        if ((bits & entry.bit) != 0 && !present) {
            if (const HResult made = document.create_element(document.application_path() + "/configuration",
                                                             "compatibility", entry.name);
                made != status::ok)
                return made;
        }
    }
    return status::ok;
}

} // namespace kq::manifest
