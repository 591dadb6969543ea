#pragma once
// libxml2's strings (UTF-8, owned by libxml2's allocator) as the manifest code uses them.

#include <libxml/xmlmemory.h>
#include <libxml/xmlstring.h>

#include <memory>
#include <string>
#include <string_view>

namespace kq::manifest {

struct XmlStringFree {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
// A string that libxml2 allocated for the caller.
using XmlString = std::unique_ptr<xmlChar, XmlStringFree>;

inline std::string_view view(const xmlChar* text) {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

inline const xmlChar* xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline const xmlChar* xml(const std::string& text) { return xml(text.c_str()); }

} // namespace kq::manifest
