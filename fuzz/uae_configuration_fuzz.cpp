// Reads arbitrary bytes as an emulator configuration and imports it. Every entry must be one
// line with a key; every hard-drive line that is accepted must name a device without a colon and
// a path; the import must succeed with a document that loads again. The stand-in file system
// says that every path exists (a folder when its name has no "."), and knows every ".rom" as a
// ROM, so that each step runs.

#include "content/configuration_import/configuration_import.h"
#include "content/configuration_import/drive_lines.h"
#include "fuzz/fuzz_require.h"
#include "manifest/manifest_document.h"

#include <string_view>

using namespace kq;
using namespace kq::content;
using kq::fuzz::require;

bool has_line_end(std::u16string_view text) { return text.find_first_of(u"\r\n") != std::u16string_view::npos; }

void check_drive_lines(std::u16string_view value) {
    if (const auto line = read_hardfile_line(value))
        require(!line->path.empty() && line->device_name.find(u':') == std::u16string::npos);
    if (const auto line = read_folder_line(value))
        require(!line->path.empty() && line->device_name.find(u':') == std::u16string::npos &&
                line->volume_name.find(u':') == std::u16string::npos);
}

std::optional<std::uint32_t> attributes(std::u16string_view path) {
    return path.find(u'.') == std::u16string_view::npos ? 0x10 : 0x21;
}

std::optional<std::u16string> system_rom(std::u16string_view path, std::u16string_view) {
    return path.ends_with(u".rom") ? std::optional<std::u16string>(u"310-a1200") : std::nullopt;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 64 * 1024) return 0;
    const UaeConfiguration configuration =
        UaeConfiguration::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    for (const UaeConfiguration::Entry& entry : configuration.entries()) {
        require(!entry.key.empty() && !has_line_end(entry.key) && !has_line_end(entry.value));
        const auto last = configuration.value(entry.key);
        const auto all = configuration.values(entry.key);
        require(!last || (!all.empty() && *last == all.back()));
        check_drive_lines(entry.value);
    }

    std::string xml;
    require(build_catalog(configuration, u"C:\\Amiga", {attributes, system_rom}, xml) == status::ok);
    require(manifest::ManifestDocument().load(xml.c_str()) == status::ok);
    return 0;
}
