#pragma once
// ROM files in the host's shared ROM folder ("Shared\rom" under the shared data folder):
// naming, the fallbacks that pick an existing file when the exact one is missing, and the
// rewriting of short legacy ROM ids in manifests.

#include <optional>
#include <string>
#include <string_view>

namespace kq::manifest {

inline constexpr std::u16string_view kSharedRomFolder = u"Shared\\rom\\";
inline constexpr std::u16string_view kLatestAros = u"aros-latest";

// The file name of a ROM id: "amiga-os-" + id + ".rom" for an id that begins with a digit,
// else id + ".rom" ("aros-latest.rom").
std::u16string rom_file_name(std::u16string_view rom_id);
// The shared ROM folder under the shared data folder.
std::u16string rom_folder(std::u16string_view data_folder);

// The further file that a ROM selection needs beside the main one, if any: "-ext.rom" for an
// "aros-" id; on "a-cdtv" the 1.30 extension (ROM version below 200) or the 2.30 one; on
// "a-cd32" the CD32 extension.
std::optional<std::u16string> extension_rom_file_name(std::u16string_view rom_id, std::u16string_view model_id);

// For an id that begins with a digit: the id whose file exists in `rom_folder`, trying the
// fallbacks for the id, model and video standard in their fixed order; the given id when
// none exists.
std::u16string resolve_rom_file(std::u16string_view rom_id, std::u16string_view model_id, std::u16string_view video,
                                std::u16string_view rom_folder);

// The ROM file that "aros-latest" stands for: the first "aros-*.rom" of the shared ROM folder in
// name order, its "-ext.rom" companions left out; nullopt when there is none.
std::optional<std::u16string> find_latest_aros_rom(std::u16string_view data_folder);

// Whether the files of a ROM are present (the main file, and for "aros-" ids its extension).
bool rom_exists(std::u16string_view rom_id, std::u16string_view model_id, std::u16string_view video,
                std::u16string_view data_folder);

// The full form of a short legacy id from a manifest ("310" becomes "310-a4000"); nullopt when
// the id is already complete. A missing video counts as NTSC on "a-1000".
std::optional<std::u16string> normalize_rom_id(std::u16string_view rom_id, std::u16string_view model_id,
                                               std::optional<std::u16string_view> video);

} // namespace kq::manifest
