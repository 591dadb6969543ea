// The volume name of a large compressed hard-disk image (".hdz"), in bounded time and memory:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/volume_name_bench
//
// Options: --megabytes N (the image's size, 1024 by default), --folder DIR. The image has a
// Rigid Disk Block and one partition filling it, whose root block lies in its middle; it holds
// text here and there between empty stretches. The peer, measured in the same run, is GNU gzip
// inflating the whole file (gzip -dc): the module reads the image only up to the root block,
// so it should take about half that time, with memory that does not grow with the image. Each
// side runs as a process of its own (peak resident memory from wait4). --summary ends the
// output with a machine-readable line.

#include "bench/child_process.h"
#include "bench/summary.h"
#include "media/medium_names.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using kq::bench::Measurement;
using kq::bench::run;

namespace {

constexpr std::uint32_t kBlock = 512, kPerCylinder = 32;

void put32(std::vector<char>& block, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) block[at + static_cast<std::size_t>(i)] = static_cast<char>(value >> (24 - 8 * i));
}
std::uint32_t get32(const std::vector<char>& block, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(block[at + i]);
    return value;
}
void checksum(std::vector<char>& block, std::size_t longs, std::size_t field) {
    put32(block, field, 0);
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < longs; ++i) sum += get32(block, i * 4);
    put32(block, field, 0u - sum);
}

// Writes the image block by block; returns the root block's number.
std::uint64_t write_image(const fs::path& path, std::uint64_t megabytes) {
    const std::uint32_t cylinders = static_cast<std::uint32_t>(megabytes * 1024 * 1024 / (kBlock * kPerCylinder));
    const std::uint64_t partition_blocks = std::uint64_t{cylinders - 1} * kPerCylinder;
    const std::uint64_t root = kPerCylinder + (2 + partition_blocks - 1) / 2;
    std::ofstream out(path, std::ios::binary);
    std::vector<char> block(kBlock);
    std::mt19937 random(7);
    static constexpr const char* kWords[] = {"AmigaDOS ", "Workbench ", "LIBS:", "\n", "move.l d0,a1 "};
    for (std::uint64_t number = 0; number < std::uint64_t{cylinders} * kPerCylinder; ++number) {
        std::fill(block.begin(), block.end(), '\0');
        if (number == 0) {
            std::memcpy(block.data(), "RDSK", 4);
            put32(block, 4, 64);
            put32(block, 16, kBlock);
            put32(block, 28, 1);
            checksum(block, 64, 8);
        } else if (number == 1) {
            std::memcpy(block.data(), "PART", 4);
            put32(block, 4, 64);
            put32(block, 16, 0xFFFFFFFF);
            put32(block, 20, 1);
            block[36] = 3;
            std::memcpy(&block[37], "DH0", 3);
            for (const auto& [at, value] : {std::pair{128u, 16u},
                                            {132u, 128u},
                                            {140u, 1u},
                                            {148u, kPerCylinder},
                                            {152u, 2u},
                                            {164u, 1u},
                                            {168u, cylinders - 1},
                                            {192u, 0x444F5301u}})
                put32(block, at, value);
            checksum(block, 64, 8);
        } else if (number == kPerCylinder) {
            std::memcpy(block.data(), "DOS\1", 4);
        } else if (number == root) {
            put32(block, 0, 2);
            put32(block, 12, 72);
            block[432] = 9;
            std::memcpy(&block[433], "LargeDisk", 9);
            put32(block, 508, 1);
            checksum(block, 128, 20);
        } else if (number % 128 < 8) { // 4 KiB of text in every 64 KiB
            for (std::size_t i = 0; i < block.size();) {
                for (const char* word = kWords[random() % std::size(kWords)]; *word != 0 && i < block.size(); ++word)
                    block[i++] = *word;
            }
        }
        out.write(block.data(), kBlock);
    }
    return root;
}

} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 3 && std::strcmp(argv[1], "--worker") == 0) {
        const std::string path = argv[2];
        const std::optional<std::u16string> name =
            kq::media::read_volume_name(std::u16string(path.begin(), path.end()));
        return name == u"LargeDisk" ? 0 : 1;
    }
    std::uint64_t megabytes = 1024;
    fs::path folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--megabytes") == 0) megabytes = std::max(1ul, std::strtoul(argv[i + 1], nullptr, 10));
        if (std::strcmp(argv[i], "--folder") == 0) folder = argv[i + 1];
    }
    folder /= "kq-volume-name-bench-" + std::to_string(getpid());
    fs::create_directories(folder);
    const std::string image = (folder / "disk.hdf").string(), compressed = (folder / "disk.hdz").string();
    const std::string self = fs::read_symlink("/proc/self/exe").string();

    const std::uint64_t root = write_image(image, megabytes);
    const bool packed = run({"gzip", "-1", "-c"}, image, compressed).ok;
    fs::remove(image);
    int failures = packed ? 0 : 1;
    const Measurement ours = run({self, "--worker", compressed});
    const Measurement gzip = run({"gzip", "-dc", compressed});
    if (!ours.ok) {
        std::fprintf(stderr, "volume_name_bench: the module did not read the volume name\n");
        ++failures;
    }
    std::printf("Image: %ju MiB (%ju bytes compressed), root block at %.0f%% of it\n\n",
                static_cast<std::uintmax_t>(megabytes), static_cast<std::uintmax_t>(fs::file_size(compressed)),
                100.0 * static_cast<double>(root) * kBlock / (static_cast<double>(megabytes) * 1024 * 1024));
    std::printf("| %-28s | %8s | %9s |\n", "", "seconds", "peak KiB");
    std::printf("|------------------------------|----------|-----------|\n");
    std::printf("| %-28s | %8.3f | %9ld |\n", "module: volume name", ours.seconds, ours.peak_kib);
    std::printf("| %-28s | %8.3f | %9ld |\n", "gzip -dc: whole image", gzip.seconds, gzip.peak_kib);
    std::printf("\nratio (gzip's time over the module's): %.2f\n", gzip.seconds / ours.seconds);
    if (summary) {
        kq::bench::Summary line("volume_name");
        line.add("mebibytes", static_cast<long>(megabytes));
        line.add("module_seconds", ours.seconds);
        line.add("module_peak_kib", ours.peak_kib);
        line.add("gzip_seconds", gzip.seconds);
        line.add("gzip_peak_kib", gzip.peak_kib);
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
