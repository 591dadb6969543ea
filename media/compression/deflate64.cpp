#include "media/compression/deflate64.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kq::media {
namespace {

constexpr std::size_t kWindowBytes = 65536;
constexpr int kMaxBits = 15;

struct Failure {
    Deflate64Result result;
};

// Bits from the input, least significant first.
class BitReader {
public:
    explicit BitReader(InputBuffer& in) : in_(in) {}

    std::uint32_t take(int count) {
        while (held_ < count) {
            if (!in_.fill()) throw Failure{Deflate64Result::truncated};
            bits_ |= static_cast<std::uint64_t>(in_.available()[0]) << held_;
            in_.consume(1);
            held_ += 8;
        }
        const auto value = static_cast<std::uint32_t>(bits_ & ((std::uint64_t{1} << count) - 1));
        bits_ >>= count;
        held_ -= count;
        return value;
    }
    // Drops the bits up to the next byte boundary; the whole bytes still held come first.
    void align() {
        bits_ >>= held_ % 8;
        held_ -= held_ % 8;
    }
    std::uint8_t byte() { return static_cast<std::uint8_t>(take(8)); }

private:
    InputBuffer& in_;
    std::uint64_t bits_ = 0;
    int held_ = 0;
};

// A canonical Huffman code: how many codes of each length, and the symbols in code order.
struct Huffman {
    std::array<std::uint16_t, kMaxBits + 1> count{};
    std::array<std::uint16_t, 288> symbol{};
};

// Builds the code from the lengths; false for an over-subscribed set of lengths, or an
// incomplete one unless it has a single code (which deflate allows).
bool build(Huffman& code, const std::uint8_t* lengths, int symbols) {
    code.count.fill(0);
    for (int i = 0; i < symbols; ++i) ++code.count[lengths[i]];
    if (code.count[0] == symbols) return true; // no codes at all: nothing may be decoded
    int left = 1;
    for (int length = 1; length <= kMaxBits; ++length) {
        left = left * 2 - code.count[length];
        if (left < 0) return false;
    }
    std::array<std::uint16_t, kMaxBits + 1> offsets{};
    for (int length = 1; length < kMaxBits; ++length) offsets[length + 1] = offsets[length] + code.count[length];
    for (int i = 0; i < symbols; ++i)
        if (lengths[i] != 0) code.symbol[offsets[lengths[i]]++] = static_cast<std::uint16_t>(i);
    const int used = symbols - code.count[0];
    return left == 0 || used == 1;
}

int decode(BitReader& bits, const Huffman& code) {
    int value = 0, first = 0, index = 0;
    for (int length = 1; length <= kMaxBits; ++length) {
        value |= static_cast<int>(bits.take(1));
        const int count = code.count[length];
        if (value - count < first) return code.symbol[index + (value - first)];
        index += count;
        first = (first + count) << 1;
        value <<= 1;
    }
    throw Failure{Deflate64Result::corrupt}; // no code of up to 15 bits matched
}

constexpr std::uint16_t kLengthBase[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                           31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 3};
constexpr std::uint8_t kLengthExtra[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                           2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 16};
constexpr std::uint32_t kDistanceBase[32] = {1,    2,    3,    4,    5,    7,     9,     13,    17,    25,   33,
                                             49,   65,   97,   129,  193,  257,   385,   513,   769,   1025, 1537,
                                             2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577, 32769, 49153};
constexpr std::uint8_t kDistanceExtra[32] = {0, 0, 0, 0, 1, 1, 2,  2,  3,  3,  4,  4,  5,  5,  6,  6,
                                             7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14};

// The last 64 KiB of output, handed on to the output whenever it wraps and at the end.
class Window {
public:
    explicit Window(InflateOutput& out) : out_(out), bytes_(kWindowBytes) {}

    void put(std::uint8_t value) {
        bytes_[position_++ & (kWindowBytes - 1)] = std::byte{value};
        if ((position_ & (kWindowBytes - 1)) == 0) hand_on();
    }
    void copy(std::uint32_t distance, std::uint32_t length) {
        if (distance > position_) throw Failure{Deflate64Result::corrupt}; // before the start
        for (; length > 0; --length)
            put(std::to_integer<std::uint8_t>(bytes_[(position_ - distance) & (kWindowBytes - 1)]));
    }
    void hand_on() {
        const std::size_t start = handed_ & (kWindowBytes - 1);
        const std::size_t count = static_cast<std::size_t>(position_ - handed_);
        if (count > 0 && !out_.put(std::span(bytes_).subspan(start, count)))
            throw Failure{Deflate64Result::write_failed};
        handed_ = position_;
    }

private:
    InflateOutput& out_;
    std::vector<std::byte> bytes_;
    std::uint64_t position_ = 0, handed_ = 0;
};

void inflate_codes(BitReader& bits, Window& window, const Huffman& literals, const Huffman& distances) {
    for (;;) {
        int symbol = decode(bits, literals);
        if (symbol < 256) {
            window.put(static_cast<std::uint8_t>(symbol));
            continue;
        }
        if (symbol == 256) return;
        symbol -= 257;
        if (symbol >= 29) throw Failure{Deflate64Result::corrupt};
        const std::uint32_t length = kLengthBase[symbol] + bits.take(kLengthExtra[symbol]);
        const int distance_symbol = decode(bits, distances);
        if (distance_symbol >= 32) throw Failure{Deflate64Result::corrupt};
        window.copy(kDistanceBase[distance_symbol] + bits.take(kDistanceExtra[distance_symbol]), length);
    }
}

void fixed_codes(Huffman& literals, Huffman& distances) {
    std::array<std::uint8_t, 288> lengths{};
    for (int i = 0; i < 144; ++i) lengths[i] = 8;
    for (int i = 144; i < 256; ++i) lengths[i] = 9;
    for (int i = 256; i < 280; ++i) lengths[i] = 7;
    for (int i = 280; i < 288; ++i) lengths[i] = 8;
    build(literals, lengths.data(), 288);
    lengths.fill(5);
    build(distances, lengths.data(), 32);
}

void dynamic_codes(BitReader& bits, Huffman& literals, Huffman& distances) {
    static constexpr std::uint8_t kOrder[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
    const int literal_count = static_cast<int>(bits.take(5)) + 257;
    const int distance_count = static_cast<int>(bits.take(5)) + 1;
    const int length_code_count = static_cast<int>(bits.take(4)) + 4;
    if (literal_count > 286) throw Failure{Deflate64Result::corrupt};
    std::array<std::uint8_t, 320> lengths{};
    for (int i = 0; i < length_code_count; ++i) lengths[kOrder[i]] = static_cast<std::uint8_t>(bits.take(3));
    Huffman length_code;
    if (!build(length_code, lengths.data(), 19)) throw Failure{Deflate64Result::corrupt};
    lengths.fill(0);
    for (int index = 0; index < literal_count + distance_count;) {
        const int symbol = decode(bits, length_code);
        if (symbol < 16) {
            lengths[index++] = static_cast<std::uint8_t>(symbol);
            continue;
        }
        std::uint8_t value = 0;
        int repeat;
        if (symbol == 16) {
            if (index == 0) throw Failure{Deflate64Result::corrupt}; // nothing to repeat
            value = lengths[index - 1];
            repeat = 3 + static_cast<int>(bits.take(2));
        } else if (symbol == 17) {
            repeat = 3 + static_cast<int>(bits.take(3));
        } else {
            repeat = 11 + static_cast<int>(bits.take(7));
        }
        if (index + repeat > literal_count + distance_count) throw Failure{Deflate64Result::corrupt};
        for (; repeat > 0; --repeat) lengths[index++] = value;
    }
    if (lengths[256] == 0) throw Failure{Deflate64Result::corrupt}; // no end-of-block code
    if (!build(literals, lengths.data(), literal_count) ||
        !build(distances, lengths.data() + literal_count, distance_count))
        throw Failure{Deflate64Result::corrupt};
}

} // namespace

Deflate64Result inflate_deflate64(InputBuffer& in, InflateOutput& out) {
    try {
        BitReader bits(in);
        Window window(out);
        Huffman literals, distances;
        for (bool last = false; !last;) {
            last = bits.take(1) != 0;
            switch (bits.take(2)) {
            case 0: {
                bits.align();
                const std::uint32_t length = bits.take(16);
                if ((~bits.take(16) & 0xFFFF) != length) throw Failure{Deflate64Result::corrupt};
                for (std::uint32_t i = 0; i < length; ++i) window.put(bits.byte());
                break;
            }
            case 1:
                fixed_codes(literals, distances);
                inflate_codes(bits, window, literals, distances);
                break;
            case 2:
                dynamic_codes(bits, literals, distances);
                inflate_codes(bits, window, literals, distances);
                break;
            default: throw Failure{Deflate64Result::corrupt};
            }
        }
        window.hand_on();
        return Deflate64Result::done;
    } catch (const Failure& failure) {
        return failure.result;
    }
}

} // namespace kq::media
