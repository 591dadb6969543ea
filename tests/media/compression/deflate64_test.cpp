// The Deflate64 decoder (ZIP and gzip method 9): what sets it apart from deflate (length code
// 285 with 16 extra bits, distance codes 30 and 31, a 64 KiB window), the deflate it shares,
// and malformed streams.

#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"

#include <gtest/gtest.h>

#include <zlib.h>

namespace kq::media {
namespace {

using test::Bytes;
using test::DeflateBitWriter;

InflateError inflate_method9(const Bytes& stream, const Bytes& expected, Bytes* output = nullptr, bool trailer = true) {
    const Bytes input = test::gzip_member(expected, {.method = 9, .trailer = trailer, .compressed = stream});
    MemorySource source(input);
    MemorySink sink;
    const InflateError error = inflate(source, sink);
    if (output != nullptr) *output = sink.bytes();
    return error;
}

// A stream under construction together with the bytes it must decode to.
struct Stream {
    DeflateBitWriter writer;
    Bytes expected;

    void stored(const Bytes& data) {
        writer.stored_block(data, false);
        expected.insert(expected.end(), data.begin(), data.end());
    }
    void begin_fixed_block(bool last) {
        writer.bits(last ? 1 : 0, 1);
        writer.bits(1, 2);
    }
    void literal(char c) {
        writer.fixed_literal(static_cast<unsigned char>(c));
        expected.push_back(std::byte(static_cast<unsigned char>(c)));
    }
    // A match through the length symbol and distance symbol given, with their extra bits.
    void match(unsigned length_symbol, std::uint32_t length_extra, int length_bits, std::uint32_t length,
               unsigned distance_symbol, std::uint32_t distance_extra, int distance_bits, std::uint32_t distance) {
        writer.fixed_literal(length_symbol);
        writer.bits(length_extra, length_bits);
        writer.fixed_distance(distance_symbol);
        writer.bits(distance_extra, distance_bits);
        for (std::uint32_t i = 0; i < length; ++i) expected.push_back(expected[expected.size() - distance]);
    }
    void end_block() { writer.fixed_literal(256); }
};

Bytes history(std::size_t size) { return test::short_repeats(size, 7); }

TEST(Deflate64, WhatDeflateDoesNotHave) {
    struct Case {
        const char* what;
        void (*build)(Stream&);
    };
    const Case cases[] = {
        {"length code 285 with 16 extra bits",
         [](Stream& s) {
             s.begin_fixed_block(true);
             for (char c : std::string("abc")) s.literal(c);
             s.match(285, 1000, 16, 1003, 2, 0, 0, 3); // distance 3
             s.end_block();
         }},
        {"the longest match, 65538 bytes, at the farthest distance, 65536",
         [](Stream& s) {
             s.stored(history(65535));
             s.stored(history(10000));
             s.begin_fixed_block(true);
             s.match(285, 65535, 16, 65538, 31, 16383, 14, 65536);
             s.end_block();
         }},
        {"distance code 30 (32769 and more)",
         [](Stream& s) {
             s.stored(history(40000));
             s.begin_fixed_block(true);
             s.match(285, 100, 16, 103, 30, 1234, 14, 32769 + 1234);
             s.end_block();
         }},
        {"distance code 31 (49153 and more)",
         [](Stream& s) {
             s.stored(history(60000));
             s.begin_fixed_block(true);
             s.match(284, 31, 5, 258, 31, 5, 14, 49153 + 5);
             s.end_block();
         }},
        {"code 284 reaches 258, as in deflate",
         [](Stream& s) {
             s.begin_fixed_block(true);
             s.literal('x');
             s.match(284, 31, 5, 258, 0, 0, 0, 1);
             s.end_block();
         }},
    };
    for (const Case& c : cases) {
        Stream stream;
        c.build(stream);
        Bytes output;
        EXPECT_EQ(inflate_method9(stream.writer.finish(), stream.expected, &output), InflateError::none) << c.what;
        EXPECT_TRUE(output == stream.expected) << c.what;
    }
}

TEST(Deflate64, DecodesTheDeflateThatItShares) {
    // Dynamic-Huffman, fixed-Huffman and stored blocks from zlib, with no match long enough for
    // length code 285 (the one code whose meaning differs).
    const Bytes data = test::short_repeats(300000);
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY, Z_FILTERED}) {
        Bytes output;
        EXPECT_EQ(inflate_method9(test::raw_deflate(data, strategy), data, &output), InflateError::none) << strategy;
        EXPECT_TRUE(output == data) << strategy;
    }
    // ZIP method 9 goes to the same decoder.
    const Bytes zip = test::zip_archive(data, {.method = 9, .compressed = test::raw_deflate(data)});
    MemorySource source(zip);
    MemorySink sink;
    EXPECT_EQ(inflate(source, sink), InflateError::none);
}

TEST(Deflate64, MalformedStreamsFail) {
    const struct {
        const char* what;
        void (*build)(DeflateBitWriter&);
        InflateError expected;
    } cases[] = {
        {"distance before the start",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(1, 2);
             w.fixed_literal('a');
             w.fixed_literal(257), w.fixed_distance(3); // length 3, distance 4
             w.fixed_literal(256);
         },
         InflateError::corrupt_data},
        {"literal/length symbol 286",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(1, 2);
             w.fixed_literal(286);
         },
         InflateError::corrupt_data},
        {"reserved block type", [](DeflateBitWriter& w) { w.bits(1, 1), w.bits(3, 2); }, InflateError::corrupt_data},
        {"stored length without its complement",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(0, 2), w.bits(0, 5);
             w.bits(10, 16), w.bits(10, 16);
         },
         InflateError::corrupt_data},
        {"dynamic block with too many literal codes",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(2, 2);
             w.bits(30, 5), w.bits(0, 5), w.bits(0, 4);
         },
         InflateError::corrupt_data},
        {"dynamic block whose code-length code is over-subscribed",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(2, 2);
             w.bits(0, 5), w.bits(0, 5), w.bits(0, 4);
             for (int i = 0; i < 4; ++i) w.bits(1, 3); // four codes of one bit
         },
         InflateError::corrupt_data},
        {"repeat of a previous length with none before it",
         [](DeflateBitWriter& w) {
             w.bits(1, 1), w.bits(2, 2);
             w.bits(0, 5), w.bits(0, 5), w.bits(0, 4);
             w.bits(1, 3), w.bits(1, 3), w.bits(0, 3), w.bits(0, 3); // symbols 16 and 17: one bit each
             w.code(0, 1);                                           // symbol 16 first
         },
         InflateError::corrupt_data},
        {"stream that ends in a block",
         [](DeflateBitWriter& w) {
             w.bits(0, 1), w.bits(1, 2);
             w.fixed_literal('a');
         },
         InflateError::inflate_failed},
    };
    for (const auto& c : cases) {
        DeflateBitWriter writer;
        c.build(writer);
        // Without a trailer, so that a stream cut short ends with the input.
        EXPECT_EQ(inflate_method9(writer.finish(), {}, nullptr, false), c.expected) << c.what;
    }
}

TEST(Deflate64, OutputBeyondTheWindowStreams) {
    // More than the 64 KiB window and the 64 KiB output buffer, in one block of matches.
    Stream stream;
    stream.begin_fixed_block(true);
    stream.literal('q');
    for (int i = 0; i < 40; ++i) stream.match(285, 65535, 16, 65538, 0, 0, 0, 1);
    stream.end_block();
    Bytes output;
    EXPECT_EQ(inflate_method9(stream.writer.finish(), stream.expected, &output), InflateError::none);
    EXPECT_EQ(output.size(), 1u + 40u * 65538u);
    EXPECT_TRUE(output == stream.expected);
}

} // namespace
} // namespace kq::media
