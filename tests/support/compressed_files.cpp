#include "tests/support/compressed_files.h"

#include <zlib.h>

#include <stdexcept>

namespace kq::test {
namespace {

void put16(Bytes& out, std::uint32_t value) {
    out.push_back(std::byte(value & 0xFF));
    out.push_back(std::byte(value >> 8 & 0xFF));
}
void put32(Bytes& out, std::uint32_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}
void append(Bytes& out, const Bytes& bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }
void append(Bytes& out, std::string_view text) { append(out, bytes_of(text)); }
std::uint32_t crc32_of(const Bytes& data) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
}

} // namespace

Bytes bytes_of(std::string_view text) {
    Bytes out;
    for (char c : text) out.push_back(std::byte(static_cast<unsigned char>(c)));
    return out;
}

Bytes raw_deflate(const Bytes& data, int strategy) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -15, 8, strategy) != Z_OK)
        throw std::runtime_error("deflateInit2");
    Bytes out(deflateBound(&stream, static_cast<uLong>(data.size())));
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    const int result = deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("deflate");
    return out;
}

Bytes sample_image(std::size_t size, unsigned seed) {
    static constexpr std::string_view kWords[] = {"AmigaDOS ", "Kickstart ", "track ", "sector ",    "\0\0\0\0",
                                                  "DH0: ",     "Workbench ", "\n",     "0123456789 "};
    Bytes out;
    std::uint32_t state = seed * 2654435761u + 1;
    while (out.size() < size) {
        state = state * 1103515245u + 12345u;
        append(out, kWords[(state >> 16) % std::size(kWords)]);
        if ((state >> 8) % 7 == 0) out.push_back(std::byte(state >> 24)); // some noise
    }
    out.resize(size);
    return out;
}

Bytes gzip_member(const Bytes& data, const GzipParts& parts) {
    const std::uint8_t flags = parts.flags | (parts.extra.empty() ? 0 : 0x04) | (parts.name.empty() ? 0 : 0x08) |
                               (parts.comment.empty() ? 0 : 0x10);
    Bytes out = {std::byte{0x1F}, std::byte{0x8B}, std::byte{parts.method}, std::byte{flags}};
    put32(out, 0x12345678); // time
    put16(out, 0x0300);     // extra flags, OS: Unix
    if (!parts.extra.empty()) put16(out, static_cast<std::uint32_t>(parts.extra.size()));
    append(out, parts.extra);
    for (const std::string& text : {parts.name, parts.comment})
        if (!text.empty()) append(out, std::string_view(text.c_str(), text.size() + 1));
    append(out, parts.compressed ? *parts.compressed : raw_deflate(data));
    if (parts.trailer) {
        put32(out, crc32_of(data) ^ static_cast<std::uint32_t>(parts.crc_xor));
        put32(out, static_cast<std::uint32_t>(static_cast<std::int64_t>(data.size()) + parts.size_add));
    }
    return out;
}

Bytes zip_archive(const Bytes& data, const ZipParts& parts) {
    const Bytes body = parts.compressed ? *parts.compressed : parts.method == 0 ? data : raw_deflate(data);
    const std::uint32_t crc = crc32_of(data) ^ static_cast<std::uint32_t>(parts.crc_xor);
    const bool descriptor = (parts.flags & 0x08) != 0;
    const auto compressed_size =
        static_cast<std::uint32_t>(static_cast<std::int64_t>(body.size()) + parts.compressed_size_add);
    const auto size = static_cast<std::uint32_t>(data.size());
    Bytes out = bytes_of("PK\x03\x04\x14");
    out.push_back(std::byte{0}); // version needed: 2.0
    put16(out, parts.flags);
    put16(out, parts.method);
    put32(out, 0x5A216000); // time and date
    put32(out, descriptor ? 0 : crc);
    put32(out, parts.zip64 ? 0xFFFFFFFF : descriptor ? 0 : compressed_size);
    put32(out, parts.zip64 ? 0xFFFFFFFF : descriptor ? 0 : size);
    Bytes extra = bytes_of(parts.extra);
    if (parts.zip64) {
        put32(extra, 0x00100001); // tag 1, 16 bytes
        for (const std::uint32_t value : {descriptor ? 0 : size, 0u, descriptor ? 0 : compressed_size, 0u})
            put32(extra, value);
    }
    put16(out, 8); // "disk.adf"
    put16(out, static_cast<std::uint32_t>(extra.size()));
    append(out, "disk.adf");
    append(out, extra);
    append(out, body);
    if (descriptor && parts.descriptor) {
        append(out, "PK\x07\x08");
        put32(out, crc);
        for (const std::uint32_t value : {compressed_size, size}) {
            put32(out, value);
            if (parts.zip64) put32(out, 0);
        }
    }
    if (parts.central_directory) // a second, stored entry and a central directory
        for (const auto& [signature, rest] : {std::pair{"PK\x03\x04", 26}, {"PK\x01\x02", 42}, {"PK\x05\x06", 18}}) {
            append(out, signature);
            append(out, Bytes(static_cast<std::size_t>(rest)));
        }
    return out;
}

} // namespace kq::test
