#pragma once
// A floppy image's boot blocks and volume: how it boots, and its name and date.

#include "media/analysis/image_bytes.h"
#include "media/analysis/medium_analysis.h"

namespace kq::media {

inline constexpr std::uint64_t kDoubleDensityImageBytes = 901120, kHighDensityImageBytes = 1802240;

// Fills class, volume name and date. A high-density layout (root at block 1760) is taken when
// `high_density`, or when the image is at least as large as a high-density disk.
void analyse_floppy(ImageBytes& image, bool high_density, MediumAnalysis& analysis);

} // namespace kq::media
