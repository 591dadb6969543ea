#include "manifest/manifest_document.h"

#include "common/utf.h"
#include "manifest/manifest_writer.h"
#include "platform/files.h"

#include <libxml/tree.h>

#include <cstring>
#include <vector>

namespace kq::manifest {

HResult ManifestDocument::load(const char* text) {
    document_.reset();
    if (text == nullptr) return status::invalid_argument;
    return parse_xml(std::string_view(text, std::strlen(text)), document_);
}

HResult ManifestDocument::load_file(std::u16string_view path) {
    document_.reset();
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return kManifestFileUnreadable;
    const std::optional<std::uint64_t> size = file->size();
    if (!size || *size > kMaxManifestFileBytes) return kManifestFileUnreadable;
    // Two zero bytes after the text end it for any reader of 8- or 16-bit text.
    std::vector<char> text(static_cast<std::size_t>(*size) + 2, '\0');
    std::size_t filled = 0;
    while (filled < *size) {
        const std::optional<std::size_t> got =
            file->read(std::as_writable_bytes(std::span(text.data() + filled, *size - filled)));
        if (!got || *got == 0) return kManifestFileUnreadable;
        filled += *got;
    }
    return load(text.data());
}

HResult ManifestDocument::load_utf16(std::u16string_view text) {
    document_.reset();
    const std::optional<std::string> utf8 = utf16_to_utf8(text);
    if (!utf8) return kMalformedDocument;
    return parse_xml(*utf8, document_, TextEncoding::utf8);
}

Element ManifestDocument::root_element() const { return document_ ? xmlDocGetRootElement(document_.get()) : nullptr; }

std::string ManifestDocument::application_path() const {
    return element_name(root_element()) == "xadml" ? "xadml/catalog/application" : "kq9/application";
}

HResult ManifestDocument::find_element_by_path(std::string_view path, Element& out) const {
    out = nullptr;
    if (path.empty()) return status::invalid_argument;
    if (!document_) return kDocumentEmpty;
    xmlNode* node = root_element();
    for (;;) {
        const std::size_t slash = path.find('/');
        const std::string_view segment = path.substr(0, slash);
        while (node != nullptr && !(node->type == XML_ELEMENT_NODE && element_name(node) == segment)) node = node->next;
        if (node == nullptr) return kElementNotFound;
        if (slash == std::string_view::npos) {
            out = node;
            return status::ok;
        }
        path.remove_prefix(slash + 1);
        node = node->children;
    }
}

Element ManifestDocument::find_element_by_path(std::string_view path) const {
    Element element = nullptr;
    find_element_by_path(path, element);
    return element;
}

HResult ManifestDocument::get_path_text(std::string_view path, Text& out) const {
    out.reset();
    Element element = nullptr;
    if (const HResult found = find_element_by_path(path, element); found != status::ok) return found;
    return get_element_text(element, out) ? status::ok : status::failed;
}

HResult ManifestDocument::get_path_attribute(std::string_view path, const char* name, Text& out) const {
    out.reset();
    if (name == nullptr) return status::invalid_argument;
    Element element = nullptr;
    if (const HResult found = find_element_by_path(path, element); found != status::ok) return found;
    if (!get_attribute_text(element, name, out)) return kElementNotFound;
    return out ? status::ok : status::failed;
}

HResult ManifestDocument::save(Encoding encoding, std::string* out, Layout layout) const {
    if (encoding != Encoding::ascii && encoding != Encoding::utf8) return status::invalid_argument;
    if (out == nullptr) return status::null_pointer;
    out->clear();
    if (!document_) return kDocumentEmpty;
    try {
        *out = write_document(document_.get(), encoding, layout);
        return status::ok;
    } catch (const std::bad_alloc&) {
        out->clear();
        return status::out_of_memory;
    }
}

} // namespace kq::manifest
