#include "media/dms/dms_archive.h"

#include "media/dms/dms_checks.h"

namespace kq::media::dms {
namespace {

std::uint32_t be16(std::span<const std::uint8_t> bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 8 | bytes[at + 1];
}
std::uint32_t be32(std::span<const std::uint8_t> bytes, std::size_t at) {
    return be16(bytes, at) << 16 | be16(bytes, at + 2);
}

} // namespace

DmsError read_archive_header(std::span<const std::uint8_t, kArchiveHeaderBytes> bytes, ArchiveHeader& header) {
    if (bytes[0] != 'D' || bytes[1] != 'M' || bytes[2] != 'S' || bytes[3] != '!') return DmsError::not_dms;
    if (crc16(bytes.subspan(4, 50)) != be16(bytes, 54)) return DmsError::header_crc;
    header.info = be32(bytes, 8);
    header.disk_type = be16(bytes, 50);
    return DmsError::none;
}

bool starts_record(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 2 && bytes[0] == 'T' && bytes[1] == 'R';
}

DmsError read_record_header(std::span<const std::uint8_t, kRecordHeaderBytes> bytes, RecordHeader& header) {
    if (crc16(bytes.first(18)) != be16(bytes, 18)) return DmsError::record_header;
    header.number = be16(bytes, 2);
    header.packed = be16(bytes, 6);
    header.stage1 = be16(bytes, 8);
    header.unpacked = be16(bytes, 10);
    header.flags = bytes[12];
    header.mode = bytes[13];
    header.checksum = static_cast<std::uint16_t>(be16(bytes, 14));
    header.data_crc = static_cast<std::uint16_t>(be16(bytes, 16));
    return DmsError::none;
}

} // namespace kq::media::dms
