#pragma once
// Reading single elements of a parsed manifest. Elements are borrowed from their document and
// die with it. Texts come back as UTF-16; "no text" (nullopt) stands for both an absent and an
// empty value, so a Text is never an empty string.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct _xmlNode;

namespace kq::manifest {

using Element = _xmlNode*;
using Text = std::optional<std::u16string>;

// UTF-8 from the document as a Text: empty or malformed UTF-8 is no text.
Text text_from_utf8(std::string_view utf8);

// The next element child of `parent` named `name` after the sibling `after` (from the first
// child when `after` is null); an empty name matches any element. Element names compare
// exactly.
Element find_child_element(std::string_view name, Element parent, Element after = nullptr);

// True when the attribute exists; `out` gets its value, untrimmed (no text when empty).
bool get_attribute_text(Element element, const char* name, Text& out);

// The element's text content (entity references substituted), trimmed of blanks; false and
// no text when nothing is left. An attribute node is read the same way.
bool get_element_text(Element element, Text& out);
Text element_text(Element element);

// Attribute "priority" as a decimal integer; nullopt unless at least one digit was read.
std::optional<std::int32_t> get_priority(Element element);

// Whether the element is named `name` (when one is given) and its attribute `attribute_name`
// (when one is given) equals `expected` without regard to case. A missing attribute matches
// only an absent (or empty) expectation; a present one matches any value when nothing is
// expected.
bool match_element(Element element, const char* name, const char* attribute_name, std::u16string_view expected);

// Whether the attribute is present and equals `value` without regard to case.
bool attribute_equals(Element element, const char* name, std::u16string_view value);

// The element's name (local, without prefix).
std::string_view element_name(Element element);

} // namespace kq::manifest
