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
void append(Bytes& out, std::string_view text) {
    for (char c : text) out.push_back(std::byte(static_cast<unsigned char>(c)));
}
void append(Bytes& out, const Bytes& bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }

} // namespace

Bytes bytes_of(std::string_view text) {
    Bytes out;
    append(out, text);
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

std::uint32_t crc32_of(const Bytes& data) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
}

Bytes sample_image(std::size_t size, unsigned seed) {
    static constexpr std::string_view kWords[] = {"AmigaDOS ", "Kickstart ", "track ", "sector ",    "\0\0\0\0",
                                                  "DH0: ",     "Workbench ", "\n",     "0123456789 "};
    Bytes out;
    out.reserve(size);
    std::uint32_t state = seed * 2654435761u + 1;
    while (out.size() < size) {
        state = state * 1103515245u + 12345u;
        const std::string_view word = kWords[(state >> 16) % std::size(kWords)];
        for (char c : word)
            if (out.size() < size) out.push_back(std::byte(static_cast<unsigned char>(c)));
        if ((state >> 8) % 7 == 0 && out.size() < size) out.push_back(std::byte(state >> 24)); // some noise
    }
    return out;
}

Bytes short_repeats(std::size_t size, unsigned seed) {
    std::uint32_t state = seed * 747796405u + 2891336453u;
    const auto next = [&] {
        state = state * 1103515245u + 12345u;
        return state >> 8;
    };
    std::vector<Bytes> words(2000);
    for (Bytes& word : words) {
        word.resize(4 + next() % 9);
        for (std::byte& b : word) b = std::byte(next() & 0xFF);
    }
    Bytes out;
    while (out.size() < size) {
        const Bytes& word = words[next() % words.size()];
        out.insert(out.end(), word.begin(), word.end());
    }
    out.resize(size);
    return out;
}

Bytes gzip_member(const Bytes& data, const GzipParts& parts) {
    std::uint8_t flags = parts.flags;
    if (!parts.extra.empty()) flags |= 0x04;
    if (!parts.name.empty()) flags |= 0x08;
    if (!parts.comment.empty()) flags |= 0x10;
    Bytes out = {std::byte{0x1F}, std::byte{0x8B}, std::byte{parts.method}, std::byte{flags}};
    put32(out, 0x12345678); // time
    out.push_back(std::byte{0});
    out.push_back(std::byte{3}); // OS: Unix
    if (!parts.extra.empty()) {
        put16(out, static_cast<std::uint32_t>(parts.extra.size()));
        append(out, parts.extra);
    }
    if (!parts.name.empty()) {
        append(out, parts.name);
        out.push_back(std::byte{0});
    }
    if (!parts.comment.empty()) {
        append(out, parts.comment);
        out.push_back(std::byte{0});
    }
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
    Bytes out;
    append(out, "PK\x03\x04");
    put16(out, 20); // version needed
    put16(out, parts.flags);
    put16(out, parts.method);
    put16(out, 0x6000); // time
    put16(out, 0x5A21); // date
    put32(out, descriptor ? 0 : crc);
    const std::uint32_t small_compressed = parts.zip64 ? 0xFFFFFFFF : descriptor ? 0 : compressed_size;
    const std::uint32_t small_size = parts.zip64  ? 0xFFFFFFFF
                                     : descriptor ? 0
                                                  : static_cast<std::uint32_t>(data.size());
    put32(out, small_compressed);
    put32(out, small_size);
    Bytes extra = bytes_of(parts.extra);
    if (parts.zip64) {
        put16(extra, 0x0001);
        put16(extra, 16);
        put32(extra, descriptor ? 0 : static_cast<std::uint32_t>(data.size()));
        put32(extra, 0);
        put32(extra, descriptor ? 0 : compressed_size);
        put32(extra, 0);
    }
    put16(out, static_cast<std::uint32_t>(parts.name.size()));
    put16(out, static_cast<std::uint32_t>(extra.size()));
    append(out, parts.name);
    append(out, extra);
    append(out, body);
    if (descriptor && parts.descriptor) {
        append(out, "PK\x07\x08");
        put32(out, crc);
        put32(out, compressed_size);
        if (parts.zip64) put32(out, 0);
        put32(out, static_cast<std::uint32_t>(data.size()));
        if (parts.zip64) put32(out, 0);
    }
    if (parts.central_directory) {
        // A second, stored entry and a central directory: what follows the first entry.
        append(out, "PK\x03\x04");
        append(out, Bytes(26, std::byte{0}));
        append(out, "PK\x01\x02");
        append(out, Bytes(42, std::byte{0}));
        append(out, "PK\x05\x06");
        append(out, Bytes(18, std::byte{0}));
    }
    return out;
}

void DeflateBitWriter::bits(std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) {
        pending_ |= (value >> i & 1) << held_;
        if (++held_ == 8) {
            out_.push_back(std::byte(pending_));
            pending_ = 0;
            held_ = 0;
        }
    }
}

void DeflateBitWriter::code(std::uint32_t code, int length) {
    for (int i = length - 1; i >= 0; --i) bits(code >> i & 1, 1);
}

void DeflateBitWriter::fixed_literal(unsigned symbol) {
    if (symbol < 144)
        code(0x30 + symbol, 8);
    else if (symbol < 256)
        code(0x190 + symbol - 144, 9);
    else if (symbol < 280)
        code(symbol - 256, 7);
    else
        code(0xC0 + symbol - 280, 8);
}

void DeflateBitWriter::stored_block(const Bytes& data, bool last) {
    bits(last ? 1 : 0, 1);
    bits(0, 2);
    if (held_ > 0) bits(0, 8 - held_);
    bits(static_cast<std::uint32_t>(data.size()), 16);
    bits(~static_cast<std::uint32_t>(data.size()) & 0xFFFF, 16);
    append(out_, data);
}

Bytes DeflateBitWriter::finish() {
    if (held_ > 0) bits(0, 8 - held_);
    return std::move(out_);
}

} // namespace kq::test
