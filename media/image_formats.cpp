#include "media/image_formats.h"

#include "common/windows_path.h"

namespace kq::media {

const ImageFormat* find_image_format(std::u16string_view extension) {
    const auto found = std::ranges::find_if(
        kImageFormats, [&](const ImageFormat& format) { return equal_ignoring_case(extension, format.extension); });
    return found != kImageFormats.end() ? &*found : nullptr;
}

const ImageFormat* image_format_of(std::u16string_view path) {
    const std::optional<std::u16string_view> extension = extension_of(path);
    return extension ? find_image_format(*extension) : nullptr;
}

} // namespace kq::media
