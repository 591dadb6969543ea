#pragma once
// Compressed containers built in memory by the tests (with zlib for the deflate data): gzip
// members and ZIP local entries with any header fields, so that every branch of the readers,
// and every way for them to fail, can be reached.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kq::test {

using Bytes = std::vector<std::byte>;

Bytes bytes_of(std::string_view text);
// Raw deflate data (no zlib header) of `data` at zlib's default level and `strategy`.
Bytes raw_deflate(const Bytes& data, int strategy = 0);
// A test image: `size` bytes of text-like, compressible content that varies with `seed`. Its
// repeats are short, so its deflate data decodes the same as Deflate64.
Bytes sample_image(std::size_t size, unsigned seed = 1);

struct GzipParts {
    std::uint8_t method = 8;
    std::uint8_t flags = 0;
    std::string extra;         // written with flag 0x04
    std::string name;          // written with flag 0x08
    std::string comment;       // written with flag 0x10
    std::int64_t crc_xor = 0;  // flipped bits of the stored CRC
    std::int64_t size_add = 0; // added to the stored size
    bool trailer = true;
    std::optional<Bytes> compressed; // the data as given, instead of zlib's deflate of it
};
// A gzip member holding `data`; the flags byte is `parts.flags` plus those of the fields given.
Bytes gzip_member(const Bytes& data, const GzipParts& parts = {});

struct ZipParts {
    std::uint16_t method = 8;
    std::uint16_t flags = 0; // 0x08 moves CRC and sizes into a data descriptor
    std::string extra;
    std::int64_t compressed_size_add = 0; // added to the stored compressed size
    std::int64_t crc_xor = 0;
    bool descriptor = true; // write the descriptor that flag 0x08 announces
    bool central_directory = true;
    std::optional<Bytes> compressed;
    bool zip64 = false; // sizes in a ZIP64 extra record (and a 24-byte descriptor)
};
// A ZIP archive whose first entry, "disk.adf", holds `data` (stored for method 0, deflated
// otherwise), then a second entry and the central directory, which the reader must ignore.
Bytes zip_archive(const Bytes& data, const ZipParts& parts = {});

} // namespace kq::test
