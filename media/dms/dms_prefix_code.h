#pragma once
// The fixed prefix code of medium and deep for a number 0..63 (the upper six bits of a match
// distance, or a medium match length): 3 to 8 bits, shorter codes for smaller numbers, codes
// handed out in increasing order (the position code of LZHUF). Decoded by table from the next
// 8 bits.

#include "media/dms/dms_bit_reader.h"

#include <array>
#include <cstdint>

namespace kq::media::dms {

struct PrefixCodeEntry {
    std::uint8_t value;
    std::uint8_t length;
};

inline constexpr std::array<PrefixCodeEntry, 256> kPrefixCode = [] {
    // Per code length, how many numbers have it: 1 of 3 bits, 3 of 4, 8 of 5, 12 of 6, 24 of 7
    // and 16 of 8.
    constexpr std::array<unsigned, 6> kCount = {1, 3, 8, 12, 24, 16};
    std::array<PrefixCodeEntry, 256> table{};
    unsigned value = 0, next = 0;
    for (unsigned row = 0; row < kCount.size(); ++row) {
        const unsigned length = row + 3;
        for (unsigned i = 0; i < kCount[row]; ++i, ++value)
            for (unsigned j = 0; j < (1u << (8 - length)); ++j)
                table[next++] = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(length)};
    }
    return table;
}();

inline unsigned read_prefix_code(BitReader& bits) {
    bits.ensure(8);
    const PrefixCodeEntry entry = kPrefixCode[bits.peek(8)];
    bits.skip(entry.length);
    return entry.value;
}

// A match distance: six bits by the prefix code, then eight plain ones (0..16383).
inline unsigned read_far_distance(BitReader& bits) {
    const unsigned high = read_prefix_code(bits);
    return high << 8 | bits.get(8);
}

} // namespace kq::media::dms
