// Compressing a working copy back into its ".adz"/".hdz": the gzip layout byte for byte, the
// data as any inflater reads it, and failures that never read as success.

#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kq::media {
namespace {

using test::Bytes;

constexpr platform::FileTime kUnixEpoch = 116444736000000000;
constexpr platform::FileTime at_unix_seconds(std::uint64_t seconds) { return kUnixEpoch + seconds * 10000000; }

std::string header_bytes(std::uint64_t seconds, std::u16string_view name) {
    return gzip_header(at_unix_seconds(seconds), name);
}

TEST(GzipHeader, LaidOutByteForByte) {
    const struct {
        std::uint64_t seconds;
        std::u16string_view name;
        std::string expected;
    } cases[] = {
        // 256 seconds: bits 8-15 come first.
        {256, u"game.adz", std::string("\x1F\x8B\x08\x08\x01\x00\x00\x00\x00\x0Agame.adz\0", 19)},
        {0x12345678, u"Game.ADZ", std::string("\x1F\x8B\x08\x08\x56\x78\x34\x12\x00\x0Agame.adz\0", 19)},
        {1, u"WORK.HDZ", std::string("\x1F\x8B\x08\x08\x00\x01\x00\x00\x00\x0Awork.hdz\0", 19)},
        // Each character's low byte, A-Z folded (U+0141 is 0x41, 'A'); a zero low byte must not end
        // the name early.
        {0, u"\u00C4\u0141Z\u4E00.adz", std::string("\x1F\x8B\x08\x08\x00\x00\x00\x00\x00\x0A\xC4\x61z_.adz\0", 19)},
        {0, u"", std::string("\x1F\x8B\x08\x08\x00\x00\x00\x00\x00\x0A\0", 11)},
    };
    for (const auto& c : cases) EXPECT_EQ(header_bytes(c.seconds, c.name), c.expected) << c.seconds;
}

Bytes deflate_bytes(const Bytes& image, std::u16string_view name = u"x.adz") {
    MemorySource source(image);
    MemorySink sink;
    EXPECT_EQ(deflate(source, at_unix_seconds(1000), name, sink), status::ok);
    return sink.bytes();
}

std::uint32_t le32_at(const Bytes& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[at + static_cast<std::size_t>(i)]);
    return value;
}

TEST(Deflate, DataAndTrailerAreWhatInflatersExpect) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{16384}, std::size_t{16385}, std::size_t{700001}}) {
        const Bytes image = test::sample_image(size, static_cast<unsigned>(size));
        const Bytes written = deflate_bytes(image, u"a.adz");
        ASSERT_GE(written.size(), 15u + 8u);
        EXPECT_EQ(le32_at(written, written.size() - 8), test::crc32_of(image)) << size;
        EXPECT_EQ(le32_at(written, written.size() - 4), size) << size;

        // The data between header (16 bytes with "a.adz") and trailer is raw deflate.
        z_stream stream{};
        ASSERT_EQ(inflateInit2(&stream, -15), Z_OK);
        Bytes raw(written.begin() + 16, written.end() - 8), out(size + 1);
        stream.next_in = reinterpret_cast<Bytef*>(raw.data());
        stream.avail_in = static_cast<uInt>(raw.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        EXPECT_EQ(::inflate(&stream, Z_FINISH), Z_STREAM_END) << size;
        EXPECT_EQ(stream.avail_in, 0u) << size;
        out.resize(stream.total_out);
        inflateEnd(&stream);
        EXPECT_TRUE(out == image) << size;

        // And the module's own inflater reads it back.
        MemorySource source(written);
        MemorySink sink;
        EXPECT_EQ(inflate(source, sink), InflateError::none) << size;
        EXPECT_TRUE(sink.bytes() == image) << size;
    }
}

TEST(Deflate, AFullTargetFails) {
    const Bytes image = test::sample_image(100000);
    for (const std::size_t room : {std::size_t{5}, std::size_t{30}, std::size_t{2000}}) {
        MemorySource source(image);
        MemorySink sink(room);
        EXPECT_LT(deflate(source, 0, u"x.adz", sink), 0) << room;
    }
}

std::string file_content(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

TEST(DeflateFile, TakesTheImagesTimeAndTheTargetsName) {
    const test::TempFolder folder;
    folder.create_file(u"work.hdf", "some hard disk content, some hard disk content");
    // 2001-09-09 01:46:40 UTC: 1000000000 seconds since 1970.
    const auto time = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1000000000)));
    std::filesystem::last_write_time(folder.native(u"work.hdf"), time);

    ASSERT_EQ(deflate_file(folder.path(u"work.hdf"), folder.path(u"Work.HDZ")), status::ok);
    const std::string written = file_content(folder.native(u"Work.HDZ"));
    // 1000000000 = 0x3B9ACA00.
    EXPECT_EQ(written.substr(0, 19), std::string("\x1F\x8B\x08\x08\xCA\x00\x9A\x3B\x00\x0Awork.hdz\0", 19));

    ASSERT_EQ(deflate_file(folder.path(u"work.hdf"), folder.path(u"side.tmp"), folder.path(u"Final.hdz")), status::ok);
    EXPECT_EQ(file_content(folder.native(u"side.tmp")).substr(10, 10), std::string("final.hdz\0", 10));
}

TEST(DeflateFile, MissingFilesAreTheSystemsError) {
    const test::TempFolder folder;
    folder.create_file(u"work.hdf", "x");
    EXPECT_EQ(deflate_file(folder.path(u"missing.hdf"), folder.path(u"out.hdz")),
              status::from_win32(platform::system_error::file_not_found));
    const HResult no_folder = deflate_file(folder.path(u"work.hdf"), folder.path(u"none\\out.hdz"));
    EXPECT_TRUE(no_folder == status::from_win32(platform::system_error::file_not_found) ||
                no_folder == status::from_win32(platform::system_error::path_not_found))
        << std::hex << no_folder;
}

} // namespace
} // namespace kq::media
