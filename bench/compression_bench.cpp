// Throughput and peak memory of compressing a hard-disk image into a ".hdz" and inflating it
// again, against GNU gzip on the same file in the same run:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/compression_bench
//
// Options: --megabytes N (the image size, 256 by default), --folder DIR (where the files go;
// the system's temporary folder by default). Each contender runs as a process of its own, so
// that its peak resident memory (getrusage of the child) is its own: the module's deflater and
// inflater through this program started again in a worker mode, gzip -6 and gzip -d as
// themselves. The deflater writes the module's gzip layout at zlib's default level, which is
// gzip -6's; both inflaters read the file gzip wrote. The outputs are compared byte for byte.
// The module's peak memory is also measured on an image a quarter of the size: it must not grow
// with the image. --summary ends the output with a machine-readable line.

#include "bench/child_process.h"
#include "bench/summary.h"
#include "media/compression/deflate.h"
#include "media/compression/inflate.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using kq::bench::Measurement;
using kq::bench::run;

namespace {

// A hard-disk image as such images are: stretches of empty blocks, text and program code
// that compress well, and already compressed files that do not.
void write_image(const fs::path& path, std::size_t megabytes) {
    std::ofstream out(path, std::ios::binary);
    std::mt19937 random(42);
    std::vector<char> block(1 << 20);
    static constexpr const char* kWords[] = {"AmigaDOS ",  "Workbench ", "LIBS:",         "dos.library ",
                                             "\n",         "C:Copy ",    "move.l d0,a1 ", "Startup-Sequence ",
                                             "0123456789 "};
    for (std::size_t mb = 0; mb < megabytes; ++mb) {
        const unsigned kind = random() % 10;
        if (kind < 4) {
            std::fill(block.begin(), block.end(), '\0');
        } else if (kind < 8) {
            for (std::size_t i = 0; i < block.size();) {
                const char* word = kWords[random() % std::size(kWords)];
                for (; *word != 0 && i < block.size(); ++word) block[i++] = *word;
                if (random() % 5 == 0 && i < block.size()) block[i++] = static_cast<char>(random());
            }
        } else {
            for (char& c : block) c = static_cast<char>(random());
        }
        out.write(block.data(), static_cast<std::streamsize>(block.size()));
    }
}

bool same_content(const fs::path& a, const fs::path& b) {
    std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
    std::vector<char> x(1 << 20), y(1 << 20);
    while (first && second) {
        first.read(x.data(), static_cast<std::streamsize>(x.size()));
        second.read(y.data(), static_cast<std::streamsize>(y.size()));
        if (first.gcount() != second.gcount() ||
            std::memcmp(x.data(), y.data(), static_cast<std::size_t>(first.gcount())) != 0)
            return false;
    }
    return !first && !second;
}

std::u16string module_path(const std::string& path) { return std::u16string(path.begin(), path.end()); }

// The worker mode: one operation of the module, in a process of its own.
int worker(const std::string& operation, const std::string& in, const std::string& out) {
    if (operation == "deflate")
        return kq::media::deflate_file(module_path(in), module_path(out)) == kq::status::ok ? 0 : 1;
    if (operation == "inflate")
        return kq::media::inflate_file(module_path(in), module_path(out)) == kq::media::InflateError::none ? 0 : 1;
    return 2;
}

void report(const char* operation, double megabytes, const Measurement& ours, const Measurement& gzip) {
    std::printf("| %-8s | %8.1f | %8.1f | %5.2f | %9ld | %9ld |\n", operation, megabytes / ours.seconds,
                megabytes / gzip.seconds, gzip.seconds / ours.seconds, ours.peak_kib, gzip.peak_kib);
}

} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 5 && std::strcmp(argv[1], "--worker") == 0) return worker(argv[2], argv[3], argv[4]);
    std::size_t megabytes = 256;
    fs::path folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--megabytes") == 0) megabytes = std::strtoul(argv[i + 1], nullptr, 10);
        if (std::strcmp(argv[i], "--folder") == 0) folder = argv[i + 1];
    }
    folder /= "kq-compression-bench-" + std::to_string(getpid());
    fs::create_directories(folder);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const auto file = [&](const char* name) { return (folder / name).string(); };

    int failures = 0;
    const auto check = [&](bool ok, const char* what) {
        if (!ok) {
            std::fprintf(stderr, "compression_bench: %s failed\n", what);
            ++failures;
        }
    };

    std::printf("Image: %zu MiB in %s\n\n", megabytes, folder.c_str());
    write_image(file("disk.hdf"), megabytes);
    const Measurement ours_deflate = run({self, "--worker", "deflate", file("disk.hdf"), file("ours.hdz")});
    const Measurement gzip_deflate = run({"gzip", "-6", "-c"}, file("disk.hdf"), file("gzip.gz"));
    check(ours_deflate.ok && gzip_deflate.ok, "compressing");
    check(run({"gzip", "-t", file("ours.hdz")}).ok, "gzip -t on the module's file");
    const Measurement ours_inflate = run({self, "--worker", "inflate", file("gzip.gz"), file("ours.hdf")});
    const Measurement gzip_inflate = run({"gzip", "-d", "-c"}, file("gzip.gz"), file("gzip.hdf"));
    check(ours_inflate.ok && gzip_inflate.ok, "inflating");
    check(same_content(file("disk.hdf"), file("ours.hdf")) && same_content(file("disk.hdf"), file("gzip.hdf")),
          "comparing the inflated images");

    std::printf("| %-8s | %8s | %8s | %5s | %9s | %9s |\n", "", "module", "gzip", "ratio", "module", "gzip");
    std::printf("| %-8s | %8s | %8s | %5s | %9s | %9s |\n", "", "MiB/s", "MiB/s", "", "peak KiB", "peak KiB");
    std::printf("|----------|----------|----------|-------|-----------|-----------|\n");
    report("deflate", static_cast<double>(megabytes), ours_deflate, gzip_deflate);
    report("inflate", static_cast<double>(megabytes), ours_inflate, gzip_inflate);
    std::printf("\n(ratio: gzip's time over the module's; above 1, the module is faster)\n");
    std::printf("Sizes: module %ju bytes, gzip -6 %ju bytes\n",
                static_cast<std::uintmax_t>(fs::file_size(file("ours.hdz"))),
                static_cast<std::uintmax_t>(fs::file_size(file("gzip.gz"))));

    // The module's memory on an image a quarter of the size.
    const std::size_t quarter = std::max<std::size_t>(megabytes / 4, 1);
    write_image(file("small.hdf"), quarter);
    const Measurement small_deflate = run({self, "--worker", "deflate", file("small.hdf"), file("small.hdz")});
    const Measurement small_inflate = run({self, "--worker", "inflate", file("small.hdz"), file("small.out")});
    check(small_deflate.ok && small_inflate.ok, "the smaller image");
    std::printf("Module peak memory, %zu MiB image vs %zu MiB image: deflate %ld vs %ld KiB, inflate %ld vs %ld KiB\n",
                quarter, megabytes, small_deflate.peak_kib, ours_deflate.peak_kib, small_inflate.peak_kib,
                ours_inflate.peak_kib);

    if (summary) {
        const double mebibytes = static_cast<double>(megabytes);
        kq::bench::Summary line("compression");
        line.add("mebibytes", static_cast<long>(megabytes));
        line.add("deflate_module_mib_per_s", mebibytes / ours_deflate.seconds);
        line.add("deflate_module_peak_kib", ours_deflate.peak_kib);
        line.add("deflate_module_bytes", static_cast<long>(fs::file_size(file("ours.hdz"))));
        line.add("deflate_gzip_bytes", static_cast<long>(fs::file_size(file("gzip.gz"))));
        line.add("deflate_gzip_mib_per_s", mebibytes / gzip_deflate.seconds);
        line.add("deflate_gzip_peak_kib", gzip_deflate.peak_kib);
        line.add("inflate_module_mib_per_s", mebibytes / ours_inflate.seconds);
        line.add("inflate_module_peak_kib", ours_inflate.peak_kib);
        line.add("inflate_gzip_mib_per_s", mebibytes / gzip_inflate.seconds);
        line.add("inflate_gzip_peak_kib", gzip_inflate.peak_kib);
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
