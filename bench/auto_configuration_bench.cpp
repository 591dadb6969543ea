// Time per call and peak memory of auto-configuring a catalog that lists ten media, against a
// Python reader of the same catalog in the same run:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/auto_configuration_bench
//
// Options: --calls N (calls per contender, the fastest counting; 100 by default), --folder DIR (where the media go; the
// system's temporary folder by default), --summary (a machine-readable last line).
//
// The benchmark writes ten images: six double-density floppies (three as .adf, three gzipped
// by GNU gzip as .adz), a high-density floppy, an empty formatted floppy, a 32 MiB hard-disk
// image with a Rigid Disk Block and one data partition, and an ISO 9660 image. The floppies are
// AmigaDOS data disks filled with text and noise; none of the first nine media boots, so every
// medium is analysed before the CD, listed last, settles the model. The module's call
// (auto_configure with the media layer's analysis) parses the catalog, analyses each medium
// (inflating each .adz up to its root block) and writes the completed document.
//
// The peer, tools/bench_catalog_reader.py run by python3, parses the same catalog with
// xml.etree, reads from every listed medium its first 64 KiB and the 64 KiB around its middle,
// where an AmigaDOS volume keeps its root block (through gzip for .adz, which inflates up to
// there), and serialises the document again: the same files opened in the same order and the
// same regions read, with a well-known XML library and no interpretation of the blocks. Each
// contender is a process of its own that times each of its calls and reports the fastest and
// the median (interpreter and program start excluded); its peak resident memory is the
// child's (wait4).

#include "bench/child_process.h"
#include "bench/summary.h"
#include "content/auto_configuration.h"
#include "tests/support/amiga_images.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using kq::bench::Measurement;
using kq::bench::run;
using kq::test::Image;

namespace {

constexpr std::size_t kBlock = 512;
constexpr std::size_t kMediaCount = 10;

// Fills every block of a floppy but the boot blocks, the root block and the bitmap block after
// it with text and noise, as a disk full of files would be.
void fill_floppy(Image& image, std::uint32_t seed) {
    static constexpr const char* kWords[] = {"AmigaDOS ", "Workbench ", "LIBS:", "\n", "move.l d0,a1 ", "Level 3 "};
    const std::size_t blocks = image.size() / kBlock, root = blocks / 2;
    std::mt19937 random(seed);
    for (std::size_t block = 2; block < blocks; ++block) {
        if (block == root || block == root + 1) continue;
        const bool noise = random() % 4 == 0;
        for (std::size_t i = block * kBlock; i < (block + 1) * kBlock;) {
            if (noise) {
                image[i++] = static_cast<std::byte>(random());
                continue;
            }
            for (const char* word = kWords[random() % std::size(kWords)]; *word != 0 && i < (block + 1) * kBlock;
                 ++word)
                image[i++] = static_cast<std::byte>(*word);
        }
    }
}

Image data_floppy(const std::string& name, bool high_density, std::uint32_t seed) {
    Image image = kq::test::floppy_image({.high_density = high_density,
                                          .boot_checksum = false,
                                          .boot_code = {},
                                          .name = name,
                                          .created = {5113, 600, 0}}); // 1992-01-01 10:00
    fill_floppy(image, seed);
    return image;
}

bool write_file(const fs::path& path, const Image& image) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    return static_cast<bool>(out);
}

// Worker: writes the ten media and the catalog listing them (UTF-8) into `folder`.
int write_media(const fs::path& folder) {
    struct Medium {
        std::string file, element;
        Image image;
        bool gzipped = false;
    };
    std::vector<Medium> media;
    media.push_back({"disk2.adf", "floppy", data_floppy("Disk2", false, 2)});
    media.push_back({"disk3.adf", "floppy", data_floppy("Disk3", false, 3)});
    media.push_back({"disk4.adz", "floppy", data_floppy("Disk4", false, 4), true});
    media.push_back({"disk5.adz", "floppy", data_floppy("Disk5", false, 5), true});
    media.push_back({"disk6.adz", "floppy", data_floppy("Disk6", false, 6), true});
    media.push_back({"disk7.adf", "floppy", data_floppy("Disk7", false, 7)});
    media.push_back({"extras.adf", "floppy", data_floppy("Extras", true, 8)});
    media.push_back(
        {"saves.adf", "floppy", kq::test::floppy_image({.boot_checksum = false, .boot_code = {}, .name = "Saves"})});
    media.push_back({"work.hdf", "harddrive", kq::test::rdb_hard_disk(2048, {{"DH0", "Work", 1, 2047, false}})});
    media.push_back({"game.iso", "cd", kq::test::iso_image({.volume = "GAME", .created = "1994030112000000"})});

    std::string catalog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xadml><catalog><application>"
                          "<description><title>Ten media</title></description><media>";
    for (const Medium& medium : media) {
        const fs::path path = folder / medium.file;
        if (medium.gzipped) {
            const fs::path plain = folder / (medium.file + ".plain");
            if (!write_file(plain, medium.image) || !run({"gzip", "-6", "-c"}, plain.string(), path.string()).ok)
                return 1;
            fs::remove(plain);
        } else if (!write_file(path, medium.image)) {
            return 1;
        }
        catalog += "<" + medium.element + ">" + path.string() + "</" + medium.element + ">";
    }
    catalog += "</media></application></catalog></xadml>\n";
    std::ofstream(folder / "catalog.xml", std::ios::binary) << catalog;
    return media.size() == kMediaCount ? 0 : 1;
}

// Worker: `calls` auto-configurations of the catalog; prints the fastest and the median call.
int configure(const std::string& catalog_path, int calls) {
    std::ifstream in(catalog_path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (std::any_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; })) return 1;
    const std::u16string catalog(bytes.begin(), bytes.end()); // ASCII paths only, widened as they are
    const kq::content::MediumAnalyser analyser = kq::content::media_layer_analyser();
    std::optional<std::string> xml;
    std::vector<double> seconds;
    for (int i = 0; i < calls; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (kq::content::auto_configure(catalog, analyser, xml) != kq::status::ok || !xml) return 1;
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(seconds.begin(), seconds.end());
    std::size_t media = 0;
    for (const char* element : {"<floppy>", "<harddrive>", "<cd>"})
        for (std::size_t at = xml->find(element); at != std::string::npos; at = xml->find(element, at + 1)) ++media;
    const bool boots_cd = xml->find("<system>a-cd32</system>") != std::string::npos;
    std::printf("fastest_seconds=%.9f median_seconds=%.9f media=%zu boots_cd=%d xml_bytes=%zu\n", seconds.front(),
                seconds[seconds.size() / 2], media, boots_cd ? 1 : 0, xml->size());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 3 && std::strcmp(argv[1], "--write-media") == 0) return write_media(argv[2]);
    if (argc == 4 && std::strcmp(argv[1], "--configure") == 0)
        return configure(argv[2], std::max(1, std::atoi(argv[3])));

    int calls = 100;
    fs::path folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--calls") == 0) calls = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--folder") == 0) folder = argv[i + 1];
    }
    folder /= "kq-auto-configuration-bench-" + std::to_string(getpid());
    fs::create_directories(folder);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const std::string catalog = (folder / "catalog.xml").string(), report = (folder / "report.txt").string();
    const std::string calls_text = std::to_string(calls);

    int failures = 0;
    const auto fail = [&](const char* what) {
        std::fprintf(stderr, "auto_configuration_bench: %s\n", what);
        ++failures;
    };
    if (!run({self, "--write-media", folder.string()}).ok) fail("writing the media failed");

    const Measurement ours = run({self, "--configure", catalog, calls_text}, {}, report);
    const std::map<std::string, double> ours_values = kq::bench::read_report(report);
    if (!ours.ok || ours_values.count("media") == 0 || ours_values.at("media") != kMediaCount ||
        ours_values.at("boots_cd") != 1)
        fail("the module's auto-configuration failed");
    const Measurement peer = run({"python3", KQ_CATALOG_READER, catalog, calls_text}, {}, report);
    const std::map<std::string, double> peer_values = kq::bench::read_report(report);
    if (!peer.ok || peer_values.count("media") == 0 || peer_values.at("media") != kMediaCount)
        fail("the Python catalog reader failed");

    const auto value = [](const std::map<std::string, double>& values, const char* key) {
        return values.count(key) ? values.at(key) : 0.0;
    };
    const double ours_seconds = value(ours_values, "fastest_seconds"),
                 peer_seconds = value(peer_values, "fastest_seconds");
    std::uintmax_t media_bytes = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().filename() != "catalog.xml" && entry.path().filename() != "report.txt")
            media_bytes += entry.file_size();
    std::printf("Catalog: %zu media, %ju bytes in all, in %s; %d calls per contender\n\n", kMediaCount,
                static_cast<std::uintmax_t>(media_bytes), folder.c_str(), calls);
    std::printf("| %-34s | %11s | %10s | %9s |\n", "", "fastest ms", "median ms", "peak KiB");
    std::printf("|------------------------------------|-------------|------------|-----------|\n");
    std::printf("| %-34s | %11.3f | %10.3f | %9ld |\n", "module: auto_configure", ours_seconds * 1e3,
                value(ours_values, "median_seconds") * 1e3, ours.peak_kib);
    std::printf("| %-34s | %11.3f | %10.3f | %9ld |\n", "python3: xml.etree, reading", peer_seconds * 1e3,
                value(peer_values, "median_seconds") * 1e3, peer.peak_kib);
    std::printf("\nratio (the peer's fastest call over the module's; above 1, the module is faster): %.2f\n",
                ours_seconds > 0 ? peer_seconds / ours_seconds : 0.0);

    if (summary) {
        kq::bench::Summary line("auto_configuration");
        line.add("media", static_cast<long>(kMediaCount));
        line.add("media_bytes", static_cast<long>(media_bytes));
        line.add("calls", static_cast<long>(calls));
        line.add("module_ms_per_call", ours_seconds * 1e3);
        line.add("module_median_ms_per_call", value(ours_values, "median_seconds") * 1e3);
        line.add("module_peak_kib", ours.peak_kib);
        line.add("python_ms_per_call", peer_seconds * 1e3);
        line.add("python_median_ms_per_call", value(peer_values, "median_seconds") * 1e3);
        line.add("python_peak_kib", peer.peak_kib);
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
