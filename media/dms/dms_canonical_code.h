#pragma once
// The static Huffman codes of the heavy modes: canonical codes (shorter codes first, ties by
// symbol) of up to 31 bits, read most significant bit first. A code is either complete or
// a single symbol that takes no bits at all.

#include "media/dms/dms_bit_reader.h"

#include <array>
#include <cstdint>
#include <span>

namespace kq::media::dms {

class CanonicalCode {
public:
    static constexpr unsigned kMaxSymbols = 510;
    static constexpr unsigned kMaxLength = 31;

    // From code lengths (0: symbol unused); false unless the lengths make a complete code.
    bool build(std::span<const std::uint8_t> lengths);
    // Every code decodes to `symbol`, reading nothing.
    void set_single(std::uint16_t symbol);

    std::uint16_t decode(BitReader& bits) const {
        if (single_) return single_symbol_;
        bits.ensure(kMaxLength);
        const std::uint16_t entry = lookup_[bits.peek(kLookupBits)];
        if (entry >> kLengthShift != 0) {
            bits.skip(entry >> kLengthShift);
            return entry & kSymbolMask;
        }
        return decode_long(bits);
    }

private:
    static constexpr unsigned kLookupBits = 10;
    static constexpr unsigned kLengthShift = 10, kSymbolMask = (1u << kLengthShift) - 1;

    std::uint16_t decode_long(BitReader& bits) const;

    // By the next kLookupBits bits: the symbol and its length (length 0: a longer code).
    std::array<std::uint16_t, 1u << kLookupBits> lookup_{};
    // Per length: the first code, how many codes, and where their symbols start in `sorted_`.
    std::array<std::uint32_t, kMaxLength + 1> first_{};
    std::array<std::uint16_t, kMaxLength + 1> count_{};
    std::array<std::uint16_t, kMaxLength + 1> offset_{};
    std::array<std::uint16_t, kMaxSymbols> sorted_{};
    bool single_ = false;
    std::uint16_t single_symbol_ = 0;
};

} // namespace kq::media::dms
