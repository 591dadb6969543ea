// Reads arbitrary text as a host's descriptions of its drives: the hard-disk list and the mount
// records (or runtime lines) of the hard-disk summary, and the path and label of a tooltip. The
// first byte picks the flags and the drive type; the rest is UTF-16 text, split into its two
// texts at its NULs. Names stored in images come from a stand-in that answers for every
// path. A summary copied into a host's buffer whole is the summary's text or the overflow status,
// with nothing written past the buffer; a tooltip is always cut to its buffer with a NUL.

#include "content/content_info.h"
#include "content/content_tooltip.h"
#include "exports/host_text.h"
#include "fuzz/fuzz_require.h"
#include "module/status.h"
#include "platform/system_error.h"

#include <cstdint>
#include <cstring>
#include <string>

using namespace kq;
using namespace kq::content;

namespace {

using kq::fuzz::require;

constexpr std::size_t kMaxInputBytes = 16 * 1024;

MediumNameReaders stand_in_readers() {
    return {.volume_name = [](std::u16string_view path) -> std::optional<std::u16string> {
                if (path.empty()) return std::nullopt;
                return std::u16string(path.substr(0, path.size() / 2));
            },
            .hard_disk_names = [](std::u16string_view path,
                                  const media::HardDiskGeometry&) -> std::optional<media::HardDiskNames> {
                if (path.size() % 3 == 0) return std::nullopt;
                return media::HardDiskNames{.device_name = u"DH9", .volume_name = std::u16string(path.substr(0, 4))};
            }};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > kMaxInputBytes) return 0;
    const std::uint32_t flags = data[0] & 0x3;
    const std::uint8_t drive_type = static_cast<std::uint8_t>((data[0] >> 2) % 5);
    std::u16string text((size - 1) / 2, u'\0');
    std::memcpy(text.data(), data + 1, text.size() * sizeof(char16_t));
    const std::size_t split = text.find(u'\0');
    const std::u16string_view first = std::u16string_view(text).substr(0, split);
    // The host's texts are NUL-terminated: the second ends at the next NUL.
    std::u16string_view second =
        split == std::u16string::npos ? std::u16string_view() : std::u16string_view(text).substr(split + 1);
    second = second.substr(0, second.find(u'\0'));
    const MediumNameReaders readers = stand_in_readers();

    const std::optional<std::u16string> summary = content_info_text(first, second, flags, readers);
    for (const std::size_t chars : {std::size_t{1}, std::size_t{16}, std::size_t{4096}}) {
        if (!summary) break;
        std::u16string slots(chars + 1, u'#');
        slots[0] = u'\0';
        const HResult result = copy_whole(*summary, reinterpret_cast<kq_char*>(slots.data()), chars);
        require(slots.back() == u'#');
        if (result == status::ok) {
            require(std::u16string_view(slots.data()) == *summary);
        } else {
            require(slots[0] == u'\0');
            require(result == status::from_win32(platform::system_error::buffer_overflow));
        }
    }
    const std::optional<std::u16string> tooltip = content_tooltip_text(drive_type, flags, first, second, readers);
    for (const std::size_t chars : {std::size_t{1}, std::size_t{40}}) {
        if (!tooltip) break;
        std::u16string slots(chars + 1, u'#');
        copy_truncated(*tooltip, reinterpret_cast<kq_char*>(slots.data()), static_cast<std::uint32_t>(chars));
        require(slots.back() == u'#' &&
                std::u16string_view(slots.data(), chars).find(u'\0') != std::u16string_view::npos);
    }
    return 0;
}
