#include "media/dms/dms_modes.h"
#include "media/dms/dms_prefix_code.h"

namespace kq::media::dms {
namespace {

constexpr unsigned kGapAfterRecord = 66;

} // namespace

// Per item: 1 and a literal byte, or 0, the length - 3 by the prefix code and the distance.
void unpack_medium(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out) {
    unpack_lz_record(window, kMediumWindowBytes, window.medium, kGapAfterRecord, out, [&](LzOutput& output) {
        if (take_flagged_literal(bits, output)) return;
        bits.skip(1);
        const unsigned length = read_prefix_code(bits) + 3;
        output.match(read_far_distance(bits), length);
    });
}

} // namespace kq::media::dms
