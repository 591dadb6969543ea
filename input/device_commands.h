#pragma once
// The device commands that the host offers in its menus and sends to the emulator as raw-key
// scripts: the CDTV's CD-player buttons (category 2, model "a-cdtv" only) and the keyboard's
// special keys and combinations (category 7, every model).

#include "platform/heap.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::input {

inline constexpr std::uint32_t kDeviceCategoryCdButtons = 2, kDeviceCategoryKeyboard = 7;

struct DeviceCommandText {
    std::u16string name;    // the display name, then a tab and the keys' names when it shows keys
    std::u16string command; // the raw-key script
};

// The command at `index` of the table that `category` (its low byte) and the model choose;
// nullopt when there is none.
std::optional<DeviceCommandText> device_command(std::uint32_t index, std::uint32_t category,
                                                std::u16string_view model_id);

// The record handed to the host (local heap): u32 size 24, then pointers to the name and the
// command, both strings in the same block after the header. Empty when the heap has no room.
platform::HeapBlock pack_device_command(const DeviceCommandText& text);

} // namespace kq::input
