#include "media/dms/dms_modes.h"
#include "media/dms/dms_prefix_code.h"

namespace kq::media::dms {
namespace {

constexpr unsigned kWindowBytes = 16384;
constexpr unsigned kGapAfterRecord = 66;

} // namespace

// Per item: 1 and a literal byte, or 0, the length - 3 by the prefix code and the distance.
void unpack_medium(BitReader& bits, LzWindow& window, std::span<std::uint8_t> out) {
    LzOutput output(window, kWindowBytes, window.medium, out);
    while (!output.done()) {
        bits.ensure(9);
        if (bits.peek(1) != 0) {
            output.literal(static_cast<std::uint8_t>(bits.peek(9)));
            bits.skip(9);
        } else {
            bits.skip(1);
            const unsigned length = read_prefix_code(bits) + 3;
            output.match(read_far_distance(bits), length);
        }
    }
    window.medium = (output.position() + kGapAfterRecord) % kWindowBytes;
}

} // namespace kq::media::dms
