#include "tests/media/dms/dms_test_support.h"

#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include "media/dms/dms_checks.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <iterator>

namespace kq::test::dms {

std::span<const Sample> samples() {
    static constexpr const char* kDisk = "852aede9a6240347ca44d403ce2736a3c926d5dd36a97794438a677b8088fca3";
    static constexpr Sample kSamples[] = {
        {"rle_small.dms", "d032deb4a5008b234b68968699ab2a897250f0f32eeae0aea4b23fa99049f98c", 22528, 11264},
        {"test_C1_none.dms", kDisk, 901120, 11264},
        {"test_C1_simple.dms", kDisk, 901120, 11264},
        {"test_C1_quick.dms", kDisk, 901120, 11264},
        {"test_C1_medium.dms", kDisk, 901120, 11264},
        {"test_C1_deep.dms", kDisk, 901120, 11264},
        {"test_C1_heavy1.dms", kDisk, 901120, 11264},
        {"test_C1_heavy2.dms", kDisk, 901120, 11264},
        {"test_C1_ext.dms", "a734f6e51b30f69a343e8f16b9c8a8db44b16d999a54fd1707a31065ae68de11", 1802240, 22528},
    };
    return kSamples;
}

std::filesystem::path data_folder() { return to_fs_path(test_data_path(u"dms")); }

Bytes read_sample(std::string_view name) {
    std::ifstream in(data_folder() / std::filesystem::path(name), std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string sha256(std::span<const std::uint8_t> bytes) {
    static constexpr std::uint32_t k[64] = {
        0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
        0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
        0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
        0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
        0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
        0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
        0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
        0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};
    std::uint32_t h[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    Bytes message(bytes.begin(), bytes.end());
    message.push_back(0x80);
    message.resize((message.size() + 8 + 63) / 64 * 64);
    for (std::size_t i = 0; i < 8; ++i)
        message[message.size() - 1 - i] = static_cast<std::uint8_t>((bytes.size() * 8) >> (8 * i));
    for (std::size_t block = 0; block < message.size(); block += 64) {
        std::uint32_t w[64], v[8];
        for (int i = 0; i < 64; ++i) {
            if (i < 16) {
                w[i] = std::uint32_t{message[block + 4 * i]} << 24 | message[block + 4 * i + 1] << 16 |
                       message[block + 4 * i + 2] << 8 | message[block + 4 * i + 3];
            } else {
                w[i] = w[i - 16] + (std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ (w[i - 15] >> 3)) + w[i - 7] +
                       (std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ (w[i - 2] >> 10));
            }
        }
        std::copy(h, h + 8, v);
        for (int i = 0; i < 64; ++i) {
            const std::uint32_t t1 = v[7] + (std::rotr(v[4], 6) ^ std::rotr(v[4], 11) ^ std::rotr(v[4], 25)) +
                                     ((v[4] & v[5]) ^ (~v[4] & v[6])) + k[i] + w[i];
            const std::uint32_t t2 = (std::rotr(v[0], 2) ^ std::rotr(v[0], 13) ^ std::rotr(v[0], 22)) +
                                     ((v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]));
            std::copy_backward(v, v + 7, v + 8);
            v[4] += t1;
            v[0] = t1 + t2;
        }
        for (int i = 0; i < 8; ++i) h[i] += v[i];
    }
    std::string hex(64, '0');
    for (int i = 0; i < 64; ++i) hex[i] = "0123456789abcdef"[(h[i / 8] >> (28 - 4 * (i % 8))) & 0xF];
    return hex;
}

Unpacked unpack(const Bytes& archive) {
    media::MemorySource source(std::as_bytes(std::span(archive)));
    media::MemorySink sink;
    const media::DmsError error = media::unpack_dms(source, sink);
    Bytes image(sink.bytes().size());
    std::transform(sink.bytes().begin(), sink.bytes().end(), image.begin(),
                   [](std::byte b) { return std::to_integer<std::uint8_t>(b); });
    return {error, image};
}

std::vector<std::size_t> record_offsets(const Bytes& archive) {
    std::vector<std::size_t> offsets;
    for (std::size_t at = 56; at + 20 <= archive.size() && archive[at] == 'T' && archive[at + 1] == 'R';
         at += 20 + (archive[at + 6] << 8 | archive[at + 7]))
        offsets.push_back(at);
    return offsets;
}

void put16(Bytes& archive, std::size_t at, unsigned value) {
    archive[at] = static_cast<std::uint8_t>(value >> 8);
    archive[at + 1] = static_cast<std::uint8_t>(value);
}

void fix_header_crc(Bytes& archive) { put16(archive, 54, media::dms::crc16(std::span(archive).subspan(4, 50))); }

void fix_record_header_crc(Bytes& archive, std::size_t record) {
    put16(archive, record + 18, media::dms::crc16(std::span(archive).subspan(record, 18)));
}

void fix_record_crcs(Bytes& archive, std::size_t record) {
    const std::size_t packed = archive[record + 6] << 8 | archive[record + 7];
    put16(archive, record + 16, media::dms::crc16(std::span(archive).subspan(record + 20, packed)));
    fix_record_header_crc(archive, record);
}

Bytes encrypted(Bytes archive, std::uint16_t key) {
    archive[11] |= 0x02;
    fix_header_crc(archive);
    for (const std::size_t record : record_offsets(archive)) {
        if ((archive[record + 2] << 8 | archive[record + 3]) == 80) continue; // FILEID.DIZ stays clear
        const std::size_t packed = archive[record + 6] << 8 | archive[record + 7];
        for (std::size_t i = record + 20; i < record + 20 + packed; ++i) {
            archive[i] = static_cast<std::uint8_t>(archive[i] ^ key);
            key = static_cast<std::uint16_t>((key >> 1) + archive[i]);
        }
        fix_record_crcs(archive, record);
    }
    return archive;
}

} // namespace kq::test::dms
