#include "media/dms/dms_checks.h"

#include <array>

namespace kq::media::dms {
namespace {

// Table t gives the CRC of a byte followed by t zero bytes, so that eight bytes are folded in
// per step ("slicing by 8").
constexpr std::array<std::array<std::uint16_t, 256>, 8> kCrcTables = [] {
    std::array<std::array<std::uint16_t, 256>, 8> tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) ? (crc >> 1) ^ 0xA001 : crc >> 1;
        tables[0][byte] = static_cast<std::uint16_t>(crc);
    }
    for (std::size_t t = 1; t < tables.size(); ++t)
        for (unsigned byte = 0; byte < 256; ++byte) {
            const unsigned previous = tables[t - 1][byte];
            tables[t][byte] = static_cast<std::uint16_t>((previous >> 8) ^ tables[0][previous & 0xFF]);
        }
    return tables;
}();

} // namespace

std::uint16_t crc16(std::span<const std::uint8_t> bytes, std::uint16_t crc) {
    unsigned value = crc;
    const std::uint8_t* p = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= 8; left -= 8, p += 8) {
        const unsigned low = (value ^ p[0]) & 0xFF, high = ((value >> 8) ^ p[1]) & 0xFF;
        value = kCrcTables[7][low] ^ kCrcTables[6][high] ^ kCrcTables[5][p[2]] ^ kCrcTables[4][p[3]] ^
                kCrcTables[3][p[4]] ^ kCrcTables[2][p[5]] ^ kCrcTables[1][p[6]] ^ kCrcTables[0][p[7]];
    }
    for (; left > 0; --left, ++p) value = (value >> 8) ^ kCrcTables[0][(value ^ *p) & 0xFF];
    return static_cast<std::uint16_t>(value);
}

std::uint16_t checksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (const std::uint8_t byte : bytes) sum += byte;
    return static_cast<std::uint16_t>(sum);
}

} // namespace kq::media::dms
