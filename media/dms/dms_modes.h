#pragma once
// The first stage of the LZ modes: each decodes exactly out.size() bytes from `bits` into
// `out` through the shared window, and leaves the window's position where the next record
// of its mode goes on (past a gap of a few bytes for quick, medium and deep).

#include "media/dms/dms_bit_reader.h"
#include "media/dms/dms_canonical_code.h"
#include "media/dms/dms_lz.h"

#include <array>
#include <cstdint>
#include <span>

namespace kq::media::dms {

// Quick: literals and matches of 2..5 bytes up to 256 back.
void unpack_quick(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out);
// Medium: literals and matches of 3..66 bytes up to 16 KiB back.
void unpack_medium(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out);

// Deep's adaptive Huffman code of 314 symbols (LZHUF's): it changes with every symbol read.
class DeepTree {
public:
    void reset();
    unsigned decode(BitReader& bits);

private:
    static constexpr unsigned kSymbols = 314;
    static constexpr unsigned kNodes = 2 * kSymbols - 1;
    static constexpr unsigned kRoot = kNodes - 1;
    static constexpr unsigned kLimit = 0x8000; // the root's weight at which all are halved

    // Below this weight the last node of each weight is kept at hand (last_of_weight_): while
    // weights are small, runs of equal weights are long (at the start every leaf weighs 1), and
    // most updates trade places with a node far along.
    static constexpr unsigned kIndexedWeights = 128;

    void update(unsigned symbol);
    void rebuild();
    void index_weights();

    // Weights, kept sorted by node; one more entry as a sentinel above every weight.
    std::array<std::uint16_t, kNodes + 1> freq_{};
    // A node's first child (the second is next to it), or kNodes + symbol for a leaf.
    std::array<std::uint16_t, kNodes> child_{};
    // Parents of nodes, then (from kNodes on) the leaf of each symbol.
    std::array<std::uint16_t, kNodes + kSymbols> parent_{};
    // For each weight below kIndexedWeights that some node has, the last node that has it.
    std::array<std::uint16_t, kIndexedWeights> last_of_weight_{};
};

// Deep: literals and matches of 3..60 bytes up to 16 KiB back, coded by the adaptive tree.
void unpack_deep(BitReader& bits, LzWindow& window, DeepTree& tree, std::span<std::uint8_t> out);

// Heavy's two codes, which stay from one record to the next until a record brings new ones,
// and the distance that the "repeat" code stands for.
struct HeavyState {
    CanonicalCode symbols;   // 0..255 literals, 256..509 matches of 3..256 bytes
    CanonicalCode distances; // distance classes
    bool has_codes = false;
    unsigned last_distance = 0;
};

struct HeavyMode {
    unsigned window_bytes;     // 4096 (heavy 1) or 8192 (heavy 2)
    unsigned distance_symbols; // 14 or 15; the last one repeats the previous distance
};
inline constexpr HeavyMode kHeavy1{4096, 14}, kHeavy2{8192, 15};

// Reads new codes from the start of a record; false when they do not form valid codes.
bool read_heavy_codes(BitReader& bits, HeavyState& state, const HeavyMode& mode);
// Heavy 1 and 2: false when there are no codes yet.
bool unpack_heavy(BitReader& bits, LzWindow& window, HeavyState& state, const HeavyMode& mode,
                  std::span<std::uint8_t> out);

} // namespace kq::media::dms
