#include "media/medium_names.h"

#include "media/analysis/medium_analysis.h"

namespace kq::media {

std::optional<std::u16string> read_volume_name(std::u16string_view path) {
    MediumAnalysis analysis;
    if (analyse_medium(path, analysis) != AnalysisFailure::none || analysis.volume_name.empty()) return std::nullopt;
    return analysis.volume_name;
}

std::optional<HardDiskNames> read_hard_disk_names(std::u16string_view path, const HardDiskGeometry& geometry) {
    MediumAnalysis analysis;
    if (analyse_medium(path, analysis, &geometry) != AnalysisFailure::none || analysis.kind != MediumKind::hard_disk ||
        analysis.partitions.empty())
        return std::nullopt;
    const PartitionFacts& first = analysis.partitions.front();
    return HardDiskNames{first.device_name, first.volume_name};
}

} // namespace kq::media
