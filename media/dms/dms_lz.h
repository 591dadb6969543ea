#pragma once
// What the LZ modes share: the window that outlives a record while the archive keeps its
// state, and the output of one record's first stage. Like the original unpacker, all modes use
// one 16 KiB buffer, each with its own write position and its own window size (a power of two
// that masks the positions): quick 256, heavy 1 4096, heavy 2 8192, medium and deep 16384.

#include "media/dms/dms_bit_reader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace kq::media::dms {

inline constexpr unsigned kQuickWindowBytes = 256, kMediumWindowBytes = 16384, kDeepWindowBytes = 16384;
// The longest match of any mode: a match may run this far less one past a record's end.
inline constexpr unsigned kLongestMatch = 256;

struct LzWindow {
    static constexpr unsigned kBytes = 16384;
    std::array<std::uint8_t, kBytes> bytes{};
    // The write positions, each taken modulo its mode's window size.
    unsigned quick = 0, medium = 0, deep = 0, heavy = 0;

    // All zeros, positions where the original starts them (any start gives the same output
    // over a zeroed window, unless modes were mixed within one chain of records).
    void reset() {
        bytes.fill(0);
        reset_positions();
    }
    void reset_positions() {
        quick = kQuickStart;
        medium = kMediumStart;
        deep = kDeepStart;
        heavy = kHeavyStart;
    }
    static constexpr unsigned kQuickStart = 251, kMediumStart = 16318, kDeepStart = 16324, kHeavyStart = 0;
};

// Writes one record's first-stage output: each byte into the window and, up to the record's
// length, into `out`. A match that runs past that length still goes on in the window.
class LzOutput {
public:
    LzOutput(LzWindow& window, unsigned window_bytes, unsigned position, std::span<std::uint8_t> out)
        : window_(window.bytes.data()), mask_(window_bytes - 1), position_(position), at_(out.data()),
          end_(out.data() + out.size()) {}

    bool done() const { return at_ == end_; }
    unsigned position() const { return position_; }

    // Only while !done().
    void literal(std::uint8_t byte) {
        window_[position_++ & mask_] = byte;
        *at_++ = byte;
    }
    // Copies `length` bytes from `distance` + 1 bytes back, one at a time (they may overlap).
    void match(unsigned distance, unsigned length) {
        const unsigned from = (position_ - distance - 1) & mask_, to = position_ & mask_;
        const unsigned kept =
            static_cast<unsigned>(std::min<std::size_t>(length, static_cast<std::size_t>(end_ - at_)));
        if (kept == length && from + length <= mask_ + 1 && to + length <= mask_ + 1) {
            // The common case: neither end of the window in the way, all of it kept.
            const std::uint8_t* source = window_ + from;
            std::uint8_t* target = window_ + to;
            for (unsigned i = 0; i < length; ++i) at_[i] = target[i] = source[i];
        } else {
            for (unsigned i = 0; i < length; ++i) {
                const std::uint8_t byte = window_[(from + i) & mask_];
                window_[(to + i) & mask_] = byte;
                if (i < kept) at_[i] = byte;
            }
        }
        at_ += kept;
        position_ += length;
    }

private:
    std::uint8_t* window_;
    unsigned mask_;
    unsigned position_;
    std::uint8_t* at_;
    std::uint8_t* end_;
};

// One record's first stage, the loop every LZ mode shares: `read_item` decodes one literal or
// match into the output at a time until the record is complete; the mode's position then moves
// on past the record and the gap that the mode leaves after it.
template <class ReadItem>
void unpack_lz_record(LzWindow& window, unsigned window_bytes, unsigned& position, unsigned gap,
                      std::span<std::uint8_t> out, ReadItem&& read_item) {
    LzOutput output(window, window_bytes, position, out);
    while (!output.done()) read_item(output);
    position = (output.position() + gap) % window_bytes;
}

// Quick and medium start each item with a flag bit: 1 and a literal byte, or 0 and a match.
// Takes the literal when there is one; false, with nothing taken, for a match.
inline bool take_flagged_literal(BitReader& bits, LzOutput& output) {
    bits.ensure(9);
    if (bits.peek(1) == 0) return false;
    output.literal(static_cast<std::uint8_t>(bits.peek(9)));
    bits.skip(9);
    return true;
}

} // namespace kq::media::dms
