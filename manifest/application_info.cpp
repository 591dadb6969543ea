#include "manifest/application_info.h"

#include "common/compare.h"
#include "manifest/configuration.h"
#include "manifest/system_models.h"
#include "module/message_format.h"
#include "platform/string_table.h"
#include "string_ids.h"

#include <algorithm>

namespace kq::manifest {
namespace {

// Display names are read into 80-character buffers.
constexpr std::size_t kDisplayNameChars = 79;

std::u16string display_name(StringId id) { return platform::load_string(id, kDisplayNameChars); }

void add_line(std::u16string& text, StringId format, std::u16string_view name) {
    const MessageArgument argument = name;
    const std::u16string pattern = platform::load_string(format, kDisplayNameChars);
    text += format_message(pattern, std::span(&argument, 1)).value_or(pattern);
    text += u"\r\n";
}

std::u16string upper_case(std::u16string_view id) {
    std::u16string out(id);
    for (char16_t& c : out)
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
    return out;
}

} // namespace

HResult application_info(const char* manifest_utf8, std::u16string& text) {
    text.clear();
    ManifestDocument document;
    if (const HResult loaded = document.load(manifest_utf8); loaded != status::ok) return loaded;
    const std::u16string model = read_model_id(document);
    if (model.empty()) return status::ok;
    if (is_known_model(model))
        add_line(text, strings::model_line_template, display_name(find_model(model).display_name));

    const std::u16string rom = read_system_rom(document).id;
    const std::u16string cpu = read_cpu(document).id;
    const SystemDefaults defaults = fill_system_defaults(model, cpu, rom);
    if (std::ranges::any_of(defaults.selectable_roms,
                            [&](std::u16string_view id) { return equal_ignoring_case(id, rom); }))
        add_line(text, strings::rom_line_template, display_name(rom_display_name(rom)));

    bool pci_bridge = false, second_processor = false;
    Element configuration = document.configuration();
    for (Element e = find_child_element("peripheral", configuration); e != nullptr;
         e = find_child_element("peripheral", configuration, e)) {
        const std::u16string kind = element_text(e).value_or(u"");
        if (equal_ignoring_case(kind, u"network"))
            pci_bridge |= attribute_equals(e, "type", u"rtl8029");
        else if (equal_ignoring_case(kind, u"audio"))
            pci_bridge |= attribute_equals(e, "type", u"fm801") || attribute_equals(e, "type", u"es1370");
        else if (equal_ignoring_case(kind, u"ppc"))
            second_processor = true;
    }

    if (std::ranges::any_of(kCpuIds, [&](std::u16string_view id) { return equal_ignoring_case(id, cpu); })) {
        if (second_processor) {
            add_line(text, strings::first_cpu_line_template, upper_case(cpu));
            add_line(text, strings::second_cpu_line_template, display_name(strings::ppc_604e));
        } else {
            add_line(text, strings::cpu_line_template, upper_case(cpu));
        }
    }
    if (pci_bridge) add_line(text, strings::pci_bridge_line_template, display_name(strings::prometheus));
    return status::ok;
}

} // namespace kq::manifest
