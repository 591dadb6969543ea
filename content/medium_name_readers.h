#pragma once
// How the content texts reach the names stored inside medium images: the exports pass the
// media layer's readers (media/medium_names.h), tests pass readers of their own.

#include "media/medium_names.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kq::content {

struct MediumNameReaders {
    // The volume name stored in a floppy, hard-disk or CD image; nullopt when none.
    std::function<std::optional<std::u16string>(std::u16string_view path)> volume_name;
    // The device and volume names stored in a hard-disk image laid out by a geometry.
    std::function<std::optional<media::HardDiskNames>(std::u16string_view path, const media::HardDiskGeometry&)>
        hard_disk_names;
};

// The media layer's readers of real images.
inline MediumNameReaders media_layer_readers() {
    return {.volume_name = media::read_volume_name, .hard_disk_names = media::read_hard_disk_names};
}

} // namespace kq::content
