#pragma once
// The platform options: a record per option for the host's settings pages, and storing a
// changed value. Values live in the per-user settings under the platform key, one value per
// option, named like the option: a 32-bit number for a boolean, a string for a choice.
//
// The option record (136-byte header, then the arrays of choice values, labels and
// descriptions, then every string) is laid out by the record packer:
//   0 cbSize (136)      8 name         16 label        24 description   32 group label
//  40 group description 48 type        52 flags (0)    56 choice values 64 choice labels
//  72 choice descriptions              80 count        88, 96 second and third text (null)
// 104, 112 second and third choice texts (null)        120 current value 128 default value

#include "module/status.h"
#include "platform/heap.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kq {

inline constexpr std::size_t kOptionRecordBytes = 136;

// The record of option `index` from the local heap: S_OK; S_FALSE and no record past the last
// option; E_OUTOFMEMORY when the block cannot be allocated.
HResult get_option_record(std::uint32_t index, platform::HeapBlock& record);

// The value in force for option `index` (what the record calls its current value).
std::u16string current_option_value(std::size_t index);

// Stores `value` for the option named `name` (exact case). A boolean takes the value read as an
// integer (automatic base; no value is 0); a choice stores a non-empty value and deletes an
// empty one. E_INVALIDARG for an unknown name; a failed write gives the system's error.
HResult set_option(std::u16string_view name, std::u16string_view value);

} // namespace kq
