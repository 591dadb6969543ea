#include "media/byte_streams.h"

#include <algorithm>

namespace kq::media {

std::optional<std::size_t> MemorySource::read(std::span<std::byte> buffer) {
    const std::size_t count = std::min(buffer.size(), bytes_.size() - position_);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
    position_ += count;
    return count;
}

bool MemorySource::seek(std::uint64_t offset) {
    position_ = static_cast<std::size_t>(std::min<std::uint64_t>(offset, bytes_.size()));
    return true;
}

std::optional<std::size_t> MemorySink::write(std::span<const std::byte> bytes) {
    const std::size_t count = std::min(bytes.size(), limit_ - std::min(limit_, bytes_.size()));
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    return count;
}

} // namespace kq::media
