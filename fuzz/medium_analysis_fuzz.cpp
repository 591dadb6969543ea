// Analyses arbitrary bytes as each kind of image that the content analysis reads from memory:
// the first byte chooses floppy (double or high density; the bytes are its boot blocks and its
// root block, placed where they belong in an otherwise empty disk), hard disk (with a geometry
// from the next bytes), CD (plain or raw sectors) or CUE sheet. Whatever the bytes, the results stay in
// their ranges: a known class, names no longer than their fields allow, at most the partitions
// that a table may list.

#include "fuzz/fuzz_require.h"
#include "media/analysis/cd_analysis.h"
#include "media/analysis/floppy_analysis.h"
#include "media/analysis/hard_disk_analysis.h"
#include "media/cue_sheet.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

using namespace kq::media;

namespace {

using kq::fuzz::require;

void check(const MediumAnalysis& analysis, std::size_t longest_name) {
    require(static_cast<std::uint32_t>(analysis.analysis_class) <= 4);
    require(analysis.volume_name.size() <= longest_name);
    require(analysis.partitions.size() <= kMaxPartitions);
    for (const PartitionFacts& partition : analysis.partitions)
        require(partition.device_name.size() <= 31 && partition.volume_name.size() <= 30);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    const std::uint8_t kind = data[0];
    const auto* bytes = reinterpret_cast<const std::byte*>(data + 4);
    MemoryImageBytes image(std::vector<std::byte>(bytes, bytes + (size - 4)));
    MediumAnalysis analysis;
    switch (kind % 5) {
    case 0:
    case 1: {
        const bool high_density = kind % 5 == 1;
        std::vector<std::byte> disk(high_density ? kHighDensityImageBytes : kDoubleDensityImageBytes);
        const std::size_t boot = std::min<std::size_t>(size - 4, 1024);
        std::copy_n(bytes, boot, disk.begin());
        const std::size_t root = std::min<std::size_t>(size - 4 - boot, 512);
        std::copy_n(bytes + boot, root, disk.begin() + (high_density ? 1760 : 880) * 512);
        MemoryImageBytes floppy(std::move(disk));
        analyse_floppy(floppy, high_density, analysis);
        check(analysis, 30);
        break;
    }
    case 2: {
        HardDiskGeometry geometry;
        geometry.block_size = 512u << (data[1] % 4);
        geometry.sectors = data[2] % 64;
        geometry.surfaces = data[3] % 16;
        geometry.reserved = data[3] >= 128 ? -1 : data[3] % 8;
        analyse_hard_disk(image, geometry, analysis);
        check(analysis, 30);
        break;
    }
    case 3: {
        static constexpr IsoLayout kLayouts[] = {{0, 2048, 0}, {0, 2352, 16}, {0, 2352, 24}, {0, 2336, 8}};
        analyse_iso(image, kLayouts[data[1] % 4], analysis);
        check(analysis, 32);
        break;
    }
    default: {
        const std::optional<CueDataTrack> track =
            first_data_track(std::string_view(reinterpret_cast<const char*>(data + 4), size - 4));
        if (track) require(!track->relative_path.empty() && track->sector_bytes >= 2048);
        break;
    }
    }
    return 0;
}
