#pragma once
// A byte source read through a fixed buffer, with the few ways the container readers take
// bytes from it. Every read stops at the end of the input; nothing reads past it.

#include "media/byte_streams.h"

#include <cstddef>
#include <span>
#include <vector>

namespace kq::media {

class InputBuffer {
public:
    explicit InputBuffer(ByteSource& source, std::size_t capacity = 65536) : source_(source), buffer_(capacity) {}

    // The bytes in the buffer that have not been taken yet (empty: call fill()).
    std::span<const std::byte> available() const { return std::span(buffer_).subspan(position_, end_ - position_); }
    void consume(std::size_t count) { position_ += count; }
    // Reads more when the buffer is used up: false at the end of the input or on a read error.
    bool fill();
    bool failed() const { return failed_; }

    // Up to out.size() bytes: the count taken (fewer only at the end).
    std::size_t read(std::span<std::byte> out);
    // Skips `count` bytes: the count skipped.
    std::size_t skip(std::size_t count);
    // Skips up to and including the next zero byte, or to the end.
    void skip_past_zero();

private:
    ByteSource& source_;
    std::vector<std::byte> buffer_;
    std::size_t position_ = 0, end_ = 0;
    bool failed_ = false;
};

} // namespace kq::media
