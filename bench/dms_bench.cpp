// Throughput and peak memory of unpacking DMS archives, against xdms on the same archives in
// the same run:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/dms_bench
//
// Options: --repetitions N (unpacks per process, 50 by default), --rounds R (processes per
// contender and archive, the fastest counting; 5 by default), --data DIR (the archives;
// tests/data/dms by default), --folder DIR (where the images go; the system's temporary folder
// by default). Each contender runs as a process of its own that unpacks the archive N times
// into one image file: the module's unpacker through this program started again in a worker
// mode, xdms as "xdms -q u A +OUT A +OUT ...". Its peak resident memory is the child's
// (wait4). Throughput counts the image's bytes; the two images are compared byte for byte.
// --summary ends the output with a machine-readable line: all archives together, and the
// largest peak memory of each contender.
//
// Then the archives of a password-protected disk, opened without their password: each plain
// sample of the test disk encrypted with the first key of its published password-protected twin
// (the heavy 2 one is that twin byte for byte but for the header's date), and the twin itself.
// Milliseconds per unpack of the encrypted archive by the module, against the module and xdms
// unpacking the plain twin of the same disk (xdms needs the password, which is unknown); each
// contender a process of its own that unpacks the archive `--encrypted-repetitions` times (5 by
// default), the fastest of `--rounds` processes; images compared byte for byte.

#include "bench/child_process.h"
#include "bench/summary.h"
#include "media/dms/dms_checks.h"
#include "media/dms/dms_unpacker.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace fs = std::filesystem;
using kq::bench::best_of;
using kq::bench::Measurement;
using kq::bench::run;

namespace {

// Whether the two images are the same bytes (and not empty).
bool same_image(const fs::path& ours_path, const fs::path& xdms_path, std::uintmax_t& xdms_bytes) {
    std::ifstream ours(ours_path, std::ios::binary), theirs(xdms_path, std::ios::binary);
    std::array<char, 65536> a{}, b{};
    xdms_bytes = 0;
    while (ours && theirs) {
        ours.read(a.data(), a.size());
        theirs.read(b.data(), b.size());
        if (ours.gcount() != theirs.gcount() ||
            std::memcmp(a.data(), b.data(), static_cast<std::size_t>(ours.gcount())) != 0)
            return false;
        xdms_bytes += static_cast<std::uintmax_t>(theirs.gcount());
    }
    return xdms_bytes > 0 && !ours && !theirs;
}

std::u16string module_path(const std::string& path) { return std::u16string(path.begin(), path.end()); }

// The first keys of the published password-protected twins of the test disk's archives.
struct EncryptedTwin {
    const char* plain;
    std::uint16_t key;
};
constexpr EncryptedTwin kEncryptedTwins[] = {
    {"test_C1_none.dms", 0x6CF9},   {"test_C1_simple.dms", 0x779A}, {"test_C1_quick.dms", 0x8818},
    {"test_C1_medium.dms", 0x288D}, {"test_C1_deep.dms", 0x25B1},   {"test_C1_heavy1.dms", 0x0352},
    {"test_C1_heavy2.dms", 0xBACC},
};

void put16(std::vector<std::uint8_t>& bytes, std::size_t at, unsigned value) {
    bytes[at] = static_cast<std::uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

// Writes `plain` encrypted as a password with first key `key` stores it: every record but
// FILEID.DIZ (80) in file order, the info bit set, the CRCs made right.
bool write_encrypted(const fs::path& plain, std::uint16_t key, const fs::path& out) {
    std::ifstream in(plain, std::ios::binary);
    std::vector<std::uint8_t> a((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (a.size() < 56) return false;
    a[11] |= 0x02;
    put16(a, 54, kq::media::dms::crc16(std::span(a).subspan(4, 50)));
    for (std::size_t at = 56; at + 20 <= a.size() && a[at] == 'T' && a[at + 1] == 'R';) {
        const std::size_t packed = a[at + 6] << 8 | a[at + 7];
        if (at + 20 + packed > a.size()) return false;
        if ((a[at + 2] << 8 | a[at + 3]) != 80) {
            for (std::size_t i = at + 20; i < at + 20 + packed; ++i) {
                a[i] = static_cast<std::uint8_t>(a[i] ^ key);
                key = static_cast<std::uint16_t>((key >> 1) + a[i]);
            }
            put16(a, at + 16, kq::media::dms::crc16(std::span(a).subspan(at + 20, packed)));
            put16(a, at + 18, kq::media::dms::crc16(std::span(a).subspan(at, 18)));
        }
        at += 20 + packed;
    }
    std::ofstream(out, std::ios::binary)
        .write(reinterpret_cast<const char*>(a.data()), static_cast<std::streamsize>(a.size()));
    return true;
}

// The worker mode: the module's unpacker, `repetitions` times, in a process of its own.
int worker(int repetitions, const std::string& in, const std::string& out) {
    for (int i = 0; i < repetitions; ++i)
        if (kq::media::unpack_dms_file(module_path(in), module_path(out)) != kq::media::DmsError::none) return 1;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 5 && std::strcmp(argv[1], "--worker") == 0) return worker(std::atoi(argv[2]), argv[3], argv[4]);
    int repetitions = 50, rounds = 5, encrypted_repetitions = 5;
    fs::path data = KQ_DMS_BENCH_DATA, folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--repetitions") == 0) repetitions = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--rounds") == 0) rounds = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--encrypted-repetitions") == 0)
            encrypted_repetitions = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--data") == 0) data = argv[i + 1];
        if (std::strcmp(argv[i], "--folder") == 0) folder = argv[i + 1];
    }
    folder /= "kq-dms-bench-" + std::to_string(getpid());
    fs::create_directories(folder);
    const std::string self = fs::read_symlink("/proc/self/exe").string();

    std::vector<fs::path> archives;
    for (const fs::directory_entry& entry : fs::directory_iterator(data)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() == ".dms" && name.find("_pwd") == std::string::npos)
            archives.push_back(entry.path());
    }
    std::sort(archives.begin(), archives.end());

    std::printf("%d unpacks of a whole disk's worth per process, fastest of %d processes; images in %s\n\n",
                repetitions, rounds, folder.c_str());
    std::printf("| %-20s | %8s | %8s | %5s | %9s | %9s |\n", "", "module", "xdms", "ratio", "module", "xdms");
    std::printf("| %-20s | %8s | %8s | %5s | %9s | %9s |\n", "archive", "MiB/s", "MiB/s", "", "peak KiB", "peak KiB");
    std::printf("|----------------------|----------|----------|-------|-----------|-----------|\n");
    int failures = 0;
    double ours_total = 0, xdms_total = 0, mebibytes_total = 0;
    long ours_peak = 0, xdms_peak = 0;
    for (const fs::path& archive : archives) {
        const std::string in = archive.string(), ours_out = (folder / "module.adf").string(),
                          xdms_out = (folder / "xdms.adf").string();
        // Small images are unpacked more often, so that every process does about as much work as
        // `repetitions` unpacks of a whole disk and starting it does not dominate.
        run({"xdms", "-q", "u", in, "+" + xdms_out});
        const std::uintmax_t image_bytes = fs::exists(xdms_out) ? fs::file_size(xdms_out) : 0;
        const int times =
            image_bytes == 0
                ? repetitions
                : std::max(repetitions, static_cast<int>(repetitions * 901120.0 / static_cast<double>(image_bytes)));
        std::vector<std::string> xdms_command = {"xdms", "-q", "u"};
        for (int i = 0; i < times; ++i) xdms_command.insert(xdms_command.end(), {in, "+" + xdms_out});
        const Measurement ours = best_of(rounds, {self, "--worker", std::to_string(times), in, ours_out});
        const Measurement xdms = best_of(rounds, xdms_command);
        const std::string name = archive.filename().string();
        std::uintmax_t xdms_bytes = 0;
        if (!ours.ok || !xdms.ok || !same_image(ours_out, xdms_out, xdms_bytes)) {
            const char* what = !ours.ok ? "the module failed" : !xdms.ok ? "xdms failed" : "the images differ";
            std::fprintf(stderr, "dms_bench: %s: %s\n", name.c_str(), what);
            ++failures;
            continue;
        }
        const double mebibytes = static_cast<double>(xdms_bytes) * times / (1024.0 * 1024.0);
        std::printf("| %-20s | %8.1f | %8.1f | %5.2f | %9ld | %9ld |\n", name.c_str(), mebibytes / ours.seconds,
                    mebibytes / xdms.seconds, xdms.seconds / ours.seconds, ours.peak_kib, xdms.peak_kib);
        ours_total += ours.seconds;
        xdms_total += xdms.seconds;
        mebibytes_total += mebibytes;
        ours_peak = std::max(ours_peak, ours.peak_kib);
        xdms_peak = std::max(xdms_peak, xdms.peak_kib);
        fs::remove(ours_out);
        fs::remove(xdms_out);
    }
    if (ours_total > 0)
        std::printf("\nAll archives: module %.3f s, xdms %.3f s, ratio %.2f\n", ours_total, xdms_total,
                    xdms_total / ours_total);
    std::printf("(ratio: xdms's time over the module's; above 1, the module is faster)\n");

    // The password-protected disk: per unpack, the encrypted archive by the module against the
    // plain twin by the module and by xdms.
    std::printf("\nPassword-protected archives opened without the password, ms per unpack (%d per process, "
                "fastest of %d processes):\n\n",
                encrypted_repetitions, rounds);
    std::printf("| %-30s | %9s | %12s | %10s |\n", "archive", "encrypted", "plain twin", "xdms plain");
    std::printf("|--------------------------------|-----------|--------------|------------|\n");
    std::vector<std::pair<std::string, fs::path>> encrypted; // name, plain twin
    for (const EncryptedTwin& twin : kEncryptedTwins) {
        const fs::path out =
            folder / (std::string(twin.plain).substr(0, std::strlen(twin.plain) - 4) + "_encrypted.dms");
        if (!write_encrypted(data / twin.plain, twin.key, out)) {
            std::fprintf(stderr, "dms_bench: cannot encrypt %s\n", twin.plain);
            ++failures;
            continue;
        }
        encrypted.emplace_back(out.string(), data / twin.plain);
    }
    encrypted.emplace_back((data / "test_C1_heavy2_pwd.dms").string(), data / "test_C1_heavy2.dms");
    double slowest_ms = 0, plain_ms_total = 0, xdms_ms_total = 0;
    std::vector<std::pair<std::string, double>> encrypted_ms; // by the archive's mode, for the summary
    for (const auto& [in, plain] : encrypted) {
        const std::string ours_out = (folder / "module.adf").string(), xdms_out = (folder / "xdms.adf").string();
        const int times = encrypted_repetitions;
        std::vector<std::string> xdms_command = {"xdms", "-q", "u"};
        for (int i = 0; i < times; ++i) xdms_command.insert(xdms_command.end(), {plain.string(), "+" + xdms_out});
        const Measurement ours = best_of(rounds, {self, "--worker", std::to_string(times), in, ours_out});
        const Measurement twin = best_of(rounds, {self, "--worker", std::to_string(times), plain.string(), ours_out});
        const Measurement xdms = best_of(rounds, xdms_command);
        const std::string name = fs::path(in).filename().string();
        std::uintmax_t xdms_bytes = 0;
        if (!ours.ok || !twin.ok || !xdms.ok || !same_image(ours_out, xdms_out, xdms_bytes)) {
            std::fprintf(stderr, "dms_bench: %s: %s\n", name.c_str(),
                         !ours.ok   ? "the module failed"
                         : !xdms.ok ? "xdms failed"
                                    : "the images differ");
            ++failures;
            continue;
        }
        const double ours_ms = ours.seconds * 1e3 / times, twin_ms = twin.seconds * 1e3 / times,
                     xdms_ms = xdms.seconds * 1e3 / times;
        std::printf("| %-30s | %9.1f | %12.1f | %10.1f |\n", name.c_str(), ours_ms, twin_ms, xdms_ms);
        slowest_ms = std::max(slowest_ms, ours_ms);
        // "test_C1_deep_encrypted.dms" is "deep"; the published sample is "heavy2_sample".
        std::string mode = name.substr(std::strlen("test_C1_"));
        mode = mode.ends_with("_pwd.dms") ? mode.substr(0, mode.size() - 8) + "_sample"
                                          : mode.substr(0, mode.size() - std::strlen("_encrypted.dms"));
        encrypted_ms.emplace_back(mode, ours_ms);
        plain_ms_total += twin_ms;
        xdms_ms_total += xdms_ms;
        fs::remove(ours_out);
        fs::remove(xdms_out);
    }
    if (summary && ours_total > 0 && xdms_total > 0) {
        kq::bench::Summary line("dms");
        line.add("archives", static_cast<long>(archives.size()));
        line.add("repetitions", static_cast<long>(repetitions));
        line.add("rounds", static_cast<long>(rounds));
        line.add("module_mib_per_s", mebibytes_total / ours_total);
        line.add("module_peak_kib", ours_peak);
        line.add("xdms_mib_per_s", mebibytes_total / xdms_total);
        line.add("xdms_peak_kib", xdms_peak);
        line.add("encrypted_archives", static_cast<long>(encrypted.size()));
        line.add("encrypted_slowest_ms", slowest_ms);
        for (const auto& [mode, ms] : encrypted_ms) line.add(("encrypted_ms_" + mode).c_str(), ms);
        line.add("plain_twin_mean_ms", plain_ms_total / static_cast<double>(encrypted.size()));
        line.add("xdms_plain_twin_mean_ms", xdms_ms_total / static_cast<double>(encrypted.size()));
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 && !archives.empty() ? 0 : 1;
}
