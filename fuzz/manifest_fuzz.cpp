// Loads arbitrary bytes as a manifest. A document that loads must answer lookups, save in both
// forms, and its UTF-8 form must load again and reach a fixed point after one more round (the
// first round settles what the parser rewrites, such as line ends). The one exception: an
// element with a namespace prefix and content, whose closing tag the writer leaves without
// the prefix, cannot be read back.

#include "fuzz/fuzz_require.h"
#include "manifest/manifest_document.h"

#include <libxml/tree.h>

#include <string>

using namespace kq;
using namespace kq::manifest;
using kq::fuzz::require;

bool has_prefixed_element_with_content(const xmlNode* node) {
    for (; node != nullptr; node = node->next)
        if (node->type == XML_ELEMENT_NODE &&
            ((node->ns && node->ns->prefix && node->children) || has_prefixed_element_with_content(node->children)))
            return true;
    return false;
}

void read_everything(Element parent) {
    for (Element child = find_child_element("", parent); child != nullptr;
         child = find_child_element("", parent, child)) {
        Text text;
        get_element_text(child, text);
        require(!text || !text->empty());
        get_priority(child);
        read_everything(child);
    }
}

std::string saved(const ManifestDocument& document, Encoding encoding) {
    std::string out;
    require(document.save(encoding, &out) == status::ok);
    return out;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 64 * 1024) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    ManifestDocument document;
    if (document.load(text.c_str()) != status::ok) {
        require(document.is_empty());
        return 0;
    }
    document.find_peripheral(u"cpu");
    document.find_input_port(0, false);
    document.find_medium(u"disk.adf", std::nullopt);
    read_everything(document.find_element_by_path(document.application_path()));

    saved(document, Encoding::ascii);
    ManifestDocument second, third;
    if (second.load(saved(document, Encoding::utf8).c_str()) != status::ok) {
        require(has_prefixed_element_with_content(document.root_element()));
        return 0;
    }
    const std::string second_text = saved(second, Encoding::utf8);
    require(third.load(second_text.c_str()) == status::ok && saved(third, Encoding::utf8) == second_text);
    return 0;
}
