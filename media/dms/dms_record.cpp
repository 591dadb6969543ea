#include "media/dms/dms_record.h"

#include "media/dms/dms_checks.h"
#include "media/dms/dms_rle.h"

#include <algorithm>

namespace kq::media::dms {
namespace {

DmsError first_stage(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                     std::span<std::uint8_t> out) {
    BitReader bits(packed);
    switch (header.mode) {
    case kModeQuick: unpack_quick(bits, state.window, out); return DmsError::none;
    case kModeMedium: unpack_medium(bits, state.window, out); return DmsError::none;
    case kModeDeep: unpack_deep(bits, state.window, state.deep, out); return DmsError::none;
    default: {
        const HeavyMode& mode = header.mode == kModeHeavy1 ? kHeavy1 : kHeavy2;
        if ((header.flags & kFlagHeavyCodes) != 0 && !read_heavy_codes(bits, state.heavy, mode))
            return DmsError::corrupt_data;
        return unpack_heavy(bits, state.window, state.heavy, mode, out) ? DmsError::none : DmsError::corrupt_data;
    }
    }
}

// The stage that the run-length stage reads, or that is the record when there is none.
bool has_rle_stage(const RecordHeader& header) {
    return header.mode < kModeHeavy1 || (header.flags & kFlagHeavyRle) != 0;
}

DmsError unpack_stages(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                       std::span<std::uint8_t, kMaxRecordBytes> stage1, std::span<std::uint8_t> out) {
    switch (header.mode) {
    case kModeNone:
        if (packed.size() < out.size()) return DmsError::bad_record;
        std::copy_n(packed.begin(), out.size(), out.begin());
        return DmsError::none;
    case kModeSimple: return unpack_rle(packed, out) ? DmsError::none : DmsError::corrupt_data;
    case kModeQuick:
    case kModeMedium:
    case kModeDeep:
    case kModeHeavy1:
    case kModeHeavy2: {
        if (!has_rle_stage(header)) {
            if (header.stage1 != out.size()) return DmsError::bad_record;
            return first_stage(header, packed, state, out);
        }
        const std::span<std::uint8_t> middle = stage1.first(std::min<std::size_t>(header.stage1, stage1.size()));
        if (const DmsError error = first_stage(header, packed, state, middle); error != DmsError::none) return error;
        return unpack_rle(middle, out) ? DmsError::none : DmsError::corrupt_data;
    }
    default: return DmsError::bad_record;
    }
}

} // namespace

DmsError unpack_record(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                       std::span<std::uint8_t, kMaxRecordBytes> stage1, std::span<std::uint8_t> out) {
    if (const DmsError error = unpack_stages(header, packed, state, stage1, out); error != DmsError::none) return error;
    if (checksum(out) != header.checksum) return DmsError::checksum;
    if ((header.flags & kFlagKeepState) == 0) state.reset();
    return DmsError::none;
}

bool unpacks_to_checksum(const RecordHeader& header, std::span<const std::uint8_t> packed, DecoderState& state,
                         std::span<std::uint8_t, kMaxRecordBytes> stage1) {
    switch (header.mode) {
    case kModeNone:
        return packed.size() >= header.unpacked && checksum(packed.first(header.unpacked)) == header.checksum;
    case kModeSimple: return rle_checksum(packed, header.unpacked) == header.checksum;
    case kModeQuick:
    case kModeMedium:
    case kModeDeep:
    case kModeHeavy1:
    case kModeHeavy2: {
        const bool rle = has_rle_stage(header);
        if (!rle && header.stage1 != header.unpacked) return false;
        const std::span<std::uint8_t> middle = stage1.first(std::min<std::size_t>(header.stage1, stage1.size()));
        if (first_stage(header, packed, state, middle) != DmsError::none) return false;
        return (rle ? rle_checksum(middle, header.unpacked) : std::optional(checksum(middle))) == header.checksum;
    }
    default: return false;
    }
}

} // namespace kq::media::dms
