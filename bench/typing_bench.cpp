// Throughput and peak memory of typing a 1 MB text: the raw key string of the whole text
// (raw_key_string_block, mode 0, as KQGetStringRawKeys makes it) in the en-us and de-de layouts, against libxkbcommon
// typing the same text on the matching XKB layouts (us and de with dead keys) in the same run:
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/typing_bench
//
// Options: --characters N (the text's length, 1,000,000 by default), --rounds R (timed calls per
// contender, the fastest counting; 5 by default), --folder DIR (where the text goes; the
// system's temporary folder by default), --summary (a machine-readable last line).
//
// The text mixes words (some with accented Latin-1 letters), numbers, punctuation and line
// breaks. Both contenders turn every character into the key events that type it on their
// layout: the module finds the character in the layout's character table and writes the raw
// key string (tens of UTF-16 units per character, which it prints); the peer finds the key
// events in a table that it learnt from the keymap beforehand, writes them as (keycode,
// direction) pairs and hands each to the keyboard state as a client would, with dead keys
// through the compose table, collecting the characters that come out; they must be the text.
// MB counts the text's characters, one byte each as in Latin-1. Each contender runs as a
// process of its own (this program started again in a worker mode) that reads the text, times
// its calls and reports the fastest; its peak resident memory is the child's (wait4). The
// module's peak is shown beside the size of its output (the raw key string's block), which it
// exceeds by the text and a constant.

#include "bench/child_process.h"
#include "bench/summary.h"
#include "bench/xkb_keyboard.h"
#include "input/keyboard_input_data.h"
#include "input/raw_key_strings.h"
#include "platform/heap.h"

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
        u"the",  u"Amiga",       u"disk",   u"Workbench", u"Grüße",  u"Straße", u"café", u"naïve",
        u"über", u"Ærø",         u"élève",  u"año",       u"Müller", u"façade", u"déjà", u"vu",
        u"Åsa",  u"smörgåsbord", u"crème",  u"brûlée",    u"ÇA",     u"Öl",     u"and",  u"of",
        u"to",   u"Kickstart",   u"copper", u"blitter",   u"Paula",  u"Denise"};
    static constexpr std::u16string_view kSeparators[] = {u" ",  u" ",   u" ",  u" ",  u", ",  u". ", u"; ", u": ",
                                                          u"! ", u"? ",  u" (", u") ", u" - ", u"\"", u"'",  u"/",
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
    for (std::size_t at = text.find(what); at != std::u16string_view::npos; at = text.find(what, at + what.size()))
        ++count;
    return count;
}

// The fastest of `rounds` calls of `call`, each after an untimed `prepare`.
template <class Prepare, class Call>
double fastest(int rounds, Prepare&& prepare, Call&& call) {
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
    if (kq::input::make_keyboard_input_data(&record, u"bench", layout.c_str(), nullptr, 0, 0, 0, 0) != kq::status::ok)
        return 1;
    kq::platform::HeapBlock block;
    const double seconds = fastest(
        rounds,
        [&] {
            block = {}; // the previous round's string is freed before the clock starts
        },
        [&] { block = kq::input::raw_key_string_block(kq::platform::Heap::global, *record, text, 0); });
    kq::input::free_keyboard_input_data(record);
    if (!block) return 1;
    const std::u16string_view keys(reinterpret_cast<const char16_t*>(block.data()));
    std::printf("seconds=%.9f units=%zu downs=%zu ups=%zu\n", seconds, keys.size(), occurrences(keys, u"KEY_RAW_DOWN "),
                occurrences(keys, u"KEY_RAW_UP "));
    return 0;
}

// Worker: libxkbcommon types the text `rounds` times on an XKB layout and variant.
int xkb_worker(const char* layout, const char* variant, const std::string& path, int rounds) {
    const std::u16string text = read_text(path);
    kq::bench::XkbKeyboard keyboard(layout, variant);
    if (!keyboard.ok()) return 1;
    for (const char16_t unit : text) {
        if (keyboard.strokes(unit).empty()) {
            std::fprintf(stderr, "typing_bench: %s(%s) cannot type U+%04X\n", layout, variant,
                         static_cast<unsigned>(unit));
            return 1;
        }
    }
    std::vector<kq::bench::XkbKeyEvent> events;
    std::u32string typed;
    const double seconds = fastest(
        rounds,
        [&] {
            std::vector<kq::bench::XkbKeyEvent>().swap(events);
            std::u32string().swap(typed);
        },
        [&] {
            kq::bench::XkbClient& client = keyboard.client();
            for (const char16_t unit : text) {
                for (const kq::bench::XkbKeyEvent event : keyboard.strokes(unit)) {
                    events.push_back(event);
                    if (const char32_t character = client.handle(event); character != 0) typed += character;
                }
            }
        });
    // The text has no surrogates (Latin-1 only) and its line feeds are typed as Return.
    bool same = typed.size() == text.size();
    for (std::size_t i = 0; same && i < text.size(); ++i)
        same = typed[i] == (text[i] == u'\n' ? U'\r' : char32_t{text[i]});
    const auto downs =
        std::count_if(events.begin(), events.end(), [](const kq::bench::XkbKeyEvent& e) { return e.down; });
    std::printf("seconds=%.9f events=%zu downs=%td ups=%td typed=%d\n", seconds, events.size(), downs,
                static_cast<std::ptrdiff_t>(events.size()) - downs, same ? 1 : 0);
    return same ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    const bool summary = kq::bench::take_flag(argc, argv, "--summary");
    if (argc == 4 && std::strcmp(argv[1], "--write-text") == 0) {
        write_text(argv[2], std::strtoul(argv[3], nullptr, 10));
        return 0;
    }
    if (argc == 5 && std::strcmp(argv[1], "--type") == 0) return type_worker(argv[2], argv[3], std::atoi(argv[4]));
    if (argc == 6 && std::strcmp(argv[1], "--xkb") == 0)
        return xkb_worker(argv[2], argv[3], argv[4], std::atoi(argv[5]));

    std::size_t characters = 1'000'000;
    int rounds = 5;
    fs::path folder = fs::temp_directory_path();
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--characters") == 0)
            characters = std::max(1ul, std::strtoul(argv[i + 1], nullptr, 10));
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

    // One layout of the module and the XKB layout that types the same characters.
    struct Pair {
        const char* layout;
        const char* key; // of the summary's fields
        const char* xkb_layout;
        const char* xkb_variant;
        double module_seconds = 0, units = 0, xkb_seconds = 0, xkb_events = 0;
        long module_kib = 0, xkb_kib = 0;
    };
    std::vector<Pair> pairs{{"en-us", "en_us", "us", "intl"}, {"de-de", "de_de", "de", "deadtilde"}};
    const auto value = [](const std::map<std::string, double>& values, const char* key) {
        return values.count(key) != 0 ? values.at(key) : 0.0;
    };
    for (Pair& pair : pairs) {
        const Measurement ours = run({self, "--type", pair.layout, text, rounds_text}, {}, report);
        const std::map<std::string, double> values = kq::bench::read_report(report);
        // Every character is typed, and every key pressed is released again.
        if (!ours.ok || values.count("seconds") == 0 || value(values, "downs") < static_cast<double>(characters) / 2 ||
            value(values, "downs") != value(values, "ups"))
            fail(std::string("the module's typing in ") + pair.layout + " failed");
        pair.module_seconds = value(values, "seconds");
        pair.units = value(values, "units");
        pair.module_kib = ours.peak_kib;

        const Measurement peer = run({self, "--xkb", pair.xkb_layout, pair.xkb_variant, text, rounds_text}, {}, report);
        const std::map<std::string, double> peer_values = kq::bench::read_report(report);
        if (!peer.ok || value(peer_values, "typed") != 1 || value(peer_values, "downs") != value(peer_values, "ups"))
            fail(std::string("libxkbcommon's typing in ") + pair.xkb_layout + " failed");
        pair.xkb_seconds = value(peer_values, "seconds");
        pair.xkb_events = value(peer_values, "events");
        pair.xkb_kib = peer.peak_kib;
        std::printf("%s: %.0f UTF-16 units of raw keys, %.0f key presses; XKB %s(%s): %.0f key events\n", pair.layout,
                    pair.units, value(values, "downs"), pair.xkb_layout, pair.xkb_variant, pair.xkb_events);
    }

    const double megabytes = static_cast<double>(characters) / 1e6;
    // The raw key string's block: its UTF-16 units and the NUL.
    const auto output_kib = [](const Pair& pair) { return static_cast<long>((pair.units + 1) * 2 / 1024); };
    std::printf("\nText: %zu characters; fastest of %d calls per contender\n\n", characters, rounds);
    std::printf("| %-6s | %9s | %9s | %11s | %5s | %10s | %10s | %9s |\n", "layout", "module ms", "xkb ms",
                "module MB/s", "ratio", "module KiB", "output KiB", "xkb KiB");
    std::printf("|--------|-----------|-----------|-------------|-------|------------|------------|-----------|\n");
    for (const Pair& pair : pairs)
        std::printf("| %-6s | %9.2f | %9.2f | %11.1f | %5.2f | %10ld | %10ld | %9ld |\n", pair.layout,
                    pair.module_seconds * 1e3, pair.xkb_seconds * 1e3, megabytes / pair.module_seconds,
                    pair.xkb_seconds / pair.module_seconds, pair.module_kib, output_kib(pair), pair.xkb_kib);
    std::printf("\n(ratio: libxkbcommon's time over the module's; above 1, the module is faster)\n");

    if (summary) {
        kq::bench::Summary line("typing");
        line.add("characters", static_cast<long>(characters));
        line.add("rounds", static_cast<long>(rounds));
        for (const Pair& pair : pairs) {
            const std::string key = pair.key;
            line.add((key + "_mb_per_s").c_str(), megabytes / pair.module_seconds);
            line.add((key + "_peak_kib").c_str(), pair.module_kib);
            line.add((key + "_output_kib").c_str(), output_kib(pair));
            line.add((key + "_units_per_character").c_str(), pair.units / static_cast<double>(characters));
            line.add((key + "_xkb_mb_per_s").c_str(), megabytes / pair.xkb_seconds);
            line.add((key + "_xkb_peak_kib").c_str(), pair.xkb_kib);
            line.add((key + "_xkb_events_per_character").c_str(), pair.xkb_events / static_cast<double>(characters));
        }
        line.add("ok", static_cast<long>(failures == 0));
        line.print();
    }
    fs::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
