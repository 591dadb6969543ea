#include "manifest/rom_files.h"

#include "common/compare.h"
#include "common/wildcard.h"
#include "common/windows_path.h"
#include "manifest/system_models.h"
#include "platform/files.h"

#include <algorithm>
#include <vector>

namespace kq::manifest {
namespace {

enum class Video { any, ntsc, pal };

// One step of a fallback: when the model (if one is named) and the video standard fit, the
// candidate `probe` is looked for; when its file exists the answer is `answer` (the probe
// itself unless named otherwise).
struct RomTry {
    std::u16string_view probe;
    std::u16string_view model = {};
    Video video = Video::any;
    std::u16string_view answer = {};
};

struct RomFallback {
    std::u16string_view id;
    bool is_prefix;
    std::initializer_list<RomTry> tries;
};

// First match wins.
// clang-format off
constexpr RomFallback kRomFallbacks[] = {
    {u"110", false,
     {{u"110-ntsc", {}, Video::ntsc}, {u"110-pal", {}, Video::ntsc},
      {u"110-pal", {}, Video::pal}, {u"110-ntsc", {}, Video::pal}}},
    {u"205", false, {{u"205-a600"}}},
    {u"300", false, {{u"300-a1200", u"a-1200"}, {u"300-a4000"}}},
    // On the tower model an existing 4000T file deliberately answers with the desktop id.
    {u"310", false,
     {{u"310-a600", u"a-600"}, {u"310-a4000t", u"a-4000t", Video::any, u"310-a4000"}, {u"310-a4000"}}},
    {u"3x0", false,
     {{u"3x0-a600", u"a-600"}, {u"3x0-a1200", u"a-1200"}, {u"3x0-a3000", u"a-3000"},
      {u"3x0-a4000t", u"a-4000t"}, {u"3x0-a4000"}}},
    {u"310-a500", false, {{u"310-a600"}}},
    {u"110-ntsc", false, {{u"110"}, {u"110-pal"}}},
    {u"110-pal", false, {{u"110"}, {u"110-ntsc"}}},
    {u"205-a600", false, {{u"205"}}},
    {u"300", true, {{u"300"}}},
    {u"310-a600", false, {{u"310-a500"}}},
    {u"310", true, {{u"310"}}},
    {u"3x0", true, {{u"3x0"}}},
};
// clang-format on

// "130" is the A3000's 1.3 ROM on every model that did not ship with the original one.
constexpr std::u16string_view kModelsWithOriginal130[] = {u"a-1000", u"a-500", u"a-2000", u"a-cdtv"};

bool starts_with_digit(std::u16string_view id) { return !id.empty() && id[0] >= u'0' && id[0] <= u'9'; }

bool file_exists(const std::u16string& path) { return platform::file_attributes(path).has_value(); }

} // namespace

std::u16string rom_file_name(std::u16string_view rom_id) {
    std::u16string name = starts_with_digit(rom_id) ? u"amiga-os-" : u"";
    name += rom_id;
    name += u".rom";
    return name;
}

std::u16string rom_folder(std::u16string_view data_folder) {
    return with_trailing_separator(data_folder) + std::u16string(kSharedRomFolder);
}

std::optional<std::u16string> extension_rom_file_name(std::u16string_view rom_id, std::u16string_view model_id) {
    if (starts_with_ignoring_case(rom_id, u"aros-")) {
        std::u16string name = rom_file_name(rom_id);
        name.replace(name.size() - 4, 4, u"-ext.rom");
        return name;
    }
    const std::u16string_view model = find_model(model_id).id;
    if (model == u"a-cdtv")
        return rom_version(rom_id) < 200 ? u"amiga-os-130-cdtv-ext.rom" : u"amiga-os-230-cdtv-ext.rom";
    if (model == u"a-cd32") return u"amiga-os-310-cd32-ext.rom";
    return std::nullopt;
}

std::u16string resolve_rom_file(std::u16string_view rom_id, std::u16string_view model_id, std::u16string_view video,
                                std::u16string_view rom_folder_path) {
    const std::u16string_view model = find_model(model_id).id;
    if (equal_ignoring_case(rom_id, u"130") &&
        std::ranges::find(kModelsWithOriginal130, model) == std::end(kModelsWithOriginal130))
        return u"130-a3000";
    const std::u16string folder = with_trailing_separator(rom_folder_path);
    const auto exists = [&](std::u16string_view id) { return file_exists(folder + rom_file_name(id)); };
    if (exists(rom_id)) return std::u16string(rom_id);

    const Video standard = equal_ignoring_case(video, u"ntsc") ? Video::ntsc : Video::pal;
    for (const RomFallback& fallback : kRomFallbacks) {
        const bool matches = fallback.is_prefix ? starts_with_ignoring_case(rom_id, fallback.id)
                                                : equal_ignoring_case(rom_id, fallback.id);
        if (!matches) continue;
        for (const RomTry& step : fallback.tries) {
            if (!step.model.empty() && step.model != model) continue;
            if (step.video != Video::any && step.video != standard) continue;
            if (exists(step.probe)) return std::u16string(step.answer.empty() ? step.probe : step.answer);
        }
        break;
    }
    return std::u16string(rom_id);
}

std::optional<std::u16string> find_latest_aros_rom(std::u16string_view data_folder) {
    const std::optional<std::vector<std::u16string>> files = platform::list_files(rom_folder(data_folder));
    if (!files) return std::nullopt;
    // Name order without regard to case, as Windows file systems keep their folders.
    const auto folded_less = [](std::u16string_view a, std::u16string_view b) {
        return std::ranges::lexicographical_compare(a, b, {}, ascii_lower, ascii_lower);
    };
    std::optional<std::u16string> first;
    for (const std::u16string& name : *files) {
        if (!wildcard_match(u"aros-*.rom", name) || wildcard_match(u"*-ext.rom", name)) continue;
        if (!first || folded_less(name, *first)) first = name;
    }
    return first;
}

bool rom_exists(std::u16string_view rom_id, std::u16string_view model_id, std::u16string_view video,
                std::u16string_view data_folder) {
    const std::u16string folder = rom_folder(data_folder);
    std::u16string file;
    if (equal_ignoring_case(rom_id, kLatestAros)) {
        std::optional<std::u16string> found = find_latest_aros_rom(data_folder);
        if (!found) return false;
        file = std::move(*found);
    } else {
        const std::u16string id =
            starts_with_digit(rom_id) ? resolve_rom_file(rom_id, model_id, video, folder) : std::u16string(rom_id);
        file = rom_file_name(id);
    }
    if (!file_exists(folder + file)) return false;
    if (starts_with_ignoring_case(rom_id, u"aros-")) {
        file.replace(file.size() - 4, 4, u"-ext.rom");
        if (!file_exists(folder + file)) return false;
    }
    return true;
}

std::optional<std::u16string> normalize_rom_id(std::u16string_view rom_id, std::u16string_view model_id,
                                               std::optional<std::u16string_view> video) {
    const std::u16string_view model = find_model(model_id).id;
    if (equal_ignoring_case(rom_id, u"110")) {
        const bool ntsc = video ? equal_ignoring_case(*video, u"ntsc") : model == u"a-1000";
        return ntsc ? u"110-ntsc" : u"110-pal";
    }
    if (equal_ignoring_case(rom_id, u"205")) return u"205-a600";
    if (equal_ignoring_case(rom_id, u"300")) return model == u"a-4000" ? u"300-a4000" : u"300-a1200";
    if (equal_ignoring_case(rom_id, u"310-a500")) return u"310-a600";
    if (equal_ignoring_case(rom_id, u"310")) return u"310-a4000";
    if (equal_ignoring_case(rom_id, u"3x0")) return u"3x0-a4000";
    return std::nullopt;
}

} // namespace kq::manifest
