#include "content/configuration_import/catalog_writer.h"

#include <array>

namespace kq::content {
namespace {

constexpr const char* kSkeleton = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                                  "<xadml>\n"
                                  "\t<catalog>\n"
                                  "\t\t<application>\n"
                                  "\t\t\t<description/>\n"
                                  "\t\t\t<configuration/>\n"
                                  "\t\t\t<media/>\n"
                                  "\t\t</application>\n"
                                  "\t</catalog>\n"
                                  "</xadml>\n";

constexpr std::array<std::string_view, 3> kSectionPaths{"xadml/catalog/application/description",
                                                        "xadml/catalog/application/configuration",
                                                        "xadml/catalog/application/media"};

} // namespace

CatalogWriter::CatalogWriter() : status_(document_.load(kSkeleton)) {}

void CatalogWriter::add(CatalogSection section, const char* name, std::u16string_view text,
                        std::initializer_list<CatalogAttribute> attributes) {
    if (!status::succeeded(status_)) return;
    manifest::Element element = nullptr;
    status_ = document_.create_element(kSectionPaths[static_cast<std::size_t>(section)], name, text, &element);
    for (const CatalogAttribute& attribute : attributes) {
        if (!status::succeeded(status_)) return;
        status_ = manifest::ManifestDocument::set_attribute(element, attribute.name, attribute.value);
    }
}

HResult CatalogWriter::save(std::string& xml) const {
    xml.clear();
    if (!status::succeeded(status_)) return status_;
    const HResult saved = document_.save(manifest::Encoding::utf8, &xml);
    if (!status::succeeded(saved)) xml.clear();
    return saved;
}

} // namespace kq::content
