#pragma once
// ROM-like files for the recogniser's tests: pseudo-random bytes whose last four bytes are
// chosen so that the whole image has a given CRC-32. They are not ROMs; only their size and
// CRC match a table row.

#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>

namespace kq::test {

inline std::uint32_t crc32_of(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

// `image_bytes` bytes (at least 4) whose CRC-32 is `crc`. With a fixed start, the CRC of the last
// four bytes is an affine function of their 32 bits, so the bits are found by elimination.
inline std::string rom_image(std::uint32_t image_bytes, std::uint32_t crc, std::uint32_t seed = 1) {
    std::string image(image_bytes, '\0');
    for (char& byte : image) {
        seed = seed * 1103515245u + 12345u;
        byte = static_cast<char>(seed >> 24);
    }
    const std::uint32_t start = static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(image.data()), static_cast<uInt>(image_bytes - 4)));
    const auto tail_crc = [&](std::uint32_t tail) {
        const std::array<Bytef, 4> bytes{static_cast<Bytef>(tail), static_cast<Bytef>(tail >> 8),
                                         static_cast<Bytef>(tail >> 16), static_cast<Bytef>(tail >> 24)};
        return static_cast<std::uint32_t>(crc32(start, bytes.data(), 4));
    };
    const std::uint32_t base = tail_crc(0);
    struct Vector {
        std::uint32_t value = 0, bits = 0; // value = L(bits)
    };
    std::array<Vector, 32> basis{}; // by highest set bit of the value
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        Vector v{tail_crc(1u << bit) ^ base, 1u << bit};
        for (int top = 31; top >= 0 && v.value != 0; --top) {
            if ((v.value >> top & 1) == 0) continue;
            if (basis[top].value == 0) {
                basis[top] = v;
                break;
            }
            v.value ^= basis[top].value;
            v.bits ^= basis[top].bits;
        }
    }
    std::uint32_t wanted = crc ^ base, tail = 0;
    for (int top = 31; top >= 0; --top)
        if ((wanted >> top & 1) != 0) wanted ^= basis[top].value, tail ^= basis[top].bits;
    for (std::size_t i = 0; i < 4; ++i) image[image_bytes - 4 + i] = static_cast<char>(tail >> (8 * i));
    return image;
}

// The two bytes of every 16-bit word exchanged.
inline std::string byte_swapped(std::string image) {
    for (std::size_t i = 0; i + 1 < image.size(); i += 2) std::swap(image[i], image[i + 1]);
    return image;
}

} // namespace kq::test
