#pragma once
// DMS (Disk Masher System) archives unpacked into plain ADF images: one record per cylinder,
// each stored as is or packed in one of the modes simple (RLE), quick, medium, deep, heavy 1
// and heavy 2. The image is written cylinder by cylinder up to the last cylinder that the
// archive holds (missing ones before it as zeros): 901,120 bytes for a whole double-density
// disk and 1,802,240 for a high-density one, less for an archive of part of a disk, as other
// DMS unpackers write it. Banner,
// FILEID.DIZ and advertising boot-block records are skipped. Password-protected archives are
// unpacked without their password: the key is found from the first cylinder's checksum
// (dms_key_search.h).
// Reading is bounded: no record can make the unpacker read or write beyond the limits of the
// format.
//
// Records must come in increasing cylinder order, as DMS writes them: the image is written
// as it goes, so a record for a cylinder already written or passed over (out of order, or a
// repeat) stops the unpacking with track_order rather than being dropped in silence.

#include "media/byte_streams.h"

#include <cstdint>
#include <string_view>

namespace kq::media {

enum class DmsError : std::uint32_t {
    none = 0,
    input_unopened,   // the archive file cannot be opened
    output_uncreated, // the image file cannot be created
    not_dms,          // no "DMS!" header, or the header is cut short
    header_crc,       // the archive header's CRC-16 does not match
    not_a_disk,       // a PC disk or a single-file archive
    record_header,    // a record header that is cut short or whose CRC-16 does not match
    record_data,      // packed data that is cut short or whose CRC-16 does not match
    bad_record,       // an unknown mode, or lengths that do not fit the disk or the mode
    corrupt_data,     // packed data that does not decode
    checksum,         // an unpacked record whose checksum does not match
    track_order,      // a cylinder's record after a later cylinder's, or a second one
    no_tracks,        // not a single record holds a cylinder
    read_failed,
    write_failed, // also when the sink takes fewer bytes than given (a full disk)
    out_of_memory,
};

// Unpacks the archive from `archive` into `image`. What was written before a failure stays.
DmsError unpack_dms(ByteSource& archive, ByteSink& image);
// Unpacks a file into a new file (replacing one of that name).
DmsError unpack_dms_file(std::u16string_view archive_path, std::u16string_view image_path);

} // namespace kq::media
