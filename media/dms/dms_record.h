#pragma once
// One disk record unpacked: its mode's first stage, the run-length stage where the mode has
// one, and the checksum. The decoders' state flows from record to record in file order and
// starts afresh after a record that does not ask to keep it.

#include "media/dms/dms_archive.h"
#include "media/dms/dms_lz.h"
#include "media/dms/dms_modes.h"

#include <cstdint>
#include <span>

namespace kq::media::dms {

struct DecoderState {
    LzWindow window;
    DeepTree deep;
    // Heavy's codes and last distance are never cleared, as in the original unpacker: a record
    // that keeps no state still leaves them to the next heavy record.
    HeavyState heavy;

    DecoderState() { reset(); }
    void reset() {
        window.reset();
        deep.reset();
    }
};

// The most bytes that any length of a record header can give.
inline constexpr std::size_t kMaxRecordBytes = 0xFFFF;

// Unpacks `packed` (followed in memory by kBitReaderPadding zero bytes) into `out`, which has
// the header's unpacked length; `stage1` is scratch space of kMaxRecordBytes. The result is
// none, bad_record (an unknown mode, lengths that do not fit the mode), corrupt_data or
// checksum.
DmsError unpack_record(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                       std::span<std::uint8_t, kMaxRecordBytes> stage1, std::span<std::uint8_t> out);

// Whether `packed` unpacks as unpack_record would, checksum included, without writing the
// record anywhere: for trying the keys of an encrypted record. `state` is left as the stages
// leave it.
bool unpacks_to_checksum(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                         std::span<std::uint8_t, kMaxRecordBytes> stage1);

} // namespace kq::media::dms
