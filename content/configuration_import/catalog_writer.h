#pragma once
// The catalog document that an import fills: a fixed skeleton
// (xadml/catalog/application with description, configuration and media) to which elements are
// appended in order. The first failure stops all further changes and is kept for save().

#include "manifest/manifest_document.h"
#include "module/status.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace kq::content {

enum class CatalogSection { description, configuration, media };

// An attribute to set; an empty value leaves it out.
struct CatalogAttribute {
    const char* name;
    std::u16string value;
};

class CatalogWriter {
public:
    CatalogWriter();

    void add(CatalogSection section, const char* name, std::u16string_view text,
             std::initializer_list<CatalogAttribute> attributes = {});
    // A `peripheral` of the configuration, its text the peripheral kind.
    void add_peripheral(std::u16string_view kind, std::initializer_list<CatalogAttribute> attributes = {}) {
        add(CatalogSection::configuration, "peripheral", kind, attributes);
    }

    // The document as UTF-8 text with its declaration; on failure the status of the first
    // step that failed (loading the skeleton, adding, serialising) and `xml` empty.
    HResult save(std::string& xml) const;

private:
    manifest::ManifestDocument document_;
    HResult status_;
};

} // namespace kq::content
