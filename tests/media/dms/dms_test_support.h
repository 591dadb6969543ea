#pragma once
// What the DMS tests share: the sample archives in tests/data/dms and what they unpack to, and
// edits of an archive that keep its CRCs right.

#include "media/dms/dms_unpacker.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

namespace kq::test::dms {

using Bytes = std::vector<std::uint8_t>;

struct Sample {
    const char* name;
    std::uint32_t crc32;     // of the image that xdms writes
    std::size_t image_bytes; // up to the archive's last cylinder
    std::size_t cylinder_bytes;
};
std::span<const Sample> samples(); // those that unpack (not the encrypted one)
const Sample& sample_named(std::string_view name);

std::filesystem::path data_folder();
Bytes read_sample(std::string_view name);
std::uint32_t crc32_of(std::span<const std::uint8_t> bytes);

struct Unpacked {
    media::DmsError error;
    Bytes image;
};
Unpacked unpack(const Bytes& archive);

std::vector<std::size_t> record_offsets(const Bytes& archive); // by the packed lengths
unsigned be16(const Bytes& archive, std::size_t at);
void put16(Bytes& archive, std::size_t at, unsigned value);
void fix_header_crc(Bytes& archive);
void fix_record_header_crc(Bytes& archive, std::size_t record);
void fix_record_crcs(Bytes& archive, std::size_t record); // of the data, then of the header
// The archive as a password with first key `key` would store it: every record but FILEID.DIZ
// encrypted in file order, the info bit set, the CRCs made right.
Bytes encrypted(Bytes archive, std::uint16_t key);

} // namespace kq::test::dms
