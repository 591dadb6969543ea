#pragma once
// The guest device names of one summary's hard disks ("DH0", "DH1" ...). Each summary has its
// own allocator, so the names are unique within it. Names compare without regard to ASCII
// case, as AmigaDOS compares device names.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kq::content {

class DeviceNameAllocator {
public:
    // The next free name "DH<n>", counting n from 0 over the allocator's life.
    std::u16string take_new_name();
    // `name` itself when free, else the first free of name_0, name_1 ...
    std::u16string reserve(std::u16string_view name);

private:
    bool is_taken(std::u16string_view name) const;
    std::u16string take(std::u16string name);

    std::vector<std::u16string> taken_;
    std::uint32_t counter_ = 0;
};

} // namespace kq::content
