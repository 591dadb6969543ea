#include "media/dms/dms_modes.h"

namespace kq::media::dms {
namespace {

constexpr unsigned kWindowBytes = 256;
constexpr unsigned kGapAfterRecord = 5;

} // namespace

// Per item: 1 and a literal byte, or 0, the length - 2 in 2 bits and the distance in 8.
void unpack_quick(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out) {
    LzOutput output(window, kWindowBytes, window.quick, out);
    while (!output.done()) {
        bits.ensure(11);
        if (bits.peek(1) != 0) {
            output.literal(static_cast<std::uint8_t>(bits.peek(9)));
            bits.skip(9);
        } else {
            const unsigned item = bits.peek(11);
            bits.skip(11);
            output.match(item & 0xFF, (item >> 8) + 2);
        }
    }
    window.quick = (output.position() + kGapAfterRecord) % kWindowBytes;
}

} // namespace kq::media::dms
