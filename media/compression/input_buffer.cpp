#include "media/compression/input_buffer.h"

#include <algorithm>

namespace kq::media {

bool InputBuffer::fill() {
    if (position_ < end_) return true;
    if (failed_) return false;
    const std::optional<std::size_t> got = source_.read(buffer_);
    position_ = 0;
    end_ = got.value_or(0);
    failed_ = !got.has_value();
    return end_ > 0;
}

std::size_t InputBuffer::read(std::span<std::byte> out) {
    std::size_t taken = 0;
    while (taken < out.size() && fill()) {
        const std::size_t count = std::min(out.size() - taken, end_ - position_);
        std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(position_), count,
                    out.begin() + static_cast<std::ptrdiff_t>(taken));
        position_ += count;
        taken += count;
    }
    return taken;
}

std::size_t InputBuffer::skip(std::size_t count) {
    std::size_t skipped = 0;
    while (skipped < count && fill()) {
        const std::size_t step = std::min(count - skipped, end_ - position_);
        position_ += step;
        skipped += step;
    }
    return skipped;
}

void InputBuffer::skip_past_zero() {
    while (fill()) {
        const std::span<const std::byte> bytes = available();
        const auto zero = std::find(bytes.begin(), bytes.end(), std::byte{0});
        if (zero != bytes.end()) {
            position_ += static_cast<std::size_t>(zero - bytes.begin()) + 1;
            return;
        }
        position_ = end_;
    }
}

} // namespace kq::media
