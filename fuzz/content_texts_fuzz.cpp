// Reads arbitrary text as a host's descriptions of its drives: the hard-disk list and the mount
// records (or runtime lines) of the hard-disk summary, and the path and label of a tooltip. The
// first byte picks the flags and the drive type; the rest is UTF-16 text, split into its two
// NUL-terminated texts at its first NUL. Names stored in images come from a stand-in that
// answers for every path.

#include "content/content_info.h"
#include "content/content_tooltip.h"
#include "fuzz/fuzz_require.h"

using namespace kq;
using namespace kq::content;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 16 * 1024) return 0;
    const std::u16string text = fuzz::text_after_first(data, size);
    const std::u16string first(text.c_str());
    const std::u16string second(text.c_str() + std::min(first.size() + 1, text.size()));
    const MediumNameReaders readers{
        .volume_name = [](std::u16string_view path) -> std::optional<std::u16string> {
            if (path.empty()) return std::nullopt;
            return std::u16string(path.substr(0, path.size() / 2));
        },
        .hard_disk_names = [](std::u16string_view path,
                              const media::HardDiskGeometry&) -> std::optional<media::HardDiskNames> {
            if (path.size() % 3 == 0) return std::nullopt;
            return media::HardDiskNames{.device_name = u"DH9", .volume_name = std::u16string(path.substr(0, 4))};
        }};
    content_info_text(first, second, data[0] & 0x3, readers);
    content_tooltip_text(static_cast<std::uint8_t>((data[0] >> 2) % 5), data[0] & 0x3, first, second, readers);
    return 0;
}
