#pragma once
// The bit stream of the LZ modes: bytes in order, each most significant bit first. Past the
// end of the packed data every bit reads as 0; the decoders stop on their output length, so
// reading on never loops or reads outside the buffer.

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace kq::media::dms {

// Zero bytes that must follow the packed data in its buffer: whole 64-bit loads may reach
// into them.
inline constexpr std::size_t kBitReaderPadding = 8;

class BitReader {
public:
    // `packed` must be followed in memory by kBitReaderPadding zero bytes.
    explicit BitReader(std::span<const std::uint8_t> packed)
        : data_(packed.data()), limit_(packed.size() + kBitReaderPadding) {}

    // Makes at least `count` (up to 56) bits available to peek().
    void ensure(unsigned count) {
        if (held_ < count) refill();
    }
    // The next `count` bits (1..32), after ensure(count).
    std::uint32_t peek(unsigned count) const { return static_cast<std::uint32_t>(bits_ >> (64 - count)); }
    void skip(unsigned count) {
        bits_ <<= count;
        held_ -= count;
    }
    // The next `count` bits (0..32).
    std::uint32_t get(unsigned count) {
        if (count == 0) return 0;
        ensure(count);
        const std::uint32_t value = peek(count);
        skip(count);
        return value;
    }

private:
    // Tops the buffer up to 56..63 bits. Bits below the count are always the stream's true
    // next bits, so loading a byte again only ORs in what is already there.
    void refill() {
        if (position_ + 8 <= limit_) {
            std::uint64_t word;
            std::memcpy(&word, data_ + position_, sizeof word);
            if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
            bits_ |= word >> held_;
            position_ += (63 - held_) >> 3;
            held_ |= 56;
        } else {
            // Everything left lies in the zero padding or beyond: zeros.
            held_ = 63;
        }
    }

    const std::uint8_t* data_;
    std::size_t limit_;
    std::size_t position_ = 0;
    std::uint64_t bits_ = 0;
    unsigned held_ = 0;
};

} // namespace kq::media::dms
