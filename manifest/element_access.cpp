#include "manifest/element_access.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "common/trim.h"
#include "common/utf.h"
#include "manifest/xml_text.h"

#include <libxml/tree.h>

namespace kq::manifest {

Text text_from_utf8(std::string_view utf8) {
    if (utf8.empty()) return std::nullopt;
    Text text = utf8_to_utf16(utf8);
    if (text && text->empty()) return std::nullopt;
    return text;
}

std::string_view element_name(Element element) { return element == nullptr ? std::string_view() : view(element->name); }

Element find_child_element(std::string_view name, Element parent, Element after) {
    if (parent == nullptr) return nullptr;
    for (xmlNode* node = after != nullptr ? after->next : parent->children; node != nullptr; node = node->next)
        if (node->type == XML_ELEMENT_NODE && (name.empty() || view(node->name) == name)) return node;
    return nullptr;
}

bool get_attribute_text(Element element, const char* name, Text& out) {
    out.reset();
    if (element == nullptr || name == nullptr) return false;
    const XmlString value(xmlGetProp(element, xml(name)));
    if (value == nullptr) return false;
    out = text_from_utf8(view(value.get()));
    return true;
}

bool get_element_text(Element element, Text& out) {
    out.reset();
    if (element == nullptr) return false;
    const XmlString content(xmlNodeGetContent(element));
    out = text_from_utf8(trim_blanks(view(content.get())));
    return out.has_value();
}

Text element_text(Element element) {
    Text text;
    get_element_text(element, text);
    return text;
}

std::optional<std::int32_t> get_priority(Element element) {
    Text value;
    if (!get_attribute_text(element, "priority", value) || !value) return std::nullopt;
    return read_integer_prefix(*value, 10);
}

bool match_element(Element element, const char* name, const char* attribute_name, std::u16string_view expected) {
    if (element == nullptr) return false;
    if (name != nullptr && element_name(element) != name) return false;
    if (attribute_name == nullptr) return true;
    Text value;
    if (!get_attribute_text(element, attribute_name, value)) return expected.empty();
    return expected.empty() || equal_ignoring_case(value.value_or(u""), expected);
}

bool attribute_equals(Element element, const char* name, std::u16string_view value) {
    Text text;
    return get_attribute_text(element, name, text) && equal_ignoring_case(text.value_or(u""), value);
}

} // namespace kq::manifest
