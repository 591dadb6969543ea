// Device commands: the two tables, the keys' names joined with "+", and the record handed to
// the host.

#include "input/device_commands.h"
#include "kq_amiga.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

namespace kq::input {
namespace {

TEST(DeviceCommands, Tables) {
    const struct {
        std::uint32_t index, category;
        std::u16string_view model;
        std::optional<std::u16string_view> name, command;
    } cases[] = {
        {0, 2, u"a-cdtv", u"Play/Pause", u"KEY_RAW_DOWN 0x73 KEY_RAW_UP 0x73"},
        {1, 2, u"A-CDTV", u"Previous", u"KEY_RAW_DOWN 0x74 KEY_RAW_UP 0x74"},
        {5, 2, u"a-cdtv", u"Rewind", u"KEY_RAW_DOWN 0x76 KEY_RAW_UP 0x76"},
        {6, 2, u"a-cdtv", std::nullopt, std::nullopt},
        {0, 2, u"a-500", std::nullopt, std::nullopt},
        {0, 0x102, u"a-cdtv", u"Play/Pause", u"KEY_RAW_DOWN 0x73 KEY_RAW_UP 0x73"}, // the low byte counts
        {0, 7, u"", u"Left Amiga\tLeft Amiga", u"KEY_RAW_DOWN 0x66 KEY_RAW_UP 0x66"},
        {2, 7, u"a-500", u"Soft Reset\tControl+Left Amiga+Right Amiga",
         u"KEY_RAW_DOWN 0x63 KEY_RAW_DOWN 0x66 KEY_RAW_DOWN 0x67 KEY_RAW_UP 0x67 KEY_RAW_UP 0x66 KEY_RAW_UP 0x63"},
        {3, 7, u"a-1200", u"Help\tHelp", u"KEY_RAW_DOWN 0x5F KEY_RAW_UP 0x5F"},
        {4, 7, u"a-1200", std::nullopt, std::nullopt},
        {0, 3, u"a-cdtv", std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        const std::optional<DeviceCommandText> text = device_command(c.index, c.category, c.model);
        ASSERT_EQ(text.has_value(), c.name.has_value()) << c.index << "/" << c.category;
        if (!text) continue;
        EXPECT_EQ(text->name, *c.name) << test::printable(text->name);
        EXPECT_EQ(text->command, *c.command);
    }
}

TEST(DeviceCommands, TheRecordIsOneBlock) {
    const DeviceCommandText text{u"Soft Reset\tKeys", u"KEY_RAW_DOWN 0x63 KEY_RAW_UP 0x63"};
    platform::HeapBlock block = pack_device_command(text);
    ASSERT_TRUE(block);
    const auto* record = reinterpret_cast<const KQDeviceCommand*>(block.data());
    EXPECT_EQ(record->cbSize, 24u);
    const auto* start = reinterpret_cast<const std::byte*>(record);
    const auto* name = reinterpret_cast<const std::byte*>(record->name);
    const auto* command = reinterpret_cast<const std::byte*>(record->command);
    // Right after the header, the name, its NUL, then the command: 24 + 2 × (lengths + 2).
    EXPECT_EQ(name, start + 24);
    EXPECT_EQ(command, name + 2 * (text.name.size() + 1));
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record->name)), text.name);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(record->command)), text.command);
}

} // namespace
} // namespace kq::input
