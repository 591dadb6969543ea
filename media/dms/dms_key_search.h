#pragma once
// Opening an encrypted archive without its password: the key of the first record that goes to
// the disk is found by decrypting the record with every key that can stand at its start
// (dms_cipher.h) and keeping the one with which it unpacks to its checksum. Only the first
// bytes of the record differ from key to key (the key forgets where it started within about 17
// bytes), so each try decrypts those bytes only; the record is unpacked without being written,
// from a decoder state that is reset between tries only where the try wrote to it. The tries
// are independent: blocks of keys go to as many threads as the processor runs at once.

#include "media/dms/dms_cipher.h"
#include "media/dms/dms_record.h"

#include <cstdint>
#include <optional>
#include <span>

namespace kq::media::dms {

// The key at the start of `stored` (a record's packed bytes as stored) among `keys`, with
// which the record unpacks to its checksum from a freshly reset decoder state; nullopt when
// none does.
//
// A 16-bit sum cannot always tell the keys apart: keys close to the right one change only the
// record's first few bytes, and now and then in a way that keeps the sum (for a stored record,
// or an LZ record whose first items happen to decode alike in length). All keys are therefore
// tried, and when several pass with different records, cylinder 0 decides by what every Amiga
// floppy begins with: a boot block that the machine boots ("DOS" and a valid boot checksum)
// before one that has its DOS type only, before anything else; the lowest key among equals.
std::optional<std::uint16_t> find_record_key(const RecordHeader& header, std::span<const std::uint8_t> stored,
                                             const KeyRange& keys);

} // namespace kq::media::dms
