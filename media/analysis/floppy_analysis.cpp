#include "media/analysis/floppy_analysis.h"

#include "media/amiga_blocks.h"
#include "media/analysis/amiga_volume.h"

#include <array>

namespace kq::media {
namespace {

constexpr std::uint64_t kDoubleDensityBlocks = 1760, kHighDensityBlocks = 3520;
constexpr std::uint32_t kLatestFirstFileSystem = 1; // DOS\0 and DOS\1 boot any Kickstart

} // namespace

void analyse_floppy(ImageBytes& image, bool high_density, MediumAnalysis& analysis) {
    analysis.kind = MediumKind::floppy;
    const std::optional<std::uint64_t> size = image.size();
    high_density = high_density || (size && *size >= kHighDensityImageBytes);
    VolumeLayout layout;
    layout.blocks = high_density ? kHighDensityBlocks : kDoubleDensityBlocks;
    std::vector<ByteRange> ranges{{0, 2 * kBlockBytes}};
    amiga_volume_ranges(layout, ranges);
    image.prefetch(ranges);

    std::array<std::byte, 2 * kBlockBytes> boot{};
    if (!image.read(0, boot)) {
        analysis.analysis_class = AnalysisClass::unknown;
        return;
    }
    const std::optional<AmigaVolume> volume = read_amiga_volume(image, layout);
    const bool dos_volume = volume && volume->is_dos && volume->has_root;
    if (dos_volume) {
        analysis.volume_name = volume->name;
        analysis.date = volume->created;
    }
    if (!boot_checksum_valid(boot)) {
        analysis.analysis_class = AnalysisClass::not_bootable;
    } else if (!dos_volume) {
        analysis.analysis_class = AnalysisClass::custom_boot;
    } else {
        analysis.analysis_class = (volume->dos_type & 0xFF) <= kLatestFirstFileSystem ? AnalysisClass::amigados_boot
                                                                                      : AnalysisClass::later_kickstart;
    }
}

} // namespace kq::media
