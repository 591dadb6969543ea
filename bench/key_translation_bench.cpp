// The per-keystroke cost of key translation, and proof that the path allocates nothing.
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/key_translation_bench
//
// Each iteration is one host key pressed and released, with every queued event fetched, as a
// host does it. The peer, measured in the same run, is libxkbcommon typing the same character
// on the matching XKB layout (us with dead keys for en-us, de for de-de): the key events that
// type it, each handled as a Wayland or X client does (keysym, compose state for dead keys,
// character, state update). Each peer checks that its keystroke gave the character.

#include "bench/xkb_keyboard.h"
#include "input/key_translation.h"
#include "input/keyboard_input_data.h"
#include "input/keyboard_layouts.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_allocations{0};

} // namespace

// Every allocation of the program is counted; GCC cannot see that the matching delete below
// frees what this new allocated.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t bytes) {
    ++g_allocations;
    if (void* block = std::malloc(bytes == 0 ? 1 : bytes)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

using namespace kq::input;

constexpr std::uint32_t kDown = host_key::key_down | host_key::translate_character << host_key::character_mode_shift;

struct Keyboard {
    KeyboardInputData* record = nullptr;
    explicit Keyboard(const char16_t* layout) {
        make_keyboard_input_data(&record, u"bench", layout, nullptr, 0, 0, 0, 0);
    }
    ~Keyboard() { free_keyboard_input_data(record); }

    // One keystroke as a host sends it; returns the number of events.
    int stroke(std::uint8_t virtual_key, char16_t character) {
        int events = 0;
        std::uint32_t answer = 0;
        for (const std::uint32_t key_word : {virtual_key | kDown, std::uint32_t{virtual_key}}) {
            process_keyboard_input(*record, key_word, character, &answer);
            for (++events; answer & event::more_pending; ++events)
                process_keyboard_input(*record, host_key::fetch, 0, &answer);
        }
        return events;
    }
};

void run(benchmark::State& state, const char16_t* layout, std::uint8_t virtual_key, char16_t character) {
    Keyboard keyboard(layout);
    std::int64_t events = 0;
    const std::size_t allocations_before = g_allocations;
    for (auto _ : state) events += keyboard.stroke(virtual_key, character);
    state.counters["allocations_per_keystroke"] =
        static_cast<double>(g_allocations - allocations_before) / static_cast<double>(state.iterations());
    state.counters["events_per_keystroke"] = static_cast<double>(events) / static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations());
}

void BM_KeyByPosition(benchmark::State& state) { run(state, u"en-us", 0x0D, 0); }
void BM_PlainLetter(benchmark::State& state) { run(state, u"en-us", 0x41, u'a'); }
void BM_ShiftedCharacter(benchmark::State& state) { run(state, u"en-us", 0x31, u'!'); }
void BM_DeadKeyComposition(benchmark::State& state) { run(state, u"de-de", 0x41, u'\u00e2'); }
void BM_LastCharacterOfTheTable(benchmark::State& state) { run(state, u"en-us", 0x41, u'\u00ff'); }

// The peer: the keystroke that types `character` through libxkbcommon.
void peer(benchmark::State& state, const char* layout, const char* variant, char32_t character) {
    kq::bench::XkbKeyboard keyboard(layout, variant);
    const std::span<const kq::bench::XkbKeyEvent> strokes = keyboard.strokes(character);
    if (!keyboard.ok() || strokes.empty()) {
        state.SkipWithError("the XKB layout or the keystroke is missing");
        return;
    }
    kq::bench::XkbClient& client = keyboard.client();
    char32_t typed = 0;
    for (auto _ : state) {
        for (const kq::bench::XkbKeyEvent event : strokes)
            if (const char32_t given = client.handle(event); given != 0) typed = given;
        benchmark::DoNotOptimize(typed);
    }
    if (typed != character) state.SkipWithError("the keystroke gave another character");
    state.counters["events_per_keystroke"] = static_cast<double>(strokes.size());
    state.SetItemsProcessed(state.iterations());
}

void BM_KeyByPosition_Xkb(benchmark::State& state) { peer(state, "us", "intl", U'\r'); }
void BM_PlainLetter_Xkb(benchmark::State& state) { peer(state, "us", "intl", U'a'); }
void BM_ShiftedCharacter_Xkb(benchmark::State& state) { peer(state, "us", "intl", U'!'); }
void BM_DeadKeyComposition_Xkb(benchmark::State& state) { peer(state, "de", "", U'\u00e2'); }
void BM_LastCharacterOfTheTable_Xkb(benchmark::State& state) { peer(state, "us", "intl", U'\u00ff'); }

BENCHMARK(BM_KeyByPosition);
BENCHMARK(BM_PlainLetter);
BENCHMARK(BM_ShiftedCharacter);
BENCHMARK(BM_DeadKeyComposition);
BENCHMARK(BM_LastCharacterOfTheTable);
BENCHMARK(BM_KeyByPosition_Xkb);
BENCHMARK(BM_PlainLetter_Xkb);
BENCHMARK(BM_ShiftedCharacter_Xkb);
BENCHMARK(BM_DeadKeyComposition_Xkb);
BENCHMARK(BM_LastCharacterOfTheTable_Xkb);

} // namespace

BENCHMARK_MAIN();
