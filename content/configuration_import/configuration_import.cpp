#include "content/configuration_import/configuration_import.h"

#include "common/windows_path.h"

#include "content/configuration_import/import_paths.h"

namespace kq::content {

HResult build_catalog(const UaeConfiguration& configuration, std::u16string_view folder, const ImportFileSystem& files,
                      std::string& xml) {
    const ImportSource source{.configuration = configuration,
                              .configuration_folder = folder,
                              .files = files,
                              .model = model_of(configuration)};
    CatalogWriter catalog;
    import_machine(source, catalog);
    import_processors(source, catalog);
    import_expansions(source, catalog);
    import_switches(source, catalog);
    import_ports(source, catalog);
    import_media(source, catalog);
    return catalog.save(xml);
}

HResult import_emulator_configuration(std::u16string_view path, std::string& xml) {
    xml.clear();
    UaeConfiguration configuration;
    if (const HResult read = read_uae_configuration(path, configuration); !status::succeeded(read)) return read;
    return build_catalog(configuration, parent_of(path).value_or(std::u16string_view()), host_file_system(), xml);
}

} // namespace kq::content
