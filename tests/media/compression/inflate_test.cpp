// Inflating ".adz"/".hdz" containers: every kind of header the readers accept, and a crafted
// input for every way they fail.

#include "media/compression/inflate.h"
#include "platform/files.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

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
    const std::pair<Bytes, std::optional<std::uint64_t>> compressed[] = {
        {gzip_member(image), 70000},
        {gzip_member(image, {.name = "disk.adf", .comment = "x"}), 70000},
        {damaged, 70000},
        {zip_archive(image), 70000},
        {zip_archive(image, {.flags = 0x08}), std::nullopt},
        {zip_archive(image, {.zip64 = true}), 70000}};
    const auto header = [&](const Bytes& file) {
        folder.create_file(u"image.adz", std::string(reinterpret_cast<const char*>(file.data()), file.size()));
        return read_compressed_image_header(folder.path(u"image.adz"));
    };
    for (const auto& [file, size] : compressed) EXPECT_EQ(header(file)->size, size) << file.size();
    for (const Bytes& file : {image, Bytes{}, gzip_member(image, {.flags = 0x20}), zip_archive(image, {.flags = 0x01}),
                              gzip_member(image, {.flags = 0x02}), zip_archive(image, {.method = 12})})
        EXPECT_FALSE(header(file)) << file.size();
    EXPECT_FALSE(read_compressed_image_header(folder.path(u"missing.adz")));
    const Bytes gzip = gzip_member(test::sample_image(1000));
    folder.create_file(u"game.adz", std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size()));
    EXPECT_EQ(inflate_file(folder.path(u"missing.adz"), folder.path(u"out.adf")), InflateError::input_unopened);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"no\\out.adf")), InflateError::output_uncreated);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"out.adf")), InflateError::none);
    EXPECT_EQ(test::read_file(folder.native(u"out.adf")).size(), 1000u);
}

} // namespace
} // namespace kq::media
