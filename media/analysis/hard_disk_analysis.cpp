#include "media/analysis/hard_disk_analysis.h"

#include "common/byte_order.h"
#include "media/analysis/amiga_volume.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kq::media {
namespace {

constexpr std::uint32_t kRigidDiskId = 0x5244534B; // "RDSK"
constexpr std::uint32_t kPartitionId = 0x50415254; // "PART"
constexpr std::uint32_t kNoBlock = 0xFFFFFFFF;
constexpr std::uint32_t kRigidDiskSearchBlocks = 16;
constexpr std::uint32_t kRdbBlockBytes = 512;
constexpr std::uint32_t kPartitionBootable = 0x1, kPartitionNoMount = 0x2;
// Where the geometry is only a guess, the root may lie this many blocks below where it should.
constexpr std::uint32_t kRootSearchBlocks = 4096;

struct Block {
    std::array<std::byte, kRdbBlockBytes> bytes{};
    std::uint32_t at(std::size_t offset) const { return load_be32(&bytes[offset]); }
};

// A block of the partition table: its id and its checksum over SummedLongs longs.
bool is_table_block(const Block& block, std::uint32_t id) {
    if (block.at(0) != id) return false;
    const std::uint32_t summed = block.at(4);
    if (summed < 3 || summed > kRdbBlockBytes / 4) return false;
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i < summed; ++i) sum += block.at(i * 4);
    return sum == 0;
}

bool read_block(ImageBytes& image, std::uint64_t offset, Block& block) { return image.read(offset, block.bytes); }

// a × b × c, or nullopt when it does not fit in 64 bits.
std::optional<std::uint64_t> product(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
    std::uint64_t ab = 0, abc = 0;
    if (__builtin_mul_overflow(a, b, &ab) || __builtin_mul_overflow(ab, c, &abc)) return std::nullopt;
    return abc;
}

struct Partition {
    PartitionFacts facts;
    VolumeLayout layout;
    bool boots_only_as_dos = false; // a volume without partition table boots when it is AmigaDOS
};

// The partitions listed from `first` on: each PART block read once, at most kMaxPartitions.
std::vector<Partition> read_partitions(ImageBytes& image, std::uint32_t first, std::uint32_t rdb_block_size) {
    std::vector<Partition> partitions;
    std::vector<std::uint32_t> visited;
    for (std::uint32_t number = first; number != kNoBlock && partitions.size() < kMaxPartitions;) {
        if (std::find(visited.begin(), visited.end(), number) != visited.end()) break; // a loop
        visited.push_back(number);
        Block part;
        if (!read_block(image, std::uint64_t{number} * rdb_block_size, part) || !is_table_block(part, kPartitionId))
            break;
        Partition partition;
        const std::size_t name_length = std::min<std::size_t>(std::to_integer<std::size_t>(part.bytes[36]), 31);
        for (std::size_t i = 0; i < name_length; ++i)
            partition.facts.device_name += static_cast<char16_t>(std::to_integer<unsigned>(part.bytes[37 + i]));
        const std::uint32_t flags = part.at(20);
        partition.facts.bootable = (flags & kPartitionBootable) != 0 && (flags & kPartitionNoMount) == 0;
        // The DosEnvec: block size in longs, heads, blocks per track, reserved, cylinders.
        const std::uint32_t block_size = part.at(132) * 4, surfaces = part.at(140), per_track = part.at(148);
        const std::uint32_t low = part.at(164), high = part.at(168);
        const std::optional<std::uint64_t> start = product(low, surfaces, per_track);
        const std::optional<std::uint64_t> blocks =
            high >= low ? product(std::uint64_t{high} - low + 1, surfaces, per_track) : std::nullopt;
        if (start && blocks && !__builtin_mul_overflow(*start, std::uint64_t{block_size}, &partition.layout.start)) {
            partition.layout.blocks = *blocks;
            partition.layout.block_size = block_size;
            partition.layout.reserved = part.at(152);
        }
        partitions.push_back(std::move(partition));
        number = part.at(16);
    }
    return partitions;
}

// The Rigid Disk Block in the first 16 blocks: its partition list, or nullopt.
std::optional<std::pair<std::uint32_t, std::uint32_t>> find_rigid_disk(ImageBytes& image) {
    for (std::uint32_t number = 0; number < kRigidDiskSearchBlocks; ++number) {
        Block block;
        if (!read_block(image, std::uint64_t{number} * kRdbBlockBytes, block)) return std::nullopt;
        if (!is_table_block(block, kRigidDiskId)) continue;
        const std::uint32_t block_size = block.at(16);
        return std::pair{block.at(28),
                         block_size >= kRdbBlockBytes && block_size <= 32768 ? block_size : kRdbBlockBytes};
    }
    return std::nullopt;
}

VolumeLayout single_volume_layout(ImageBytes& image, const HardDiskGeometry& geometry) {
    VolumeLayout layout;
    layout.block_size = geometry.block_size != 0 ? geometry.block_size : 512;
    layout.reserved = geometry.reserved >= 0 ? static_cast<std::uint32_t>(geometry.reserved) : 2;
    const std::uint64_t size = image.size().value_or(0);
    std::uint64_t blocks = size / layout.block_size;
    // Whole cylinders only, when the geometry names them.
    if (const std::uint64_t per_cylinder = std::uint64_t{geometry.sectors} * geometry.surfaces; per_cylinder != 0)
        blocks -= blocks % per_cylinder;
    layout.blocks = blocks;
    layout.step_down = kRootSearchBlocks;
    return layout;
}

} // namespace

void analyse_hard_disk(ImageBytes& image, const HardDiskGeometry& geometry, MediumAnalysis& analysis) {
    analysis.kind = MediumKind::hard_disk;
    std::vector<Partition> partitions;
    if (const auto rigid_disk = find_rigid_disk(image)) {
        partitions = read_partitions(image, rigid_disk->first, rigid_disk->second);
    } else {
        Partition whole;
        whole.layout = single_volume_layout(image, geometry);
        whole.facts.bootable = true; // mounted as a unit of its own, it boots like a partition
        whole.boots_only_as_dos = true;
        partitions.push_back(std::move(whole));
    }
    if (partitions.empty()) {
        analysis.analysis_class = AnalysisClass::not_bootable;
        return;
    }

    std::vector<ByteRange> ranges;
    for (const Partition& partition : partitions) amiga_volume_ranges(partition.layout, ranges);
    image.prefetch(ranges);

    bool readable = false, bootable = false;
    for (Partition& partition : partitions) {
        const std::optional<AmigaVolume> volume = read_amiga_volume(image, partition.layout);
        const bool dos_volume = volume && volume->is_dos && volume->has_root;
        readable = readable || volume.has_value();
        if (dos_volume) {
            partition.facts.volume_name = volume->name;
            partition.facts.created = volume->created;
        } else if (partition.boots_only_as_dos) {
            partition.facts.bootable = volume && volume->is_dos;
        }
        bootable = bootable || partition.facts.bootable;
        analysis.partitions.push_back(std::move(partition.facts));
    }
    const PartitionFacts& first = analysis.partitions.front();
    analysis.volume_name = first.volume_name;
    analysis.date = first.created;
    analysis.analysis_class = !readable  ? AnalysisClass::unknown
                              : bootable ? AnalysisClass::later_kickstart
                                         : AnalysisClass::not_bootable;
}

} // namespace kq::media
