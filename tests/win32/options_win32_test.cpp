// The options of the built DLL against the real registry of the test prefix and the devices
// that Wine reports.

#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/option_record.h"

#include <windows.h>
#include <mmsystem.h>
#include <winspool.h>

#include <optional>
#include <set>
#include <vector>

namespace kq {
namespace {

constexpr const wchar_t* kKey = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";
using Texts = std::vector<std::u16string>;

std::u16string u16(const wchar_t* text) { return std::u16string(text, text + wcslen(text)); }

std::optional<DWORD> registry_dword(const wchar_t* name) {
    DWORD value = 0, size = sizeof value;
    if (RegGetValueW(HKEY_CURRENT_USER, kKey, name, RRF_RT_REG_DWORD, nullptr, &value, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

bool registry_has(const wchar_t* name) {
    return RegGetValueW(HKEY_CURRENT_USER, kKey, name, RRF_RT_ANY, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

class OptionsDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        get_ = resolve<decltype(KQGetOption)>("KQGetOption");
        free_ = resolve<decltype(KQFreeOption)>("KQFreeOption");
        set_ = resolve<decltype(KQSetOption)>("KQSetOption");
        ASSERT_TRUE(get_ && free_ && set_);
        RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    }
    void TearDown() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
        AmigaDllTest::TearDown();
    }

    test::OptionView option(std::uint32_t index) const {
        KQOption* record = nullptr;
        EXPECT_EQ(get_(index, 0, &record, nullptr), KQ_S_OK);
        std::string error;
        const auto view = test::read_option_record(record, error);
        EXPECT_TRUE(view) << "option " << index << ": " << error;
        if (view) {
            EXPECT_EQ(LocalSize(record), view->formula_bytes) << "option " << index;
        }
        EXPECT_EQ(free_(record), KQ_S_OK);
        return view.value_or(test::OptionView{});
    }

    decltype(KQGetOption)* get_ = nullptr;
    decltype(KQFreeOption)* free_ = nullptr;
    decltype(KQSetOption)* set_ = nullptr;
};

TEST_F(OptionsDll, EnumeratesSixRecordsLaidOutInOneLocalBlockThenEnds) {
    const char16_t* names[] = {u"MouseHack",     u"AutoMouseUntrap", u"WindowsPrinter",
                               u"WindowsSerial", u"WindowsMIDIIn",   u"WindowsMIDIOut"};
    std::uint32_t index = 0;
    for (;; ++index) {
        KQOption* record = reinterpret_cast<KQOption*>(1);
        const kq_status status = get_(index, 0, &record, nullptr);
        if (status == KQ_S_FALSE) {
            EXPECT_EQ(record, nullptr);
            break;
        }
        ASSERT_EQ(status, KQ_S_OK);
        free_(record);
        ASSERT_LT(index, std::size(names));
        EXPECT_EQ(option(index).name, names[index]);
    }
    EXPECT_EQ(index, 6u);
    EXPECT_EQ(get_(0, 0, nullptr, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(free_(nullptr), KQ_S_OK);
}

TEST_F(OptionsDll, SetReadBackAndDeleteEachOption) {
    const struct {
        const wchar_t *name, *value;
        std::uint32_t index;
        std::u16string_view current;
    } rows[] = {
        {L"MouseHack", L"0x1", 0, u"1"},
        {L"MouseHack", L"0", 0, u"0"},
        {L"AutoMouseUntrap", L"0", 1, u"0"},
        {L"WindowsPrinter", L"Laser Printer", 2, u"Laser Printer"},
        {L"WindowsSerial", L"COM7", 3, u"COM7"},
        {L"WindowsMIDIIn", L"default", 4, u"default"},
        {L"WindowsMIDIOut", L"Synth", 5, u"Synth"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::wstring(row.name) + L"=" + row.value);
        ASSERT_EQ(set_(row.name, row.value, nullptr, nullptr), KQ_S_OK);
        EXPECT_EQ(option(row.index).current_value, row.current);
    }
    EXPECT_EQ(registry_dword(L"MouseHack"), 0u);
    ASSERT_EQ(set_(L"MouseHack", L"0x1", nullptr, nullptr), KQ_S_OK);
    EXPECT_EQ(registry_dword(L"MouseHack"), 1u) << "\"0x1\" stores 1";

    for (const wchar_t* choice : {L"WindowsPrinter", L"WindowsSerial", L"WindowsMIDIIn", L"WindowsMIDIOut"}) {
        EXPECT_EQ(set_(choice, L"", nullptr, nullptr), KQ_S_OK);
        EXPECT_FALSE(registry_has(choice)) << "an empty value deletes " << std::wstring(choice);
    }
    EXPECT_EQ(option(2).current_value, u"");
    EXPECT_EQ(option(5).current_value, u"none");
    EXPECT_EQ(set_(L"WindowsPrinter", nullptr, nullptr, nullptr), KQ_S_OK) << "nothing left to delete";

    EXPECT_EQ(set_(L"mousehack", L"0", nullptr, nullptr), KQ_E_INVALIDARG);
    EXPECT_EQ(registry_dword(L"MouseHack"), 1u) << "the refused name stored nothing";
    EXPECT_EQ(set_(nullptr, L"0", nullptr, nullptr), KQ_E_INVALIDARG);
}

TEST_F(OptionsDll, UntrapFallsBackToTheOlderSettingOfOppositeSense) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    const auto store = [&](const wchar_t* name, DWORD value) {
        RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    };
    EXPECT_EQ(option(1).current_value, u"1");
    store(L"DisableMagicMouse", 1);
    EXPECT_EQ(option(1).current_value, u"0");
    store(L"DisableMagicMouse", 0);
    EXPECT_EQ(option(1).current_value, u"1");
    store(L"AutoMouseUntrap", 0);
    EXPECT_EQ(option(1).current_value, u"0");
    RegCloseKey(key);
}

// The device lists as Wine reports them, read here with the system's own calls.
TEST_F(OptionsDll, ChoicesFollowTheMachinesDevices) {
    Texts midi_out;
    for (UINT device = 0; device < midiOutGetNumDevs(); ++device) {
        MIDIOUTCAPSW caps{};
        ASSERT_EQ(midiOutGetDevCapsW(device, &caps, sizeof caps), MMSYSERR_NOERROR);
        midi_out.push_back(u16(caps.szPname));
    }
    Texts expected_values{u"none"}, expected_labels{u"None"};
    if (!midi_out.empty()) {
        expected_values.push_back(u"default");
        expected_labels.push_back(u"Default");
    }
    expected_values.insert(expected_values.end(), midi_out.begin(), midi_out.end());
    expected_labels.insert(expected_labels.end(), midi_out.begin(), midi_out.end());
    const test::OptionView midi = option(5);
    EXPECT_EQ(midi.values, expected_values);
    EXPECT_EQ(midi.labels, expected_labels);

    DWORD needed = 0, count = 0;
    EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 4, nullptr, 0, &needed, &count);
    const test::OptionView printers = option(2);
    if (needed == 0) {
        EXPECT_EQ(printers.values, Texts{u""}) << "no printer: only the default choice";
    }
    EXPECT_EQ(printers.labels.front(), u"Default");

    const test::OptionView serial = option(3);
    ASSERT_FALSE(serial.values.empty());
    EXPECT_EQ(serial.values.front(), u"");
    const std::set<std::u16string> unique(serial.values.begin(), serial.values.end());
    EXPECT_EQ(unique.size(), serial.values.size()) << "each port once";
    ASSERT_EQ(serial.labels.size(), serial.values.size());
    EXPECT_EQ(serial.labels.front(), u"None");
    for (std::size_t i = 1; i < serial.values.size(); ++i) {
        EXPECT_EQ(serial.labels[i], serial.values[i]);
        EXPECT_TRUE(serial.values[i].starts_with(u"COM")) << "port " << i;
    }
}

} // namespace
} // namespace kq
