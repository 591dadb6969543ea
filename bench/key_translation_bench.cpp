// The per-keystroke cost of key translation, and proof that the path allocates nothing.
//
//   cmake --preset bench && cmake --build --preset bench && build/bench/bench/key_translation_bench
//
// Each iteration is one host key pressed and released, with every queued event fetched, as a
// host does it. The peer, measured in the same run, is a lookup of a character in a
// std::unordered_map: the least work that any translation by character has to do.

#include "input/key_translation.h"
#include "input/keyboard_input_data.h"
#include "input/keyboard_layouts.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <unordered_map>

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
    explicit Keyboard(const char16_t* layout) { make_keyboard_input_data(&record, u"bench", layout, nullptr, 0, 0, 0, 0); }
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

// The peer: finding the stroke code of the same character in a hash map.
void BM_PeerHashLookup(benchmark::State& state) {
    std::unordered_map<char16_t, StrokeCode> table;
    for (const CharacterEntry& entry : find_layout(u"en-us").characters) table.emplace(entry.character, entry.code);
    char16_t character = u'!';
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(character));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(BM_KeyByPosition);
BENCHMARK(BM_PlainLetter);
BENCHMARK(BM_ShiftedCharacter);
BENCHMARK(BM_DeadKeyComposition);
BENCHMARK(BM_LastCharacterOfTheTable);
BENCHMARK(BM_PeerHashLookup);

} // namespace

BENCHMARK_MAIN();
