// The keyboard exports of the built DLL.

#include "input/keyboard_input_data.h"
#include "input/keyboard_layouts.h"
#include "kq_amiga.h"
#include "tests/support/amiga_dll.h"

#include <windows.h>

#include <vector>

namespace kq {
namespace {

using input::KeyboardInputData;

KeyboardInputData* inside(KQKeyboardInputData* data) { return reinterpret_cast<KeyboardInputData*>(data); }

struct RecordingObserver : input::KeyboardObserver {
    KeyboardInputData* told = nullptr;
    int calls = 0;
};

void on_record_replaced(input::KeyboardObserver* self, KeyboardInputData* record) {
    auto* observer = static_cast<RecordingObserver*>(self);
    observer->told = record;
    ++observer->calls;
}

class KeyboardDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        get2_ = resolve<decltype(KQGetKeyboardInputData2)>("KQGetKeyboardInputData2");
        get_ = resolve<decltype(KQGetKeyboardInputData)>("KQGetKeyboardInputData");
        free_ = resolve<decltype(KQFreeKeyboardInputData)>("KQFreeKeyboardInputData");
        process_ = resolve<decltype(KQProcessKeyboardInput)>("KQProcessKeyboardInput");
        preprocess_ = resolve<decltype(KQPreprocessKeyboardInput)>("KQPreprocessKeyboardInput");
        ASSERT_TRUE(get2_ && get_ && free_ && process_ && preprocess_);
    }
    decltype(KQGetKeyboardInputData2)* get2_ = nullptr;
    decltype(KQGetKeyboardInputData)* get_ = nullptr;
    decltype(KQFreeKeyboardInputData)* free_ = nullptr;
    decltype(KQProcessKeyboardInput)* process_ = nullptr;
    decltype(KQPreprocessKeyboardInput)* preprocess_ = nullptr;
};

TEST_F(KeyboardDll, RecordsAreGlobalBlocksThatCarryTheObserverOver) {
    KQKeyboardInputData* data = nullptr;
    ASSERT_EQ(get2_(L"a-1200", L"de-de", nullptr, 0, 0, 0, 0, 0, &data), KQ_S_OK);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(GlobalSize(data), input::kKeyboardInputDataBytes);
    EXPECT_EQ(std::u16string_view(inside(data)->layout_id), u"de-de");
    EXPECT_EQ(inside(data)->open_bracket, u'[');

    RecordingObserver observer;
    observer.record_replaced = on_record_replaced;
    inside(data)->observer = &observer;
    KQKeyboardInputData* const old = data;
    EXPECT_EQ(get_(L"a-1200", L"fr-ca", nullptr, 0, 0x01010041, 0, 0, &data), KQ_S_OK);
    EXPECT_NE(data, old);
    EXPECT_EQ(inside(data)->observer, &observer);
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(observer.told, inside(data));
    EXPECT_EQ(inside(data)->configurable[0].virtual_key, 0x41);
    EXPECT_EQ(inside(data)->configurable[2].virtual_key, 0x22) << "key C at its default";

    KQKeyboardInputData* unchanged = data;
    EXPECT_EQ(get2_(nullptr, L"en-us", nullptr, 0, 0, 0, 0, 0, &unchanged),
              static_cast<int64_t>(static_cast<int32_t>(0x80070490)))
        << "no system id";
    EXPECT_EQ(unchanged, data);
    EXPECT_EQ(get2_(L"x", L"en-us", nullptr, 0, 0, 0, 0, 0, nullptr), static_cast<int64_t>(KQ_E_POINTER));
    EXPECT_EQ(free_(data), KQ_S_OK);
    EXPECT_EQ(free_(nullptr), KQ_S_OK);
}

TEST_F(KeyboardDll, TheLayoutComesFromAKeymapImageWhenNoIdIsGiven) {
    const std::span<const std::uint8_t> image = input::find_layout(u"sv-se").keymap_image;
    KQKeyboardInputData* data = nullptr;
    ASSERT_EQ(get2_(L"x", nullptr, image.data(), static_cast<uint32_t>(image.size()), 0, 0, 0, 0, &data), KQ_S_OK);
    EXPECT_EQ(std::u16string_view(inside(data)->layout_id), u"sv-se");
    free_(data);
}

TEST_F(KeyboardDll, TypingAndFetching) {
    KQKeyboardInputData* data = nullptr;
    ASSERT_EQ(get2_(L"x", L"en-us", nullptr, 0, 0, 0, 0, 0, &data), KQ_S_OK);
    uint32_t answer = 0;
    EXPECT_EQ(process_(0x41 | 1u << 18 | 1u << 20, u'!', data, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xB0000060u);
    EXPECT_EQ(process_(1u << 28, 0, data, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xA0000001u);
    EXPECT_EQ(process_(1u << 28, 0, data, 0, &answer), static_cast<int64_t>(KQ_E_FAIL)) << "empty queue";
    EXPECT_EQ(preprocess_(0x41, 0, data, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xC0000041u);
    EXPECT_EQ(process_(0x41, 0, nullptr, 0, &answer), static_cast<int64_t>(KQ_E_INVALIDARG));
    EXPECT_EQ(preprocess_(0x41, 0, nullptr, 0, &answer), static_cast<int64_t>(KQ_E_INVALIDARG));
    free_(data);
}

TEST_F(KeyboardDll, LayoutTextAndKeyDisplayNames) {
    const auto layout = resolve<decltype(KQGetKeyboardLayout)>("KQGetKeyboardLayout");
    const auto key_name = resolve<decltype(KQGetKeyDisplayName)>("KQGetKeyDisplayName");
    ASSERT_TRUE(layout && key_name);
    const std::span<const std::uint8_t> image = input::find_layout(u"de-de").keymap_image;
    const std::wstring text = L"de-de\tGerman - Germany";
    std::vector<wchar_t> buffer(text.size() + 1, L'#');
    EXPECT_EQ(
        layout(0, image.data(), static_cast<uint32_t>(image.size()), buffer.data(), static_cast<uint32_t>(text.size())),
        static_cast<kq_status>(0x8007006F))
        << "a buffer exactly as long as the text";
    EXPECT_EQ(layout(0, image.data(), static_cast<uint32_t>(image.size()), buffer.data(),
                     static_cast<uint32_t>(buffer.size())),
              KQ_S_OK);
    EXPECT_EQ(std::wstring(buffer.data()), text);
    EXPECT_EQ(layout(0, nullptr, 658, buffer.data(), 40), KQ_E_INVALIDARG);

    std::vector<wchar_t> names(32, L'#');
    EXPECT_EQ(key_name(L"shift+a", L"x", L"en-us", names.data(), 32, 0, 0), KQ_S_OK);
    EXPECT_EQ(std::wstring(names.data()), L"Left Shift");
    EXPECT_EQ(std::wstring(names.data() + 11), L"A");
    EXPECT_EQ(key_name(L"NUMPAD [", L"x", L"de-de", names.data(), 32, 0, 0), KQ_S_OK);
    EXPECT_EQ(std::wstring(names.data()), L"Numeric Keypad [");
    EXPECT_EQ(key_name(L"a", nullptr, L"en-us", names.data(), 32, 0, 0), static_cast<kq_status>(0x80070490));
    EXPECT_EQ(key_name(nullptr, L"x", L"en-us", names.data(), 32, 0, 0), KQ_E_INVALIDARG);
}

TEST_F(KeyboardDll, RawKeyStringsComeFromTheGlobalHeap) {
    const auto keys = resolve<decltype(KQGetStringRawKeys)>("KQGetStringRawKeys");
    const auto free_keys = resolve<decltype(KQFreeStringRawKeys)>("KQFreeStringRawKeys");
    ASSERT_TRUE(keys && free_keys);
    KQKeyboardInputData* data = nullptr;
    ASSERT_EQ(get2_(L"x", L"en-us", nullptr, 0, 0, 0, 0, 0, &data), KQ_S_OK);
    kq_char* script = nullptr;
    EXPECT_EQ(keys(L"Ab", data, 0, &script), KQ_S_OK);
    ASSERT_NE(script, nullptr);
    EXPECT_STREQ(script, L"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_UP 0x60 "
                         L"KEY_RAW_DOWN 0x35 KEY_RAW_UP 0x35 ");
    EXPECT_GE(GlobalSize(script), (wcslen(script) + 1) * sizeof(wchar_t));
    EXPECT_EQ(free_keys(script), KQ_S_OK);
    EXPECT_EQ(keys(L"CONTROL+LEFT AMIGA+RIGHT AMIGA", data, 2, &script), KQ_S_OK);
    EXPECT_STREQ(script, L"KEY_RAW_UP 0x63 KEY_RAW_UP 0x66 KEY_RAW_UP 0x67 ");
    free_keys(script);
    EXPECT_EQ(keys(L"", data, 0, &script), KQ_S_OK);
    EXPECT_STREQ(script, L"") << "an empty text gives an empty string";
    free_keys(script);
    script = reinterpret_cast<kq_char*>(1);
    EXPECT_EQ(keys(nullptr, data, 0, &script), KQ_S_OK);
    EXPECT_EQ(script, nullptr) << "no text: no string";
    EXPECT_EQ(keys(L"a", nullptr, 0, &script), KQ_E_INVALIDARG);
    EXPECT_EQ(keys(L"a", data, 0, nullptr), KQ_E_POINTER);
    EXPECT_EQ(free_keys(nullptr), KQ_S_OK);
    free_(data);
}

TEST_F(KeyboardDll, ARecordBuiltAfterARestoreSeesTheRestoredTable) {
    const auto backup = resolve<decltype(KQBackupKeyboardSettings)>("KQBackupKeyboardSettings");
    ASSERT_NE(backup, nullptr);
    const wchar_t* const keyboard = L"Software\\Mervane\\Quennet\\Platforms\\Amiga\\Keyboard";
    const wchar_t* const mapping = L"Software\\Mervane\\Quennet\\Platforms\\Amiga\\Keyboard\\Mappings\\Mine";
    RegDeleteTreeW(HKEY_CURRENT_USER, keyboard);
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Mervane\\Quennet\\Platforms\\Amiga\\KeyboardBackup");
    const auto store_table = [&](BYTE raw) {
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, mapping, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
        const DWORD keyboard_class = 1;
        RegSetValueExW(key, L"KeyClass", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&keyboard_class), 4);
        RegSetValueExW(key, L"System", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"a-1200"), 14);
        const BYTE data[] = {0x41, raw, 0, 0};
        RegSetValueExW(key, L"Data", 0, REG_BINARY, data, sizeof data);
        RegDeleteValueW(key, L"DefaultInfo");
        RegCloseKey(key);
    };
    const auto raw_of_a = [&] {
        KQKeyboardInputData* data = nullptr;
        get2_(L"a-1200", L"en-us", nullptr, 0, 0, 0, 0, 0, &data);
        uint32_t answer = 0;
        process_(0x41 | 1u << 20, 0, data, 0, &answer);
        free_(data);
        return answer & 0x7F;
    };
    store_table(0x10);
    EXPECT_EQ(raw_of_a(), 0x10u);
    DWORD size = 0;
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, mapping, L"DefaultInfo", RRF_RT_REG_BINARY, nullptr, nullptr, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(size, 256u) << "DefaultInfo written with the first record";
    EXPECT_EQ(backup(1), KQ_S_OK);
    store_table(0x20);
    EXPECT_EQ(raw_of_a(), 0x20u);
    EXPECT_EQ(backup(2), KQ_S_OK);
    EXPECT_EQ(raw_of_a(), 0x10u);
    EXPECT_EQ(backup(3), KQ_S_OK);
    EXPECT_EQ(backup(9), KQ_E_INVALIDARG);
    RegDeleteTreeW(HKEY_CURRENT_USER, keyboard);
}

TEST_F(KeyboardDll, ButtonNamesFitTheBufferOrLeaveItAlone) {
    const auto button_name = resolve<decltype(KQGetInputButtonName)>("KQGetInputButtonName");
    ASSERT_NE(button_name, nullptr);
    wchar_t buffer[8];
    EXPECT_EQ(button_name(16, 0, 4, buffer, 8), KQ_S_OK);
    EXPECT_STREQ(buffer, L"Red");
    EXPECT_EQ(button_name(16, 0, 2, buffer, 4), KQ_S_OK);
    EXPECT_STREQ(buffer, L"Fir") << "truncated by the buffer length";
    EXPECT_EQ(button_name(16, 0, 2, nullptr, 0), KQ_S_OK);
    wcscpy(buffer, L"keep");
    EXPECT_EQ(button_name(64, 0, 2, buffer, 8), static_cast<kq_status>(0x80070490));
    EXPECT_EQ(button_name(3, 0, 4, buffer, 8), static_cast<kq_status>(0x80070490));
    EXPECT_STREQ(buffer, L"keep") << "the buffer is left untouched";
}

} // namespace
} // namespace kq
