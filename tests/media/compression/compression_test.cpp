// Compressed images: inflating ".adz"/".hdz" containers (every kind of header the readers accept
// and a crafted input for every way they fail), the Deflate64 decoder (gzip and ZIP method 9),
// and compressing a working copy back into its gzip file.

#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "platform/files.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <tuple>

namespace kq::media {
namespace {

using test::Bytes;
using test::gzip_member;
using test::zip_archive;

struct Inflated {
    InflateError error;
    Bytes output;
};

constexpr std::size_t kAny = static_cast<std::size_t>(-1);

// Inflates into a sink of `room` bytes; `checked`: one that wants the checksum compared, as the
// content analysis (which takes parts of an image as they come) does not.
Inflated inflate_bytes(const Bytes& input, std::size_t room = kAny, bool checked = true) {
    struct Sink final : ByteSink {
        Sink(std::size_t room, bool checks) : memory(room), checked(checks) {}
        MemorySink memory;
        bool checked;
        std::optional<std::size_t> write(std::span<const std::byte> bytes) override { return memory.write(bytes); }
        bool wants_checksum() const override { return checked; }
    } sink(room, checked);
    MemorySource source(input);
    const InflateError error = inflate(source, sink);
    return {error, sink.memory.bytes()};
}

Bytes cut(Bytes bytes, std::size_t drop) {
    bytes.resize(bytes.size() - drop);
    return bytes;
}

TEST(Inflate, EveryAcceptedContainerGivesTheImageBack) {
    const Bytes image = test::sample_image(300000); // several 64 KiB buffers
    Bytes two = gzip_member(image), second = gzip_member(test::bytes_of("more"));
    two.insert(two.end(), second.begin(), second.end()); // a second member is not read
    for (const Bytes& input :
         {gzip_member(image), gzip_member(image, {.name = "game.adf"}), gzip_member(image, {.flags = 0x01}),
          gzip_member(image, {.extra = std::string("AB\x04\x00wxyz", 8), .name = "x", .comment = "made by hand"}), two,
          zip_archive(image), zip_archive(image, {.method = 0}), zip_archive(image, {.flags = 0x08}),
          zip_archive(image, {.method = 0, .zip64 = true}), zip_archive(image, {.flags = 0x08, .zip64 = true}),
          zip_archive(image, {.extra = std::string("UT\x05\x00\x01\x02\x03\x04\x05", 9)})}) {
        const Inflated result = inflate_bytes(input);
        EXPECT_EQ(result.error, InflateError::none) << input.size();
        EXPECT_TRUE(result.output == image) << input.size();
    }
    EXPECT_EQ(inflate_bytes(gzip_member({})).error, InflateError::none);
    EXPECT_EQ(inflate_bytes(zip_archive({}, {.method = 0})).error, InflateError::none);
}

TEST(Inflate, EveryFailureHasItsCode) {
    const Bytes image = test::sample_image(5000), gzip = gzip_member(image), zip = zip_archive(image);
    Bytes corrupt = gzip, bad_signature = zip;
    corrupt[10] = std::byte{0x07}; // first block: final, type 3 (reserved)
    bad_signature[3] = std::byte{0x06};
    const std::pair<Bytes, InflateError> cases[] = {
        {Bytes(zip.begin(), zip.begin() + 20), InflateError::broken_zip_header},
        {bad_signature, InflateError::broken_zip_header},
        {zip_archive(image, {.method = 12}), InflateError::zip_method},
        {Bytes(gzip.begin(), gzip.begin() + 9), InflateError::gzip_header_short},
        {gzip_member(image, {.method = 0}), InflateError::gzip_method},
        {gzip_member(image, {.method = 7}), InflateError::gzip_method},
        {gzip_member(image, {.flags = 0x02}), InflateError::multipart},
        {test::bytes_of("BZh91AY&SY"), InflateError::not_compressed_image},
        {{}, InflateError::not_compressed_image},
        {test::bytes_of("\x1F"), InflateError::not_compressed_image},
        {gzip_member(image, {.flags = 0x20}), InflateError::encrypted},
        {zip_archive(image, {.flags = 0x01}), InflateError::encrypted},
        {corrupt, InflateError::corrupt_data},
        {cut(gzip, gzip.size() / 2), InflateError::inflate_failed},
        {zip_archive(image, {.method = 0, .compressed_size_add = 1}), InflateError::stored_sizes_differ},
        {gzip_member(image, {.trailer = false}), InflateError::gzip_trailer_missing},
        {cut(gzip, 3), InflateError::gzip_trailer_missing},
        {zip_archive(image, {.flags = 0x08, .descriptor = false, .central_directory = false}),
         InflateError::zip_descriptor_missing},
        {gzip_member(image, {.crc_xor = 0x00010000}), InflateError::crc_mismatch},
        {zip_archive(image, {.crc_xor = 1}), InflateError::crc_mismatch},
        {zip_archive(image, {.flags = 0x08, .crc_xor = 0x80000000}), InflateError::crc_mismatch},
        {gzip_member(image, {.size_add = 1}), InflateError::size_mismatch},
        {cut(zip_archive(image, {.method = 0, .central_directory = false}), 100), InflateError::crc_mismatch}};
    for (const auto& [input, expected] : cases)
        EXPECT_EQ(inflate_bytes(input).error, expected) << &input - &cases[0].first;
}

// Write failures where they happen (a full buffer: 14; the last, partial one: 15), what was
// written before a failure stays, and only sinks that want the checksum get it compared (the
// size still is, and broken data still fails).
TEST(Inflate, WriteFailuresAndChecks) {
    const Bytes large = test::sample_image(200000), small = test::sample_image(1000);
    EXPECT_EQ(inflate_bytes(gzip_member(large), 1000).error, InflateError::write_failed);
    EXPECT_EQ(inflate_bytes(zip_archive(large, {.method = 0}), 1000).error, InflateError::write_failed);
    EXPECT_EQ(inflate_bytes(gzip_member(small), 10).error, InflateError::last_write_failed);
    EXPECT_EQ(inflate_bytes(gzip_member(large), 70000).output.size(), 70000u);
    const Inflated checked = inflate_bytes(gzip_member(large, {.crc_xor = 4}));
    EXPECT_EQ(checked.error, InflateError::crc_mismatch);
    EXPECT_TRUE(checked.output == large);
    for (const Bytes& input : {gzip_member(large, {.crc_xor = 4}), zip_archive(large, {.crc_xor = 4}),
                               zip_archive(large, {.method = 0, .crc_xor = 4})}) {
        const Inflated unchecked = inflate_bytes(input, kAny, false);
        EXPECT_EQ(unchecked.error, InflateError::none);
        EXPECT_TRUE(unchecked.output == large);
    }
    EXPECT_EQ(inflate_bytes(gzip_member(large, {.size_add = 1}), kAny, false).error, InflateError::size_mismatch);
    Bytes corrupt = gzip_member(large);
    corrupt[10] = std::byte{0x07};
    EXPECT_EQ(inflate_bytes(corrupt, kAny, false).error, InflateError::corrupt_data);
}

TEST(Inflate, FilesAndTheirHeaders) {
    const test::TempFolder folder;
    const Bytes image = test::sample_image(70000);
    // The gzip trailer's size is taken from the file's end, so a damaged stream still states it.
    Bytes damaged = gzip_member(image);
    damaged[12] = std::byte{0x07};
    const auto header = [&](const Bytes& file) {
        folder.create_file(u"image.adz", std::string(reinterpret_cast<const char*>(file.data()), file.size()));
        return read_compressed_image_header(folder.path(u"image.adz"));
    };
    for (const auto& [file, size] : {std::pair{damaged, std::optional<std::uint64_t>(70000)},
                                     {zip_archive(image, {.zip64 = true}), 70000},
                                     {zip_archive(image, {.flags = 0x08}), std::nullopt}})
        EXPECT_EQ(header(file)->size, size) << file.size();
    for (const Bytes& file : {image, gzip_member(image, {.flags = 0x20})}) EXPECT_FALSE(header(file)) << file.size();
    EXPECT_FALSE(read_compressed_image_header(folder.path(u"missing.adz")));
    const Bytes gzip = gzip_member(test::sample_image(1000));
    folder.create_file(u"game.adz", std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size()));
    EXPECT_EQ(inflate_file(folder.path(u"missing.adz"), folder.path(u"out.adf")), InflateError::input_unopened);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"no\\out.adf")), InflateError::output_uncreated);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"out.adf")), InflateError::none);
    EXPECT_EQ(test::read_file(folder.native(u"out.adf")).size(), 1000u);
}

// A raw deflate stream written bit by bit (Deflate64 streams that no encoder at hand makes), and
// the bytes it must decode to.
struct Stream {
    Bytes out, expected;
    int held = 0;
    Stream& bits(std::uint32_t value, int count) { // least significant first
        for (int i = 0; i < count; ++i, held = (held + 1) % 8) {
            if (held == 0) out.push_back(std::byte{0});
            out.back() |= std::byte((value >> i & 1) << held);
        }
        return *this;
    }
    Stream& code(std::uint32_t code, int length) { // most significant first
        for (int i = length - 1; i >= 0; --i) bits(code >> i & 1, 1);
        return *this;
    }
    Stream& literal(unsigned s) { // a fixed-Huffman literal or length symbol
        return s < 144   ? code(0x30 + s, 8)
               : s < 256 ? code(0x190 + s - 144, 9)
               : s < 280 ? code(s - 256, 7)
                         : code(0xC0 + s - 280, 8);
    }
    Stream& literals(const Bytes& bytes) {
        for (const std::byte b : bytes) literal(std::to_integer<unsigned>(b));
        expected.insert(expected.end(), bytes.begin(), bytes.end());
        return *this;
    }
    // A match through the length and distance symbols given (fixed codes), with their extra bits.
    Stream& match(unsigned length_symbol, std::uint32_t length_extra, int length_bits, std::uint32_t length,
                  unsigned distance_symbol, std::uint32_t distance_extra, int distance_bits, std::uint32_t distance) {
        literal(length_symbol)
            .bits(length_extra, length_bits)
            .code(distance_symbol, 5)
            .bits(distance_extra, distance_bits);
        for (std::uint32_t i = 0; i < length; ++i) expected.push_back(expected[expected.size() - distance]);
        return *this;
    }
};

// Inflates `stream` as gzip method 9, with a trailer for `expected` when given.
Inflated inflate_method9(const Bytes& stream, const std::optional<Bytes>& expected) {
    return inflate_bytes(
        gzip_member(expected.value_or(Bytes{}), {.method = 9, .trailer = expected.has_value(), .compressed = stream}));
}

TEST(Deflate64, WhatDeflateDoesNotHave) {
    // Length code 285 with 16 extra bits; the longest match, 65538 bytes, at the farthest
    // distance, 65536; distance codes 30 (32769 on) and 31 (49153 on); code 284 reaches 258, as
    // in deflate; and more than the window and the 64 KiB output buffer in one block of matches.
    Stream start, many; // the last block, fixed codes
    start.bits(3, 3).literals(test::bytes_of("abc"));
    many = start;
    for (int i = 0; i < 40; ++i) many.match(285, 65535, 16, 65538, 0, 0, 0, 1);
    for (Stream stream :
         {Stream(start).match(285, 1000, 16, 1003, 2, 0, 0, 3),
          Stream(start).literals(test::sample_image(75535, 2)).match(285, 65535, 16, 65538, 31, 16383, 14, 65536),
          Stream(start)
              .literals(test::sample_image(60000, 3))
              .match(285, 100, 16, 103, 30, 1234, 14, 32769 + 1234)
              .match(284, 31, 5, 258, 31, 5, 14, 49153 + 5),
          Stream(start).match(284, 31, 5, 258, 0, 0, 0, 1), many}) {
        const Inflated result = inflate_method9(stream.literal(256).out, stream.expected);
        EXPECT_EQ(result.error, InflateError::none) << stream.expected.size();
        EXPECT_TRUE(result.output == stream.expected) << stream.expected.size();
    }
}

TEST(Deflate64, DecodesTheDeflateThatItShares) {
    // Dynamic-Huffman, fixed-Huffman and stored blocks from zlib, with no match long enough for
    // length code 285 (the one code whose meaning differs); ZIP method 9 as well; a stored block.
    const Bytes data = test::sample_image(300000);
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY, Z_FILTERED}) {
        const Inflated result = inflate_method9(test::raw_deflate(data, strategy), data);
        EXPECT_EQ(result.error, InflateError::none) << strategy;
        EXPECT_TRUE(result.output == data) << strategy;
    }
    EXPECT_EQ(inflate_bytes(zip_archive(data, {.method = 9, .compressed = test::raw_deflate(data, Z_FIXED)})).error,
              InflateError::none);
    const Bytes stored = test::bytes_of(std::string("\x01\x0A\x00\xF5\xFF", 5) + std::string(10, 's'));
    EXPECT_EQ(inflate_method9(stored, Bytes(10, std::byte{'s'})).error, InflateError::none);
}

TEST(Deflate64, MalformedStreamsFail) {
    // A distance before the start (length 3, distance 2); literal/length symbol 286; the reserved
    // block type; a stored length without its complement; a dynamic block with too many literal
    // codes, an over-subscribed code-length code, or a repeat of a previous length with none
    // before it (symbols 16 and 17, one bit each, 16 first); a stream that ends in a block.
    const std::pair<Stream, InflateError> cases[] = {
        {Stream().bits(3, 3).literal('a').literal(257).code(1, 5), InflateError::corrupt_data},
        {Stream().bits(3, 3).literal(286), InflateError::corrupt_data},
        {Stream().bits(7, 3), InflateError::corrupt_data},
        {Stream().bits(1, 8).bits(10, 16).bits(10, 16), InflateError::corrupt_data},
        {Stream().bits(5, 3).bits(30, 5).bits(0, 9), InflateError::corrupt_data},
        {Stream().bits(5, 3).bits(0, 14).bits(01111, 12), InflateError::corrupt_data},
        {Stream().bits(5, 3).bits(0, 14).bits(011, 12).bits(0, 1), InflateError::corrupt_data},
        {Stream().bits(2, 3).literal('a'), InflateError::inflate_failed}};
    // Without a trailer, so that a stream cut short ends with the input.
    for (const auto& [stream, expected] : cases)
        EXPECT_EQ(inflate_method9(stream.out, std::nullopt).error, expected) << &stream - &cases[0].first;
}

constexpr platform::FileTime at_unix_seconds(std::uint64_t seconds) { return 116444736000000000 + seconds * 10000000; }

TEST(Deflate, GzipHeaderByteForByte) {
    // 256 seconds: bits 8-15 come first. Each character's low byte, A-Z folded (U+0141 is 0x41,
    // 'A'); a zero low byte must not end the name early.
    const std::tuple<std::uint64_t, std::u16string_view, std::string_view> cases[] = {
        {256, u"game.adz", std::string_view("\x01\x00\x00\x00\x00\x0Agame.adz\0", 15)},
        {0x12345678, u"Game.ADZ", std::string_view("\x56\x78\x34\x12\x00\x0Agame.adz\0", 15)},
        {0, u"\u00C4\u0141Z\u4E00.adz", std::string_view("\x00\x00\x00\x00\x00\x0A\xC4\x61z_.adz\0", 15)},
        {0, u"", std::string_view("\x00\x00\x00\x00\x00\x0A\0", 7)}};
    for (const auto& [seconds, name, rest] : cases)
        EXPECT_EQ(gzip_header(at_unix_seconds(seconds), name), std::string("\x1F\x8B\x08\x08").append(rest)) << seconds;
}

TEST(Deflate, TheModulesInflaterReadsItBack) {
    // zlib inflates the data; the inflater checks the trailer's CRC and size (gzip too, natively).
    for (const std::size_t size : {0, 1, 16384, 16385, 700001}) {
        const Bytes image = test::sample_image(size, static_cast<unsigned>(size));
        MemorySource source(image);
        MemorySink sink;
        ASSERT_EQ(deflate(source, at_unix_seconds(1000), u"a.adz", sink), status::ok);
        MemorySource again(sink.bytes());
        MemorySink inflated;
        EXPECT_EQ(inflate(again, inflated), InflateError::none) << size;
        EXPECT_TRUE(inflated.bytes() == image) << size;
    }
    const Bytes image = test::sample_image(100000);
    for (const std::size_t room : {5, 30, 2000}) { // a full target fails
        MemorySource source(image);
        MemorySink sink(room);
        EXPECT_LT(deflate(source, 0, u"x.adz", sink), 0) << room;
    }
}

TEST(Deflate, FilesTakeTheImagesTimeAndTheTargetsName) {
    const test::TempFolder folder;
    folder.create_file(u"work.hdf", "some hard disk content, some hard disk content");
    // 1000000000 seconds since 1970 = 0x3B9ACA00.
    const auto time = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1000000000)));
    std::filesystem::last_write_time(folder.native(u"work.hdf"), time);
    ASSERT_EQ(deflate_file(folder.path(u"work.hdf"), folder.path(u"Work.HDZ")), status::ok);
    EXPECT_EQ(test::read_file(folder.native(u"Work.HDZ")).substr(0, 19),
              std::string("\x1F\x8B\x08\x08\xCA\x00\x9A\x3B\x00\x0Awork.hdz\0", 19));
    ASSERT_EQ(deflate_file(folder.path(u"work.hdf"), folder.path(u"side.tmp"), folder.path(u"Final.hdz")), status::ok);
    EXPECT_EQ(test::read_file(folder.native(u"side.tmp")).substr(10, 10), std::string("final.hdz\0", 10));
    EXPECT_EQ(deflate_file(folder.path(u"missing.hdf"), folder.path(u"out.hdz")),
              status::from_win32(platform::system_error::file_not_found));
    const HResult no_folder = deflate_file(folder.path(u"work.hdf"), folder.path(u"none\\out.hdz"));
    EXPECT_TRUE(no_folder == status::from_win32(platform::system_error::file_not_found) ||
                no_folder == status::from_win32(platform::system_error::path_not_found))
        << std::hex << no_folder;
}

} // namespace
} // namespace kq::media
