// Decodes arbitrary bytes as a raw Deflate64 stream, the decoder that the project writes
// itself. It must end with a result, never read past the input, and never write more than the
// output it was allowed.

#include "media/compression/deflate64.h"

#include <cstdint>
#include <cstdlib>

using namespace kq::media;

namespace {

constexpr std::size_t kMaxOutputBytes = 4 * 1024 * 1024;

// Discards the output, up to a cap.
class CappedSink final : public ByteSink {
public:
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        const std::size_t count = std::min(bytes.size(), kMaxOutputBytes - total_);
        total_ += count;
        return count;
    }
    std::size_t total() const { return total_; }

private:
    std::size_t total_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source(std::as_bytes(std::span(data, size)));
    InputBuffer input(source);
    CappedSink sink;
    InflateOutput output(sink);
    const Deflate64Result result = inflate_deflate64(input, output);
    if (result == Deflate64Result::done) output.finish();
    if (sink.total() > kMaxOutputBytes || output.total() > kMaxOutputBytes + InflateOutput::kBufferBytes) std::abort();
    return 0;
}
