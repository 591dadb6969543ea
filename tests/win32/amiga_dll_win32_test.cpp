// The built amiga.dll as a host sees it, and the module's use of what Windows alone has: the DLL
// loaded with LoadLibraryW and its export table read from the mapped image; every export called
// with good arguments (statuses, texts in the host's buffers with guard characters after them,
// records read at their named offsets, the heap that each result comes from); the options in the
// real registry of the test prefix and the devices that Wine reports. And concurrency: reports
// made at the same time take turns under the machine-wide mutex "KQlayerDataAccessMx" (a mutex is
// owned by a thread, so threads wait for each other as processes do), and working copies of one
// image made at the same time are distinct and are all dismissed correctly.

#include "input/keyboard_input_data.h"
#include "kq_amiga.h"
#include "kqhost/pe_image.h"
#include "module/error_report.h"
#include "module/host_library_link.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/compressed_files.h"
#include "tests/support/fake_data_access_client.h"
#include "tests/support/file_association_record.h"
#include "tests/support/option_record.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <windows.h>
#include <mmsystem.h>
#include <winspool.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <latch>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <tuple>
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
    {"DllMain", 1}, {"KQGetPlatformName", 2}, {"KQGetOption", 3}, {"KQFreeOption", 4}, {"KQSetOption", 5},
    {"KQGetFileAssociation", 7}, {"KQFreeFileAssociation", 8}, {"KQGetContentTooltip", 29}, {"KQGetContentInfo", 41},
    {"KQAutoConfigureApplication", 12}, {"KQGetApplicationInfo", 28}, {"KQROMExists", 26},
    {"KQGetDefaultSystemROM", 27}, {"KQGetRestoreSystemFilesPaths", 25}, {"KQGetInputPortsInfo", 40},
    {"KQGetDefaultInputPortContent", 16}, {"KQGetRuntimeMedium", 9}, {"KQCheckRuntimeMedium", 10},
    {"KQDismissRuntimeMedium", 11}, {"KQGetEmptyMedium", 13}, {"KQGetEmptyMedium2", 22}, {"KQFreeEmptyMedium", 14},
    {"KQCopyMediumFile", 21}, {"KQGetVolumeName", 18}, {"KQBootTag", 17}, {"KQGetDeviceCommand", 19},
    {"KQFreeDeviceCommand", 20}, {"KQPreprocessKeyboardInput", 30}, {"KQProcessKeyboardInput", 33},
    {"KQGetKeyboardInputData", 31}, {"KQGetKeyboardInputData2", 42}, {"KQFreeKeyboardInputData", 32},
    {"KQGetKeyboardLayout", 44}, {"KQGetKeyDisplayName", 36}, {"KQGetStringRawKeys", 34}, {"KQFreeStringRawKeys", 35},
    {"KQBackupKeyboardSettings", 49}, {"KQGetInputButtonName", 38}, {"KQProcessVButtonEditMessage", 39},
    {"KQProcessVButtonEditMessage2", 43}, {"KQOpenKeyboardWindow", 47}, {"KQSetKeyboardWindow", 45},
    {"KQResetKeyboardWindow", 50}, {"KQGetKeyboardWindowInfo", 46}, {"KQGetKeyDialog2", 48}, {"KQ9Editor", 15},
    {"KQEditScreenClip", 23}, {"KQEditScreenClip2", 24}, {"KQROMToolbox", 51},
};
// clang-format on

constexpr const wchar_t* kSettings = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";

std::wstring wide(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

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
        EXPECT_TRUE(status == KQ_S_OK || (status == KQ_S_FALSE && record == nullptr)) << index;
        if (status != KQ_S_OK) return std::nullopt;
        std::string error;
        const auto view = test::read_option_record(record, error);
        EXPECT_TRUE(view && LocalSize(record) == view->formula_bytes) << index << ": " << error;
        EXPECT_EQ(EXPORT(KQFreeOption)(record), KQ_S_OK);
        return view;
    }
    std::set<std::string> used_;
};

TEST_F(AmigaDll, OrdinalsAndTheExportTable) {
    const auto exports = kqhost::list_exports(module_);
    EXPECT_EQ(exports.size(), std::size(kExports));
    for (const ExpectedExport& expected : kExports) {
        EXPECT_EQ(GetProcAddress(module_, MAKEINTRESOURCEA(expected.ordinal)), GetProcAddress(module_, expected.name))
            << expected.name;
        EXPECT_TRUE(std::ranges::any_of(exports, [&](const auto& entry) {
            return entry.name == expected.name && entry.ordinal == expected.ordinal;
        })) << expected.name;
    }
    for (unsigned empty : {0u, 6u, 37u, 52u}) EXPECT_EQ(GetProcAddress(module_, MAKEINTRESOURCEA(empty)), nullptr);
    // The runtimes are linked in: a host needs nothing beside the DLL but Windows itself.
    const std::set<std::string> system_dlls = {
        "advapi32.dll", "bcrypt.dll", "comdlg32.dll", "gdi32.dll",  "kernel32.dll", "msvcrt.dll",
        "ntdll.dll",    "ole32.dll",  "oleaut32.dll", "rpcrt4.dll", "setupapi.dll", "shell32.dll",
        "shlwapi.dll",  "user32.dll", "version.dll",  "winmm.dll",  "winspool.drv", "ws2_32.dll"};
    const std::vector<std::string> imports = kqhost::list_imported_dlls(module_);
    EXPECT_FALSE(imports.empty());
    for (std::string dll : imports) {
        std::ranges::transform(dll, dll.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_TRUE(system_dlls.contains(dll) || dll.starts_with("api-ms-win-")) << "imports " << dll;
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
    EXPECT_EQ(icons, (std::set<std::wstring>{dll_path + L",-144", dll_path + L",-163"})) << "icons of this DLL";
    KQDeviceCommand* command = reinterpret_cast<KQDeviceCommand*>(1);
    EXPECT_TRUE(EXPORT(KQGetDeviceCommand)(4, 7, 0, 0, L"a-1200", &command) == KQ_S_FALSE && command == nullptr);
    ASSERT_EQ(EXPORT(KQGetDeviceCommand)(2, 7, 0, 0, L"a-500", &command), KQ_S_OK);
    EXPECT_EQ(reinterpret_cast<const std::byte*>(command->name), reinterpret_cast<std::byte*>(command) + 24);
    EXPECT_EQ(LocalSize(command), 24 + 2 * (wcslen(command->name) + wcslen(command->command) + 2));
    EXPECT_EQ(EXPORT(KQFreeDeviceCommand)(command), KQ_S_OK);

    // Texts in a host's buffer that just fits them, with guard characters after it; the paths
    // with forward slashes, as Windows allows.
    test::TempFolder source, target;
    source.create_file(u"Disk.adf", test::as_string(test::floppy_image({.name = "GameDisk"})));
    const auto slashed = [](std::u16string path) {
        std::ranges::replace(path, u'\\', u'/');
        return wide(path);
    };
    const std::wstring disk = slashed(source.path(u"Disk.adf")), into = slashed(target.path()),
                       root = wide(source.path());
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
        {[&](auto b, auto n) { return EXPORT(KQCopyMediumFile)(disk.c_str(), into.c_str(), 0, b, n); },
         into + L"\\Disk.adf"},
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
    // Application descriptions as UTF-8 text: from a catalog of loose media, or imported from a
    // configuration file (of the UAE kind only).
    source.create_file(u"Game.UAE", "config_description=Imported\r\nchipset_compatible=A1200\r\n");
    source.create_file(u"Game.cfg", "config_description=Imported\r\nchipset_compatible=A1200\r\n");
    const std::tuple<std::wstring, uint32_t, kq_status, const char*> descriptions[] = {
        {L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><xadml><catalog><application><media><floppy>" + disk +
             L"</floppy></media></application></catalog></xadml>",
         0, KQ_S_OK, "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"},
        {wide(source.path(u"Game.UAE")), 1, KQ_S_OK, ">Imported</text>"},
        {wide(source.path(u"Game.cfg")), 1, KQ_E_INVALIDARG, nullptr},
    };
    for (const auto& [input, flags, status, text] : descriptions) {
        char* xml = reinterpret_cast<char*>(1);
        EXPECT_EQ(EXPORT(KQAutoConfigureApplication)(input.c_str(), nullptr, flags, &xml), status);
        EXPECT_EQ(xml == nullptr, text == nullptr);
        if (xml == nullptr || text == nullptr) continue;
        EXPECT_NE(std::string(xml).find(text), std::string::npos) << xml;
        EXPECT_GE(GlobalSize(xml), std::strlen(xml) + 1);
        EXPECT_EQ(GlobalFree(xml), nullptr);
    }

    // Answers in the host's variables.
    EXPECT_EQ(EXPORT(KQROMExists)(L"130", L"a-1200", L"pal", root.c_str()), KQ_S_OK);
    EXPECT_EQ(EXPORT(KQROMExists)(L"130", L"a-500", L"pal", root.c_str()), KQ_S_FALSE);
    uint32_t port[4] = {9, 9, 9, 9};
    EXPECT_EQ(EXPORT(KQGetInputPortsInfo)(L"a-500", L"parallel", &port[0], &port[1], &port[2], &port[3]), KQ_S_OK);
    EXPECT_EQ(std::vector<uint32_t>(port, port + 4), (std::vector<uint32_t>{3, 3, 0, 1}));
    EXPECT_TRUE(EXPORT(KQGetDefaultInputPortContent)(L"A-CD32", 0, &port[0]) == KQ_S_OK && port[0] == 4);

    // The keyboard record: a global block of its own size.
    uint32_t answer = 0;
    EXPECT_EQ(EXPORT(KQProcessKeyboardInput)(0x41 | 1u << 18 | 1u << 20, u'!', keyboard, 0, &answer), KQ_S_OK);
    EXPECT_EQ(answer, 0xB0000060u) << "shifted A, typed as \"!\"";
    EXPECT_TRUE(EXPORT(KQPreprocessKeyboardInput)(0x41, 0, keyboard, 0, &answer) == KQ_S_OK && answer == 0xC0000041u);
    EXPECT_EQ(GlobalSize(keyboard), input::kKeyboardInputDataBytes);
    EXPECT_EQ(EXPORT(KQGetKeyboardInputData)(L"a-1200", L"fr-ca", nullptr, 0, 0x01010041, 0, 0x01010042, &keyboard),
              KQ_S_OK);
    const auto* record = reinterpret_cast<input::KeyboardInputData*>(keyboard);
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
    EXPECT_TRUE(EXPORT(KQCheckRuntimeMedium)(copy.c_str(), &changed) == KQ_S_OK && changed == 1) << "no time stamp";
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
        {L"WindowsSerial", L"COM7", KQ_S_OK, 3, L"COM7", u"COM7"},
        {L"WindowsSerial", L"", KQ_S_OK, 3, std::nullopt, u""},
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
    std::vector<std::u16string> midi{u"none"};
    for (UINT device = 0; device < midiOutGetNumDevs(); ++device) {
        MIDIOUTCAPSW caps{};
        ASSERT_EQ(midiOutGetDevCapsW(device, &caps, sizeof caps), MMSYSERR_NOERROR);
        if (device == 0) midi.push_back(u"default");
        midi.emplace_back(reinterpret_cast<const char16_t*>(caps.szPname));
    }
    EXPECT_EQ(option(5)->values, midi);
    DWORD needed = 0, printers = 0;
    EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 4, nullptr, 0, &needed, &printers);
    EXPECT_TRUE(needed != 0 || option(2)->values == std::vector<std::u16string>{u""}) << "no printer: the default only";
    const test::OptionView serial = *option(3);
    EXPECT_EQ(std::set(serial.values.begin(), serial.values.end()).size(), serial.values.size()) << "each port once";
    for (std::size_t i = 1; i < serial.values.size(); ++i)
        EXPECT_TRUE(serial.values[i].starts_with(u"COM") && serial.labels.at(i) == serial.values[i]) << i;
}

bool mutex_is_free() {
    HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"KQlayerDataAccessMx");
    if (mutex == nullptr) return true;
    const DWORD wait = WaitForSingleObject(mutex, 0);
    if (wait == WAIT_OBJECT_0) ReleaseMutex(mutex);
    CloseHandle(mutex);
    return wait == WAIT_OBJECT_0;
}

constexpr int kThreads = 6;

// Runs `work(thread)` on kThreads threads that start together.
void at_once(const std::function<void(int)>& work) {
    std::latch start(kThreads);
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            work(t);
        });
}

// Reports made at the same time: the stand-in library counts the calls inside it at once, and
// asks from another thread whether the mutex is owned during each call.
TEST(Concurrency, ReportsThroughTheHostLibraryTakeTurnsUnderTheMutex) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());
    fake.reset(status::ok, 20);
    at_once([](int) {
        for (int call = 0; call < 4; ++call)
            report_error_from(test::host_folder(u"with-library"), nullptr, kIpfLibraryMissing);
    });
    EXPECT_EQ(fake.log().show_calls, 4 * kThreads) << "every report reached the library";
    EXPECT_EQ(fake.log().most_calls_at_once, 1);
    EXPECT_EQ(fake.log().mutex_owned_during_call, 1);
    EXPECT_TRUE(mutex_is_free()) << "after the calls";
    fake.reset();
    HostLibraryLink missing(test::host_folder(u"missing"));
    EXPECT_EQ(missing.show_error_message(u"c", 1, nullptr, u"t", 0), status::from_win32(1154));
    EXPECT_TRUE(mutex_is_free()) << "after finding no library";
}

// Working copies of one image made at the same time: distinct keys, each a full copy, and each
// dismissed as asked (one written back, the others not).
TEST_F(AmigaDll, CopiesOfOneImageMadeAtOnceHaveTheirOwnKeysAndAreAllDismissed) {
    const test::TempFolder folder;
    const test::Bytes bytes = test::sample_image(200000, 7);
    const std::string image(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    folder.create_file(u"Game.adf", image);
    const std::wstring path = wide(folder.path(u"Game.adf"));
    std::vector<std::wstring> copies(kThreads);
    std::vector<kq_status> dismissed(kThreads, KQ_E_FAIL);
    const auto get = EXPORT(KQGetRuntimeMedium);
    at_once([&](int t) {
        wchar_t buffer[MAX_PATH + 1] = {};
        copies[t] = get(path.c_str(), nullptr, buffer, MAX_PATH + 1, 0) == KQ_S_OK ? buffer : L"(failed)";
    });
    std::set<std::wstring> keys;
    for (int t = 0; t < kThreads; ++t) {
        keys.insert(copies[t].substr(copies[t].rfind(L'\\') + 1, 36));
        EXPECT_TRUE(test::read_file(copies[t]) == image) << "copy " << t << " is the whole image";
        std::ofstream(std::filesystem::path(copies[t]), std::ios::binary) << "changed by " << t;
    }
    EXPECT_EQ(keys.size(), std::size_t{kThreads}) << "every copy has its own key";
    // The emulators changed every copy; only the first is written back.
    at_once([&](int t) {
        dismissed[t] = EXPORT(KQDismissRuntimeMedium)(
            copies[t].c_str(), nullptr, KQ_RUNTIME_MEDIUM_ASSUME_CHANGED | (t == 0 ? KQ_RUNTIME_MEDIUM_WRITE_BACK : 0));
    });
    for (int t = 0; t < kThreads; ++t) {
        const std::wstring record = copies[t].substr(0, copies[t].rfind(L'\\') + 37) + L".info";
        EXPECT_EQ(dismissed[t], KQ_S_OK) << t;
        EXPECT_EQ(GetFileAttributesW(copies[t].c_str()) & GetFileAttributesW(record.c_str()), INVALID_FILE_ATTRIBUTES)
            << "copy " << t << " and its record are gone";
    }
    EXPECT_EQ(test::read_file(folder.native(u"Game.adf")), "changed by 0");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.native(u"")), {}), 1) << "no side file";
}

} // namespace
} // namespace kq
