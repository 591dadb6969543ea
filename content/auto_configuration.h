#pragma once
// Completing an application that lists only media: the host hands a catalog document
// ("xadml/catalog/application") whose media are loose disk, hard-disk and CD images, and gets
// it back with a model, the boot medium first, fast memory, floppy drives and the controllers
// of the two game ports. The model is chosen by what the boot medium holds (its boot class
// and date, a CD's label), unless the catalog fixes it.

#include "media/analysis/medium_analysis.h"
#include "module/status.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

// The kind of drive that takes a medium, by the path's extension alone: hard disk and CD images
// by their formats, every other path (no extension, an unknown one) a floppy.
media::MediumKind media_kind_of(std::u16string_view path);

// How the media are analysed: the media layer's analysis, or a test's.
using MediumAnalyser = std::function<media::AnalysisFailure(std::u16string_view path, media::MediumAnalysis&)>;
MediumAnalyser media_layer_analyser();

// An IPF image whose analysis needs the CAPSImg library, which is not installed.
inline constexpr HResult kIpfLibraryMissing = status::from_win32(platform::system_error::dll_not_found);

// Completes the catalog text. `xml` receives the completed document (UTF-8, with its XML
// declaration), or stays empty when the catalog lists no media (the status is then S_OK).
// Failures: the parser's and writer's statuses; E_FAIL when a medium cannot be analysed or no
// model is settled; kIpfLibraryMissing.
HResult auto_configure(std::u16string_view catalog, const MediumAnalyser& analyse, std::optional<std::string>& xml);

} // namespace kq::content
