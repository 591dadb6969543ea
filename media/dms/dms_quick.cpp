#include "media/dms/dms_modes.h"

namespace kq::media::dms {
namespace {

constexpr unsigned kGapAfterRecord = 5;

} // namespace

// Per item: 1 and a literal byte, or 0, the length - 2 in 2 bits and the distance in 8.
void unpack_quick(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out) {
    unpack_lz_record(window, kQuickWindowBytes, window.quick, kGapAfterRecord, out, [&](LzOutput& output) {
        if (take_flagged_literal(bits, output)) return;
        bits.ensure(11);
        const unsigned item = bits.peek(11);
        bits.skip(11);
        output.match(item & 0xFF, (item >> 8) + 2);
    });
}

} // namespace kq::media::dms
