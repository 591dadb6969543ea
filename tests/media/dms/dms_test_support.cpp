#include "tests/media/dms/dms_test_support.h"

#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include "media/dms/dms_checks.h"

#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kq::test::dms {

std::span<const Sample> samples() {
    static constexpr std::uint32_t kDisk = 0x2271E0F1;
    static constexpr Sample kSamples[] = {
        {"rle_small.dms", 0xDD6220E8, 22528, 11264},     {"test_C1_none.dms", kDisk, 901120, 11264},
        {"test_C1_simple.dms", kDisk, 901120, 11264},    {"test_C1_quick.dms", kDisk, 901120, 11264},
        {"test_C1_medium.dms", kDisk, 901120, 11264},    {"test_C1_deep.dms", kDisk, 901120, 11264},
        {"test_C1_heavy1.dms", kDisk, 901120, 11264},    {"test_C1_heavy2.dms", kDisk, 901120, 11264},
        {"test_C1_ext.dms", 0x758F22CD, 1802240, 22528},
    };
    return kSamples;
}

const Sample& sample_named(std::string_view name) {
    return *std::find_if(samples().begin(), samples().end(), [&](const Sample& s) { return name == s.name; });
}

std::filesystem::path data_folder() { return to_fs_path(test_data_path(u"dms")); }

Bytes read_sample(std::string_view name) {
    std::ifstream in(data_folder() / std::filesystem::path(name), std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::uint32_t crc32_of(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint32_t>(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

Unpacked unpack(const Bytes& archive) {
    media::MemorySource source(std::as_bytes(std::span(archive)));
    media::MemorySink sink;
    const media::DmsError error = media::unpack_dms(source, sink);
    const auto* image = reinterpret_cast<const std::uint8_t*>(sink.bytes().data());
    return {error, Bytes(image, image + sink.bytes().size())};
}

unsigned be16(const Bytes& archive, std::size_t at) { return archive[at] << 8 | archive[at + 1]; }

std::vector<std::size_t> record_offsets(const Bytes& archive) {
    std::vector<std::size_t> offsets;
    for (std::size_t at = 56; at + 20 <= archive.size() && archive[at] == 'T' && archive[at + 1] == 'R';
         at += 20 + be16(archive, at + 6))
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
    put16(archive, record + 16, media::dms::crc16(std::span(archive).subspan(record + 20, be16(archive, record + 6))));
    fix_record_header_crc(archive, record);
}

Bytes encrypted(Bytes archive, std::uint16_t key) {
    archive[11] |= 0x02;
    fix_header_crc(archive);
    for (const std::size_t record : record_offsets(archive)) {
        if (be16(archive, record + 2) == 80) continue; // FILEID.DIZ stays clear
        for (std::size_t i = record + 20; i < record + 20 + be16(archive, record + 6); ++i) {
            archive[i] = static_cast<std::uint8_t>(archive[i] ^ key);
            key = static_cast<std::uint16_t>((key >> 1) + archive[i]);
        }
        fix_record_crcs(archive, record);
    }
    return archive;
}

} // namespace kq::test::dms
