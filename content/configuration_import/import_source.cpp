// What the import steps share.

#include "content/configuration_import/import_paths.h"
#include "content/configuration_import/import_steps.h"
#include "content/configuration_import/kickstart_roms.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "platform/files.h"

namespace kq::content {

ImportFileSystem host_file_system() {
    return {.attributes = [](std::u16string_view path) { return platform::file_attributes(path); },
            .system_rom = [](std::u16string_view path,
                             std::u16string_view model_id) { return recognise_system_rom(path, model_id); }};
}

std::u16string numbered_key(std::u16string_view prefix, std::uint32_t number, std::u16string_view suffix) {
    return std::u16string(prefix) + decimal_text(number) + std::u16string(suffix);
}

std::u16string size_text(std::int64_t count, std::int64_t unit) {
    return count > 0 ? decimal_text(count * unit) : std::u16string();
}

std::u16string configured_folder(const ImportSource& source, std::u16string_view key) {
    return resolved_path(source.configuration.value(key).value_or(std::u16string_view()), source.configuration_folder);
}

bool is_cd_model(std::u16string_view model_id) {
    return equal_ignoring_case(model_id, u"a-cd32") || equal_ignoring_case(model_id, u"a-cdtv");
}

bool contains_ignoring_case(std::u16string_view text, std::u16string_view part) {
    for (std::size_t at = 0; at + part.size() <= text.size(); ++at)
        if (starts_with_ignoring_case(text.substr(at), part)) return true;
    return false;
}

} // namespace kq::content
