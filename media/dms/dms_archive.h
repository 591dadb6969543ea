#pragma once
// The headers of a DMS archive: the 56-byte file header and the 20-byte header before each
// record's packed data. All numbers are big-endian; each header ends with a CRC-16 of the
// bytes before it (the file header's from offset 4 on).
//
// File header: "DMS!", 4 unused bytes, info bits (@8, 32 bits), creation time, first and last
//   track, total packed and unpacked sizes, creator's machine, versions (@12..49, unused
//   here), disk type (@50), most-used mode (@52), CRC (@54).
// Record header: "TR", number (@2), 2 unused bytes, packed length (@6), first-stage length
//   (@8), unpacked length (@10), flags (@12), mode (@13), checksum of the unpacked bytes (@14),
//   CRC of the packed bytes (@16), CRC (@18).

#include "media/dms/dms_unpacker.h"

#include <cstdint>
#include <span>

namespace kq::media::dms {

inline constexpr std::size_t kArchiveHeaderBytes = 56;
inline constexpr std::size_t kRecordHeaderBytes = 20;

// Info bits of the file header.
inline constexpr std::uint32_t kInfoEncrypted = 0x0002;
inline constexpr std::uint32_t kInfoHighDensity = 0x0010;
inline constexpr std::uint32_t kInfoPcDisk = 0x0020;
// The disk type of an archive that holds one file rather than a disk.
inline constexpr std::uint32_t kDiskTypeSingleFile = 7;

// Record modes: stored, simple (run lengths only), then the LZ modes.
enum RecordMode : std::uint8_t { kModeNone, kModeSimple, kModeQuick, kModeMedium, kModeDeep, kModeHeavy1, kModeHeavy2 };

// Record flags.
inline constexpr std::uint8_t kFlagKeepState = 0x01;  // the next record goes on from this one's state
inline constexpr std::uint8_t kFlagHeavyCodes = 0x02; // heavy: new codes at the start of the data
inline constexpr std::uint8_t kFlagHeavyRle = 0x04;   // heavy: a run-length stage follows

struct ArchiveHeader {
    std::uint32_t info = 0;
    std::uint32_t disk_type = 0;
};

struct RecordHeader {
    std::uint32_t number = 0;
    std::uint32_t packed = 0;
    std::uint32_t stage1 = 0;
    std::uint32_t unpacked = 0;
    std::uint8_t flags = 0;
    std::uint8_t mode = 0;
    std::uint16_t checksum = 0;
    std::uint16_t data_crc = 0;
};

// none, not_dms (no "DMS!") or header_crc.
DmsError read_archive_header(std::span<const std::uint8_t, kArchiveHeaderBytes> bytes, ArchiveHeader& header);
// Whether bytes (at least 2) begin a record: anything else after the last record is ignored.
bool starts_record(std::span<const std::uint8_t> bytes);
// none or record_header (CRC mismatch).
DmsError read_record_header(std::span<const std::uint8_t, kRecordHeaderBytes> bytes, RecordHeader& header);

} // namespace kq::media::dms
