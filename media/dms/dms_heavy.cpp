#include "media/dms/dms_modes.h"

namespace kq::media::dms {
namespace {

constexpr unsigned kMatchLengthBias = 253; // symbol 256 is a match of 3 bytes
constexpr unsigned kSymbolCountBits = 9, kSymbolLengthBits = 5;
constexpr unsigned kDistanceCountBits = 5, kDistanceLengthBits = 4;

// A code as stored: a count; if 0, the one symbol that every code stands for; otherwise that
// many lengths (the symbols after them unused).
bool read_code(BitReader& bits, CanonicalCode& code, unsigned count_bits, unsigned length_bits, unsigned symbols) {
    const unsigned count = bits.get(count_bits);
    if (count == 0) {
        const unsigned symbol = bits.get(count_bits);
        if (symbol >= symbols) return false;
        code.set_single(static_cast<std::uint16_t>(symbol));
        return true;
    }
    if (count > symbols) return false;
    std::array<std::uint8_t, CanonicalCode::kMaxSymbols> lengths{};
    for (unsigned i = 0; i < count; ++i) lengths[i] = static_cast<std::uint8_t>(bits.get(length_bits));
    return code.build(std::span(lengths).first(count));
}

} // namespace

bool read_heavy_codes(BitReader& bits, HeavyState& state, const HeavyMode& mode) {
    state.has_codes = read_code(bits, state.symbols, kSymbolCountBits, kSymbolLengthBits, CanonicalCode::kMaxSymbols) &&
                      read_code(bits, state.distances, kDistanceCountBits, kDistanceLengthBits, mode.distance_symbols);
    return state.has_codes;
}

// Per item: a symbol; for a match, a distance class k: 0 is distance 0, k is 2^(k-1) plus
// k - 1 more bits, and the last class repeats the previous distance.
bool unpack_heavy(BitReader& bits, LzWindow& window, HeavyState& state, const HeavyMode& mode,
                  std::span<std::uint8_t> out) {
    if (!state.has_codes) return false;
    const unsigned repeat = mode.distance_symbols - 1;
    unsigned last_distance = state.last_distance; // a local: the output's byte stores may alias a member
    unpack_lz_record(window, mode.window_bytes, window.heavy, 0, out, [&](LzOutput& output) {
        const unsigned symbol = state.symbols.decode(bits);
        if (symbol < 256) {
            output.literal(static_cast<std::uint8_t>(symbol));
            return;
        }
        const unsigned k = state.distances.decode(bits);
        if (k != repeat) last_distance = k == 0 ? 0 : (1u << (k - 1)) + bits.get(k - 1);
        output.match(last_distance, symbol - kMatchLengthBias);
    });
    state.last_distance = last_distance;
    return true;
}

} // namespace kq::media::dms
