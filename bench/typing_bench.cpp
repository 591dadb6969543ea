// Throughput and peak memory of typing a 1 MB text: the raw key string of the whole text
// (raw_key_string, mode 0) in the en-us and de-de layouts, against glibc's iconv(3) converting
// the same text from UTF-16 to code page 850 in the same run:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/typing_bench
//
// Options: --characters N (the text's length, 1,000,000 by default), --rounds R (timed calls per
// contender, the fastest counting; 5 by default), --folder DIR (where the text goes; the
// system's temporary folder by default), --summary (a machine-readable last line).
//
// The text mixes words (some with accented Latin-1 letters), numbers, punctuation and line
// breaks. Both contenders do a table lookup per character: the module finds the character in
// the layout's character table and writes the strokes that type it; iconv finds its byte in
// code page 850, which holds every Latin-1 character. The module writes far more (the key
// events, tens of UTF-16 units per character, against iconv's one byte), which is its job; it
// prints how many. MB counts the text's characters, one byte each as in Latin-1. Each contender runs as a process of its own (this
// program started again in a worker mode) that reads the text, times its calls and reports
// the fastest; its peak resident memory is the child's (wait4).

#include "bench/child_process.h"
#include "bench/summary.h"
#include "input/keyboard_input_data.h"
#include "input/raw_key_strings.h"

#include <iconv.h>
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
#include <string_view>
#include <vector>

namespace fs = std::filesystem;
using kq::bench::Measurement;
using kq::bench::run;

namespace {

// Writes `characters` UTF-16LE code units of mixed text (no byte-order mark).
void write_text(const std::string& path, std::size_t characters) {
    static constexpr std::u16string_view kWords[] = {
        u"the",     u"Amiga", u"disk",   u"Workbench", u"Grüße",  u"Straße", u"café",   u"naïve",
        u"über",    u"Ærø",   u"élève",  u"año",       u"Müller", u"façade", u"déjà",   u"vu",
        u"Åsa",     u"smörgåsbord",      u"crème",     u"brûlée", u"ÇA",     u"Öl",     u"and",
        u"of",      u"to",    u"Kickstart",            u"copper", u"blitter", u"Paula", u"Denise"};
    static constexpr std::u16string_view kSeparators[] = {u" ", u" ", u" ", u" ", u", ", u". ", u"; ", u": ",
                                                          u"! ", u"? ", u" (", u") ", u" - ", u"\"", u"'", u"/",
                                                          u" #", u" & ", u" @", u"% ", u" + ", u" = "};
    std::mt19937 random(1985);
    std::u16string text;
    text.reserve(characters + 32);
    std::size_t line = 0;
    while (text.size() < characters) {
        const std::size_t before = text.size();
        if (random() % 6 == 0)
            for (const char c : std::to_string(random() % 100000)) text += static_cast<char16_t>(c);
        else
            text += kWords[random() % std::size(kWords)];
        text += kSeparators[random() % std::size(kSeparators)];
        line += text.size() - before;
        if (line > 64) {
            text += u'\n';
            line = 0;
        }
    }
    text.resize(characters);
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::u16string read_text(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                        static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    return text;
}

std::size_t occurrences(std::u16string_view text, std::u16string_view what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::u16string_view::npos; at = text.find(what, at + what.size())) ++count;
    return count;
}

// The fastest of `rounds` calls of `call`, each after an untimed `prepare`.
template <class Prepare, class Call> double fastest(int rounds, Prepare&& prepare, Call&& call) {
    double best = 0;
    for (int i = 0; i < rounds; ++i) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        call();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (i == 0 || seconds < best) best = seconds;
    }
    return best;
}

// Worker: the module types the text `rounds` times; prints the fastest call and what it wrote.
int type_worker(const std::string& layout_id, const std::string& path, int rounds) {
    const std::u16string text = read_text(path);
    const std::u16string layout(layout_id.begin(), layout_id.end());
    kq::input::KeyboardInputData* record = nullptr;
    if (kq::input::make_keyboard_input_data(&record, u"bench", layout.c_str(), nullptr, 0, 0, 0, 0) != kq::status::ok) return 1;
    std::u16string keys;
    const double seconds = fastest(rounds, [&] {
        std::u16string().swap(keys);  // the previous round's string is freed before the clock starts
    }, [&] { keys = kq::input::raw_key_string(*record, text, 0); });
    kq::input::free_keyboard_input_data(record);
    std::printf("seconds=%.9f units=%zu downs=%zu ups=%zu\n", seconds, keys.size(), occurrences(keys, u"KEY_RAW_DOWN "),
                occurrences(keys, u"KEY_RAW_UP "));
    return 0;
}

// Worker: glibc's iconv converts the text to code page 850 `rounds` times.
int iconv_worker(const std::string& path, int rounds) {
    std::ifstream in(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const iconv_t converter = iconv_open("IBM850", "UTF-16LE");
    if (converter == reinterpret_cast<iconv_t>(-1)) return 1;
    std::string out(text.size(), '\0');
    std::size_t written = 0;
    bool ok = true;
    const double seconds = fastest(rounds, [&] { iconv(converter, nullptr, nullptr, nullptr, nullptr); }, [&] {
        char* from = text.data();
        char* to = out.data();
        std::size_t from_left = text.size(), to_left = out.size();
        ok = ok && iconv(converter, &from, &from_left, &to, &to_left) != static_cast<std::size_t>(-1) && from_left == 0;
        written = out.size() - to_left;
    });
    iconv_close(converter);
    std::printf("seconds=%.9f bytes=%zu\n", seconds, written);
    return ok ? 0 : 1;
}

// The worker's report, "key=value ..." on one line.
} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 4 && std::strcmp(argv[1], "--write-text") == 0) {
        write_text(argv[2], std::strtoul(argv[3], nullptr, 10));
        return 0;
    }
    if (argc == 5 && std::strcmp(argv[1], "--type") == 0) return type_worker(argv[2], argv[3], std::atoi(argv[4]));
    if (argc == 4 && std::strcmp(argv[1], "--iconv") == 0) return iconv_worker(argv[2], std::atoi(argv[3]));

    std::size_t characters = 1'000'000;
    int rounds = 5;
    fs::path folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--characters") == 0) characters = std::max(1ul, std::strtoul(argv[i + 1], nullptr, 10));
        if (std::strcmp(argv[i], "--rounds") == 0) rounds = std::max(1, std::atoi(argv[i + 1]));
        if (std::strcmp(argv[i], "--folder") == 0) folder = argv[i + 1];
    }
    folder /= "kq-typing-bench-" + std::to_string(getpid());
    fs::create_directories(folder);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const std::string text = (folder / "text.utf16").string(), report = (folder / "report.txt").string();
    const std::string rounds_text = std::to_string(rounds);

    int failures = 0;
    const auto fail = [&](const std::string& what) {
        std::fprintf(stderr, "typing_bench: %s\n", what.c_str());
        ++failures;
    };
    if (!run({self, "--write-text", text, std::to_string(characters)}).ok) fail("writing the text failed");

    struct Row {
        std::string name;
        Measurement process;
        double seconds = 0, units = 0;
    };
    std::vector<Row> rows;
    for (const char* layout : {"en-us", "de-de"}) {
        const Measurement m = run({self, "--type", layout, text, rounds_text}, {}, report);
        const std::map<std::string, double> values = kq::bench::read_report(report);
        // Every character is typed, and every key pressed is released again.
        if (!m.ok || values.count("seconds") == 0 || values.at("downs") < static_cast<double>(characters) / 2 ||
            values.at("downs") != values.at("ups"))
            fail(std::string("the module's typing in ") + layout + " failed");
        rows.push_back({std::string("module, ") + layout, m, values.count("seconds") ? values.at("seconds") : 0,
                        values.count("units") ? values.at("units") : 0});
        std::printf("%s: %.0f UTF-16 units of raw keys, %.0f key presses\n", layout, values.count("units") ? values.at("units") : 0,
                    values.count("downs") ? values.at("downs") : 0);
    }
    const Measurement peer = run({self, "--iconv", text, rounds_text}, {}, report);
    const std::map<std::string, double> peer_values = kq::bench::read_report(report);
    if (!peer.ok || peer_values.count("bytes") == 0 || peer_values.at("bytes") != static_cast<double>(characters))
        fail("iconv's conversion failed");
    rows.push_back({"iconv UTF-16LE to CP850", peer, peer_values.count("seconds") ? peer_values.at("seconds") : 0});

    const double megabytes = static_cast<double>(characters) / 1e6;
    std::printf("\nText: %zu characters; fastest of %d calls per contender\n\n", characters, rounds);
    std::printf("| %-24s | %9s | %9s | %5s | %9s |\n", "", "ms", "MB/s", "ratio", "peak KiB");
    std::printf("|--------------------------|-----------|-----------|-------|-----------|\n");
    for (const Row& row : rows)
        std::printf("| %-24s | %9.2f | %9.1f | %5.2f | %9ld |\n", row.name.c_str(), row.seconds * 1e3,
                    megabytes / row.seconds, rows.back().seconds / row.seconds, row.process.peak_kib);
    std::printf("\n(ratio: iconv's time over the contender's; above 1, the contender is faster)\n");

    if (summary) {
        kq::bench::Summary line("typing");
        line.add("characters", static_cast<long>(characters));
        line.add("rounds", static_cast<long>(rounds));
        line.add("en_us_mb_per_s", megabytes / rows[0].seconds);
        line.add("en_us_peak_kib", rows[0].process.peak_kib);
        line.add("en_us_units_per_character", rows[0].units / static_cast<double>(characters));
        line.add("de_de_mb_per_s", megabytes / rows[1].seconds);
        line.add("de_de_peak_kib", rows[1].process.peak_kib);
        line.add("de_de_units_per_character", rows[1].units / static_cast<double>(characters));
        line.add("iconv_mb_per_s", megabytes / rows[2].seconds);
        line.add("iconv_peak_kib", rows[2].process.peak_kib);
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
