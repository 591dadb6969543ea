// Compressing a working copy back into its ".adz"/".hdz": the gzip layout byte for byte, the
// data as zlib and the module's own inflater read it, and failures that never read as success.

#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <zlib.h>

#include <chrono>
#include <filesystem>

namespace kq::media {
namespace {

using test::Bytes;

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

TEST(Deflate, DataAndTrailerAreWhatInflatersExpect) {
    for (const std::size_t size : {0, 1, 16384, 16385, 700001}) {
        const Bytes image = test::sample_image(size, static_cast<unsigned>(size));
        MemorySource source(image);
        MemorySink sink;
        ASSERT_EQ(deflate(source, at_unix_seconds(1000), u"a.adz", sink), status::ok);
        const Bytes& written = sink.bytes();
        // zlib reads the data between header (16 bytes with "a.adz") and trailer as raw deflate.
        Bytes raw(written.begin() + 16, written.end() - 8), out(size + 1);
        z_stream stream{};
        ASSERT_EQ(inflateInit2(&stream, -15), Z_OK);
        stream.next_in = reinterpret_cast<Bytef*>(raw.data());
        stream.avail_in = static_cast<uInt>(raw.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        EXPECT_EQ(::inflate(&stream, Z_FINISH), Z_STREAM_END) << size;
        EXPECT_EQ(stream.avail_in, 0u) << size;
        out.resize(stream.total_out);
        inflateEnd(&stream);
        EXPECT_TRUE(out == image) << size;
        // The module's own inflater checks the trailer's CRC and size.
        MemorySource again(written);
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
