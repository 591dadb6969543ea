#pragma once
// The output side of inflating: a 64 KiB buffer, the running CRC-32 and byte count, and the
// sink that full buffers go to.

#include "media/byte_streams.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kq::media {

class InflateOutput {
public:
    static constexpr std::size_t kBufferBytes = 65536;
    explicit InflateOutput(ByteSink& sink) : sink_(sink), buffer_(kBufferBytes), checksummed_(sink.wants_checksum()) {}

    // Room left in the buffer, for a decoder to write into; then produced() with the count.
    std::span<std::byte> space() { return std::span(buffer_).subspan(used_); }
    // False when a full buffer could not be written in full.
    bool produced(std::size_t count);
    // Copies bytes in (buffer by buffer); false when a full buffer could not be written.
    bool put(std::span<const std::byte> bytes);
    // Writes what remains and flushes the sink; false when that fails.
    bool finish();

    // The CRC-32 of what was written; nullopt when the sink did not want it.
    std::optional<std::uint32_t> crc() const { return checksummed_ ? std::optional(crc_) : std::nullopt; }
    std::uint64_t total() const { return total_; }

private:
    bool write_out(std::size_t count);

    ByteSink& sink_;
    std::vector<std::byte> buffer_;
    bool checksummed_;
    std::size_t used_ = 0;
    std::uint32_t crc_ = 0;
    std::uint64_t total_ = 0;
};

} // namespace kq::media
