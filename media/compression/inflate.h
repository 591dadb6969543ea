#pragma once
// Inflating the compressed images (".adz", ".hdz"): the first member of a gzip file (RFC 1952)
// or the first entry of a ZIP archive, deflated (method 8, through zlib), Deflate64 (method 9,
// our own decoder) or, in a ZIP archive, stored (method 0). The first bytes decide, not the
// name. Input is read through a 64 KiB buffer and output written in 64 KiB pieces, so images
// of any size pass in bounded memory. Every call has its own state: inflations may run at once.
//
// gzip member: 1F 8B, method, flags, 4 time bytes, XFL, OS; then, by the flags, an extra field
//   (0x04, with a 16-bit little-endian length), a name (0x08) and a comment (0x10), each up to
//   a zero byte; the data; then CRC-32 and size (32-bit, little-endian). Flag 0x02 marks a
//   continuation part (refused), 0x20 encryption (refused).
// ZIP local entry: "PK" 03 04, version, flags (bit 0 encrypted, bit 3 data descriptor),
//   method, time, date, CRC-32, compressed and uncompressed size, name length, extra length
//   (all little-endian), the name and extra field, the data; with bit 3 a 16-byte descriptor
//   (signature, CRC-32, sizes) follows the data. A ZIP64 entry (as zip writes when streaming
//   from a pipe) has its sizes in a ZIP64 record of the extra field and a 24-byte descriptor.
// The result is 0, or the code of what failed (InflateError); what was written stays written.

#include "media/byte_streams.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kq::media {

enum class InflateError : std::uint32_t {
    none = 0,
    input_unopened = 2,
    output_uncreated = 3,
    broken_zip_header = 4,
    zip_method = 5,
    gzip_header_short = 6,
    gzip_method = 7,
    multipart = 8,
    not_compressed_image = 9,
    encrypted = 10,
    corrupt_data = 11,
    inflate_failed = 12,
    stored_sizes_differ = 13,
    write_failed = 14,
    last_write_failed = 15,
    gzip_trailer_missing = 16,
    zip_descriptor_missing = 17,
    crc_mismatch = 18,
    size_mismatch = 19,
};

InflateError inflate(ByteSource& compressed, ByteSink& image);
// Inflates a file into a new file (replacing one of that name).
InflateError inflate_file(std::u16string_view compressed_path, std::u16string_view image_path);
// Inflates a file into `image` (which may stop it early by taking fewer bytes than given).
InflateError inflate_file(std::u16string_view compressed_path, ByteSink& image);

// What a compressed file's header says, read without inflating anything; nullopt when the file
// cannot be read or is not a compressed image that inflate() would take (another format, a
// method or flag it refuses, encryption).
struct CompressedImageHeader {
    // The uncompressed size it states: the ZIP entry's, or the gzip trailer's (modulo 2^32; the
    // trailer is taken from the file's end); nullopt when not stated.
    std::optional<std::uint64_t> size;
};
std::optional<CompressedImageHeader> read_compressed_image_header(std::u16string_view compressed_path);

} // namespace kq::media
