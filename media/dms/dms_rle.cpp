#include "media/dms/dms_rle.h"

#include <algorithm>
#include <cstring>

namespace kq::media::dms {
namespace {

constexpr std::uint8_t kRunMark = 0x90;
constexpr std::uint8_t kLongRun = 0xFF;

} // namespace

bool unpack_rle(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    const std::uint8_t* p = in.data();
    const std::uint8_t* const p_end = p + in.size();
    std::uint8_t* o = out.data();
    std::uint8_t* const o_end = o + out.size();
    while (o != o_end) {
        // Plain bytes up to the next mark, copied at once.
        const std::size_t room = std::min(static_cast<std::size_t>(p_end - p), static_cast<std::size_t>(o_end - o));
        if (room > 0) {
            const void* mark = std::memchr(p, kRunMark, room);
            const std::size_t plain =
                mark == nullptr ? room : static_cast<std::size_t>(static_cast<const std::uint8_t*>(mark) - p);
            std::memcpy(o, p, plain);
            o += plain;
            p += plain;
            if (o == o_end) break;
        }
        if (p_end - p < 2) return false; // no input left, or a mark without its count
        std::size_t count = p[1];
        if (count == 0) {
            *o++ = kRunMark;
            p += 2;
            continue;
        }
        if (p_end - p < 3) return false;
        const std::uint8_t value = p[2];
        p += 3;
        if (count == kLongRun) {
            if (p_end - p < 2) return false;
            count = std::size_t{p[0]} << 8 | p[1];
            p += 2;
        }
        if (count > static_cast<std::size_t>(o_end - o)) return false;
        std::memset(o, value, count);
        o += count;
    }
    return true;
}

} // namespace kq::media::dms
