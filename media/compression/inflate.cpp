#include "media/compression/inflate.h"

#include "common/byte_order.h"
#include "media/compression/deflate64.h"
#include "media/compression/inflate_output.h"
#include "media/compression/input_buffer.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace kq::media {
namespace {

constexpr std::uint8_t kGzipMethodDeflate = 8, kMethodDeflate64 = 9, kZipMethodStored = 0;

constexpr std::uint32_t kZip64Tag = 0x0001;
constexpr std::uint32_t kZip64Marker = 0xFFFFFFFF;

struct Entry {
    std::uint32_t method = 0;
    bool encrypted = false;
    bool zip = false;
    bool zip_descriptor = false;
    bool zip64 = false; // sizes of 64 bits, also in the data descriptor
    std::uint32_t crc = 0;
    std::uint64_t compressed_size = 0, size = 0; // from a ZIP local header
};

// Takes the 64-bit sizes from a ZIP64 record of the extra field: those that the local header
// marks with 0xFFFFFFFF, uncompressed first.
void read_zip64_sizes(std::span<const std::byte> extra, Entry& entry) {
    while (extra.size() >= 4) {
        const std::uint32_t tag = load_le16(&extra[0]), length = load_le16(&extra[2]);
        const std::span<const std::byte> data = extra.subspan(4, std::min<std::size_t>(length, extra.size() - 4));
        if (tag == kZip64Tag) {
            entry.zip64 = true;
            std::size_t at = 0;
            for (std::uint64_t* size : {&entry.size, &entry.compressed_size}) {
                if (*size != kZip64Marker || at + 8 > data.size()) continue;
                *size = load_le64(&data[at]);
                at += 8;
            }
        }
        extra = extra.subspan(4 + data.size());
    }
}

// Reads the container's header; on success the input stands at the compressed data.
InflateError read_header(InputBuffer& in, Entry& entry) {
    std::array<std::byte, 28> header{};
    std::array<std::byte, 2> magic{};
    if (in.read(magic) == 2 && magic[0] == std::byte{'P'} && magic[1] == std::byte{'K'}) {
        if (in.read(header) != header.size() || header[0] != std::byte{3} || header[1] != std::byte{4})
            return InflateError::broken_zip_header;
        entry.zip = true;
        const std::uint32_t flags = load_le16(&header[4]);
        entry.method = load_le16(&header[6]);
        entry.crc = load_le32(&header[12]);
        entry.compressed_size = load_le32(&header[16]);
        entry.size = load_le32(&header[20]);
        if (entry.method != kZipMethodStored && entry.method != kGzipMethodDeflate && entry.method != kMethodDeflate64)
            return InflateError::zip_method;
        in.skip(load_le16(&header[24])); // the name
        std::vector<std::byte> extra(load_le16(&header[26]));
        extra.resize(in.read(extra));
        read_zip64_sizes(extra, entry);
        entry.encrypted = (flags & 0x01) != 0;
        entry.zip_descriptor = (flags & 0x08) != 0;
        return InflateError::none;
    }
    if (magic[0] != std::byte{0x1F} || magic[1] != std::byte{0x8B}) return InflateError::not_compressed_image;
    if (in.read(std::span(header).first(8)) != 8) return InflateError::gzip_header_short;
    entry.method = std::to_integer<std::uint32_t>(header[0]);
    const auto flags = std::to_integer<std::uint32_t>(header[1]);
    if (entry.method != kGzipMethodDeflate && entry.method != kMethodDeflate64) return InflateError::gzip_method;
    if (flags & 0x02) return InflateError::multipart;
    if (flags & 0x04) {
        std::array<std::byte, 2> length{};
        in.skip(in.read(length) == 2 ? load_le16(length.data()) : 0);
    }
    if (flags & 0x08) in.skip_past_zero();
    if (flags & 0x10) in.skip_past_zero();
    entry.encrypted = (flags & 0x20) != 0;
    return InflateError::none;
}

InflateError copy_stored(InputBuffer& in, InflateOutput& out, const Entry& entry) {
    if (entry.compressed_size != entry.size) return InflateError::stored_sizes_differ;
    std::vector<std::byte> buffer(65536);
    for (std::uint64_t left = entry.size; left > 0;) {
        const std::size_t got =
            in.read(std::span(buffer).first(static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()))));
        if (got == 0) break; // a short entry: the size check below catches it
        if (!out.put(std::span(buffer).first(got))) return InflateError::write_failed;
        left -= got;
    }
    return InflateError::none;
}

struct ZStreamEnd {
    void operator()(z_stream* stream) const { inflateEnd(stream); }
};

InflateError inflate_deflate(InputBuffer& in, InflateOutput& out) {
    z_stream stream{};
    if (inflateInit2(&stream, -15) != Z_OK) return InflateError::inflate_failed;
    const std::unique_ptr<z_stream, ZStreamEnd> cleanup(&stream);
    for (;;) {
        if (in.available().empty()) in.fill();
        const std::span<const std::byte> input = in.available();
        const std::span<std::byte> space = out.space();
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(input.data()));
        stream.avail_in = static_cast<uInt>(input.size());
        stream.next_out = reinterpret_cast<Bytef*>(space.data());
        stream.avail_out = static_cast<uInt>(space.size());
        const int result = ::inflate(&stream, Z_NO_FLUSH);
        in.consume(input.size() - stream.avail_in);
        if (!out.produced(space.size() - stream.avail_out)) return InflateError::write_failed;
        if (result == Z_STREAM_END) return InflateError::none;
        if (result == Z_DATA_ERROR) return InflateError::corrupt_data;
        if (result != Z_OK && !(result == Z_BUF_ERROR && !input.empty())) return InflateError::inflate_failed;
        if (input.empty() && stream.avail_out == space.size()) return InflateError::inflate_failed; // cut short
    }
}

} // namespace

InflateError inflate(ByteSource& compressed, ByteSink& image) {
    InputBuffer in(compressed);
    InflateOutput out(image);
    Entry entry;
    if (const InflateError header = read_header(in, entry); header != InflateError::none) return header;
    if (entry.encrypted) return InflateError::encrypted;

    InflateError data = InflateError::none;
    if (entry.zip && entry.method == kZipMethodStored) {
        data = copy_stored(in, out, entry);
    } else if (entry.method == kMethodDeflate64) {
        switch (inflate_deflate64(in, out)) {
        case Deflate64Result::done: break;
        case Deflate64Result::corrupt: data = InflateError::corrupt_data; break;
        case Deflate64Result::truncated: data = InflateError::inflate_failed; break;
        case Deflate64Result::write_failed: data = InflateError::write_failed; break;
        }
    } else {
        data = inflate_deflate(in, out);
    }
    if (data != InflateError::none) return data;
    if (!out.finish()) return InflateError::last_write_failed;

    std::uint32_t crc = entry.crc;
    auto size = static_cast<std::uint32_t>(entry.size);
    if (!entry.zip) {
        std::array<std::byte, 8> trailer{};
        if (in.read(trailer) != trailer.size()) return InflateError::gzip_trailer_missing;
        crc = load_le32(&trailer[0]);
        size = load_le32(&trailer[4]);
    } else if (entry.zip_descriptor) {
        // Signature, CRC-32, compressed and uncompressed size (32 bits each, or 64 in ZIP64).
        std::array<std::byte, 24> descriptor{};
        const std::size_t length = entry.zip64 ? 24 : 16;
        if (in.read(std::span(descriptor).first(length)) != length) return InflateError::zip_descriptor_missing;
        crc = load_le32(&descriptor[4]);
        size = load_le32(&descriptor[entry.zip64 ? 16 : 12]);
    }
    if (out.crc() && *out.crc() != crc) return InflateError::crc_mismatch;
    if (static_cast<std::uint32_t>(out.total()) != size) return InflateError::size_mismatch;
    return InflateError::none;
}

InflateError inflate_file(std::u16string_view compressed_path, ByteSink& image) {
    std::optional<platform::File> input = platform::File::open_for_reading(compressed_path);
    if (!input) return InflateError::input_unopened;
    FileSource source(*input);
    return inflate(source, image);
}

std::optional<CompressedImageHeader> read_compressed_image_header(std::u16string_view compressed_path) {
    std::optional<platform::File> file = platform::File::open_for_reading(compressed_path);
    if (!file) return std::nullopt;
    FileSource source(*file);
    InputBuffer in(source, 4096);
    Entry entry;
    if (read_header(in, entry) != InflateError::none || entry.encrypted) return std::nullopt;
    CompressedImageHeader header;
    if (entry.zip) {
        if (!entry.zip_descriptor) header.size = entry.size;
        return header;
    }
    const std::optional<std::uint64_t> size = file->size();
    std::array<std::byte, 4> trailer{};
    if (!size || *size < 18 || !file->seek(*size - 4)) return header;
    const std::optional<std::size_t> got = file->read(trailer);
    if (got && *got == trailer.size()) header.size = load_le32(trailer.data());
    return header;
}

InflateError inflate_file(std::u16string_view compressed_path, std::u16string_view image_path) {
    std::optional<platform::File> input = platform::File::open_for_reading(compressed_path);
    if (!input) return InflateError::input_unopened;
    std::optional<platform::File> output = platform::File::create(image_path);
    if (!output) return InflateError::output_uncreated;
    FileSource source(*input);
    FileSink sink(*output);
    return inflate(source, sink);
}

} // namespace kq::media
