// The Deflate64 decoder (ZIP and gzip method 9): what sets it apart from deflate (length code
// 285 with 16 extra bits, distance codes 30 and 31, a 64 KiB window), the deflate it shares,
// and malformed streams.

#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <functional>

namespace kq::media {
namespace {

using test::Bytes;
using test::DeflateBitWriter;

// Inflates `stream` as gzip method 9 (with a trailer for `expected`, when given).
InflateError inflate_method9(const Bytes& stream, const std::optional<Bytes>& expected, Bytes* output = nullptr) {
    const Bytes input = test::gzip_member(expected.value_or(Bytes{}),
                                          {.method = 9, .trailer = expected.has_value(), .compressed = stream});
    MemorySource source(input);
    MemorySink sink;
    const InflateError error = inflate(source, sink);
    if (output != nullptr) *output = sink.bytes();
    return error;
}

// A stream of fixed-Huffman blocks together with the bytes it must decode to.
struct Stream {
    DeflateBitWriter writer;
    Bytes expected;

    void literals(const Bytes& bytes) {
        for (const std::byte b : bytes) writer.fixed_literal(std::to_integer<unsigned>(b));
        expected.insert(expected.end(), bytes.begin(), bytes.end());
    }
    // A match through the length and distance symbols given, with their extra bits.
    void match(unsigned length_symbol, std::uint32_t length_extra, int length_bits, std::uint32_t length,
               unsigned distance_symbol, std::uint32_t distance_extra, int distance_bits, std::uint32_t distance) {
        writer.fixed_literal(length_symbol);
        writer.bits(length_extra, length_bits);
        writer.fixed_distance(distance_symbol);
        writer.bits(distance_extra, distance_bits);
        for (std::uint32_t i = 0; i < length; ++i) expected.push_back(expected[expected.size() - distance]);
    }
};

TEST(Deflate64, WhatDeflateDoesNotHave) {
    // Length code 285 with 16 extra bits; the longest match, 65538 bytes, at the farthest
    // distance, 65536; distance codes 30 (32769 on) and 31 (49153 on); code 284 reaches 258, as
    // in deflate; and more than the window and the 64 KiB output buffer in one block of matches.
    const std::function<void(Stream&)> cases[] = {
        [](Stream& s) { s.match(285, 1000, 16, 1003, 2, 0, 0, 3); },
        [](Stream& s) {
            s.literals(test::sample_image(75535, 2));
            s.match(285, 65535, 16, 65538, 31, 16383, 14, 65536);
        },
        [](Stream& s) {
            s.literals(test::sample_image(60000, 3));
            s.match(285, 100, 16, 103, 30, 1234, 14, 32769 + 1234);
            s.match(284, 31, 5, 258, 31, 5, 14, 49153 + 5);
        },
        [](Stream& s) { s.match(284, 31, 5, 258, 0, 0, 0, 1); },
        [](Stream& s) {
            for (int i = 0; i < 40; ++i) s.match(285, 65535, 16, 65538, 0, 0, 0, 1);
        },
    };
    for (const auto& build : cases) {
        Stream stream;
        stream.writer.bits(3, 3); // the last block, fixed codes
        stream.literals(test::bytes_of("abc"));
        build(stream);
        stream.writer.fixed_literal(256);
        Bytes output;
        EXPECT_EQ(inflate_method9(stream.writer.finish(), stream.expected, &output), InflateError::none)
            << stream.expected.size();
        EXPECT_TRUE(output == stream.expected) << stream.expected.size();
    }
}

TEST(Deflate64, DecodesTheDeflateThatItShares) {
    // Dynamic-Huffman, fixed-Huffman and stored blocks from zlib, with no match long enough for
    // length code 285 (the one code whose meaning differs); ZIP method 9 as well.
    const Bytes data = test::sample_image(300000);
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY, Z_FILTERED}) {
        Bytes output;
        EXPECT_EQ(inflate_method9(test::raw_deflate(data, strategy), data, &output), InflateError::none) << strategy;
        EXPECT_TRUE(output == data) << strategy;
    }
    const Bytes zip = test::zip_archive(data, {.method = 9, .compressed = test::raw_deflate(data, Z_FIXED)});
    MemorySource source(zip);
    MemorySink sink;
    EXPECT_EQ(inflate(source, sink), InflateError::none);
    // A stored block of 10 bytes.
    const Bytes stored = test::bytes_of(std::string("\x01\x0A\x00\xF5\xFF", 5) + std::string(10, 's'));
    EXPECT_EQ(inflate_method9(stored, Bytes(10, std::byte{'s'})), InflateError::none);
}

TEST(Deflate64, MalformedStreamsFail) {
    // A distance before the start; literal/length symbol 286; the reserved block type; a stored
    // length without its complement; a dynamic block with too many literal codes, an
    // over-subscribed code-length code, or a repeat of a previous length with none before it
    // (symbols 16 and 17, one bit each, 16 first); a stream that ends in a block.
    const std::pair<std::function<void(DeflateBitWriter&)>, InflateError> cases[] = {
        {[](DeflateBitWriter& w) {
             w.bits(3, 3);
             w.fixed_literal('a');
             w.fixed_literal(257), w.fixed_distance(1); // length 3, distance 2
         },
         InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(3, 3), w.fixed_literal(286); }, InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(7, 3); }, InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(1, 8), w.bits(10, 16), w.bits(10, 16); }, InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(5, 3), w.bits(30, 5), w.bits(0, 9); }, InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(5, 3), w.bits(0, 14), w.bits(01111, 12); }, InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(5, 3), w.bits(0, 14), w.bits(011, 12), w.bits(0, 1); },
         InflateError::corrupt_data},
        {[](DeflateBitWriter& w) { w.bits(2, 3), w.fixed_literal('a'); }, InflateError::inflate_failed}};
    for (const auto& [build, expected] : cases) {
        DeflateBitWriter writer;
        build(writer);
        // Without a trailer, so that a stream cut short ends with the input.
        EXPECT_EQ(inflate_method9(writer.finish(), std::nullopt), expected) << &build - &cases[0].first;
    }
}

} // namespace
} // namespace kq::media
