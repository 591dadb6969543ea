#pragma once
// Reading and writing integers of a given byte order in byte buffers. Callers check that the
// bytes are there.

#include <cstddef>
#include <cstdint>

namespace kq {

constexpr std::uint32_t byte_value(const std::byte* p, std::size_t i) { return std::to_integer<std::uint32_t>(p[i]); }

constexpr std::uint32_t load_be16(const std::byte* p) { return byte_value(p, 0) << 8 | byte_value(p, 1); }
constexpr std::uint32_t load_be24(const std::byte* p) { return byte_value(p, 0) << 16 | load_be16(p + 1); }
constexpr std::uint32_t load_be32(const std::byte* p) { return load_be16(p) << 16 | load_be16(p + 2); }
constexpr std::uint32_t load_le16(const std::byte* p) { return byte_value(p, 0) | byte_value(p, 1) << 8; }
constexpr std::uint32_t load_le32(const std::byte* p) { return load_le16(p) | load_le16(p + 2) << 16; }
constexpr std::uint64_t load_le64(const std::byte* p) {
    return load_le32(p) | static_cast<std::uint64_t>(load_le32(p + 4)) << 32;
}

constexpr void store_be32(std::byte* p, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) p[i] = std::byte(value >> (24 - 8 * i) & 0xFF);
}
constexpr void store_le32(std::byte* p, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) p[i] = std::byte(value >> (8 * i) & 0xFF);
}
constexpr void store_le64(std::byte* p, std::uint64_t value) {
    store_le32(p, static_cast<std::uint32_t>(value));
    store_le32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

} // namespace kq
