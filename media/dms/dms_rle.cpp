#include "media/dms/dms_rle.h"

#include <algorithm>
#include <cstring>

namespace kq::media::dms {
namespace {

constexpr std::uint8_t kRunMark = 0x90;
constexpr std::uint8_t kLongRun = 0xFF;

// Decodes runs until `size` bytes have come out, handing them to `emit` as plain stretches
// (emit.bytes) and runs (emit.run); false when the input ends first or a run passes `size`.
template <class Emit>
bool decode_runs(std::span<const std::uint8_t> in, std::size_t size, Emit& emit) {
    const std::uint8_t* p = in.data();
    const std::uint8_t* const p_end = p + in.size();
    std::size_t left = size;
    while (left != 0) {
        // Plain bytes up to the next mark, taken at once.
        const std::size_t room = std::min(static_cast<std::size_t>(p_end - p), left);
        if (room > 0) {
            const void* mark = std::memchr(p, kRunMark, room);
            const std::size_t plain =
                mark == nullptr ? room : static_cast<std::size_t>(static_cast<const std::uint8_t*>(mark) - p);
            emit.bytes(p, plain);
            left -= plain;
            p += plain;
            if (left == 0) break;
        }
        if (p_end - p < 2) return false; // no input left, or a mark without its count
        std::size_t count = p[1];
        if (count == 0) {
            emit.run(kRunMark, 1);
            --left;
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
        if (count > left) return false;
        emit.run(value, count);
        left -= count;
    }
    return true;
}

struct Writer {
    std::uint8_t* at;
    void bytes(const std::uint8_t* from, std::size_t count) {
        std::memcpy(at, from, count);
        at += count;
    }
    void run(std::uint8_t value, std::size_t count) {
        std::memset(at, value, count);
        at += count;
    }
};

struct Summer {
    std::uint32_t sum = 0;
    void bytes(const std::uint8_t* from, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) sum += from[i];
    }
    void run(std::uint8_t value, std::size_t count) { sum += static_cast<std::uint32_t>(value * count); }
};

} // namespace

bool unpack_rle(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    Writer writer{out.data()};
    return decode_runs(in, out.size(), writer);
}

std::optional<std::uint16_t> rle_checksum(std::span<const std::uint8_t> in, std::size_t size) {
    Summer summer;
    if (!decode_runs(in, size, summer)) return std::nullopt;
    return static_cast<std::uint16_t>(summer.sum);
}

} // namespace kq::media::dms
