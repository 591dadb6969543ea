#include "content/device_name_allocator.h"

#include "common/compare.h"
#include "common/integer_text.h"

#include <algorithm>
#include <string>

namespace kq::content {
bool DeviceNameAllocator::is_taken(std::u16string_view name) const {
    return std::ranges::any_of(taken_, [&](const std::u16string& known) { return equal_ignoring_case(known, name); });
}

std::u16string DeviceNameAllocator::take(std::u16string name) {
    taken_.push_back(name);
    return name;
}

std::u16string DeviceNameAllocator::take_new_name() {
    for (;;) {
        std::u16string name = u"DH";
        name += decimal_text(counter_++);
        if (!is_taken(name)) return take(std::move(name));
    }
}

std::u16string DeviceNameAllocator::reserve(std::u16string_view name) {
    if (!is_taken(name)) return take(std::u16string(name));
    for (std::uint32_t suffix = 0;; ++suffix) {
        std::u16string candidate(name);
        candidate += u'_';
        candidate += decimal_text(suffix);
        if (!is_taken(candidate)) return take(std::move(candidate));
    }
}

} // namespace kq::content
