#pragma once
// Writes a manifest document as XML text, in the module's own fixed layout:
//
//   header   ASCII form: <?xml version="1.0" encoding="ascii"?> CR LF
//            UTF-8 form: EF BB BF <?xml version="1.0" encoding="UTF-8"?> CR LF
//   element  one tab per depth level, "<", prefix ":" when it has one, the name; then
//            ' xmlns[:prefix]="href"' per namespace declaration and ' [prefix:]name="value"' per
//            attribute; "/>" when it has no children at all, else ">", CR LF when it has
//            element children, the children one level deeper, the tabs again (element children
//            only), "</", the name without its prefix, ">"; CR LF after every element
//   text     only when it holds more than blanks, trimmed of blanks at both ends; on a line of
//            its own (tabs, text, CR LF) when an element follows it, else inline
//   other    comments and processing instructions are not written
// Compact layout writes the same markup without tabs and line ends (the header keeps its).
//
// Text, attribute values and namespace URIs are escaped: > < & " become &gt; &lt; &amp; &quot;
// (the apostrophe stays), other ASCII is copied, and every other character becomes "&#x%X;"
// in the ASCII form or its UTF-8 bytes in the UTF-8 form. A character outside the Basic
// Multilingual Plane is one character reference, not two.

#include "manifest/manifest_document.h"

#include <string>

namespace kq::manifest {

// Throws std::bad_alloc when the text cannot grow.
std::string write_document(_xmlDoc* document, Encoding encoding, Layout layout);

} // namespace kq::manifest
