#pragma once
// A hard-disk image's volumes: the partitions that its Rigid Disk Block lists (looked for in
// the first 16 blocks), each with its drive name, boot flag and AmigaDOS volume; or, without a
// partition table, the one volume that the whole image holds, laid out by a given geometry or
// the usual defaults (512-byte blocks, 2 reserved blocks).

#include "media/analysis/image_bytes.h"
#include "media/analysis/medium_analysis.h"

namespace kq::media {

inline constexpr std::size_t kMaxPartitions = 32;

// Fills partitions, class, volume name (the first partition's) and date.
void analyse_hard_disk(ImageBytes& image, const HardDiskGeometry& geometry, MediumAnalysis& analysis);

} // namespace kq::media
