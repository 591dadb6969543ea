#include "tests/support/amiga_images.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace kq::test {
namespace {

constexpr std::size_t kBlock = 512;

void put32(Image& image, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) image[at + static_cast<std::size_t>(i)] = std::byte(value >> (24 - 8 * i) & 0xFF);
}
void put16(Image& image, std::size_t at, std::uint32_t value) {
    image[at] = std::byte(value >> 8 & 0xFF);
    image[at + 1] = std::byte(value & 0xFF);
}
std::uint32_t get32(const Image& image, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | std::to_integer<std::uint32_t>(image[at + i]);
    return value;
}
void put_text(Image& image, std::size_t at, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) image[at + i] = std::byte(static_cast<unsigned char>(text[i]));
}

// Sets the long at `field` so that the `longs` longs from `start` sum to zero.
void checksum(Image& image, std::size_t start, std::size_t longs, std::size_t field) {
    put32(image, field, 0);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < longs; ++i) sum += get32(image, start + i * 4);
    put32(image, field, 0u - sum);
}

void boot_checksum(Image& image, std::size_t start) {
    put32(image, start + 4, 0);
    std::uint32_t sum = 0;
    for (std::size_t at = start; at < start + 2 * kBlock; at += 4) {
        const std::uint32_t value = get32(image, at);
        sum += value;
        if (sum < value) ++sum;
    }
    put32(image, start + 4, ~sum);
}

void write_root(Image& image, std::size_t start, std::uint64_t blocks, const std::string& name, AmigaDateStamp date) {
    const std::uint64_t root = (2 + blocks - 1) / 2;
    const std::size_t at = start + static_cast<std::size_t>(root) * kBlock;
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
    if (spec.root) write_root(image, 0, blocks, spec.name, spec.created);
    if (spec.boot_checksum) boot_checksum(image, 0);
    return image;
}

Image amiga_volume(std::uint64_t blocks, const std::string& name, AmigaDateStamp created, std::uint32_t dos_type) {
    Image image(blocks * kBlock);
    put32(image, 0, dos_type);
    write_root(image, 0, blocks, name, created);
    return image;
}

Image rdb_hard_disk(std::uint32_t cylinders, const std::vector<PartitionSpec>& partitions) {
    constexpr std::uint32_t kPerCylinder = 32;
    Image image(std::size_t{cylinders} * kPerCylinder * kBlock);
    put_text(image, 0, "RDSK");
    put32(image, 4, 64);
    put32(image, 16, kBlock);
    put32(image, 24, 0xFFFFFFFF);
    put32(image, 28, partitions.empty() ? 0xFFFFFFFF : 1);
    put32(image, 32, 0xFFFFFFFF);
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
        put32(image, at + 128, 16);           // entries in the DosEnvec
        put32(image, at + 132, 128);          // block size in longs
        put32(image, at + 140, 1);            // heads
        put32(image, at + 144, 1);            // sectors per block
        put32(image, at + 148, kPerCylinder); // blocks per track
        put32(image, at + 152, 2);            // reserved
        put32(image, at + 164, spec.low_cylinder);
        put32(image, at + 168, spec.high_cylinder);
        put32(image, at + 192, 0x444F5301);
        checksum(image, at, 64, at + 8);
        const std::uint64_t blocks = std::uint64_t{spec.high_cylinder - spec.low_cylinder + 1} * kPerCylinder;
        const Image volume = amiga_volume(blocks, spec.volume, spec.created);
        std::copy(volume.begin(), volume.end(),
                  image.begin() + static_cast<std::ptrdiff_t>(std::size_t{spec.low_cylinder} * kPerCylinder * kBlock));
    }
    return image;
}

namespace {

std::uint16_t crc16(const Image& bytes, std::size_t from, std::size_t count) {
    std::uint16_t crc = 0;
    for (std::size_t i = from; i < from + count; ++i) {
        crc ^= std::to_integer<std::uint16_t>(bytes[i]);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? static_cast<std::uint16_t>(crc >> 1 ^ 0xA001) : static_cast<std::uint16_t>(crc >> 1);
    }
    return crc;
}

} // namespace

Image dms_archive(const Image& adf) {
    const bool high_density = adf.size() > 901120;
    const std::size_t cylinder = high_density ? 22528 : 11264;
    const std::size_t cylinders = adf.size() / cylinder;
    Image archive(56);
    put_text(archive, 0, "DMS!");
    put32(archive, 8, high_density ? 0x10 : 0);
    put16(archive, 16, 0);
    put16(archive, 18, static_cast<std::uint32_t>(cylinders - 1));
    put32(archive, 20, static_cast<std::uint32_t>(adf.size()));
    put32(archive, 24, static_cast<std::uint32_t>(adf.size()));
    put16(archive, 50, 1);
    put16(archive, 54, crc16(archive, 4, 50));
    for (std::size_t n = 0; n < cylinders; ++n) {
        const std::size_t at = archive.size();
        archive.resize(at + 20 + cylinder);
        std::copy_n(adf.begin() + static_cast<std::ptrdiff_t>(n * cylinder), cylinder,
                    archive.begin() + static_cast<std::ptrdiff_t>(at + 20));
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < cylinder; ++i) sum += std::to_integer<std::uint32_t>(archive[at + 20 + i]);
        put_text(archive, at, "TR");
        put16(archive, at + 2, static_cast<std::uint32_t>(n));
        put16(archive, at + 6, static_cast<std::uint32_t>(cylinder));
        put16(archive, at + 8, static_cast<std::uint32_t>(cylinder));
        put16(archive, at + 10, static_cast<std::uint32_t>(cylinder));
        put16(archive, at + 14, sum & 0xFFFF);
        put16(archive, at + 16, crc16(archive, at + 20, cylinder));
        put16(archive, at + 18, crc16(archive, at, 18));
    }
    return archive;
}

Image iso_image(const IsoSpec& spec) {
    constexpr std::size_t kUser = 2048, kRaw = 2352, kRawHeader = 16;
    const std::size_t sector_bytes = spec.raw ? kRaw : kUser, header = spec.raw ? kRawHeader : 0;
    const std::size_t sectors = 20;
    Image image((spec.lead_sectors + sectors) * sector_bytes);
    const auto user = [&](std::size_t sector) { return (spec.lead_sectors + sector) * sector_bytes + header; };
    if (spec.raw) {
        for (std::size_t sector = 0; sector < sectors; ++sector) {
            const std::size_t at = (spec.lead_sectors + sector) * sector_bytes;
            for (std::size_t i = 1; i < 11; ++i) image[at + i] = std::byte{0xFF};
            image[at + 15] = std::byte{1}; // mode 1
        }
    }
    std::size_t pvd = user(16);
    image[pvd] = std::byte{1};
    put_text(image, pvd + 1, "CD001");
    image[pvd + 6] = std::byte{1};
    std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(pvd + 40), 32, std::byte{' '});
    put_text(image, pvd + 40, spec.volume);
    put_text(image, pvd + 813, spec.created);
    const std::size_t terminator = user(17);
    image[terminator] = std::byte{255};
    put_text(image, terminator + 1, "CD001");
    image[terminator + 6] = std::byte{1};
    return image;
}

} // namespace kq::test
