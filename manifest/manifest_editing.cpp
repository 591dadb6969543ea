#include "manifest/manifest_document.h"

#include "common/compare.h"
#include "common/utf.h"
#include "manifest/peripheral_types.h"
#include "manifest/xml_text.h"

#include <libxml/tree.h>

namespace kq::manifest {
namespace {

// The flexible models keep a switched-off JIT peripheral (without "fpu", with no cache).
constexpr std::u16string_view kFlexibleModels[] = {u"a-4xxx", u"a-aros"};
constexpr std::u16string_view kJitCacheBytes = u"8388608";

HResult set_type_from_table(ManifestDocument& document, std::u16string_view kind,
                            std::span<const std::u16string_view> table, std::size_t index) {
    if (index >= table.size()) return status::invalid_argument;
    return document.set_peripheral(kind, "type", table[index]);
}

} // namespace

HResult ManifestDocument::set_attribute(Element element, const char* name, std::u16string_view value) {
    if (element == nullptr || name == nullptr || *name == '\0') return status::invalid_argument;
    if (value.empty()) {
        xmlUnsetProp(element, xml(name));
        return status::ok;
    }
    const std::optional<std::string> utf8 = utf16_to_utf8(value);
    if (!utf8) return status::invalid_argument; // an unpaired surrogate
    return xmlSetProp(element, xml(name), xml(*utf8)) != nullptr ? status::ok : status::out_of_memory;
}

HResult ManifestDocument::set_element_text(Element element, std::u16string_view text) {
    if (element == nullptr) return status::invalid_argument;
    const std::optional<std::string> utf8 = utf16_to_utf8(text);
    if (!utf8) return status::invalid_argument;
    // Unlike xmlNodeSetContent, a text node takes the characters as they stand ("&" is no
    // entity reference).
    xmlNodeSetContent(element, nullptr);
    if (utf8->empty()) return status::ok;
    xmlNode* node = xmlNewDocTextLen(element->doc, xml(*utf8), static_cast<int>(utf8->size()));
    if (node == nullptr) return status::out_of_memory;
    xmlAddChild(element, node);
    return status::ok;
}

void ManifestDocument::remove_element(Element element) {
    if (element == nullptr) return;
    xmlUnlinkNode(element);
    xmlFreeNode(element);
}

HResult ManifestDocument::create_element(std::string_view parent_path, const char* name, std::u16string_view text,
                                         Element* created) {
    if (created != nullptr) *created = nullptr;
    if (name == nullptr || *name == '\0') return status::invalid_argument;
    Element parent = nullptr;
    if (const HResult found = find_element_by_path(parent_path, parent); found != status::ok) return found;
    xmlNode* element = xmlNewDocNode(document_.get(), nullptr, xml(name), nullptr);
    if (element == nullptr) return status::out_of_memory;
    if (const HResult filled = set_element_text(element, text); filled != status::ok) {
        xmlFreeNode(element);
        return filled;
    }
    xmlAddChild(parent, element);
    if (created != nullptr) *created = element;
    return status::ok;
}

HResult ManifestDocument::set_path_attribute(std::string_view path, const char* name, std::u16string_view value) {
    Element element = nullptr;
    if (const HResult found = find_element_by_path(path, element); found != status::ok) return found;
    return set_attribute(element, name, value);
}

HResult ManifestDocument::set_peripheral(std::u16string_view kind, const char* attribute, std::u16string_view value) {
    Element peripheral = find_peripheral(kind);
    if (value.empty()) {
        remove_element(peripheral);
        return status::ok;
    }
    if (!utf16_to_utf8(value)) return status::invalid_argument; // checked before anything changes
    if (peripheral == nullptr) {
        if (const HResult made = create_element(configuration_path(), "peripheral", kind, &peripheral);
            made != status::ok)
            return made;
    }
    return set_attribute(peripheral, attribute, value);
}

HResult ManifestDocument::set_network(std::size_t index) {
    return set_type_from_table(*this, u"network", kNetworkTypes, index);
}

HResult ManifestDocument::set_audio(std::size_t index) {
    return set_type_from_table(*this, u"audio", kAudioTypes, index);
}

HResult ManifestDocument::set_scsi(std::size_t index) { return set_type_from_table(*this, u"scsi", kScsiTypes, index); }

HResult ManifestDocument::set_typed_element(const char* name, std::optional<std::u16string_view> type,
                                            std::u16string_view text) {
    if (name == nullptr || *name == '\0') return status::invalid_argument;
    if (type && !utf16_to_utf8(*type)) return status::invalid_argument;
    Element element = find_typed_element(name, type);
    if (text.empty()) {
        remove_element(element);
        return status::ok;
    }
    if (element == nullptr) {
        if (const HResult made = create_element(configuration_path(), name, text, &element); made != status::ok)
            return made;
        return type ? set_attribute(element, "type", *type) : status::ok;
    }
    return set_element_text(element, text);
}

HResult ManifestDocument::set_jit(bool enabled, std::u16string_view model_id) {
    bool flexible = false;
    for (std::u16string_view model : kFlexibleModels) flexible |= equal_ignoring_case(model, model_id);
    Element jit = find_peripheral(u"jit");
    if (!enabled && !flexible) {
        remove_element(jit);
        return status::ok;
    }
    if (jit == nullptr) {
        if (const HResult made = create_element(configuration_path(), "peripheral", u"jit", &jit); made != status::ok)
            return made;
    }
    if (const HResult fpu = set_attribute(jit, "fpu", enabled ? u"true" : u""); fpu != status::ok) return fpu;
    return set_attribute(jit, "memory", enabled ? kJitCacheBytes : u"0");
}

} // namespace kq::manifest
