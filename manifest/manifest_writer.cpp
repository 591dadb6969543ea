#include "manifest/manifest_writer.h"

#include "common/trim.h"
#include "manifest/xml_text.h"

#include <libxml/tree.h>

#include <cstdio>

namespace kq::manifest {
namespace {

// The next code point of UTF-8 text at `i`; a malformed byte stands for itself.
char32_t next_code_point(std::string_view utf8, std::size_t& i) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const std::size_t length = lead < 0x80             ? 1
                               : (lead & 0xE0) == 0xC0 ? 2
                               : (lead & 0xF0) == 0xE0 ? 3
                               : (lead & 0xF8) == 0xF0 ? 4
                                                       : 0;
    if (length == 0 || utf8.size() - i < length) return lead | 0x80000000u;
    char32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(utf8[i + k]);
        if ((next & 0xC0) != 0x80) return lead | 0x80000000u;
        code = code << 6 | (next & 0x3F);
    }
    i += length - 1;
    return code;
}

class Writer {
public:
    Writer(Encoding encoding, Layout layout) : encoding_(encoding), compact_(layout == Layout::compact) {}

    void header() {
        if (encoding_ == Encoding::utf8)
            out_ += "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
        else
            out_ += "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n";
    }

    void element(xmlNode* element, int depth) {
        indent(depth);
        out_ += '<';
        prefixed_name(element->ns, element->name);
        for (xmlNs* declaration = element->nsDef; declaration != nullptr; declaration = declaration->next) {
            out_ += " xmlns";
            if (declaration->prefix != nullptr) {
                out_ += ':';
                out_ += view(declaration->prefix);
            }
            quoted(view(declaration->href));
        }
        for (xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
            out_ += ' ';
            prefixed_name(attribute->ns, attribute->name);
            const XmlString value(xmlNodeGetContent(reinterpret_cast<xmlNode*>(attribute)));
            quoted(view(value.get()));
        }
        if (element->children == nullptr) {
            out_ += "/>";
        } else {
            out_ += '>';
            bool has_element_children = false;
            for (xmlNode* child = element->children; child != nullptr; child = child->next)
                has_element_children |= child->type == XML_ELEMENT_NODE;
            if (has_element_children) line_end();
            for (xmlNode* child = element->children; child != nullptr; child = child->next) {
                if (child->type == XML_ELEMENT_NODE)
                    this->element(child, depth + 1);
                else if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)
                    text(child, depth + 1);
            }
            if (has_element_children) indent(depth);
            out_ += "</";
            out_ += view(element->name);
            out_ += '>';
        }
        line_end();
    }

    std::string take() { return std::move(out_); }

private:
    void indent(int depth) {
        if (!compact_) out_.append(static_cast<std::size_t>(depth), '\t');
    }
    void line_end() {
        if (!compact_) out_ += "\r\n";
    }

    void prefixed_name(const xmlNs* ns, const xmlChar* name) {
        if (ns != nullptr && ns->prefix != nullptr) {
            out_ += view(ns->prefix);
            out_ += ':';
        }
        out_ += view(name);
    }

    void quoted(std::string_view value) {
        out_ += "=\"";
        escaped(value);
        out_ += '"';
    }

    void text(xmlNode* node, int depth) {
        const std::string_view content = trim_blanks(view(node->content));
        if (content.empty()) return;
        const bool own_line = node->next != nullptr && node->next->type == XML_ELEMENT_NODE;
        if (own_line) indent(depth);
        escaped(content);
        if (own_line) line_end();
    }

    void escaped(std::string_view utf8) {
        for (std::size_t i = 0; i < utf8.size(); ++i) {
            const std::size_t start = i;
            const char32_t code = next_code_point(utf8, i);
            switch (code) {
            case '>': out_ += "&gt;"; continue;
            case '<': out_ += "&lt;"; continue;
            case '&': out_ += "&amp;"; continue;
            case '"': out_ += "&quot;"; continue;
            default: break;
            }
            if (code < 0x80) {
                out_ += static_cast<char>(code);
            } else if (encoding_ == Encoding::utf8) {
                out_.append(utf8.substr(start, i + 1 - start));
            } else {
                char reference[16];
                std::snprintf(reference, sizeof reference, "&#x%X;", static_cast<unsigned>(code & 0x7FFFFFFFu));
                out_ += reference;
            }
        }
    }

    Encoding encoding_;
    bool compact_;
    std::string out_;
};

} // namespace

std::string write_document(_xmlDoc* document, Encoding encoding, Layout layout) {
    Writer writer(encoding, layout);
    writer.header();
    if (xmlNode* root = xmlDocGetRootElement(document)) writer.element(root, 0);
    return writer.take();
}

} // namespace kq::manifest
