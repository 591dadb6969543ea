// Export of auto-configuration: completing a catalog of loose media, or importing an emulator
// configuration file, into an application description handed to the host as UTF-8 XML text.

#include "common/compare.h"
#include "common/windows_path.h"
#include "content/auto_configuration.h"
#include "content/configuration_import/configuration_import.h"
#include "exports/host_text.h"
#include "kq_amiga.h"
#include "module/guard.h"

#include <optional>
#include <string>

namespace {

// The emulator configuration file at `path`; E_INVALIDARG unless its extension is "uae".
kq::HResult import_configuration(std::u16string_view path, std::optional<std::string>& xml) {
    const std::optional<std::u16string_view> extension = kq::extension_of(path);
    if (!extension || !kq::equal_ignoring_case(*extension, kq::content::kConfigurationFileExtension))
        return kq::status::invalid_argument;
    std::string text;
    if (const kq::HResult imported = kq::content::import_emulator_configuration(path, text); imported != kq::status::ok)
        return imported;
    xml = std::move(text);
    return kq::status::ok;
}

} // namespace

extern "C" kq_status KQAutoConfigureApplication(const kq_char* input, void*, uint32_t flags, char** xml) {
    if (xml != nullptr) *xml = nullptr;
    if (input == nullptr || xml == nullptr) return KQ_E_POINTER;
    return kq::guard([&] {
        std::optional<std::string> text;
        const kq::HResult result =
            (flags & KQ_AUTOCONFIGURE_IMPORT) != 0
                ? import_configuration(kq::text_view(input), text)
                : kq::content::auto_configure(kq::text_view(input), kq::content::media_layer_analyser(), text);
        if (result != kq::status::ok || !text) return result;
        return kq::hand_to_host(*text, xml);
    });
}
