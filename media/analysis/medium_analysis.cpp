#include "media/analysis/medium_analysis.h"

#include "common/windows_path.h"
#include "media/analysis/cd_analysis.h"
#include "media/analysis/floppy_analysis.h"
#include "media/analysis/hard_disk_analysis.h"
#include "media/analysis/image_bytes.h"
#include "media/analysis/ipf_image.h"
#include "media/cue_sheet.h"
#include "media/dms/dms_unpacker.h"
#include "media/extended_adf.h"
#include "media/mfm_track.h"

#include <array>

namespace kq::media {
namespace {

enum class Reader { floppy, compressed_floppy, dms, ipf, hard_disk, compressed_hard_disk, iso, cue };

constexpr std::u16string_view kFromExtendedAdf = u"ADF from Extended ADF";
// The most that a floppy image unpacked into memory may take (a high-density disk, with room).
constexpr std::size_t kMaxFloppyBytes = 2 * kHighDensityImageBytes;

// The reader of a format; a file of no known format is read as a plain floppy, and so is a
// flux image, which holds no sectors to read.
Reader reader_of(const ImageFormat* format) {
    if (format == nullptr) return Reader::floppy;
    const bool floppy = format->kind == MediumKind::floppy;
    switch (format->container) {
    case ImageContainer::plain:
        return format->kind == MediumKind::cd ? Reader::iso : floppy ? Reader::floppy : Reader::hard_disk;
    case ImageContainer::gzip: return floppy ? Reader::compressed_floppy : Reader::compressed_hard_disk;
    case ImageContainer::dms: return Reader::dms;
    case ImageContainer::ipf: return Reader::ipf;
    case ImageContainer::cue_sheet: return Reader::cue;
    case ImageContainer::flux: return Reader::floppy;
    }
    return Reader::floppy;
}

// Collects an unpacked floppy image, up to a limit.
class FloppySink final : public ByteSink {
public:
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        const std::size_t count = std::min(bytes.size(), kMaxFloppyBytes - bytes_.size());
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }
    std::vector<std::byte> take() { return std::move(bytes_); }

private:
    std::vector<std::byte> bytes_;
};

AnalysisFailure analyse_dms(std::u16string_view path, MediumAnalysis& analysis) {
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return AnalysisFailure::unreadable;
    FileSource source(*file);
    FloppySink sink;
    unpack_dms(source, sink); // what unpacked before a failure is still analysed
    MemoryImageBytes image(sink.take());
    analyse_floppy(image, false, analysis);
    return AnalysisFailure::none;
}

AnalysisFailure analyse_plain_floppy(std::u16string_view path, MediumAnalysis& analysis) {
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return AnalysisFailure::unreadable;
    std::array<std::byte, 8> signature{};
    const std::optional<std::size_t> got = file->read(signature);
    if (got && *got == signature.size() && has_extended_adf_signature(signature) && file->seek(0)) {
        analysis.conversion_label = kFromExtendedAdf;
        FileSource source(*file);
        ExtendedAdfTable table;
        DecodedFloppy decoded;
        if (read_extended_adf_table(source, table) != status::ok ||
            decode_extended_adf(source, table, decoded) != status::ok)
            return AnalysisFailure::none; // readable, not understood: class unknown
        MemoryImageBytes image(std::move(decoded.image));
        analyse_floppy(image, decoded.sectors_per_track == kHighDensitySectors, analysis);
        return AnalysisFailure::none;
    }
    FileImageBytes image(std::move(*file));
    analyse_floppy(image, false, analysis);
    return AnalysisFailure::none;
}

AnalysisFailure analyse_cue(std::u16string_view path, MediumAnalysis& analysis) {
    if (!platform::file_attributes(path)) return AnalysisFailure::unreadable;
    analysis.kind = MediumKind::cd;
    const std::optional<CueDataTrack> track = first_data_track_of_file(path);
    if (!track) return AnalysisFailure::none;
    std::u16string data(folder_of(path));
    data += track->relative_path;
    std::unique_ptr<ImageBytes> image = open_image_bytes(data, false);
    if (!image) return AnalysisFailure::none;
    analyse_iso(*image, {track->start_sector * track->sector_bytes, track->sector_bytes, track->header_bytes},
                analysis);
    return AnalysisFailure::none;
}

} // namespace

AnalysisFailure analyse_medium(std::u16string_view path, MediumAnalysis& analysis, const HardDiskGeometry* geometry) {
    analysis = MediumAnalysis();
    const ImageFormat* format = image_format_of(path);
    analysis.conversion_label = format != nullptr ? format->conversion_label : kRawFileLabel;
    const Reader reader = reader_of(format);
    const HardDiskGeometry defaults;
    switch (reader) {
    case Reader::floppy: return analyse_plain_floppy(path, analysis);
    case Reader::dms: return analyse_dms(path, analysis);
    case Reader::cue: return analyse_cue(path, analysis);
    case Reader::ipf: {
        if (!platform::file_attributes(path)) return AnalysisFailure::unreadable;
        std::vector<std::byte> adf;
        bool high_density = false;
        switch (read_ipf_image(path, adf, high_density)) {
        case IpfResult::library_missing: return AnalysisFailure::ipf_library_missing;
        case IpfResult::unreadable: return AnalysisFailure::none;
        case IpfResult::ok: break;
        }
        MemoryImageBytes image(std::move(adf));
        analyse_floppy(image, high_density, analysis);
        return AnalysisFailure::none;
    }
    case Reader::compressed_floppy:
    case Reader::compressed_hard_disk:
    case Reader::hard_disk:
    case Reader::iso: {
        const bool compressed = reader == Reader::compressed_floppy || reader == Reader::compressed_hard_disk;
        if (!platform::file_attributes(path)) return AnalysisFailure::unreadable;
        std::unique_ptr<ImageBytes> image = open_image_bytes(path, compressed);
        if (!image) {
            // A file that is there but does not open as its kind: readable, not understood.
            analysis.kind = reader == Reader::compressed_floppy ? MediumKind::floppy : MediumKind::hard_disk;
            return platform::File::open_for_reading(path) ? AnalysisFailure::none : AnalysisFailure::unreadable;
        }
        if (reader == Reader::compressed_floppy)
            analyse_floppy(*image, false, analysis);
        else if (reader == Reader::iso)
            analyse_iso(*image, IsoLayout{}, analysis);
        else
            analyse_hard_disk(*image, geometry != nullptr ? *geometry : defaults, analysis);
        return AnalysisFailure::none;
    }
    }
    return AnalysisFailure::unreadable;
}

} // namespace kq::media
