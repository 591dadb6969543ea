#pragma once
// Parsing manifest text with libxml2, safely: manifests come from downloaded packages.
//   * no network access, and no external DTD, external entity or external parameter entity
//     is ever loaded (every such load is refused, local files included);
//   * internal entities are substituted, within libxml2's own limits on entity amplification,
//     so a document built to exhaust memory fails instead of growing;
//   * CDATA sections become plain text;
//   * nothing is printed: errors end up in the returned status.

#include "module/status.h"

#include <memory>
#include <string_view>

struct _xmlDoc;

namespace kq::manifest {

struct XmlDocumentFree {
    void operator()(_xmlDoc* document) const;
};
using XmlDocument = std::unique_ptr<_xmlDoc, XmlDocumentFree>;

// A document that does not parse: HRESULT_FROM_WIN32(ERROR_INVALID_DATA).
inline constexpr HResult kMalformedDocument = status::from_win32(platform::system_error::invalid_data);

// How the bytes of the text are encoded: as the document says (UTF-8 unless its XML
// declaration names another encoding), or UTF-8 whatever the declaration says (text that was
// converted before it came here).
enum class TextEncoding { as_declared, utf8 };

// Parses `text`. On failure `out` is empty and the status says why: kMalformedDocument, or
// E_OUTOFMEMORY.
HResult parse_xml(std::string_view text, XmlDocument& out, TextEncoding encoding = TextEncoding::as_declared);

} // namespace kq::manifest
