#include "tests/support/amiga_images.h"

#include <algorithm>
#include <cstddef>

namespace kq::test {
namespace {

constexpr std::size_t kBlock = 512;

void put32(Image& image, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) image[at + i] = std::byte(value >> (24 - 8 * i) & 0xFF);
}
std::uint32_t get32(const Image& image, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | std::to_integer<std::uint32_t>(image[at + i]);
    return value;
}
void put_text(Image& image, std::size_t at, std::string_view text) {
    std::transform(text.begin(), text.end(), image.begin() + static_cast<std::ptrdiff_t>(at),
                   [](char c) { return std::byte(static_cast<unsigned char>(c)); });
}

// Sets the long at `field` so that the `longs` longs from `start` sum to zero.
void checksum(Image& image, std::size_t start, std::size_t longs, std::size_t field) {
    put32(image, field, 0);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < longs; ++i) sum -= get32(image, start + i * 4);
    put32(image, field, sum);
}

void write_root(Image& image, std::uint64_t blocks, const std::string& name, AmigaDateStamp date) {
    const std::uint64_t root = (2 + blocks - 1) / 2;
    const std::size_t at = static_cast<std::size_t>(root) * kBlock;
    put32(image, at, 2);
    put32(image, at + 12, 72);
    put32(image, at + 312, 0xFFFFFFFF);
    put32(image, at + 316, static_cast<std::uint32_t>(root + 1));
    for (const std::size_t field : {420u, 472u, 484u}) {
        put32(image, at + field, date.days);
        put32(image, at + field + 4, date.minutes);
        put32(image, at + field + 8, date.ticks);
    }
    image[at + 432] = std::byte(static_cast<unsigned char>(name.size()));
    put_text(image, at + 433, name);
    put32(image, at + 508, 1);
    checksum(image, at, 128, at + 20);
}

} // namespace

std::string as_string(const Image& image) {
    return std::string(reinterpret_cast<const char*>(image.data()), image.size());
}

Image floppy_image(const FloppySpec& spec) {
    const std::uint64_t blocks = spec.high_density ? 3520 : 1760;
    Image image(blocks * kBlock);
    put32(image, 0, spec.first_long);
    put_text(image, 12, spec.boot_code);
    if (spec.root) write_root(image, blocks, spec.name, spec.created);
    if (spec.boot_checksum) { // the boot blocks' sum with carries, inverted
        std::uint32_t sum = 0;
        for (std::size_t at = 0; at < 2 * kBlock; at += 4) {
            const std::uint32_t value = get32(image, at);
            sum += value;
            if (sum < value) ++sum;
        }
        put32(image, 4, ~sum);
    }
    return image;
}

Image amiga_volume(std::uint64_t blocks, const std::string& name, AmigaDateStamp created, std::uint32_t dos_type) {
    Image image(blocks * kBlock);
    put32(image, 0, dos_type);
    write_root(image, blocks, name, created);
    return image;
}

Image rdb_hard_disk(std::uint32_t cylinders, const std::vector<PartitionSpec>& partitions) {
    constexpr std::uint32_t kPerCylinder = 32;
    Image image(std::size_t{cylinders} * kPerCylinder * kBlock);
    put_text(image, 0, "RDSK");
    // Longs from offset 4: size in longs, checksum, host id, block size, flags, bad blocks,
    // first PART block, file systems; then cylinders, sectors and heads from offset 64.
    const std::uint32_t rdsk[] = {64, 0, 0, kBlock, 0, 0xFFFFFFFF, partitions.empty() ? 0xFFFFFFFF : 1, 0xFFFFFFFF};
    for (std::size_t i = 0; i < std::size(rdsk); ++i) put32(image, 4 + 4 * i, rdsk[i]);
    put32(image, 64, cylinders);
    put32(image, 68, kPerCylinder);
    put32(image, 72, 1);
    checksum(image, 0, 64, 8);
    for (std::size_t i = 0; i < partitions.size(); ++i) {
        const PartitionSpec& spec = partitions[i];
        const std::size_t at = (i + 1) * kBlock;
        put_text(image, at, "PART");
        put32(image, at + 4, 64);
        put32(image, at + 16, i + 1 < partitions.size() ? static_cast<std::uint32_t>(i + 2) : 0xFFFFFFFF);
        put32(image, at + 20, spec.bootable ? 1 : 0);
        image[at + 36] = std::byte(static_cast<unsigned char>(spec.device.size()));
        put_text(image, at + 37, spec.device);
        // The DosEnvec from offset 128: entries, longs per block, 0, heads, sectors per block,
        // blocks per track, reserved blocks, 0, 0, low and high cylinder; the DOS type at 192.
        const std::uint32_t envec[] = {16, 128, 0, 1, 1, kPerCylinder, 2, 0, 0, spec.low_cylinder, spec.high_cylinder};
        for (std::size_t e = 0; e < std::size(envec); ++e) put32(image, at + 128 + 4 * e, envec[e]);
        put32(image, at + 192, 0x444F5301);
        checksum(image, at, 64, at + 8);
        const std::uint64_t blocks = std::uint64_t{spec.high_cylinder - spec.low_cylinder + 1} * kPerCylinder;
        const Image volume = amiga_volume(blocks, spec.volume, spec.created);
        std::copy(volume.begin(), volume.end(),
                  image.begin() + static_cast<std::ptrdiff_t>(std::size_t{spec.low_cylinder} * kPerCylinder * kBlock));
    }
    return image;
}

Image iso_image(const IsoSpec& spec) {
    const std::size_t sector_bytes = spec.raw ? 2352 : 2048, header = spec.raw ? 16 : 0, sectors = 20;
    Image image((spec.lead_sectors + sectors) * sector_bytes);
    const auto user = [&](std::size_t sector) { return (spec.lead_sectors + sector) * sector_bytes + header; };
    for (std::size_t sector = 0; spec.raw && sector < sectors; ++sector) {
        const std::size_t at = user(sector) - header;
        std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(at + 1), 10, std::byte{0xFF});
        image[at + 15] = std::byte{1}; // mode 1
    }
    const std::size_t pvd = user(16), terminator = user(17);
    put_text(image, pvd, "\1CD001\1");
    std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(pvd + 40), 32, std::byte{' '});
    put_text(image, pvd + 40, spec.volume);
    put_text(image, pvd + 813, spec.created);
    put_text(image, terminator,
             "\xFF"
             "CD001\1");
    return image;
}

} // namespace kq::test
