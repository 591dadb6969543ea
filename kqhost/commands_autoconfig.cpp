// Auto-configuration as a host uses it: a catalog document listing loose media given on the
// command line, or an emulator configuration file, turned into an application description by
// the DLL's KQAutoConfigureApplication.

#include "content/auto_configuration.h"
#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "manifest/manifest_document.h"

#include <optional>
#include <string>

namespace kqhost {
namespace {

constexpr const char* kUsage = "usage: kqhost autoconfig [--model ID [--weak]] [--year YEAR] FILE...\n";
constexpr const char* kEmptyCatalog =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><xadml><catalog><application><description/><media/>"
    "</application></catalog></xadml>";

struct CatalogRequest {
    std::optional<std::wstring> model, year;
    bool is_weak = false;
    std::vector<std::wstring> media;
};

std::optional<CatalogRequest> catalog_request(std::span<const std::wstring> arguments) {
    CatalogRequest request;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool has_value = i + 1 < arguments.size();
        if (arguments[i] == L"--model" && has_value) {
            request.model = arguments[++i];
        } else if (arguments[i] == L"--year" && has_value) {
            request.year = arguments[++i];
        } else if (arguments[i] == L"--weak") {
            request.is_weak = true;
        } else {
            request.media.push_back(arguments[i]);
        }
    }
    if (request.media.empty() || (request.is_weak && !request.model)) return std::nullopt;
    return request;
}

// The catalog as the host would write it: each medium under the element of its drive kind.
std::optional<std::wstring> catalog_text(const CatalogRequest& request) {
    using kq::manifest::ManifestDocument;
    ManifestDocument catalog;
    if (catalog.load(kEmptyCatalog) != kq::status::ok) return std::nullopt;
    const std::string application = catalog.application_path();
    bool is_built = true;
    if (request.year)
        is_built &=
            catalog.create_element(application + "/description", "year", module_text(*request.year)) == kq::status::ok;
    if (request.model) {
        kq::manifest::Element system = nullptr;
        is_built &= catalog.create_element(application, "configuration", {}) == kq::status::ok &&
                    catalog.create_element(application + "/configuration", "system", module_text(*request.model),
                                           &system) == kq::status::ok &&
                    (!request.is_weak || ManifestDocument::set_attribute(system, "weak", u"true") == kq::status::ok);
    }
    constexpr const char* kElements[] = {"floppy", "harddrive", "cd"};
    for (const std::wstring& medium : request.media) {
        const auto kind = static_cast<std::size_t>(kq::content::media_kind_of(module_text(medium)));
        is_built &=
            catalog.create_element(application + "/media", kElements[kind], module_text(medium)) == kq::status::ok;
    }
    std::string utf8;
    if (!is_built || catalog.save(kq::manifest::Encoding::utf8, &utf8) != kq::status::ok) return std::nullopt;
    const int chars = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring text(static_cast<std::size_t>(chars), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(), chars);
    return text;
}

// Prints the document that KQAutoConfigureApplication handed over (without its byte-order
// mark), frees it as the host must, and prints the status.
int print_configured(kq_status status, char* xml) {
    if (xml != nullptr) {
        std::string_view text(xml);
        if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
        print(text);
        GlobalFree(xml);
    } else if (status == KQ_S_OK) {
        print("(no media: nothing to configure)\n");
    }
    print_status("KQAutoConfigureApplication", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// autoconfig [--model ID [--weak]] [--year YEAR] FILE...
int autoconfig(const Context& context) {
    const std::optional<CatalogRequest> request = catalog_request(context.arguments);
    if (!request) {
        print_error(kUsage);
        return kExitUsage;
    }
    const auto call = find_export<decltype(KQAutoConfigureApplication)>(context.module, "KQAutoConfigureApplication");
    if (call == nullptr) {
        print_error("kqhost: the DLL has no KQAutoConfigureApplication\n");
        return kExitFailure;
    }
    const std::optional<std::wstring> catalog = catalog_text(*request);
    if (!catalog) {
        print_error("kqhost: cannot build the catalog\n");
        return kExitFailure;
    }
    char* xml = nullptr;
    const kq_status status = call(catalog->c_str(), nullptr, 0, &xml);
    return print_configured(status, xml);
}

// import-uae FILE
int import_uae(const Context& context) {
    if (context.arguments.size() != 1) {
        print_error("usage: kqhost import-uae FILE\n");
        return kExitUsage;
    }
    const auto call = find_export<decltype(KQAutoConfigureApplication)>(context.module, "KQAutoConfigureApplication");
    if (call == nullptr) {
        print_error("kqhost: the DLL has no KQAutoConfigureApplication\n");
        return kExitFailure;
    }
    char* xml = nullptr;
    const kq_status status = call(context.arguments[0].c_str(), nullptr, KQ_AUTOCONFIGURE_IMPORT, &xml);
    return print_configured(status, xml);
}

constexpr Command kCommands[] = {
    {L"autoconfig", "autoconfig [--model ID [--weak]] [--year YEAR] FILE...",
     "Build a catalog of loose media (each under floppy, harddrive or cd by its extension; an optional model, "
     "replaceable with --weak, and year) and print what KQAutoConfigureApplication makes of it.",
     true, autoconfig},
    {L"import-uae", "import-uae FILE",
     "Print the catalog document imported from an emulator configuration file (.uae) by "
     "KQAutoConfigureApplication.",
     true, import_uae},
};

} // namespace

std::span<const Command> autoconfig_commands() { return kCommands; }

} // namespace kqhost
