// Analyses arbitrary bytes as each kind of image that the content analysis reads from memory:
// the first byte chooses floppy (double or high density; the bytes are its boot blocks and its
// root block, placed where they belong in an otherwise empty disk), hard disk (with a geometry
// from the next bytes), CD (plain or raw sectors) or CUE sheet. Whatever the bytes, the results
// stay in their ranges: a known class, names no longer than their fields allow, at most the
// partitions that a table may list.

#include "fuzz/fuzz_require.h"
#include "media/analysis/cd_analysis.h"
#include "media/analysis/floppy_analysis.h"
#include "media/analysis/hard_disk_analysis.h"
#include "media/cue_sheet.h"

#include <string_view>
#include <vector>

using namespace kq::media;
using kq::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    const std::span<const std::byte> bytes = std::as_bytes(std::span(data + 4, size - 4));
    MemoryImageBytes image(std::vector<std::byte>(bytes.begin(), bytes.end()));
    MediumAnalysis analysis;
    const int kind = data[0] % 5;
    if (kind <= 1) {
        std::vector<std::byte> disk(kind == 1 ? kHighDensityImageBytes : kDoubleDensityImageBytes);
        const std::size_t boot = std::min<std::size_t>(bytes.size(), 1024);
        std::ranges::copy(bytes.first(boot), disk.begin());
        std::ranges::copy(bytes.subspan(boot, std::min<std::size_t>(bytes.size() - boot, 512)),
                          disk.begin() + (kind == 1 ? 1760 : 880) * 512);
        MemoryImageBytes floppy(std::move(disk));
        analyse_floppy(floppy, kind == 1, analysis);
    } else if (kind == 2) {
        const HardDiskGeometry geometry{.block_size = 512u << (data[1] % 4),
                                        .sectors = data[2] % 64u,
                                        .surfaces = data[3] % 16u,
                                        .reserved = data[3] >= 128 ? -1 : data[3] % 8};
        analyse_hard_disk(image, geometry, analysis);
    } else if (kind == 3) {
        static constexpr IsoLayout kLayouts[] = {{0, 2048, 0}, {0, 2352, 16}, {0, 2352, 24}, {0, 2336, 8}};
        analyse_iso(image, kLayouts[data[1] % 4], analysis);
    } else {
        const auto track = first_data_track(std::string_view(reinterpret_cast<const char*>(data + 4), size - 4));
        require(!track || (!track->relative_path.empty() && track->sector_bytes >= 2048));
        return 0;
    }
    require(static_cast<std::uint32_t>(analysis.analysis_class) <= 4 && analysis.partitions.size() <= kMaxPartitions);
    require(analysis.volume_name.size() <= (kind == 3 ? 32u : 30u));
    for (const PartitionFacts& partition : analysis.partitions)
        require(partition.device_name.size() <= 31 && partition.volume_name.size() <= 30);
    return 0;
}
