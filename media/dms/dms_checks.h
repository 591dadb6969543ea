#pragma once
// The two integrity checks of DMS archives: a CRC-16 (reflected, polynomial 0x8005, initial 0,
// no final XOR; "ARC" in catalogues) over headers and stored data, and a 16-bit sum of the
// bytes of each unpacked record.

#include <cstdint>
#include <span>

namespace kq::media::dms {

std::uint16_t crc16(std::span<const std::uint8_t> bytes, std::uint16_t crc = 0);
std::uint16_t checksum(std::span<const std::uint8_t> bytes);

} // namespace kq::media::dms
