#include "content/auto_configuration.h"

#include "common/civil_time.h"
#include "common/compare.h"
#include "common/integer_text.h"
#include "common/windows_path.h"
#include "manifest/manifest_document.h"
#include "media/cue_sheet.h"
#include "media/image_formats.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kq::content {
namespace {

using manifest::Element;
using manifest::ManifestDocument;
using media::AnalysisClass;
using media::MediumKind;
using platform::FileTime;

constexpr std::u16string_view kDefaultModel = u"a-500";
constexpr std::u16string_view kA500 = u"a-500", kA1200 = u"a-1200", kCd32 = u"a-cd32", kCdtv = u"a-cdtv";

// CD-based machines: the CDTV came out in 1991, the CD32 in late 1993. A disc dated between
// the two (both days included, from their first moment) is taken for a CDTV disc.
constexpr FileTime kCdtvFirstDay = *civil_file_time({1991, 1, 1});
constexpr FileTime kCdtvLastDay = *civil_file_time({1993, 6, 1});
// AmigaDOS floppies from 1993 on are taken for the A1200's.
constexpr FileTime kA1200Year = *civil_file_time({1993, 1, 1});
// The A1200 gets this much fast memory.
constexpr std::u16string_view kA1200FastMemory = u"8388608";
// The system boot media in the shared data: the hard-disk image and the floppy.
constexpr std::u16string_view kSystemHardDisk = u"311", kSystemFloppy = u"134";
constexpr std::uint32_t kMostA1200FloppyDrives = 4;

struct KindElement {
    MediumKind kind;
    const char* element;
};

constexpr KindElement kKindElements[] = {
    {MediumKind::floppy, "floppy"},
    {MediumKind::hard_disk, "harddrive"},
    {MediumKind::cd, "cd"},
};

const char* element_of(MediumKind kind) { return std::ranges::find(kKindElements, kind, &KindElement::kind)->element; }

bool is_disc_image(std::u16string_view path) { return media_kind_of(path) == MediumKind::cd; }

bool is_format(std::u16string_view path, MediumKind kind, media::ImageContainer container) {
    const media::ImageFormat* format = media::image_format_of(path);
    return format != nullptr && format->kind == kind && format->container == container;
}

struct CatalogMedia {
    std::vector<std::u16string> paths;
    std::optional<std::u16string> last_cue, last_iso;
};

CatalogMedia collect_media(const ManifestDocument& document) {
    CatalogMedia media;
    const Element list = document.find_element_by_path(document.application_path() + "/media");
    if (list == nullptr) return media;
    for (Element medium = manifest::find_child_element("", list); medium != nullptr;
         medium = manifest::find_child_element("", list, medium)) {
        manifest::Text path = manifest::element_text(medium);
        if (!path) continue;
        if (is_format(*path, MediumKind::cd, media::ImageContainer::cue_sheet)) media.last_cue = *path;
        if (is_format(*path, MediumKind::cd, media::ImageContainer::plain)) media.last_iso = *path;
        media.paths.push_back(std::move(*path));
    }
    return media;
}

// Leaves out the ISO image when the CUE sheet beside it already names it.
void fold_disc_image(CatalogMedia& media) {
    if (!media.last_cue || !media.last_iso) return;
    std::vector<media::CueDataFile> files;
    if (media::read_cue_sheet_file(*media.last_cue, files) != media::CueError::none) return;
    const std::u16string_view sheet = *media.last_cue;
    const std::u16string_view folder = folder_of(sheet);
    const bool is_named = std::ranges::any_of(files, [&](const media::CueDataFile& file) {
        std::u16string named(folder);
        named += file.relative_path;
        return equal_ignoring_case(named, *media.last_iso);
    });
    if (!is_named) return;
    std::erase_if(media.paths, [&](const std::u16string& path) { return path == *media.last_iso; });
}

struct Model {
    std::u16string id;
    bool is_replaceable = false;
};

Model catalog_model(const ManifestDocument& document) {
    const std::string path = document.application_path() + "/configuration/system";
    manifest::Text id;
    document.get_path_text(path, id);
    if (!id) return {std::u16string(kDefaultModel), true};
    manifest::Text weak;
    document.get_path_attribute(path, "weak", weak);
    return {std::move(*id), weak && equal_ignoring_case(*weak, u"true")};
}

// 1 January of the catalog's year; nullopt when it gives none or no such date exists.
std::optional<FileTime> catalog_year(const ManifestDocument& document) {
    manifest::Text year;
    document.get_path_text(document.application_path() + "/description/year", year);
    if (!year) return std::nullopt;
    return civil_file_time({read_integer_prefix(*year).value_or(0), 1, 1});
}

std::u16string_view model_for_disc(const media::MediumAnalysis& disc, std::optional<FileTime> date) {
    if (equal_ignoring_case(disc.volume_name, u"cd32")) return kCd32;
    // A disc without a date cannot be a CDTV disc of its years.
    if (!date || *date < kCdtvFirstDay || *date > kCdtvLastDay) return kCd32;
    return kCdtv;
}

HResult failure_status(media::AnalysisFailure failure) {
    return failure == media::AnalysisFailure::ipf_library_missing ? kIpfLibraryMissing : status::failed;
}

// The boot medium's index, choosing the model by it when the model may be replaced.
HResult find_boot_medium(const std::vector<std::u16string>& paths, const MediumAnalyser& analyse,
                         std::optional<FileTime> year, Model& model, std::optional<std::size_t>& boot) {
    boot.reset();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        media::MediumAnalysis analysis;
        if (const media::AnalysisFailure failure = analyse(paths[i], analysis); failure != media::AnalysisFailure::none)
            return failure_status(failure);
        const std::optional<FileTime> date = year ? year : analysis.date;
        if (is_disc_image(paths[i])) {
            if (model.is_replaceable) model.id = model_for_disc(analysis, date);
            boot = i;
            return status::ok;
        }
        if (analysis.analysis_class != AnalysisClass::unknown &&
            analysis.analysis_class != AnalysisClass::not_bootable) {
            if (model.is_replaceable) {
                if (analysis.analysis_class == AnalysisClass::later_kickstart)
                    model.id = kA1200;
                else if (analysis.analysis_class == AnalysisClass::amigados_boot && date)
                    model.id = *date < kA1200Year ? kA500 : kA1200;
            }
            boot = i;
            return status::ok;
        }
        if (i == 0 && media_kind_of(paths[i]) != MediumKind::floppy) {
            boot = i;
            return status::ok;
        }
    }
    const auto not_floppy = std::ranges::find_if(
        paths, [](const std::u16string& path) { return media_kind_of(path) != MediumKind::floppy; });
    if (not_floppy != paths.end()) boot = static_cast<std::size_t>(not_floppy - paths.begin());
    return status::ok;
}

// What the rebuilt configuration holds besides the model.
struct Machine {
    std::uint32_t first_floppy_unit = 1, floppy_drives = 1;
    std::u16string_view port0 = u"input-mouse", port1 = u"input-joystick";
};

Machine machine_for(std::u16string_view model, std::uint32_t floppies) {
    Machine machine;
    if (equal_ignoring_case(model, kCd32) || equal_ignoring_case(model, kCdtv)) {
        machine.first_floppy_unit = 0;
        machine.floppy_drives = floppies > 0 ? 1 : 0;
        machine.port0 = u"input-joystick";
        machine.port1 = {};
    } else if (equal_ignoring_case(model, kA1200)) {
        machine.floppy_drives = std::min(floppies, kMostA1200FloppyDrives);
    }
    return machine;
}

// Chains the document edits, stopping at the first failure.
class Editor {
public:
    explicit Editor(ManifestDocument& document) : document_(document) {}

    Element add(const std::string& parent, const char* name, std::u16string_view text,
                std::initializer_list<std::pair<const char*, std::u16string_view>> attributes = {}) {
        if (status_ != status::ok) return nullptr;
        Element created = nullptr;
        status_ = document_.create_element(parent, name, text, &created);
        for (const auto& [attribute, value] : attributes)
            if (status_ == status::ok) status_ = ManifestDocument::set_attribute(created, attribute, value);
        return created;
    }
    HResult status() const { return status_; }

private:
    ManifestDocument& document_;
    HResult status_ = status::ok;
};

enum class SystemBoot { none, hard_disk, floppy };

HResult rebuild(ManifestDocument& document, const std::vector<std::u16string>& paths, bool has_boot_medium,
                std::u16string_view model) {
    const std::string application = document.application_path();
    const std::string configuration = application + "/configuration", media = application + "/media";
    ManifestDocument::remove_element(document.find_element_by_path(configuration));
    ManifestDocument::remove_element(document.find_element_by_path(media));
    Editor edit(document);
    edit.add(application, "configuration", {});
    edit.add(application, "media", {});

    SystemBoot system_boot = SystemBoot::none;
    std::uint32_t floppies = 0;
    if (!has_boot_medium) {
        if (equal_ignoring_case(model, kA1200)) {
            system_boot = SystemBoot::hard_disk;
        } else if (!equal_ignoring_case(model, kCd32) && !equal_ignoring_case(model, kCdtv)) {
            system_boot = SystemBoot::floppy;
            ++floppies;
        }
    }
    for (const std::u16string& path : paths) {
        const MediumKind kind = media_kind_of(path);
        edit.add(media, element_of(kind), path);
        if (kind == MediumKind::floppy) ++floppies;
    }
    const Machine machine = machine_for(model, floppies);
    edit.add(configuration, "system", model);
    if (equal_ignoring_case(model, kA1200)) edit.add(configuration, "ram", kA1200FastMemory, {{"type", u"fast"}});
    if (system_boot == SystemBoot::hard_disk)
        edit.add(configuration, "boot", kSystemHardDisk, {{"type", u"hdf"}, {"readonly", u"true"}});
    else if (system_boot == SystemBoot::floppy)
        edit.add(configuration, "boot", kSystemFloppy, {{"type", u"adf"}, {"readonly", u"true"}});
    for (std::uint32_t unit = machine.first_floppy_unit; unit < machine.floppy_drives; ++unit)
        edit.add(configuration, "peripheral", u"floppy", {{"type", u"dd"}, {"unit", decimal_text(unit)}});
    if (!machine.port0.empty()) edit.add(configuration, "peripheral", machine.port0, {{"unit", u"0"}});
    if (!machine.port1.empty()) edit.add(configuration, "peripheral", machine.port1, {{"unit", u"1"}});
    return edit.status();
}

} // namespace

MediumKind media_kind_of(std::u16string_view path) {
    const media::ImageFormat* format = media::image_format_of(path);
    return format != nullptr ? format->kind : MediumKind::floppy;
}

MediumAnalyser media_layer_analyser() {
    return
        [](std::u16string_view path, media::MediumAnalysis& analysis) { return media::analyse_medium(path, analysis); };
}

HResult auto_configure(std::u16string_view catalog, const MediumAnalyser& analyse, std::optional<std::string>& xml) {
    xml.reset();
    ManifestDocument document;
    if (const HResult parsed = document.load_utf16(catalog); parsed != status::ok) return parsed;
    CatalogMedia media = collect_media(document);
    if (media.paths.empty()) return status::ok;
    fold_disc_image(media);

    Model model = catalog_model(document);
    std::optional<std::size_t> boot;
    if (const HResult found = find_boot_medium(media.paths, analyse, catalog_year(document), model, boot);
        found != status::ok)
        return found;
    if (boot && *boot > 0)
        std::rotate(media.paths.begin(), media.paths.begin() + *boot, media.paths.begin() + *boot + 1);
    if (model.id.empty()) return status::failed;

    if (const HResult rebuilt = rebuild(document, media.paths, boot.has_value(), model.id); rebuilt != status::ok)
        return rebuilt;
    std::string text;
    if (const HResult saved = document.save(manifest::Encoding::utf8, &text); saved != status::ok) return saved;
    xml = std::move(text);
    return status::ok;
}

} // namespace kq::content
