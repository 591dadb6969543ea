#include "manifest/xml_parser.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <climits>
#include <mutex>

namespace kq::manifest {
namespace {

// Every external resource a document asks for (DTD, entity, parameter entity) is refused.
xmlParserInputPtr refuse_external_load(const char*, const char*, xmlParserCtxtPtr) { return nullptr; }

void ignore_error(void*, const char*, ...) {}
void ignore_structured_error(void*, xmlErrorPtr) {}

void prepare_libxml2() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        xmlSetExternalEntityLoader(refuse_external_load);
    });
    // Error handlers are per thread in libxml2: keep this thread's quiet.
    xmlSetGenericErrorFunc(nullptr, ignore_error);
    xmlSetStructuredErrorFunc(nullptr, ignore_structured_error);
}

constexpr int kParseOptions = XML_PARSE_NOENT     // substitute internal entities
                              | XML_PARSE_NONET   // never touch the network
                              | XML_PARSE_NOCDATA // CDATA sections as text
                              | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

struct ParserContextFree {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};

} // namespace

void XmlDocumentFree::operator()(_xmlDoc* document) const { xmlFreeDoc(document); }

HResult parse_xml(std::string_view text, XmlDocument& out, TextEncoding encoding) {
    out.reset();
    if (text.size() > static_cast<std::size_t>(INT_MAX)) return kMalformedDocument;
    prepare_libxml2();
    const std::unique_ptr<xmlParserCtxt, ParserContextFree> context(xmlNewParserCtxt());
    if (!context) return status::out_of_memory;
    XmlDocument document(
        xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr,
                          encoding == TextEncoding::utf8 ? "UTF-8" : nullptr,
                          kParseOptions | (encoding == TextEncoding::utf8 ? XML_PARSE_IGNORE_ENC : 0)));
    if (!document || !context->wellFormed) {
        return context->lastError.code == XML_ERR_NO_MEMORY ? status::out_of_memory : kMalformedDocument;
    }
    out = std::move(document);
    return status::ok;
}

} // namespace kq::manifest
