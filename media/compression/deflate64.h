#pragma once
// The decoder of Deflate64 ("enhanced deflate", ZIP method 9), which zlib lacks. It is deflate
// (RFC 1951) with three changes: a 64 KiB window, length code 285 meaning 3 plus a 16-bit
// extra value (not 258), and distance codes 30 and 31 (32769 and 49153, 14 extra bits each).
// It streams: input through an InputBuffer, output through an InflateOutput, with no more
// memory than the window.

#include "media/compression/inflate_output.h"
#include "media/compression/input_buffer.h"

namespace kq::media {

enum class Deflate64Result { done, corrupt, truncated, write_failed };

// Decodes one raw Deflate64 stream; the input is left just after its last byte.
Deflate64Result inflate_deflate64(InputBuffer& in, InflateOutput& out);

} // namespace kq::media
