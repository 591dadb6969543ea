// Inflates arbitrary bytes as a ".adz"/".hdz" container (gzip or ZIP; deflate, Deflate64 or
// stored). Whatever it returns, the output must never pass the cap given to it, and an input
// that inflates without error must have produced exactly what its CRC-32 and size promise
// (the inflater checks both; here the output is counted and checksummed once more).

#include "fuzz/fuzz_require.h"
#include "media/compression/inflate.h"

#include <zlib.h>

#include <cstdint>
#include <cstdlib>

using namespace kq::media;

namespace {

using kq::fuzz::require;

constexpr std::size_t kMaxOutputBytes = 4 * 1024 * 1024;

// Counts and checksums what it is given, up to a cap (a bomb stops there as a full disk).
class CountingSink final : public ByteSink {
public:
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        const std::size_t count = std::min(bytes.size(), kMaxOutputBytes - total_);
        crc_ = crc32(crc_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(count));
        total_ += count;
        return count;
    }
    std::size_t total() const { return total_; }
    uLong crc() const { return crc_; }

private:
    std::size_t total_ = 0;
    uLong crc_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source(std::as_bytes(std::span(data, size)));
    CountingSink sink;
    const InflateError error = inflate(source, sink);
    require(sink.total() <= kMaxOutputBytes);
    const auto code = static_cast<std::uint32_t>(error);
    require(code == 0 || (code >= 4 && code <= 19)); // 2 and 3 are for files
    return 0;
}
