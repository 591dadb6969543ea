#include "platform/volumes.h"
#include "platform/files.h"
#include "platform/native/native_controls.h"

#include "common/compare.h"

#include <algorithm>
#include <mutex>

namespace kq::platform {
namespace {

struct DriveRoots {
    std::mutex lock;
    std::vector<native::DriveRoot> roots;
};

DriveRoots& drive_roots() {
    static DriveRoots instance;
    return instance;
}

// The drive's letter and colon: "c:\" and "C:" name the same drive.
std::u16string_view drive_of(std::u16string_view root) { return root.substr(0, 2); }

std::optional<native::DriveRoot> find_root(std::u16string_view root) {
    DriveRoots& d = drive_roots();
    std::lock_guard guard(d.lock);
    const auto found = std::ranges::find_if(d.roots, [&](const native::DriveRoot& known) {
        return equal_ignoring_case(drive_of(known.root), drive_of(root));
    });
    if (found == d.roots.end()) return std::nullopt;
    return *found;
}

} // namespace

std::optional<std::uint32_t> drive_root_attributes(std::u16string_view root) {
    if (!find_root(root)) return std::nullopt;
    return kAttributeDirectory;
}

std::u16string volume_label(std::u16string_view root) {
    const std::optional<native::DriveRoot> known = find_root(root);
    if (!known) return {};
    return known->label.substr(0, kMaxVolumeLabelChars);
}

bool is_removable_drive(std::u16string_view root) {
    const std::optional<native::DriveRoot> known = find_root(root);
    return known && known->is_removable;
}

void native::set_drive_roots(std::vector<DriveRoot> roots) {
    DriveRoots& d = drive_roots();
    std::lock_guard guard(d.lock);
    d.roots = std::move(roots);
}

} // namespace kq::platform
