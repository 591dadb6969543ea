#pragma once
// ROM-like files for the recogniser's tests: pseudo-random bytes whose last four bytes are
// chosen so that the whole image has a given CRC-32. They are not ROMs; only their size and
// CRC match a table row.

#include <zlib.h>

#include <cstdint>
#include <string>

namespace kq::test {

// `image_bytes` bytes (at least 4) whose CRC-32 is `crc`: the CRC register is run backwards
// from `crc` through the last 32 bits, which then are what turns the register of the start
// into that one.
inline std::string rom_image(std::uint32_t image_bytes, std::uint32_t crc, std::uint32_t seed = 1) {
    std::string image(image_bytes, '\0');
    for (char& byte : image) {
        seed = seed * 1103515245u + 12345u;
        byte = static_cast<char>(seed >> 24);
    }
    const auto start = static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(image.data()), static_cast<uInt>(image_bytes - 4)));
    std::uint32_t reg = ~crc;
    for (int bit = 0; bit < 32; ++bit) reg = (reg & 0x80000000u) != 0 ? ((reg ^ 0xEDB88320u) << 1) | 1 : reg << 1;
    const std::uint32_t tail = reg ^ ~start;
    for (std::size_t i = 0; i < 4; ++i) image[image_bytes - 4 + i] = static_cast<char>(tail >> (8 * i));
    return image;
}

// The two bytes of every 16-bit word exchanged.
inline std::string byte_swapped(std::string image) {
    for (std::size_t i = 0; i + 1 < image.size(); i += 2) std::swap(image[i], image[i + 1]);
    return image;
}

} // namespace kq::test
