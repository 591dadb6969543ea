#include "input/key_table.h"

namespace kq::input {

std::optional<std::uint8_t> look_up_key(std::span<const KeyTableEntry> table, std::uint8_t virtual_key, bool extended,
                                        const ConfigurableKey (&configurable)[3]) {
    for (const KeyTableEntry& entry : table) {
        if ((entry.flags & kEntryMarker) == 0) {
            if (entry.key == virtual_key && ((entry.flags & kEntryExtended) != 0) == extended) return entry.raw;
            continue;
        }
        const int slot = entry.key == kMarkerA ? 0 : entry.key == kMarkerB ? 1 : entry.key == kMarkerC ? 2 : -1;
        if (slot >= 0 && configurable[slot].virtual_key == virtual_key &&
            (configurable[slot].extended != 0) == extended)
            return entry.raw;
    }
    return std::nullopt;
}

} // namespace kq::input
