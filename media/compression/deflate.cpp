#include "media/compression/deflate.h"

#include "common/byte_order.h"
#include "common/windows_path.h"

#include <zlib.h>

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace kq::media {
namespace {

constexpr std::size_t kChunkBytes = 16384;
constexpr std::int64_t kTicksFrom1601To1970 = 116444736000000000;
constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr char kOsWindows = 10; // what zlib writes as the OS byte on Windows

bool write_all(ByteSink& sink, std::span<const std::byte> bytes) {
    const std::optional<std::size_t> written = sink.write(bytes);
    return written && *written == bytes.size();
}

std::span<const std::byte> as_bytes(const std::string& text) { return std::as_bytes(std::span(text)); }

struct DeflateEnd {
    void operator()(z_stream* stream) const { deflateEnd(stream); }
};

} // namespace

std::string gzip_header(platform::FileTime written, std::u16string_view file_name) {
    const auto seconds =
        static_cast<std::uint32_t>((static_cast<std::int64_t>(written) - kTicksFrom1601To1970) / kTicksPerSecond);
    std::string header = {'\x1F', '\x8B', 8, 8};
    header.push_back(static_cast<char>(seconds >> 8 & 0xFF)); // the two low bytes swapped
    header.push_back(static_cast<char>(seconds & 0xFF));
    header.push_back(static_cast<char>(seconds >> 16 & 0xFF));
    header.push_back(static_cast<char>(seconds >> 24 & 0xFF));
    header.push_back(0); // XFL
    header.push_back(kOsWindows);
    for (const char16_t c : file_name) {
        auto low = static_cast<char>(c & 0xFF);
        if (low >= 'A' && low <= 'Z') low = static_cast<char>(low - 'A' + 'a');
        // A character such as U+4E00 has a zero low byte, which would end the name early and
        // leave the rest of it to be read as compressed data.
        header.push_back(low == 0 ? '_' : low);
    }
    header.push_back(0);
    return header;
}

HResult deflate(ByteSource& image, platform::FileTime written, std::u16string_view file_name, ByteSink& compressed) {
    if (!write_all(compressed, as_bytes(gzip_header(written, file_name)))) return status::system_failure();

    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return status::out_of_memory;
    const std::unique_ptr<z_stream, DeflateEnd> cleanup(&stream);

    std::vector<std::byte> input(kChunkBytes), output(kChunkBytes);
    uLong crc = crc32(0, nullptr, 0);
    std::uint32_t size = 0;
    for (int flush = Z_NO_FLUSH; flush != Z_FINISH;) {
        const std::optional<std::size_t> got = image.read(input);
        if (!got) return status::system_failure();
        flush = *got == 0 ? Z_FINISH : Z_NO_FLUSH;
        auto* bytes = reinterpret_cast<Bytef*>(input.data());
        crc = crc32(crc, bytes, static_cast<uInt>(*got));
        size += static_cast<std::uint32_t>(*got);
        stream.next_in = bytes;
        stream.avail_in = static_cast<uInt>(*got);
        do {
            stream.next_out = reinterpret_cast<Bytef*>(output.data());
            stream.avail_out = static_cast<uInt>(output.size());
            if (::deflate(&stream, flush) == Z_STREAM_ERROR) return status::failed;
            if (!write_all(compressed, std::span(output).first(output.size() - stream.avail_out)))
                return status::system_failure();
        } while (stream.avail_out == 0);
    }

    std::array<std::byte, 8> trailer{};
    store_le32(&trailer[0], static_cast<std::uint32_t>(crc));
    store_le32(&trailer[4], size);
    if (!write_all(compressed, trailer) || !compressed.flush()) return status::system_failure();
    return status::ok;
}

HResult deflate_file(std::u16string_view image_path, std::u16string_view compressed_path,
                     std::u16string_view final_path) {
    std::optional<platform::File> image = platform::File::open_for_reading(image_path);
    if (!image) return status::system_failure();
    const std::optional<platform::FileTime> written = image->last_write_time();
    if (!written) return status::system_failure();
    std::optional<platform::File> target = platform::File::create(compressed_path);
    if (!target) return status::system_failure();
    FileSource source(*image);
    FileSink sink(*target);
    return deflate(source, *written, file_name_of(final_path.empty() ? compressed_path : final_path), sink);
}

} // namespace kq::media
