#pragma once
// What a fuzz target checks besides memory safety: a property that must hold for every input.
// A failed check aborts, which libFuzzer reports as a crash with the input that caused it.

#include "media/byte_streams.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kq::fuzz {

inline void require(bool condition) {
    if (!condition) std::abort();
}

// The bytes after the first as UTF-16 text (an odd last byte dropped), as a host hands text over.
inline std::u16string text_after_first(const std::uint8_t* data, std::size_t size) {
    std::u16string text((size - 1) / 2, u'\0');
    std::memcpy(text.data(), data + 1, text.size() * sizeof(char16_t));
    return text;
}

// Takes bytes up to 4 MiB, then fewer than given, as a full disk would (a bomb stops there).
class CappedSink final : public media::ByteSink {
public:
    static constexpr std::size_t kCap = 4 * 1024 * 1024;
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        const std::size_t count = std::min(bytes.size(), kCap - total_);
        total_ += count;
        return count;
    }

private:
    std::size_t total_ = 0;
};

} // namespace kq::fuzz
