// The built amiga.dll as a host sees it: loaded with LoadLibraryW, its export table read from
// the mapped image, every export called with good arguments (statuses, texts in the host's
// buffers with guard characters after them, records read at their named offsets, the heap that
// each result comes from), and its options in the real registry of the test prefix.

#include "input/keyboard_input_data.h"
#include "kq_amiga.h"
#include "kqhost/pe_image.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/file_association_record.h"
#include "tests/support/option_record.h"
#include "tests/support/temp_folder.h"

#include <windows.h>
#include <mmsystem.h>
#include <shellapi.h>
#include <winspool.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kq {
namespace {

// The export table, written from the module's interface description (not from the .def).
struct ExpectedExport {
    const char* name;
    unsigned ordinal;
};
// clang-format off
constexpr ExpectedExport kExports[] = {
    {"DllMain", 1}, {"KQGetPlatformName", 2}, {"KQGetOption", 3}, {"KQFreeOption", 4},
    {"KQSetOption", 5}, {"KQGetFileAssociation", 7}, {"KQFreeFileAssociation", 8},
    {"KQGetContentTooltip", 29}, {"KQGetContentInfo", 41}, {"KQAutoConfigureApplication", 12},
    {"KQGetApplicationInfo", 28}, {"KQROMExists", 26}, {"KQGetDefaultSystemROM", 27},
    {"KQGetRestoreSystemFilesPaths", 25}, {"KQGetInputPortsInfo", 40},
    {"KQGetDefaultInputPortContent", 16}, {"KQGetRuntimeMedium", 9},
    {"KQCheckRuntimeMedium", 10}, {"KQDismissRuntimeMedium", 11}, {"KQGetEmptyMedium", 13},
    {"KQGetEmptyMedium2", 22}, {"KQFreeEmptyMedium", 14}, {"KQCopyMediumFile", 21},
    {"KQGetVolumeName", 18}, {"KQBootTag", 17}, {"KQGetDeviceCommand", 19},
    {"KQFreeDeviceCommand", 20}, {"KQPreprocessKeyboardInput", 30},
    {"KQProcessKeyboardInput", 33}, {"KQGetKeyboardInputData", 31},
    {"KQGetKeyboardInputData2", 42}, {"KQFreeKeyboardInputData", 32},
    {"KQGetKeyboardLayout", 44}, {"KQGetKeyDisplayName", 36}, {"KQGetStringRawKeys", 34},
    {"KQFreeStringRawKeys", 35}, {"KQBackupKeyboardSettings", 49},
    {"KQGetInputButtonName", 38}, {"KQProcessVButtonEditMessage", 39},
    {"KQProcessVButtonEditMessage2", 43}, {"KQOpenKeyboardWindow", 47},
    {"KQSetKeyboardWindow", 45}, {"KQResetKeyboardWindow", 50}, {"KQGetKeyboardWindowInfo", 46},
    {"KQGetKeyDialog2", 48}, {"KQ9Editor", 15}, {"KQEditScreenClip", 23},
    {"KQEditScreenClip2", 24}, {"KQROMToolbox", 51},
};
// clang-format on

constexpr const wchar_t* kSettings = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";

std::wstring wide(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

// The width of an icon's colour image; 0 for no icon.
LONG icon_width(HICON icon) {
    ICONINFO info{};
    if (icon == nullptr || !GetIconInfo(icon, &info)) return 0;
    BITMAP bitmap{};
    GetObjectW(info.hbmColor, sizeof bitmap, &bitmap);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    DestroyIcon(icon);
    return bitmap.bmWidth;
}

// A value below the module's settings key as text ("<dword>" or the string); nullopt when absent.
std::optional<std::wstring> stored(const wchar_t* name) {
    wchar_t text[64] = {};
    DWORD type = 0, size = sizeof text;
    if (RegGetValueW(HKEY_CURRENT_USER, kSettings, name, RRF_RT_ANY, &type, text, &size) != 0) return std::nullopt;
    if (type != REG_DWORD) return std::wstring(text);
    DWORD number = 0;
    std::memcpy(&number, text, sizeof number);
    return L"<" + std::to_wstring(number) + L">";
}

#define EXPORT(name) use<decltype(name)>(#name)

class AmigaDll : public test::AmigaDllTest {
protected:
    void SetUp() override {
        AmigaDllTest::SetUp();
        RegDeleteTreeW(HKEY_CURRENT_USER, kSettings);
    }
    void TearDown() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, kSettings);
        AmigaDllTest::TearDown();
    }
    // An export by name, noted as called.
    template <class Function>
    Function* use(const char* name) {
        used_.insert(name);
        return resolve<Function>(name);
    }
    // Option record `index` as its reader finds it at the named offsets; nullopt past the end.
    std::optional<test::OptionView> option(std::uint32_t index) {
        KQOption* record = reinterpret_cast<KQOption*>(1);
        const kq_status status = EXPORT(KQGetOption)(index, 0, &record, nullptr);
        if (status != KQ_S_OK) {
            EXPECT_TRUE(status == KQ_S_FALSE && record == nullptr) << index;
            return std::nullopt;
        }
        std::string error;
        const auto view = test::read_option_record(record, error);
        EXPECT_TRUE(view && LocalSize(record) == view->formula_bytes) << index << ": " << error;
        EXPECT_EQ(EXPORT(KQFreeOption)(record), KQ_S_OK);
        return view;
    }
    std::set<std::string> used_;
};

TEST_F(AmigaDll, OrdinalsImportsAndTheExportTable) {
    const auto exports = kqhost::list_exports(module_);
    EXPECT_EQ(exports.size(), std::size(kExports));
    for (const ExpectedExport& expected : kExports) {
        const FARPROC by_name = GetProcAddress(module_, expected.name);
        EXPECT_NE(by_name, nullptr) << expected.name;
        EXPECT_EQ(GetProcAddress(module_, MAKEINTRESOURCEA(expected.ordinal)), by_name) << expected.name;
        EXPECT_TRUE(std::ranges::any_of(exports, [&](const auto& entry) {
            return entry.name == expected.name && entry.ordinal == expected.ordinal;
        })) << expected.name;
    }
    for (unsigned empty : {0u, 6u, 37u, 52u}) EXPECT_EQ(GetProcAddress(module_, MAKEINTRESOURCEA(empty)), nullptr);
    // Only DLLs that come with every Windows installation.
    const std::set<std::string> system = {
        "advapi32.dll", "bcrypt.dll", "comdlg32.dll", "gdi32.dll",  "kernel32.dll", "msvcrt.dll",
        "ntdll.dll",    "ole32.dll",  "oleaut32.dll", "rpcrt4.dll", "setupapi.dll", "shell32.dll",
        "shlwapi.dll",  "user32.dll", "version.dll",  "winmm.dll",  "winspool.drv", "ws2_32.dll"};
    for (std::string dll : kqhost::list_imported_dlls(module_)) {
        std::ranges::transform(dll, dll.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_TRUE(system.contains(dll) || dll.starts_with("api-ms-win-")) << "imports " << dll;
    }
}

TEST_F(AmigaDll, EveryExportWithGoodArguments) {
    // Unloaded and loaded again first: DllMain sets the module up a second time.
    FreeLibrary(module_);
    module_ = LoadLibraryW((test::folder_of_this_program() + L"\\amiga.dll").c_str());
    ASSERT_NE(module_, nullptr);
    const kq_char* name = EXPORT(KQGetPlatformName)();
    EXPECT_STREQ(name, L"Amiga");
    EXPECT_EQ(EXPORT(KQGetPlatformName)(), name) << "the same pointer on every call";

    // Records, each one local-heap block laid out as its reader checks, and the end of each list.
    for (std::uint32_t index = 0; index <= 6; ++index) EXPECT_EQ(option(index).has_value(), index < 6) << index;
    EXPECT_EQ(EXPORT(KQSetOption)(L"WindowsPrinter", L"Laser", nullptr, nullptr), KQ_S_OK);
    wchar_t dll[MAX_PATH];
    const std::wstring dll_path(dll, GetModuleFileNameW(module_, dll, MAX_PATH));
    std::set<std::wstring> icons;
    for (std::uint32_t index = 0; index <= KQ_FILE_ASSOCIATION_COUNT; ++index) {
        KQFileAssociation* association = reinterpret_cast<KQFileAssociation*>(1);
        EXPECT_EQ(EXPORT(KQGetFileAssociation)(index, &association),
                  index < KQ_FILE_ASSOCIATION_COUNT ? KQ_S_OK : KQ_S_FALSE);
        std::string error;
        const auto view = test::read_file_association_record(association, error);
        EXPECT_EQ(view && LocalSize(association) == view->formula_bytes, index < KQ_FILE_ASSOCIATION_COUNT)
            << index << ": " << error;
        if (view && !view->icon_location.empty()) icons.insert(wide(view->icon_location));
        EXPECT_EQ(EXPORT(KQFreeFileAssociation)(association), KQ_S_OK);
    }
    // The icons that the records name by resource id: a large and a small one each.
    EXPECT_EQ(icons, (std::set<std::wstring>{dll_path + L",-144", dll_path + L",-163"}));
    for (const int id : {-144, -163}) {
        HICON large = nullptr, small = nullptr;
        EXPECT_GT(ExtractIconExW(dll_path.c_str(), id, &large, &small, 1), 0u) << id;
        EXPECT_EQ(icon_width(large) * 100 + icon_width(small), 3216) << id;
    }
    KQDeviceCommand* command = reinterpret_cast<KQDeviceCommand*>(1);
    EXPECT_EQ(EXPORT(KQGetDeviceCommand)(4, 7, 0, 0, L"a-1200", &command), KQ_S_FALSE);
    EXPECT_EQ(command, nullptr);
    ASSERT_EQ(EXPORT(KQGetDeviceCommand)(2, 7, 0, 0, L"a-500", &command), KQ_S_OK);
    const auto* block = reinterpret_cast<const std::byte*>(command);
    const std::wstring command_name(command->name), script(command->command);
    EXPECT_EQ(command->cbSize, 24u);
    EXPECT_EQ(reinterpret_cast<const std::byte*>(command->name), block + 24);
    EXPECT_EQ(reinterpret_cast<const std::byte*>(command->command), block + 24 + 2 * (command_name.size() + 1));
    EXPECT_EQ(LocalSize(command), 24 + 2 * (command_name.size() + script.size() + 2));
    EXPECT_TRUE(command_name.starts_with(L"Soft Reset\t")) << command_name;
    EXPECT_EQ(EXPORT(KQFreeDeviceCommand)(command), KQ_S_OK);

    // Texts in a host's buffer that just fits them, with guard characters after it; the paths
    // with forward slashes, as Windows allows.
    test::TempFolder source, target;
    source.create_file(u"Disk.adf", test::as_string(test::floppy_image({.name = "GameDisk"})));
    source.create_file(u"Game.bin", test::as_string(test::iso_image({.volume = "GAME_DISC"})));
    source.create_file(u"Game.cue", "FILE \"Game.bin\" BINARY\n  TRACK 01 MODE1/2048\n    INDEX 01 00:00:00\n");
    const auto slashed = [](std::u16string path) {
        std::ranges::replace(path, u'\\', u'/');
        return wide(path);
    };
    const std::wstring disk = slashed(source.path(u"Disk.adf")), sheet = slashed(source.path(u"Game.cue")),
                       into = slashed(target.path()), root = wide(source.path());
    const std::wstring list = L"Work\tC:\\nowhere\\work.hdf", records = L"C:\\nowhere\\work.hdf\tDH0\tWork\thardfile";
    wchar_t label[MAX_PATH + 1] = {}; // of drive C:, as Windows gives it
    GetVolumeInformationW(L"C:\\", label, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr, 0);
    const std::wstring drive_c = L"\"" + (label[0] != 0 ? std::wstring(label) : L"C:\\") +
                                 (GetDriveTypeW(L"C:\\") == DRIVE_REMOVABLE ? L"\" (" : L"\" (DH0, ") +
                                 (label[0] != 0 ? L"mounted drive)" : L"mounted directory)");
    const std::span<const std::uint8_t> de = input::find_layout(u"de-de").keymap_image;
    const uint32_t de_bytes = static_cast<uint32_t>(de.size());
    const std::pair<std::function<kq_status(kq_char*, uint32_t)>, std::wstring> texts[] = {
        {[&](auto b, auto n) { return EXPORT(KQGetContentTooltip)(0, 0, nullptr, nullptr, b, n); },
         L"Floppy disk drive DF0:\r\nEmpty"},
        {[&](auto b, auto n) { return EXPORT(KQGetContentInfo)(1, 7, list.c_str(), records.c_str(), b, n, 0); },
         L"Work\tHard Disk \"Work\""},
        {[&](auto b, auto n) { return EXPORT(KQGetContentInfo)(1, 0, L"System\tC:\\", nullptr, b, n, 2); }, drive_c},
        {[&](auto b, auto n) { return EXPORT(KQGetVolumeName)(disk.c_str(), b, n); }, L"GameDisk"},
        {[&](auto b, auto n) { return EXPORT(KQCopyMediumFile)(sheet.c_str(), into.c_str(), 0, b, n); },
         into + L"\\Game.cue"},
        {[&](auto b, auto n) { return EXPORT(KQGetKeyboardLayout)(0, de.data(), de_bytes, b, n); },
         L"de-de\tGerman - Germany"},
        {[&](auto b, auto n) { return EXPORT(KQGetKeyDisplayName)(L"NUMPAD [", L"x", L"de-de", b, n, 0, 0); },
         L"Numeric Keypad ["},
        {[&](auto b, auto n) { return EXPORT(KQGetInputButtonName)(16, 0, 4, b, n); }, L"Red"},
    };
    for (const auto& [call, expected] : texts) {
        std::wstring buffer(expected.size() + 4, L'#');
        EXPECT_EQ(call(buffer.data(), static_cast<uint32_t>(expected.size() + 1)), KQ_S_OK) << expected;
        EXPECT_EQ(buffer, expected + L'\0' + L"###");
    }
    EXPECT_NE(GetFileAttributesW((into + L"\\Game.bin").c_str()), INVALID_FILE_ATTRIBUTES) << "copied with its sheet";

    // Texts handed over in a block of the global heap, freed as the host frees them.
    source.create_folder(u"Shared\\adf");
    source.create_file(u"Shared\\rom\\amiga-os-130-a3000.rom", "rom");
    const char* manifest = "<kq9><application><configuration><system>a-cd32</system><boot type=\"adf\">310</boot>"
                           "</configuration></application></kq9>";
    KQKeyboardInputData* keyboard = nullptr;
    ASSERT_EQ(EXPORT(KQGetKeyboardInputData2)(L"a-1200", L"en-us", nullptr, 0, 0, 0, 0, 0, &keyboard), KQ_S_OK);
    const std::pair<std::function<kq_status(kq_char**)>, std::wstring> handed[] = {
        {[&](auto t) { return EXPORT(KQGetDefaultSystemROM)(t, L"A-1200"); }, L"310-a1200"},
        {[&](auto t) { return EXPORT(KQGetRestoreSystemFilesPaths)(t, root.c_str()); },
         L"Shared\\adf\tShared system floppy disk images (ADF files)\tShared\\rom\tShared system ROM images (ROM files)"},
        {[&](auto t) { return EXPORT(KQGetApplicationInfo)(t, manifest); },
         L"Model: CD\u00b3\u00b2\r\nROM: Amiga 3.1\r\nCPU: 68EC020\r\n"},
        {[&](auto t) { return EXPORT(KQBootTag)(manifest, L"C:\\Data", 0, t); },
         L"C:\\Data\\Shared\\adf\\amiga-os-310-workbench.adf"},
        {[&](auto t) { return EXPORT(KQGetStringRawKeys)(L"Ab", keyboard, 0, t); },
         L"KEY_RAW_DOWN 0x60 KEY_RAW_DOWN 0x20 KEY_RAW_UP 0x20 KEY_RAW_UP 0x60 KEY_RAW_DOWN 0x35 KEY_RAW_UP 0x35 "},
    };
    for (const auto& [call, expected] : handed) {
        kq_char* text = nullptr;
        EXPECT_EQ(call(&text), KQ_S_OK) << expected;
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(std::wstring(text), expected);
        EXPECT_GE(GlobalSize(text), (expected.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(GlobalFree(text), nullptr);
    }
    kq_char* keys = nullptr;
    EXPECT_EQ(EXPORT(KQGetStringRawKeys)(L"CONTROL", keyboard, 1, &keys), KQ_S_OK);
    EXPECT_EQ(EXPORT(KQFreeStringRawKeys)(keys), KQ_S_OK);
    char* xml = nullptr;
    const std::wstring catalog = L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><xadml><catalog><application><media>"
                                 L"<floppy>" +
                                 disk + L"</floppy></media></application></catalog></xadml>";
    ASSERT_EQ(EXPORT(KQAutoConfigureApplication)(catalog.c_str(), nullptr, 0, &xml), KQ_S_OK);
    EXPECT_TRUE(std::string(xml).starts_with("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n")) << xml;
    EXPECT_GE(GlobalSize(xml), std::strlen(xml) + 1);
    EXPECT_EQ(GlobalFree(xml), nullptr);
    // Imports take .uae files only.
    for (const auto& [file, expected] : {std::pair{u"Game.UAE", KQ_S_OK}, std::pair{u"Game.cfg", KQ_E_INVALIDARG}}) {
        source.create_file(file, "config_description=Imported\r\nchipset_compatible=A1200\r\n");
        EXPECT_EQ(EXPORT(KQAutoConfigureApplication)(wide(source.path(file)).c_str(), nullptr, 1, &xml), expected);
        EXPECT_EQ(xml != nullptr && std::string(xml).find(">Imported</text>") != std::string::npos,
                  expected == KQ_S_OK);
        GlobalFree(xml);
    }

    // Answers in the host's variables.
    EXPECT_EQ(EXPORT(KQROMExists)(L"130", L"a-1200", L"pal", root.c_str()), KQ_S_OK);
    EXPECT_EQ(EXPORT(KQROMExists)(L"130", L"a-500", L"pal", root.c_str()), KQ_S_FALSE);
    uint32_t port[4] = {9, 9, 9, 9};
    EXPECT_EQ(EXPORT(KQGetInputPortsInfo)(L"a-500", L"parallel", &port[0], &port[1], &port[2], &port[3]), KQ_S_OK);
    EXPECT_EQ(std::vector<uint32_t>(port, port + 4), (std::vector<uint32_t>{3, 3, 0, 1}));
    EXPECT_EQ(EXPORT(KQGetDefaultInputPortContent)(L"A-CD32", 0, &port[0]), KQ_S_OK);
    EXPECT_EQ(port[0], 4u);

    // The keyboard record: a global block of its own size, rebuilt with the host's observer.
    uint32_t answer = 0;
    EXPECT_EQ(EXPORT(KQProcessKeyboardInput)(0x41 | 1u << 18 | 1u << 20, u'!', keyboard, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xB0000060u);
    EXPECT_EQ(EXPORT(KQPreprocessKeyboardInput)(0x41, 0, keyboard, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xC0000041u);
    EXPECT_EQ(GlobalSize(keyboard), input::kKeyboardInputDataBytes);
    struct Observer : input::KeyboardObserver {
        input::KeyboardInputData* told = nullptr;
    } observer;
    observer.record_replaced = [](input::KeyboardObserver* self, input::KeyboardInputData* fresh) {
        static_cast<Observer*>(self)->told = fresh;
    };
    reinterpret_cast<input::KeyboardInputData*>(keyboard)->observer = &observer;
    EXPECT_EQ(EXPORT(KQGetKeyboardInputData)(L"a-1200", L"fr-ca", nullptr, 0, 0x01010041, 0, 0x01010042, &keyboard),
              KQ_S_OK);
    const auto* record = reinterpret_cast<input::KeyboardInputData*>(keyboard);
    EXPECT_TRUE(observer.told == record && record->observer == &observer);
    EXPECT_EQ(std::u16string_view(record->layout_id), u"fr-ca");
    EXPECT_EQ(record->configurable[0].virtual_key, 0x41);
    EXPECT_EQ(record->configurable[2].virtual_key, 0x22) << "key C at its default";
    EXPECT_EQ(EXPORT(KQFreeKeyboardInputData)(keyboard), KQ_S_OK);
    EXPECT_EQ(EXPORT(KQBackupKeyboardSettings)(3), KQ_S_OK);

    // Blank media from the templates beside the DLL, each in an AEM folder of its own that
    // freeing the path removes.
    for (const auto& [kind, size] : {std::pair{0u, 901120ul}, std::pair{1u, 1802240ul}, std::pair{9u, 901120ul}}) {
        kq_char* path = nullptr;
        ASSERT_EQ(kind == 9 ? EXPORT(KQGetEmptyMedium)(&path, nullptr, 0)
                            : EXPORT(KQGetEmptyMedium2)(&path, nullptr, 0, kind),
                  KQ_S_OK);
        EXPECT_GE(GlobalSize(path), (wcslen(path) + 1) * sizeof(wchar_t));
        WIN32_FILE_ATTRIBUTE_DATA data{};
        EXPECT_TRUE(GetFileAttributesExW(path, GetFileExInfoStandard, &data) && data.nFileSizeLow == size);
        const std::wstring file(path), folder = file.substr(0, file.rfind(L'\\'));
        EXPECT_TRUE(folder.substr(folder.rfind(L'\\') + 1).starts_with(L"AEM")) << folder;
        EXPECT_EQ(EXPORT(KQFreeEmptyMedium)(path), KQ_S_OK);
        EXPECT_EQ(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    }

    // A working copy under the caller's key, its path cut to a short buffer.
    const std::wstring key = L"00000000-1111-2222-3333-444444444444";
    std::wstring buffer = key + std::wstring(8, L'#');
    buffer[36] = 0;
    ASSERT_EQ(EXPORT(KQGetRuntimeMedium)(disk.c_str(), L"", buffer.data(), 40,
                                         KQ_RUNTIME_MEDIUM_CALLER_KEY | KQ_RUNTIME_MEDIUM_NO_TIMESTAMP),
              KQ_S_OK);
    wchar_t temp[MAX_PATH + 1];
    const std::wstring copy = std::wstring(temp, GetTempPathW(MAX_PATH + 1, temp)) + L"Quennet\\" + key + L"-Disk.adf";
    EXPECT_EQ(buffer, copy.substr(0, 39) + L'\0' + L"####");
    uint32_t changed = 7;
    EXPECT_EQ(EXPORT(KQCheckRuntimeMedium)(copy.c_str(), &changed), KQ_S_OK);
    EXPECT_EQ(changed, 1u) << "no time stamp: always changed";
    EXPECT_EQ(EXPORT(KQDismissRuntimeMedium)(copy.c_str(), nullptr, 0), KQ_S_OK);
    EXPECT_EQ(GetFileAttributesW(copy.c_str()), INVALID_FILE_ATTRIBUTES);

    // The windows of the host's shell are not provided.
    for (const auto shell : {EXPORT(KQ9Editor), EXPORT(KQEditScreenClip), EXPORT(KQEditScreenClip2),
                             EXPORT(KQROMToolbox), EXPORT(KQOpenKeyboardWindow), EXPORT(KQSetKeyboardWindow),
                             EXPORT(KQResetKeyboardWindow), EXPORT(KQGetKeyboardWindowInfo), EXPORT(KQGetKeyDialog2),
                             EXPORT(KQProcessVButtonEditMessage), EXPORT(KQProcessVButtonEditMessage2)})
        EXPECT_EQ(shell(), KQ_E_NOTIMPL);

    std::set<std::string> every;
    for (const ExpectedExport& expected : kExports) every.insert(expected.name);
    used_.insert("DllMain"); // called by the loader
    EXPECT_EQ(used_, every) << "every export called";
}

TEST_F(AmigaDll, OptionsAreStoredInTheRegistryReadBackAndDeleted) {
    EXPECT_EQ(EXPORT(KQSetOption)(L"WindowsSerial", L"", nullptr, nullptr), KQ_S_OK) << "no key: nothing to delete";
    const struct {
        const wchar_t *name, *value;
        kq_status status;
        std::uint32_t index;
        std::optional<std::wstring> in_registry;
        std::u16string_view current;
    } rows[] = {
        {L"MouseHack", L"0x1", KQ_S_OK, 0, L"<1>", u"1"},
        {L"AutoMouseUntrap", L"0", KQ_S_OK, 1, L"<0>", u"0"},
        {L"WindowsPrinter", L"Laser Printer", KQ_S_OK, 2, L"Laser Printer", u"Laser Printer"},
        {L"WindowsSerial", L"COM7", KQ_S_OK, 3, L"COM7", u"COM7"},
        {L"WindowsMIDIOut", L"Synth", KQ_S_OK, 5, L"Synth", u"Synth"},
        {L"WindowsMIDIOut", L"", KQ_S_OK, 5, std::nullopt, u"none"},
        {L"WindowsSerial", nullptr, KQ_S_OK, 3, std::nullopt, u""},
        {L"mousehack", L"0", KQ_E_INVALIDARG, 0, L"<1>", u"1"}, // option names are exact
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::wstring(row.name) + L"=" + (row.value ? row.value : L"(null)"));
        EXPECT_EQ(EXPORT(KQSetOption)(row.name, row.value, nullptr, nullptr), row.status);
        EXPECT_EQ(stored(row.name), row.in_registry); // the registry's value names ignore case
        EXPECT_EQ(option(row.index)->current_value, row.current);
    }
}

// The choices of printer, MIDI output and serial port, from the devices that Wine reports.
TEST_F(AmigaDll, ChoicesFollowTheMachinesDevices) {
    std::vector<std::u16string> values{u"none"}, labels{u"None"};
    for (UINT device = 0; device < midiOutGetNumDevs(); ++device) {
        MIDIOUTCAPSW caps{};
        ASSERT_EQ(midiOutGetDevCapsW(device, &caps, sizeof caps), MMSYSERR_NOERROR);
        if (device == 0) values.push_back(u"default");
        if (device == 0) labels.push_back(u"Default");
        values.emplace_back(reinterpret_cast<const char16_t*>(caps.szPname));
        labels.push_back(values.back());
    }
    EXPECT_EQ(option(5)->values, values);
    EXPECT_EQ(option(5)->labels, labels);
    DWORD needed = 0, printers = 0;
    EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 4, nullptr, 0, &needed, &printers);
    if (needed == 0) {
        EXPECT_EQ(option(2)->values, std::vector<std::u16string>{u""}) << "no printer: the default only";
    }
    const test::OptionView serial = *option(3);
    ASSERT_EQ(serial.labels.size(), serial.values.size());
    EXPECT_EQ(std::set(serial.values.begin(), serial.values.end()).size(), serial.values.size()) << "each port once";
    for (std::size_t i = 1; i < serial.values.size(); ++i)
        EXPECT_TRUE(serial.values[i].starts_with(u"COM") && serial.labels[i] == serial.values[i]) << i;
}

} // namespace
} // namespace kq
