#pragma once
// Compressing a working copy back into its ".adz"/".hdz" file: one gzip member (RFC 1952) laid
// out byte for byte as the host's players have always found it:
//   1F 8B 08 08, the modification time (seconds since 1970, with its two low bytes swapped:
//   byte 4 holds bits 8-15, byte 5 bits 0-7, bytes 6 and 7 bits 16-31), XFL 0, OS 10, the
//   compressed file's own name lower-cased and zero-terminated, raw deflate data at the
//   default level, then CRC-32 and size modulo 2^32 (little-endian).
// The image is read in 16 KiB chunks; memory does not grow with its size. State is per call.

#include "media/byte_streams.h"
#include "module/status.h"
#include "platform/files.h"

#include <string>
#include <string_view>

namespace kq::media {

// The gzip header for a file named `file_name` (the text after the last "\" of the target)
// whose image was last written at `written`.
std::string gzip_header(platform::FileTime written, std::u16string_view file_name);

// Writes header, data and trailer. A failed or short read or write returns the system's error
// in HRESULT form (E_FAIL when there is none).
HResult deflate(ByteSource& image, platform::FileTime written, std::u16string_view file_name, ByteSink& compressed);
// Compresses a file into a new gzip file (replacing one of that name); a partly written target
// is left as it is. The header names `final_path`'s file (by default the target's own), for a
// target that is written under a side name and renamed afterwards.
HResult deflate_file(std::u16string_view image_path, std::u16string_view compressed_path,
                     std::u16string_view final_path = {});

} // namespace kq::media
