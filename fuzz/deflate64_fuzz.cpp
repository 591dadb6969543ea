// Decodes arbitrary bytes as a raw Deflate64 stream, the decoder that the project writes
// itself, into a sink that stops taking bytes at 4 MiB. It must end with a result, never read
// past the input, and never hold more than its window's worth beyond what the sink took.

#include "fuzz/fuzz_require.h"
#include "media/compression/deflate64.h"

using namespace kq::media;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source(std::as_bytes(std::span(data, size)));
    InputBuffer input(source);
    kq::fuzz::CappedSink sink;
    InflateOutput output(sink);
    if (inflate_deflate64(input, output) == Deflate64Result::done) output.finish();
    kq::fuzz::require(output.total() <= kq::fuzz::CappedSink::kCap + InflateOutput::kBufferBytes);
    return 0;
}
