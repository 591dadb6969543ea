#pragma once
// The steps of an import, in the order in which they add elements to the catalog: machine
// (description, model, system ROM, memory, video, drives), processors, expansions,
// compatibility switches and screen clip, game ports, media.

#include "content/configuration_import/catalog_writer.h"
#include "content/configuration_import/uae_configuration.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

// What an import asks of the file system; tests and the fuzzer put their own answers here.
struct ImportFileSystem {
    // The file's attributes (platform::kAttribute*); nullopt when it does not exist.
    std::function<std::optional<std::uint32_t>(std::u16string_view path)> attributes;
    // The system ROM id of a ROM file on a model; nullopt when it is not a known system ROM.
    std::function<std::optional<std::u16string>(std::u16string_view path, std::u16string_view model_id)> system_rom;
};

// The real file system and ROM recognition.
ImportFileSystem host_file_system();

struct ImportSource {
    const UaeConfiguration& configuration;
    std::u16string_view configuration_folder; // relative folders are taken from here
    const ImportFileSystem& files;
    std::u16string model; // the model id; empty when the configuration names none we know
};

// The model id of "chipset_compatible"; empty for an unknown or missing value.
std::u16string model_of(const UaeConfiguration& configuration);

void import_machine(const ImportSource& source, CatalogWriter& catalog);
void import_processors(const ImportSource& source, CatalogWriter& catalog);
void import_expansions(const ImportSource& source, CatalogWriter& catalog);
void import_switches(const ImportSource& source, CatalogWriter& catalog);
void import_ports(const ImportSource& source, CatalogWriter& catalog);
void import_media(const ImportSource& source, CatalogWriter& catalog);

// "floppy" + "2" + "type".
std::u16string numbered_key(std::u16string_view prefix, std::uint32_t number, std::u16string_view suffix = {});

// `count` times `unit` bytes in decimal; empty (an attribute left out) unless positive.
std::u16string size_text(std::int64_t count, std::int64_t unit);

// The folder that a "win32.*_path" key names, resolved against the configuration's folder when
// relative; the configuration's folder when the key is absent.
std::u16string configured_folder(const ImportSource& source, std::u16string_view key);

bool is_cd_model(std::u16string_view model_id); // "a-cd32" and "a-cdtv"

// Whether `part` occurs in `text`, compared without regard to case.
bool contains_ignoring_case(std::u16string_view text, std::u16string_view part);

} // namespace kq::content
