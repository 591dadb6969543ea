#pragma once
// The sub-type vocabularies of the device peripherals: the "type" attribute of a `peripheral`
// of that kind, by index. Index 0 means none.

#include "common/compare.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace kq::manifest {

inline constexpr std::array<std::u16string_view, 4> kNetworkTypes{u"", u"synthetic", u"a2065", u"rtl8029"};
inline constexpr std::array<std::u16string_view, 6> kScsiTypes{u"",      u"synthetic",  u"a590",
                                                               u"a4091", u"cyberstorm", u"wd33c93"};
inline constexpr std::array<std::u16string_view, 3> kAudioTypes{u"", u"fm801", u"es1370"};

// The index of `type` in `table` (compared without regard to case); 0 when it is not there.
constexpr std::size_t peripheral_type_index(std::span<const std::u16string_view> table, std::u16string_view type) {
    for (std::size_t index = 1; index < table.size(); ++index)
        if (equal_ignoring_case(table[index], type)) return index;
    return 0;
}

static_assert(peripheral_type_index(kScsiTypes, u"WD33C93") == 5);
static_assert(peripheral_type_index(kNetworkTypes, u"") == 0);

} // namespace kq::manifest
