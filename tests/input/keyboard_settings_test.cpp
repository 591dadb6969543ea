// Stored key tables in the per-user settings (the registry of the test prefix under Wine, the
// in-memory store natively).

#include "input/keyboard_settings.h"

#include "module/settings_key.h"
#include "platform/settings_store.h"
#include "tests/support/keyboard_driver.h"

#include <gtest/gtest.h>

using namespace kq;
using namespace kq::input;
using Bytes = std::vector<std::uint8_t>;

const std::u16string kKeyboard = std::u16string(kPlatformSettingsKey) + u"\\Keyboard";
const std::u16string kBackup = kKeyboard + u"Backup", kMappings = kKeyboard + u"\\Mappings\\";

struct StoredMapping {
    std::u16string_view name;
    std::optional<std::uint32_t> key_class;
    std::u16string_view system, layout;
    Bytes data;
};

void store(const StoredMapping& mapping) {
    const std::u16string path = kMappings + std::u16string(mapping.name);
    if (mapping.key_class) platform::write_setting_dword(path, u"KeyClass", *mapping.key_class);
    platform::write_setting_string(path, u"System", mapping.system);
    platform::write_setting_string(path, u"Layout", mapping.layout);
    platform::write_setting_binary(path, u"Data", mapping.data);
}

// A table that sends host key "A" (not extended) as raw key `raw`.
Bytes a_as(std::uint8_t raw) { return {0x41, raw, 0, 0}; }

class KeyboardSettings : public testing::Test {
protected:
    void SetUp() override { clear(); }
    void TearDown() override { clear(); }
    static void clear() {
        platform::delete_setting_tree(kKeyboard);
        platform::delete_setting_tree(kBackup);
    }
    // A de-de record of an A1200 with the stored settings loaded.
    struct Loaded : test::KeyboardDriver {
        Loaded() : KeyboardDriver(u"de-de") {
            std::ranges::copy(std::u16string_view(u"a-1200"), record().system_id);
            record().system_id[6] = 0;
            load_keyboard_settings(record());
        }
    };
    // The raw key that host key "A" gives (0: no event).
    static std::uint32_t raw_of_a() { return Loaded().down(0x41).front() & 0x7F; }
};

TEST_F(KeyboardSettings, TheBestScoringMappingWins) {
    const struct {
        const char* name;
        std::vector<StoredMapping> mappings;
        std::uint32_t raw;
    } rows[] = {
        {"nothing stored", {}, 0},
        {"the right layout beats the first",
         {{u"m1", 1, u"a-1200", u"en-us", a_as(0x10)}, {u"m2", 1, u"A-1200", u"DE-DE", a_as(0x20)}},
         0x20},
        {"neither layout: the first in the store's order",
         {{u"m2", 1, u"a-1200", u"fr-fr", a_as(0x20)}, {u"m1", 1, u"a-1200", u"en-us", a_as(0x10)}},
         0x10},
        {"the right system beats the right layout alone",
         {{u"m1", 1, u"a-500", u"de-de", a_as(0x10)}, {u"m2", 1, u"a-1200", u"en-us", a_as(0x20)}},
         0x20},
        {"another device class is never chosen", {{u"m1", 2, u"a-1200", u"de-de", a_as(0x10)}}, 0},
        {"nor a mapping without a class", {{u"m1", std::nullopt, u"a-1200", u"de-de", a_as(0x10)}}, 0},
        {"any keyboard mapping is better than none", {{u"m1", 1, u"a-500", u"en-us", a_as(0x10)}}, 0x10},
        {"an empty Data is no table", {{u"m1", 1, u"a-1200", u"de-de", {}}}, 0},
        {"six bytes are one entry", {{u"m1", 1, u"a-1200", u"de-de", {0x41, 0x31, 0, 0, 0x41, 0x32}}}, 0x31},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        clear();
        for (const StoredMapping& mapping : row.mappings) store(mapping);
        EXPECT_EQ(raw_of_a(), row.raw);
    }
}

TEST_F(KeyboardSettings, DefaultFlags) {
    // A stored table that keeps the built-in entries but sends Tab as Escape.
    Bytes data;
    for (KeyTableEntry entry : kBuiltInKeyTable)
        data.insert(data.end(),
                    {entry.key, entry.raw == 0x42 ? std::uint8_t{0x45} : entry.raw, entry.flags, entry.zero});
    store({u"m1", 1, u"a-1200", u"de-de", data});
    Loaded loaded;
    const auto written = platform::read_setting_binary(kMappings + u"m1", u"DefaultInfo");
    ASSERT_EQ(written.value_or(Bytes{}).size(), 256u) << "written once from the tables";
    EXPECT_EQ((*written)[2 * 0x42 + 1], 0) << "Tab was remapped";
    EXPECT_EQ((*written)[2 * 0x45 + 1], 0) << "so was Escape's key";
    EXPECT_EQ((*written)[2 * 0x44 + 1], 1) << "Return is as built in";
    EXPECT_EQ((*written)[2 * 0x20], 0x20);
    EXPECT_FALSE(is_key_at_default(loaded.record(), 0x42, true));
    EXPECT_TRUE(is_key_at_default(loaded.record(), 0x44, true));
    EXPECT_FALSE(all_keys_at_default(loaded.record()));

    // A stored DefaultInfo is read, not recomputed.
    platform::write_setting_binary(kMappings + u"m1", u"DefaultInfo", Bytes{0x42, 1, 0x44, 0});
    load_keyboard_settings(loaded.record());
    EXPECT_EQ(loaded.record().default_flag_count, 2u);
    EXPECT_TRUE(is_key_at_default(loaded.record(), 0x42, true));
    EXPECT_FALSE(is_key_at_default(loaded.record(), 0x44, true));
    EXPECT_TRUE(is_key_at_default(loaded.record(), 0x10, true)) << "no entry: at its default";
    EXPECT_FALSE(is_key_at_default(loaded.record(), 0x42, false)) << "the tables still differ";

    // Configurable keys decide for their raw keys.
    clear();
    test::KeyboardDriver standard(u"en-us"), moved(u"en-us", 0x01010041); // Left Amiga on host key "A"
    EXPECT_TRUE(is_key_at_default(standard.record(), 0x66, true));
    EXPECT_TRUE(all_keys_at_default(standard.record()));
    EXPECT_FALSE(is_key_at_default(moved.record(), 0x66, true));
    EXPECT_TRUE(is_key_at_default(moved.record(), 0x67, true));
    EXPECT_FALSE(all_keys_at_default(moved.record()));
}

TEST_F(KeyboardSettings, BackupRestoreAndDiscard) {
    EXPECT_EQ(back_up_keyboard_settings(2), status::ok) << "nothing to restore";
    EXPECT_FALSE(platform::setting_key_exists(kKeyboard));
    EXPECT_EQ(back_up_keyboard_settings(1), status::ok) << "nothing to back up";
    EXPECT_FALSE(platform::setting_key_exists(kBackup));

    store({u"m1", 1, u"a-1200", u"de-de", a_as(0x10)});
    platform::write_setting_dword(kKeyboard, u"Live", 7);
    EXPECT_EQ(back_up_keyboard_settings(1), status::ok);
    EXPECT_EQ(platform::read_setting_dword(kBackup, u"Live"), 7u);
    EXPECT_EQ(platform::read_setting_binary(kBackup + u"\\Mappings\\m1", u"Data"), a_as(0x10));

    store({u"m1", 1, u"a-1200", u"de-de", a_as(0x20)});
    platform::write_setting_dword(kKeyboard, u"Live", 8);
    EXPECT_EQ(raw_of_a(), 0x20u);
    EXPECT_EQ(back_up_keyboard_settings(2), status::ok);
    EXPECT_EQ(platform::read_setting_dword(kKeyboard, u"Live"), 7u);
    EXPECT_FALSE(platform::setting_key_exists(kBackup)) << "a restore uses the backup up";
    EXPECT_EQ(raw_of_a(), 0x10u) << "a record built after the restore sees the restored table";

    EXPECT_EQ(back_up_keyboard_settings(1), status::ok);
    EXPECT_EQ(back_up_keyboard_settings(3), status::ok);
    EXPECT_FALSE(platform::setting_key_exists(kBackup));
    EXPECT_EQ(platform::read_setting_dword(kKeyboard, u"Live"), 7u) << "discarding leaves the live settings";
    EXPECT_EQ(back_up_keyboard_settings(3), status::ok) << "nothing to discard";
    for (std::uint32_t bad : {0u, 4u, 0xFFFFFFFFu}) EXPECT_EQ(back_up_keyboard_settings(bad), status::invalid_argument);
}
