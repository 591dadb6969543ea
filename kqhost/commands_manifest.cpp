// Commands on package manifests, through the module's manifest code itself.

#include "kqhost/command.h"
#include "kqhost/console.h"
#include "manifest/manifest_document.h"

#include <cstdio>

namespace kqhost {
namespace {

using kq::manifest::Encoding;
using kq::manifest::ManifestDocument;

void report_failure(const char* what, kq::HResult status) {
    char line[160];
    std::snprintf(line, sizeof line, "kqhost: %s (status 0x%08X)\n", what, static_cast<unsigned>(status));
    print_error(line);
}

// manifest FILE [PATH | --ascii | --utf8]
int manifest(const Context& context) {
    if (context.arguments.empty() || context.arguments.size() > 2) {
        print_error("usage: kqhost manifest FILE [PATH | --ascii | --utf8]\n");
        return kExitUsage;
    }
    const std::wstring& file = context.arguments[0];
    ManifestDocument document;
    if (const kq::HResult loaded = document.load_file(module_text(file)); loaded != kq::status::ok) {
        report_failure(("cannot load " + to_utf8(file)).c_str(), loaded);
        return kExitFailure;
    }
    const std::wstring option = context.arguments.size() == 2 ? context.arguments[1] : L"--utf8";
    if (option == L"--ascii" || option == L"--utf8") {
        std::string text;
        const kq::HResult saved = document.save(option == L"--ascii" ? Encoding::ascii : Encoding::utf8, &text);
        if (saved != kq::status::ok) {
            report_failure("cannot write the manifest", saved);
            return kExitFailure;
        }
        print(text);
        return kExitOk;
    }
    kq::manifest::Text text;
    const kq::HResult found = document.get_path_text(to_utf8(option), text);
    if (found != kq::status::ok) {
        report_failure(("no text at " + to_utf8(option)).c_str(), found);
        return kExitFailure;
    }
    print(std::wstring_view(reinterpret_cast<const wchar_t*>(text->data()), text->size()));
    print("\n");
    return kExitOk;
}

constexpr Command kCommands[] = {
    {L"manifest", "manifest FILE [PATH]",
     "Print the text at PATH of a kq9 manifest, or write the manifest back (--utf8, the default, "
     "or --ascii).",
     false, manifest},
};

} // namespace

std::span<const Command> manifest_commands() { return kCommands; }

} // namespace kqhost
