// Inflating ".adz"/".hdz" containers: every kind of header the readers accept, and a crafted
// input for every way they fail.

#include "media/compression/inflate.h"
#include "platform/files.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace kq::media {
namespace {

using test::Bytes;

struct Inflated {
    InflateError error;
    Bytes output;
};

Inflated inflate_bytes(const Bytes& input, std::size_t output_limit = static_cast<std::size_t>(-1)) {
    MemorySource source(input);
    MemorySink sink(output_limit);
    const InflateError error = inflate(source, sink);
    return {error, sink.bytes()};
}

Bytes truncated(Bytes bytes, std::size_t drop) {
    bytes.resize(bytes.size() - drop);
    return bytes;
}

TEST(Inflate, EveryAcceptedContainerGivesTheImageBack) {
    const Bytes image = test::sample_image(300000); // several 64 KiB buffers
    const struct {
        const char* what;
        Bytes input;
    } cases[] = {
        {"plain gzip", test::gzip_member(image)},
        {"gzip with a name", test::gzip_member(image, {.name = "game.adf"})},
        {"gzip with extra field and comment",
         test::gzip_member(image, {.extra = std::string("AB\x04\x00wxyz", 8), .name = "x", .comment = "made by hand"})},
        {"gzip with the header CRC flag", test::gzip_member(image, {.flags = 0x01})},
        {"gzip followed by a second member",
         [&] {
             Bytes two = test::gzip_member(image);
             const Bytes second = test::gzip_member(test::bytes_of("more"));
             two.insert(two.end(), second.begin(), second.end());
             return two;
         }()},
        {"ZIP deflated", test::zip_archive(image)},
        {"ZIP stored", test::zip_archive(image, {.method = 0})},
        {"ZIP with a data descriptor", test::zip_archive(image, {.flags = 0x08})},
        {"ZIP64 stored", test::zip_archive(image, {.method = 0, .zip64 = true})},
        {"ZIP64 with a data descriptor", test::zip_archive(image, {.flags = 0x08, .zip64 = true})},
        {"ZIP with an extra field",
         test::zip_archive(image, {.extra = std::string("UT\x05\x00\x01\x02\x03\x04\x05", 9)})},
    };
    for (const auto& c : cases) {
        const Inflated result = inflate_bytes(c.input);
        EXPECT_EQ(result.error, InflateError::none) << c.what;
        EXPECT_TRUE(result.output == image) << c.what;
    }
}

TEST(Inflate, EmptyImages) {
    EXPECT_EQ(inflate_bytes(test::gzip_member({})).error, InflateError::none);
    EXPECT_EQ(inflate_bytes(test::zip_archive({}, {.method = 0})).error, InflateError::none);
}

TEST(Inflate, EveryFailureHasItsCode) {
    const Bytes image = test::sample_image(5000);
    const Bytes gzip = test::gzip_member(image);
    Bytes corrupt = test::gzip_member(image);
    corrupt[10] = std::byte{0x07}; // first block: final, type 3 (reserved)
    const Bytes zip = test::zip_archive(image);
    Bytes zip_bad_signature = zip;
    zip_bad_signature[3] = std::byte{0x06};

    const struct {
        const char* what;
        Bytes input;
        InflateError expected;
    } cases[] = {
        {"ZIP header cut short", Bytes(zip.begin(), zip.begin() + 20), InflateError::broken_zip_header},
        {"PK without 03 04", zip_bad_signature, InflateError::broken_zip_header},
        {"ZIP method 12 (bzip2)", test::zip_archive(image, {.method = 12}), InflateError::zip_method},
        {"gzip header cut short", Bytes(gzip.begin(), gzip.begin() + 6), InflateError::gzip_header_short},
        {"gzip method 0", test::gzip_member(image, {.method = 0}), InflateError::gzip_method},
        {"gzip method 7", test::gzip_member(image, {.method = 7}), InflateError::gzip_method},
        {"multi-part gzip", test::gzip_member(image, {.flags = 0x02}), InflateError::multipart},
        {"bzip2 signature", test::bytes_of("BZh91AY&SY"), InflateError::not_compressed_image},
        {"empty file", {}, InflateError::not_compressed_image},
        {"one byte", test::bytes_of("\x1F"), InflateError::not_compressed_image},
        {"encrypted gzip", test::gzip_member(image, {.flags = 0x20}), InflateError::encrypted},
        {"encrypted ZIP entry", test::zip_archive(image, {.flags = 0x01}), InflateError::encrypted},
        {"reserved block type", corrupt, InflateError::corrupt_data},
        {"deflate data cut short", truncated(gzip, gzip.size() / 2), InflateError::inflate_failed},
        {"stored entry with sizes that disagree", test::zip_archive(image, {.method = 0, .compressed_size_add = 1}),
         InflateError::stored_sizes_differ},
        {"gzip without trailer", test::gzip_member(image, {.trailer = false}), InflateError::gzip_trailer_missing},
        {"gzip trailer cut short", truncated(gzip, 3), InflateError::gzip_trailer_missing},
        {"ZIP descriptor missing",
         test::zip_archive(image, {.flags = 0x08, .descriptor = false, .central_directory = false}),
         InflateError::zip_descriptor_missing},
        {"gzip CRC off by one bit", test::gzip_member(image, {.crc_xor = 0x00010000}), InflateError::crc_mismatch},
        {"ZIP CRC off by one bit", test::zip_archive(image, {.crc_xor = 1}), InflateError::crc_mismatch},
        {"ZIP descriptor CRC off", test::zip_archive(image, {.flags = 0x08, .crc_xor = 0x80000000}),
         InflateError::crc_mismatch},
        {"gzip size one more", test::gzip_member(image, {.size_add = 1}), InflateError::size_mismatch},
        {"stored entry cut short", truncated(test::zip_archive(image, {.method = 0, .central_directory = false}), 100),
         InflateError::crc_mismatch},
    };
    for (const auto& c : cases) EXPECT_EQ(inflate_bytes(c.input).error, c.expected) << c.what;
}

TEST(Inflate, WriteFailuresAreReportedWhereTheyHappen) {
    const Bytes large = test::sample_image(200000), small = test::sample_image(1000);
    // A full buffer that cannot be written: 14; the last, partial buffer: 15.
    EXPECT_EQ(inflate_bytes(test::gzip_member(large), 1000).error, InflateError::write_failed);
    EXPECT_EQ(inflate_bytes(test::zip_archive(large, {.method = 0}), 1000).error, InflateError::write_failed);
    EXPECT_EQ(inflate_bytes(test::gzip_member(small), 10).error, InflateError::last_write_failed);
    // What was written before the failure stays written.
    EXPECT_EQ(inflate_bytes(test::gzip_member(large), 70000).output.size(), 70000u);
}

TEST(Inflate, AFailedCheckLeavesTheOutputWritten) {
    const Bytes image = test::sample_image(100000);
    const Inflated result = inflate_bytes(test::gzip_member(image, {.crc_xor = 4}));
    EXPECT_EQ(result.error, InflateError::crc_mismatch);
    EXPECT_TRUE(result.output == image);
}

// A sink that keeps parts of an image and takes them as they come, as the content analysis does.
class UncheckedSink final : public ByteSink {
public:
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override { return sink_.write(bytes); }
    bool wants_checksum() const override { return false; }
    const Bytes& bytes() const { return sink_.bytes(); }

private:
    MemorySink sink_;
};

TEST(Inflate, OnlySinksThatWantTheChecksumGetItCompared) {
    const Bytes image = test::sample_image(100000);
    for (const Bytes& input : {test::gzip_member(image, {.crc_xor = 4}), test::zip_archive(image, {.crc_xor = 4}),
                               test::zip_archive(image, {.method = 0, .crc_xor = 4})}) {
        MemorySource source(input);
        UncheckedSink sink;
        EXPECT_EQ(inflate(source, sink), InflateError::none);
        EXPECT_TRUE(sink.bytes() == image);
    }
    // The size is still compared, and broken data still fails.
    const Bytes longer = test::gzip_member(image, {.size_add = 1});
    MemorySource wrong_size(longer);
    UncheckedSink sink;
    EXPECT_EQ(inflate(wrong_size, sink), InflateError::size_mismatch);
    Bytes corrupt = test::gzip_member(image);
    corrupt[10] = std::byte{0x07};
    MemorySource broken(corrupt);
    EXPECT_EQ(inflate(broken, sink), InflateError::corrupt_data);
}

TEST(CompressedImageHeader, SizesAndRefusalsWithoutInflating) {
    const test::TempFolder folder;
    const Bytes image = test::sample_image(70000);
    // The gzip trailer's size is taken from the file's end, so a damaged stream still states it.
    Bytes damaged = test::gzip_member(image);
    damaged[12] = std::byte{0x07};
    const struct {
        const char* what;
        Bytes file;
        bool compressed;
        std::optional<std::uint64_t> size;
    } cases[] = {
        {"gzip", test::gzip_member(image), true, 70000},
        {"gzip with name and comment", test::gzip_member(image, {.name = "disk.adf", .comment = "x"}), true, 70000},
        {"gzip with damaged data", damaged, true, 70000},
        {"ZIP", test::zip_archive(image), true, 70000},
        {"ZIP with a data descriptor", test::zip_archive(image, {.flags = 0x08}), true, std::nullopt},
        {"ZIP64", test::zip_archive(image, {.zip64 = true}), true, 70000},
        {"plain image", image, false, std::nullopt},
        {"empty file", {}, false, std::nullopt},
        {"encrypted gzip", test::gzip_member(image, {.flags = 0x20}), false, std::nullopt},
        {"encrypted ZIP entry", test::zip_archive(image, {.flags = 0x01}), false, std::nullopt},
        {"multi-part gzip", test::gzip_member(image, {.flags = 0x02}), false, std::nullopt},
        {"ZIP method 12", test::zip_archive(image, {.method = 12}), false, std::nullopt},
    };
    for (const auto& c : cases) {
        folder.create_file(u"image.adz", std::string(reinterpret_cast<const char*>(c.file.data()), c.file.size()));
        const std::optional<CompressedImageHeader> header = read_compressed_image_header(folder.path(u"image.adz"));
        ASSERT_EQ(header.has_value(), c.compressed) << c.what;
        if (header) {
            EXPECT_EQ(header->size, c.size) << c.what;
        }
    }
    EXPECT_FALSE(read_compressed_image_header(folder.path(u"missing.adz")));
}

TEST(InflateFile, FilesThatCannotBeOpenedOrCreated) {
    const test::TempFolder folder;
    const Bytes gzip = test::gzip_member(test::sample_image(1000));
    folder.create_file(u"game.adz", std::string(reinterpret_cast<const char*>(gzip.data()), gzip.size()));
    EXPECT_EQ(inflate_file(folder.path(u"missing.adz"), folder.path(u"out.adf")), InflateError::input_unopened);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"no folder\\out.adf")),
              InflateError::output_uncreated);
    EXPECT_EQ(inflate_file(folder.path(u"game.adz"), folder.path(u"out.adf")), InflateError::none);
    std::ifstream out(folder.native(u"out.adf"), std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(out)), std::istreambuf_iterator<char>());
    EXPECT_EQ(content.size(), 1000u);
}

} // namespace
} // namespace kq::media
