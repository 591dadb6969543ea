#include "manifest/manifest_document.h"

#include "common/compare.h"
#include "common/integer_text.h"

namespace kq::manifest {
namespace {

bool text_equals(Element element, std::u16string_view expected) {
    const Text text = element_text(element);
    return equal_ignoring_case(text.value_or(u""), expected);
}

// The "unit" attribute read as a decimal number; a missing or digitless one names no unit.
std::optional<std::int32_t> unit_of(Element element) {
    Text unit;
    if (!get_attribute_text(element, "unit", unit) || !unit) return std::nullopt;
    return read_integer_prefix(*unit, 10);
}

template <class Match>
Element first_child(Element parent, std::string_view name, Match&& match) {
    for (Element child = find_child_element(name, parent); child != nullptr;
         child = find_child_element(name, parent, child))
        if (match(child)) return child;
    return nullptr;
}

} // namespace

Element ManifestDocument::configuration() const { return find_element_by_path(configuration_path()); }

Element ManifestDocument::find_peripheral(std::u16string_view kind) const {
    return first_child(configuration(), "peripheral", [&](Element e) { return text_equals(e, kind); });
}

Element ManifestDocument::find_peripheral_unit(std::u16string_view kind, std::int32_t unit) const {
    return first_child(configuration(), "peripheral",
                       [&](Element e) { return unit_of(e) == unit && text_equals(e, kind); });
}

Element ManifestDocument::find_typed_element(std::string_view name, std::optional<std::u16string_view> type) const {
    const bool wants_type = type && !type->empty();
    return first_child(configuration(), name, [&](Element e) {
        Text value; // an empty "type" is no type
        get_attribute_text(e, "type", value);
        return wants_type ? value && equal_ignoring_case(*value, *type) : !value;
    });
}

Element ManifestDocument::find_input_port(std::int32_t unit, bool multitap, Text* kind) const {
    Element port = first_child(configuration(), "peripheral", [&](Element e) {
        if (attribute_equals(e, "multitap", u"true") != multitap || unit_of(e) != unit) return false;
        const std::u16string text = element_text(e).value_or(u"");
        return starts_with_ignoring_case(text, u"input-") && !equal_ignoring_case(text, u"input-virtualbuttons");
    });
    if (kind != nullptr) *kind = element_text(port);
    return port;
}

Element ManifestDocument::find_multitap(Text* type) const {
    Element multitap = find_peripheral(u"input-multitap");
    if (type != nullptr) get_attribute_text(multitap, "type", *type);
    return multitap;
}

Element ManifestDocument::find_keyboard(Text* layout) const {
    Element keyboard = find_peripheral(u"keyboard");
    if (layout != nullptr) get_attribute_text(keyboard, "layout", *layout);
    return keyboard;
}

Element ManifestDocument::find_button_set(Element port) const {
    Text id;
    if (!get_attribute_text(port, "buttons", id) || !id) return nullptr;
    return first_child(configuration(), "buttons", [&](Element e) { return attribute_equals(e, "id", *id); });
}

Element ManifestDocument::find_medium(std::optional<std::u16string_view> file_name,
                                      std::optional<std::u16string_view> root) const {
    const std::u16string_view wanted_root = root && !root->empty() ? *root : u"embedded";
    const bool any_name = equal_ignoring_case(wanted_root, u"shared");
    const std::u16string_view wanted_name = file_name.value_or(u"");
    return first_child(find_element_by_path(application_path() + "/media"), "", [&](Element e) {
        if (!any_name && !equal_ignoring_case(element_text(e).value_or(u""), wanted_name)) return false;
        Text medium_root;
        get_attribute_text(e, "root", medium_root);
        return equal_ignoring_case(medium_root.value_or(u"embedded"), wanted_root);
    });
}

} // namespace kq::manifest
