#include "media/analysis/cd_analysis.h"

#include "common/civil_time.h"

#include <array>
#include <cstring>

namespace kq::media {
namespace {

constexpr std::uint64_t kFirstDescriptor = 16, kMaxDescriptors = 32;
constexpr std::uint8_t kPrimaryDescriptor = 1, kTerminator = 255, kPrimaryVersion = 1;
constexpr std::size_t kVersionAt = 6;
constexpr std::size_t kSectorUserBytes = 2048;
constexpr std::size_t kVolumeIdAt = 40, kVolumeIdBytes = 32, kCreationDateAt = 813;

std::optional<unsigned> digits(std::span<const std::byte> text) {
    unsigned value = 0;
    for (const std::byte b : text) {
        const auto c = std::to_integer<unsigned char>(b);
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

std::optional<platform::FileTime> iso_date(std::span<const std::byte, 17> field) {
    const auto year = digits(field.subspan(0, 4)), month = digits(field.subspan(4, 2)),
               day = digits(field.subspan(6, 2));
    const auto hour = digits(field.subspan(8, 2)), minute = digits(field.subspan(10, 2));
    const auto second = digits(field.subspan(12, 2)), hundredths = digits(field.subspan(14, 2));
    if (!year || !month || !day || !hour || !minute || !second || !hundredths) return std::nullopt;
    if (*year == 0 && *month == 0 && *day == 0) return std::nullopt; // not specified
    const std::optional<std::uint64_t> time = civil_file_time({*year, *month, *day, *hour, *minute, *second});
    if (!time) return std::nullopt;
    return static_cast<platform::FileTime>(*time + std::uint64_t{*hundredths} * 100000);
}

void analyse_iso(ImageBytes& image, const IsoLayout& layout, MediumAnalysis& analysis) {
    analysis.kind = MediumKind::cd;
    analysis.analysis_class = AnalysisClass::unknown;
    const auto sector_offset = [&](std::uint64_t sector) {
        return layout.track_start + sector * layout.sector_bytes + layout.header_bytes;
    };
    image.prefetch(std::array{ByteRange{sector_offset(kFirstDescriptor), kMaxDescriptors * layout.sector_bytes}});
    std::array<std::byte, kSectorUserBytes> descriptor{};
    for (std::uint64_t sector = kFirstDescriptor; sector < kFirstDescriptor + kMaxDescriptors; ++sector) {
        if (!image.read(sector_offset(sector), descriptor)) return;
        if (std::memcmp(&descriptor[1], "CD001", 5) != 0) return;
        const auto type = std::to_integer<std::uint8_t>(descriptor[0]);
        if (type == kTerminator) return;
        if (type != kPrimaryDescriptor) continue;
        // A primary descriptor of another version is malformed, like one without "CD001": the
        // image is not read further.
        if (std::to_integer<std::uint8_t>(descriptor[kVersionAt]) != kPrimaryVersion) return;
        std::u16string label;
        for (std::size_t i = 0; i < kVolumeIdBytes; ++i)
            label += static_cast<char16_t>(std::to_integer<unsigned char>(descriptor[kVolumeIdAt + i]));
        while (!label.empty() && (label.back() == u' ' || label.back() == u'\0')) label.pop_back();
        analysis.volume_name = std::move(label);
        analysis.date = iso_date(std::span(descriptor).subspan<kCreationDateAt, 17>());
        analysis.analysis_class = AnalysisClass::not_bootable;
        return;
    }
}

} // namespace kq::media
