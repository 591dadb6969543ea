// Stored key tables in the per-user settings (the registry of the test prefix under Wine, the
// in-memory store natively).

#include "input/keyboard_settings.h"

#include "module/settings_key.h"
#include "platform/settings_store.h"
#include "tests/support/keyboard_driver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kq::input {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::u16string key(std::u16string_view relative) {
    return std::u16string(kPlatformSettingsKey) + u"\\" + std::u16string(relative);
}

struct StoredMapping {
    std::u16string_view name;
    std::optional<std::uint32_t> key_class = 1;
    std::u16string_view system = u"a-1200", layout = u"de-de";
    Bytes data;
};

void store(const StoredMapping& mapping) {
    const std::u16string path = key(u"Keyboard\\Mappings\\") + std::u16string(mapping.name);
    if (mapping.key_class) platform::write_setting_dword(path, u"KeyClass", *mapping.key_class);
    platform::write_setting_string(path, u"System", mapping.system);
    platform::write_setting_string(path, u"Layout", mapping.layout);
    platform::write_setting_binary(path, u"Data", mapping.data);
}

// A table that sends host key "A" (not extended) as raw key `raw`.
Bytes table_sending_a_as(std::uint8_t raw) { return {0x41, raw, 0, 0}; }

class KeyboardSettings : public testing::Test {
protected:
    void SetUp() override { clear(); }
    void TearDown() override { clear(); }
    static void clear() {
        platform::delete_setting_tree(key(u"Keyboard"));
        platform::delete_setting_tree(key(u"KeyboardBackup"));
    }
    // The raw key that host key "A" gives with the record of a system and layout.
    static std::uint32_t raw_of_a(std::u16string_view layout = u"de-de") {
        test::KeyboardDriver driver(layout);
        copy_system(driver.record(), u"a-1200");
        load_keyboard_settings(driver.record());
        const auto events = driver.down(0x41);
        return events.front() & 0x7F;
    }
    static void copy_system(KeyboardInputData& record, std::u16string_view system) {
        std::ranges::copy(system, record.system_id);
        record.system_id[system.size()] = 0;
    }
};

TEST_F(KeyboardSettings, TheBestScoringMappingWins) {
    const struct {
        const char* name;
        std::vector<StoredMapping> mappings;
        std::uint32_t raw; // what host key "A" gives; 0x7F: no mapping, nothing sent
    } rows[] = {
        {"nothing stored", {}, 0x7F},
        {"the right layout beats the first",
         {{u"m1", 1, u"a-1200", u"en-us", table_sending_a_as(0x10)},
          {u"m2", 1, u"A-1200", u"DE-DE", table_sending_a_as(0x20)}},
         0x20},
        {"neither layout: the first in the store's order",
         {{u"m2", 1, u"a-1200", u"fr-fr", table_sending_a_as(0x20)},
          {u"m1", 1, u"a-1200", u"en-us", table_sending_a_as(0x10)}},
         0x10},
        {"the right system beats the right layout alone",
         {{u"m1", 1, u"a-500", u"de-de", table_sending_a_as(0x10)},
          {u"m2", 1, u"a-1200", u"en-us", table_sending_a_as(0x20)}},
         0x20},
        {"a mapping of another device class is never chosen",
         {{u"m1", 2, u"a-1200", u"de-de", table_sending_a_as(0x10)}},
         0x7F},
        {"a mapping without a class is never chosen",
         {{u"m1", std::nullopt, u"a-1200", u"de-de", table_sending_a_as(0x10)}},
         0x7F},
        {"any keyboard mapping is better than none", {{u"m1", 1, u"a-500", u"en-us", table_sending_a_as(0x10)}}, 0x10},
        {"an empty Data is no table", {{u"m1", 1, u"a-1200", u"de-de", {}}}, 0x7F},
        {"six bytes are one entry", {{u"m1", 1, u"a-1200", u"de-de", {0x41, 0x31, 0, 0, 0x41, 0x32}}}, 0x31},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        clear();
        for (const StoredMapping& mapping : row.mappings) store(mapping);
        EXPECT_EQ(raw_of_a(), row.raw == 0x7F ? 0u : row.raw) << "(0: no event)";
    }
}

TEST_F(KeyboardSettings, DefaultInfoIsWrittenOnceFromTheTables) {
    // A stored table that keeps the built-in entries but sends Tab as Escape.
    Bytes data;
    for (KeyTableEntry entry : kBuiltInKeyTable) {
        if (entry.raw == 0x42) entry.raw = 0x45;
        data.insert(data.end(), {entry.key, entry.raw, entry.flags, entry.zero});
    }
    store({u"m1", 1, u"a-1200", u"de-de", data});
    test::KeyboardDriver driver(u"de-de");
    copy_system(driver.record(), u"a-1200");
    load_keyboard_settings(driver.record());
    const auto written = platform::read_setting_binary(key(u"Keyboard\\Mappings\\m1"), u"DefaultInfo");
    ASSERT_TRUE(written);
    ASSERT_EQ(written->size(), 256u);
    EXPECT_EQ((*written)[2 * 0x42 + 1], 0) << "Tab was remapped";
    EXPECT_EQ((*written)[2 * 0x45 + 1], 0) << "so was Escape's key";
    EXPECT_EQ((*written)[2 * 0x44 + 1], 1) << "Return is as built in";
    EXPECT_EQ((*written)[2 * 0x20], 0x20);
    EXPECT_FALSE(is_key_at_default(driver.record(), 0x42, true));
    EXPECT_TRUE(is_key_at_default(driver.record(), 0x44, true));
    EXPECT_FALSE(all_keys_at_default(driver.record()));

    // A stored DefaultInfo is read, not recomputed.
    platform::write_setting_binary(key(u"Keyboard\\Mappings\\m1"), u"DefaultInfo", Bytes{0x42, 1, 0x44, 0});
    load_keyboard_settings(driver.record());
    EXPECT_EQ(driver.record().default_flag_count, 2u);
    EXPECT_TRUE(is_key_at_default(driver.record(), 0x42, true));
    EXPECT_FALSE(is_key_at_default(driver.record(), 0x44, true));
    EXPECT_TRUE(is_key_at_default(driver.record(), 0x10, true)) << "no entry: at its default";
    EXPECT_FALSE(is_key_at_default(driver.record(), 0x42, false)) << "the tables still differ";
}

TEST_F(KeyboardSettings, ConfigurableKeysDecideForTheirRawKeys) {
    test::KeyboardDriver standard(u"en-us");
    EXPECT_TRUE(is_key_at_default(standard.record(), 0x66, true));
    EXPECT_TRUE(all_keys_at_default(standard.record()));
    test::KeyboardDriver moved(u"en-us", 0x01010041); // Left Amiga on host key "A"
    EXPECT_FALSE(is_key_at_default(moved.record(), 0x66, true));
    EXPECT_TRUE(is_key_at_default(moved.record(), 0x67, true));
    EXPECT_FALSE(all_keys_at_default(moved.record()));
}

TEST_F(KeyboardSettings, BackupRestoreAndDiscard) {
    const std::u16string keyboard = key(u"Keyboard"), backup = key(u"KeyboardBackup");
    EXPECT_EQ(back_up_keyboard_settings(2), status::ok) << "nothing to restore";
    EXPECT_FALSE(platform::setting_key_exists(keyboard));
    EXPECT_EQ(back_up_keyboard_settings(1), status::ok) << "nothing to back up";
    EXPECT_FALSE(platform::setting_key_exists(backup));

    store({u"m1", 1, u"a-1200", u"de-de", table_sending_a_as(0x10)});
    platform::write_setting_dword(keyboard, u"Live", 7);
    EXPECT_EQ(back_up_keyboard_settings(1), status::ok);
    EXPECT_EQ(platform::read_setting_dword(backup, u"Live"), 7u);
    EXPECT_EQ(platform::read_setting_binary(backup + u"\\Mappings\\m1", u"Data"), table_sending_a_as(0x10));

    store({u"m1", 1, u"a-1200", u"de-de", table_sending_a_as(0x20)});
    platform::write_setting_dword(keyboard, u"Live", 8);
    EXPECT_EQ(raw_of_a(), 0x20u);
    EXPECT_EQ(back_up_keyboard_settings(2), status::ok);
    EXPECT_EQ(platform::read_setting_dword(keyboard, u"Live"), 7u);
    EXPECT_FALSE(platform::setting_key_exists(backup)) << "a restore uses the backup up";
    EXPECT_EQ(raw_of_a(), 0x10u) << "a record built after the restore sees the restored table";

    EXPECT_EQ(back_up_keyboard_settings(1), status::ok);
    EXPECT_EQ(back_up_keyboard_settings(3), status::ok);
    EXPECT_FALSE(platform::setting_key_exists(backup));
    EXPECT_EQ(platform::read_setting_dword(keyboard, u"Live"), 7u) << "discarding leaves the live settings";
    EXPECT_EQ(back_up_keyboard_settings(3), status::ok) << "nothing to discard";
    for (std::uint32_t bad : {0u, 4u, 0xFFFFFFFFu}) EXPECT_EQ(back_up_keyboard_settings(bad), status::invalid_argument);
}

} // namespace
} // namespace kq::input
