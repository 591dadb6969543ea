#pragma once
// IPF floppy images read through the CAPSImg library: the image handed to the library from
// memory, each track locked in its decoded-MFM form and turned into AmigaDOS sectors.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kq::media {

inline constexpr std::size_t kMaxIpfFileBytes = 16 << 20;

enum class IpfResult { ok, library_missing, unreadable };

// The image's tracks as a plain ADF (sectors that do not decode stay zero); `high_density`
// tells whether tracks held 22 sectors.
IpfResult read_ipf_image(std::u16string_view path, std::vector<std::byte>& adf, bool& high_density);

} // namespace kq::media
