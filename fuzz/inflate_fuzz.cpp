// Inflates arbitrary bytes as a ".adz"/".hdz" container (gzip or ZIP; deflate, Deflate64 or
// stored) into a sink that stops taking bytes at 4 MiB, as a full disk would (a bomb stops
// there). Whatever it returns is one of the statuses of an inflation from memory.

#include "fuzz/fuzz_require.h"
#include "media/compression/inflate.h"

using namespace kq::media;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source(std::as_bytes(std::span(data, size)));
    kq::fuzz::CappedSink sink;
    const auto code = static_cast<std::uint32_t>(inflate(source, sink));
    kq::fuzz::require(code == 0 || (code >= 4 && code <= 19)); // 2 and 3 are for files
    return 0;
}
