#include "media/compression/inflate_output.h"

#include <zlib.h>

#include <algorithm>

namespace kq::media {

bool InflateOutput::write_out(std::size_t count) {
    if (checksummed_) {
        const auto* bytes = reinterpret_cast<const Bytef*>(buffer_.data());
        crc_ = static_cast<std::uint32_t>(::crc32(crc_, bytes, static_cast<uInt>(count)));
    }
    total_ += count;
    used_ = 0;
    const std::optional<std::size_t> written = sink_.write(std::span(buffer_).first(count));
    return written && *written == count;
}

bool InflateOutput::produced(std::size_t count) {
    used_ += count;
    return used_ < buffer_.size() || write_out(used_);
}

bool InflateOutput::put(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), buffer_.size() - used_);
        std::copy_n(bytes.begin(), count, buffer_.begin() + static_cast<std::ptrdiff_t>(used_));
        bytes = bytes.subspan(count);
        if (!produced(count)) return false;
    }
    return true;
}

bool InflateOutput::finish() {
    if (used_ > 0 && !write_out(used_)) return false;
    return sink_.flush();
}

} // namespace kq::media
