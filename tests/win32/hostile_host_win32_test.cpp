// Every export of the built DLL called as a careless or hostile host calls it: null pointers
// (one at a time and all at once), buffers of zero and one character, paths of 259, 260 and
// 261 characters, unpaired UTF-16 surrogates, indexes past the end, unknown names. Each call
// is checked for its documented status, for writing nothing outside the buffers and slots it
// was given, and the records and strings it hands back are released as the header says. The
// whole table runs once to warm up and twice more; the heaps of the process and the C runtime
// blocks that the module holds must be the same after each run, and so must the module's
// registry settings.

#include "kq_amiga.h"
#include "kqhost/pe_image.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/hostile_host.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kq {
namespace {

using test::CallArguments;
using test::is_terminated_within;
using test::is_unwritten;

constexpr kq_status kNotFound = KQ_STATUS_FROM_WIN32(1168);
constexpr kq_status kBufferOverflow = KQ_STATUS_FROM_WIN32(111);
constexpr kq_status kMalformed = KQ_STATUS_FROM_WIN32(13);
constexpr std::uint32_t kPathLengths[] = {259, 260, 261};
constexpr const wchar_t* kSettingsKey = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";
// A caller's key for runtime media: 36 characters of a file name.
constexpr std::wstring_view kCallerKey = L"0123abcd-4567-89ab-cdef-0123456789ab";
// What an out-pointer slot holds before a call that must clear it.
template <class T>
T* poison() {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(0x5A5A5A5A5A5A5A50ull));
}

std::wstring wide(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

std::string narrow(std::wstring_view text) {
    std::string out;
    for (const wchar_t c : text) {
        if (c >= 0x20 && c < 0x7F) {
            out += static_cast<char>(c);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%04X", static_cast<unsigned>(c));
            out += escaped;
        }
    }
    return out.size() > 70 ? out.substr(0, 40) + "...(" + std::to_string(text.size()) + " chars)" : out;
}

std::string show(const wchar_t* text) { return text == nullptr ? "null" : "\"" + narrow(text) + "\""; }
std::string show(const char* text) {
    if (text == nullptr) return "null";
    std::string shown(text);
    return "\"" +
           (shown.size() > 70 ? shown.substr(0, 40) + "...(" + std::to_string(shown.size()) + " bytes)" : shown) + "\"";
}
std::string hex(std::uint64_t value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
    return text;
}

// `folder` + "\" + a name padded to `chars` characters in all, ending in `suffix`.
std::wstring path_of_length(const std::wstring& folder, std::uint32_t chars, std::wstring_view suffix,
                            wchar_t filler = L'p') {
    const std::size_t fixed = folder.size() + 1 + suffix.size();
    return folder + L"\\" + std::wstring(chars > fixed ? chars - fixed : 1, filler) + std::wstring(suffix);
}

// A status in HRESULT_FROM_WIN32 form other than "invalid parameter": what a failed file-system
// call gives.
bool is_file_system_error(std::int64_t status) {
    const auto value = static_cast<std::uint32_t>(status);
    return status < 0 && (value & 0xFFFF0000u) == 0x80070000u && value != 0x80070057u;
}

template <class Status>
void expect_status(const CallArguments& call, Status got, kq_status expected) {
    EXPECT_EQ(static_cast<std::int64_t>(got), static_cast<std::int64_t>(expected)) << call.label();
}

// Texts near a known name: empty, padded, with unpaired surrogates (also as the last unit before
// the NUL), too long, and in other case, which still names it where names compare without regard
// to case.
std::vector<std::wstring> unknown_names(const std::wstring& known) {
    std::wstring upper = known, lower = known;
    for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
    for (wchar_t& c : lower) c = static_cast<wchar_t>(std::towlower(c));
    std::vector<std::wstring> names = {L"",
                                       known + L" ",
                                       L" " + known,
                                       known + L"\xD800",
                                       L"\xDC00" + known,
                                       L"\xD800",
                                       L"\xDBFF\xDBFF",
                                       std::wstring(L"\xDC00\xD800")};
    if (upper != known) names.push_back(upper);
    if (lower != known) names.push_back(lower);
    for (const std::uint32_t chars : kPathLengths) names.push_back(std::wstring(chars, L'n'));
    return names;
}

// Strings a module must take as text without tripping: unpaired surrogates and long ones.
std::vector<std::wstring> odd_texts() {
    return {L"",
            L"\xD800",
            L"a\xDBFF",
            L"\xDC00z",
            L"\xDC00\xD800",
            std::wstring(261, L'\xD800'),
            std::wstring(259, L'x'),
            std::wstring(260, L'x'),
            std::wstring(261, L'x')};
}

// The registry values below `key` (recursively), one line each, to compare before and after.
void read_registry_tree(HKEY parent, const std::wstring& path, std::vector<std::wstring>& lines) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    lines.push_back(L"[" + path + L"]");
    for (DWORD index = 0;; ++index) {
        wchar_t name[16384];
        DWORD name_chars = static_cast<DWORD>(std::size(name)), type = 0, bytes = 0;
        if (RegEnumValueW(key, index, name, &name_chars, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) break;
        std::vector<BYTE> data(bytes + 2);
        name_chars = static_cast<DWORD>(std::size(name));
        if (RegEnumValueW(key, index, name, &name_chars, nullptr, &type, data.data(), &bytes) != ERROR_SUCCESS) break;
        std::wstring line = std::wstring(name, name_chars) + L"=" + std::to_wstring(type) + L":";
        for (DWORD i = 0; i < bytes; ++i)
            line += L"0123456789ABCDEF"[data[i] >> 4], line += L"0123456789ABCDEF"[data[i] & 15];
        lines.push_back(line);
    }
    std::vector<std::wstring> subkeys;
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD name_chars = static_cast<DWORD>(std::size(name));
        if (RegEnumKeyExW(key, index, name, &name_chars, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        subkeys.emplace_back(name, name_chars);
    }
    RegCloseKey(key);
    std::sort(subkeys.begin(), subkeys.end());
    for (const std::wstring& subkey : subkeys) read_registry_tree(parent, path + L"\\" + subkey, lines);
}

std::vector<std::wstring> settings_tree() {
    std::vector<std::wstring> lines;
    read_registry_tree(HKEY_CURRENT_USER, kSettingsKey, lines);
    return lines;
}

// One option value of the module's settings as it was, put back when this goes.
class SavedSetting {
public:
    explicit SavedSetting(const wchar_t* name) : name_(name) {
        HKEY key = nullptr;
        key_existed_ = RegOpenKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, KEY_READ, &key) == ERROR_SUCCESS;
        if (!key_existed_) return;
        DWORD bytes = 0;
        if (RegQueryValueExW(key, name, nullptr, &type_, nullptr, &bytes) == ERROR_SUCCESS) {
            data_.resize(bytes);
            value_existed_ = RegQueryValueExW(key, name, nullptr, &type_, data_.data(), &bytes) == ERROR_SUCCESS;
        }
        RegCloseKey(key);
    }
    ~SavedSetting() {
        if (!key_existed_) {
            RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
            return;
        }
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) return;
        if (value_existed_)
            RegSetValueExW(key, name_, 0, type_, data_.data(), static_cast<DWORD>(data_.size()));
        else
            RegDeleteValueW(key, name_);
        RegCloseKey(key);
    }
    SavedSetting(const SavedSetting&) = delete;
    SavedSetting& operator=(const SavedSetting&) = delete;

private:
    const wchar_t* name_;
    bool key_existed_ = false, value_existed_ = false;
    DWORD type_ = 0;
    std::vector<BYTE> data_;
};

std::wstring runtime_folder() {
    wchar_t temp[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
    return std::wstring(temp, length) + L"Quennet";
}

// The files that one run of the table works on, in a folder of its own.
class Pass {
public:
    explicit Pass(HMODULE module) : module_(module) {
        folder_name = wide(folder.path());
        const std::string floppy = test::as_string(test::floppy_image({.name = "GameDisk"}));
        folder.create_file(u"Game.adf", floppy);
        game_adf = wide(folder.path(u"Game.adf"));
        // A name of its own, so that this run's working copies are told from anybody else's.
        runtime_name =
            L"Hostile" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount64()) + L".adf";
        folder.create_file(std::u16string(runtime_name.begin(), runtime_name.end()), floppy);
        runtime_image = folder_name + L"\\" + runtime_name;
        for (std::size_t i = 0; i < std::size(kPathLengths); ++i) {
            long_adf[i] = path_of_length(folder_name, kPathLengths[i], L".adf");
            std::ofstream(std::filesystem::path(long_adf[i]), std::ios::binary) << floppy;
            long_adf_exists[i] = GetFileAttributesW(long_adf[i].c_str()) != INVALID_FILE_ATTRIBUTES;
            long_missing[i] = path_of_length(folder_name + L"\\missing", kPathLengths[i], L".adf", L'm');
        }
        missing_adf = folder_name + L"\\missing.adf";
        surrogate_adf = folder_name + L"\\Game\xD800.adf";
        folder.create_folder(u"target");
        target_folder = folder_name + L"\\target";
        folder.create_file(u"data\\Shared\\adf\\aros-20240101-boot.adf", "boot");
        data_with_adf = folder_name + L"\\data";
    }
    ~Pass() {
        // Every file the module made or opened here must be closed again: the folder goes.
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(folder_name), error);
        EXPECT_FALSE(error) << "the run's folder stays: " << error.message();
    }

    template <class Function>
    Function* resolve(const char* name) const {
        auto* function = reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
        EXPECT_NE(function, nullptr) << name;
        return function;
    }

    test::TempFolder folder;
    std::wstring folder_name, game_adf, runtime_name, runtime_image, missing_adf, surrogate_adf, target_folder,
        data_with_adf;
    std::wstring long_adf[3], long_missing[3];
    bool long_adf_exists[3] = {};

private:
    HMODULE module_;
};

struct ExportRow {
    const char* name;
    void (*run)(const Pass& pass);
};

// Working copies of `image_name` that a call made but could not tell the caller of (a buffer
// too short for the path): dismissed so that nothing stays behind.
void dismiss_working_copies(const Pass& pass, const std::wstring& image_name) {
    const auto dismiss = pass.resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    const std::wstring folder = runtime_folder();
    WIN32_FIND_DATAW entry;
    HANDLE search = FindFirstFileW((folder + L"\\*-" + image_name).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return;
    std::vector<std::wstring> copies;
    do copies.push_back(folder + L"\\" + entry.cFileName);
    while (FindNextFileW(search, &entry));
    FindClose(search);
    for (const std::wstring& copy : copies) EXPECT_EQ(dismiss(copy.c_str(), nullptr, 0), KQ_S_OK) << narrow(copy);
}

// A text buffer's content after a successful call that cuts its text to the buffer: `full`
// cut to `chars` - 1 characters.
void expect_cut_text(const CallArguments& call, const wchar_t* buffer, std::uint32_t chars, const std::wstring& full) {
    ASSERT_TRUE(is_terminated_within(buffer, chars)) << call.label();
    EXPECT_EQ(std::wstring(buffer), full.substr(0, chars - 1)) << call.label();
}

// The shell windows that the module does not provide, called with arguments a host might pass.
template <std::size_t N>
void shell_window_row(const Pass& pass, const char* name) {
    using AnyArguments = kq_status(void*, void*, std::uint64_t, std::uint64_t, void*, void*);
    const auto window = pass.resolve<AnyArguments>(name);
    {
        CallArguments call(std::string(name) + "()");
        expect_status(call, pass.resolve<kq_status()>(name)(), KQ_E_NOTIMPL);
    }
    CallArguments call(std::string(name) + "(hostile arguments)");
    expect_status(call,
                  window(nullptr, call.out_slot<void*>(nullptr), 0xFFFFFFFFFFFFFFFFull, N,
                         const_cast<wchar_t*>(call.in_text(std::wstring_view(L"\xD800"))), call.out_text(1)),
                  KQ_E_NOTIMPL);
}

// ---- Module frame and options ---------------------------------------------------------------

void platform_name_row(const Pass& pass) {
    const auto name = pass.resolve<decltype(KQGetPlatformName)>("KQGetPlatformName");
    CallArguments call("KQGetPlatformName()");
    const kq_char* first = name();
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first, L"Amiga");
    EXPECT_EQ(name(), first) << "the same constant every time";
}

void dll_main_row(const Pass& pass) {
    using EntryPoint = BOOL WINAPI(HINSTANCE, DWORD, LPVOID);
    const auto entry = pass.resolve<EntryPoint>("DllMain");
    // Thread notifications and a reason that does not exist; attach and detach of the process
    // belong to the loader.
    for (const DWORD reason : {DWORD{DLL_THREAD_ATTACH}, DWORD{DLL_THREAD_DETACH}, DWORD{0xFFFFFFFF}}) {
        CallArguments call("DllMain(null, " + hex(reason) + ", null)");
        EXPECT_EQ(entry(nullptr, reason, nullptr), TRUE) << call.label();
    }
}

void get_option_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetOption)>("KQGetOption");
    const auto release = pass.resolve<decltype(KQFreeOption)>("KQFreeOption");
    for (const std::uint32_t index : {0u, 6u, 0xFFFFFFFFu}) {
        CallArguments call("KQGetOption(" + hex(index) + ", 0, null, null)");
        expect_status(call, get(index, 0xFFFFFFFF, nullptr, nullptr), KQ_E_INVALIDARG);
    }
    std::vector<std::wstring> reserved_texts = odd_texts();
    for (std::uint32_t index = 0; index < 6; ++index) {
        for (const std::wstring& text : reserved_texts) {
            CallArguments call("KQGetOption(" + std::to_string(index) + ", reserved " + show(text.c_str()) + ")");
            KQOption** slot = call.out_slot(poison<KQOption>());
            expect_status(call, get(index, 0xFFFFFFFF, slot, call.in_text(text)), KQ_S_OK);
            ASSERT_NE(*slot, nullptr) << call.label();
            EXPECT_EQ((*slot)->cbSize, 136u) << call.label();
            EXPECT_GE(LocalSize(*slot), 136u) << call.label();
            expect_status(call, release(*slot), KQ_S_OK);
        }
    }
    for (const std::uint32_t index : {6u, 7u, 0x80000000u, 0xFFFFFFFFu}) {
        CallArguments call("KQGetOption(" + hex(index) + ")");
        KQOption** slot = call.out_slot(poison<KQOption>());
        expect_status(call, get(index, 0, slot, nullptr), KQ_S_FALSE);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
}

// A KQFree* export of records takes null, and frees a record that `make` got from its KQGet*.
template <class Record, class Make>
void expect_record_freed(kq_status (*release)(Record*), const std::string& name, const std::string& what,
                         const Make& make) {
    {
        CallArguments call(name + "(null)");
        expect_status(call, release(nullptr), KQ_S_OK);
    }
    CallArguments call(name + "(" + what + ")");
    Record* record = nullptr;
    ASSERT_EQ(make(&record), KQ_S_OK) << call.label();
    expect_status(call, release(record), KQ_S_OK);
}

void free_option_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetOption)>("KQGetOption");
    expect_record_freed(pass.resolve<decltype(KQFreeOption)>("KQFreeOption"), "KQFreeOption", "option 5",
                        [&](KQOption** record) { return get(5, 0, record, nullptr); });
}

void set_option_row(const Pass& pass) {
    const auto set = pass.resolve<decltype(KQSetOption)>("KQSetOption");
    {
        CallArguments call("KQSetOption(null, \"1\")");
        expect_status(call, set(nullptr, call.in_text(std::wstring_view(L"1")), nullptr, nullptr), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQSetOption(null, null, null, null)");
        expect_status(call, set(nullptr, nullptr, nullptr, nullptr), KQ_E_INVALIDARG);
    }
    // Unknown names store nothing (the settings are compared after the whole table).
    for (const std::wstring& name : unknown_names(L"MouseHack")) {
        for (const wchar_t* value : {L"1", static_cast<const wchar_t*>(nullptr), L"\xD800"}) {
            CallArguments call("KQSetOption(" + show(name.c_str()) + ", " + show(value) + ")");
            expect_status(call,
                          set(call.in_text(name), value ? call.in_text(std::wstring_view(value)) : nullptr,
                              call.in_text(std::wstring_view(L"\xDC00")), nullptr),
                          KQ_E_INVALIDARG);
        }
    }
    // Known names with odd values; each value is put back as it was.
    const std::wstring long_value(261, L'v');
    const struct {
        const wchar_t* name;
        const wchar_t* value;
    } known[] = {
        {L"MouseHack", nullptr},
        {L"MouseHack", L"\xD800"},
        {L"MouseHack", L"99999999999999999999"},
        {L"MouseHack", L"-1"},
        {L"WindowsPrinter", long_value.c_str()},
        {L"WindowsPrinter", L"\xDBFF"},
        {L"WindowsSerial", L"\xDC00x"},
        {L"WindowsMIDIOut", L""},
        {L"WindowsMIDIIn", nullptr},
    };
    for (const auto& [name, value] : known) {
        const SavedSetting saved(name);
        CallArguments call("KQSetOption(" + show(name) + ", " + show(value) + ")");
        expect_status(call,
                      set(call.in_text(std::wstring_view(name)),
                          value ? call.in_text(std::wstring_view(value)) : nullptr, nullptr,
                          call.in_text(std::wstring_view(L"\xD800"))),
                      KQ_S_OK);
    }
}

// ---- File associations and device commands: records by index --------------------------------

void get_file_association_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetFileAssociation)>("KQGetFileAssociation");
    const auto release = pass.resolve<decltype(KQFreeFileAssociation)>("KQFreeFileAssociation");
    for (const std::uint32_t index : {0u, 10u, 0xFFFFFFFFu}) {
        CallArguments call("KQGetFileAssociation(" + hex(index) + ", null)");
        expect_status(call, get(index, nullptr), KQ_E_INVALIDARG);
    }
    for (std::uint32_t index = 0; index < KQ_FILE_ASSOCIATION_COUNT; ++index) {
        CallArguments call("KQGetFileAssociation(" + std::to_string(index) + ")");
        KQFileAssociation** slot = call.out_slot(poison<KQFileAssociation>());
        expect_status(call, get(index, slot), KQ_S_OK);
        ASSERT_NE(*slot, nullptr) << call.label();
        EXPECT_EQ((*slot)->cbSize, 72u) << call.label();
        EXPECT_GE(LocalSize(*slot), 72u) << call.label();
        expect_status(call, release(*slot), KQ_S_OK);
    }
    for (const std::uint32_t index : {10u, 11u, 0x80000000u, 0xFFFFFFFFu}) {
        CallArguments call("KQGetFileAssociation(" + hex(index) + ")");
        KQFileAssociation** slot = call.out_slot(poison<KQFileAssociation>());
        expect_status(call, get(index, slot), KQ_S_FALSE);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
}

void free_file_association_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetFileAssociation)>("KQGetFileAssociation");
    expect_record_freed(pass.resolve<decltype(KQFreeFileAssociation)>("KQFreeFileAssociation"), "KQFreeFileAssociation",
                        "record 9", [&](KQFileAssociation** record) { return get(9, record); });
}

void get_device_command_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetDeviceCommand)>("KQGetDeviceCommand");
    const auto release = pass.resolve<decltype(KQFreeDeviceCommand)>("KQFreeDeviceCommand");
    {
        CallArguments call("KQGetDeviceCommand(0, 7, null model, null)");
        expect_status(call, get(0, 7, 0, 0, nullptr, nullptr), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetDeviceCommand(0xFFFFFFFF, 0xFFFFFFFF, null model, null)");
        expect_status(call, get(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, nullptr, nullptr), KQ_E_INVALIDARG);
    }
    const std::wstring long_model(261, L'm');
    const struct {
        std::uint32_t index, category;
        const wchar_t* model;
        kq_status status;
    } cases[] = {
        {0, 7, nullptr, KQ_S_OK},
        {3, 7, L"\xD800", KQ_S_OK},
        {4, 7, nullptr, KQ_S_FALSE},
        {0xFFFFFFFF, 7, nullptr, KQ_S_FALSE},
        {0, 0x107, nullptr, KQ_S_OK},
        {0, 0xFFFFFF07, long_model.c_str(), KQ_S_OK},
        {0, 2, L"a-cdtv", KQ_S_OK},
        {5, 0x102, L"A-CDTV", KQ_S_OK},
        {6, 2, L"a-cdtv", KQ_S_FALSE},
        {0, 2, nullptr, KQ_S_FALSE},
        {0, 2, L"", KQ_S_FALSE},
        {0, 2, L"a-cdtv\xDBFF", KQ_S_FALSE},
        {0, 2, long_model.c_str(), KQ_S_FALSE},
        {0, 0, L"a-cdtv", KQ_S_FALSE},
        {0, 0xFFFFFFFF, L"a-cdtv", KQ_S_FALSE},
    };
    for (const auto& row : cases) {
        CallArguments call("KQGetDeviceCommand(" + hex(row.index) + ", " + hex(row.category) + ", " + show(row.model) +
                           ")");
        KQDeviceCommand** slot = call.out_slot(poison<KQDeviceCommand>());
        expect_status(call,
                      get(row.index, row.category, 0xFFFFFFFF, 0xFFFFFFFF,
                          row.model ? call.in_text(std::wstring_view(row.model)) : nullptr, slot),
                      row.status);
        if (row.status != KQ_S_OK) {
            EXPECT_EQ(*slot, nullptr) << call.label();
            continue;
        }
        ASSERT_NE(*slot, nullptr) << call.label();
        const KQDeviceCommand& record = **slot;
        const auto* block = reinterpret_cast<const std::byte*>(&record);
        const std::size_t bytes = LocalSize(*slot);
        EXPECT_EQ(record.cbSize, 24u) << call.label();
        for (const kq_char* text : {record.name, record.command}) {
            const auto* at = reinterpret_cast<const std::byte*>(text);
            ASSERT_TRUE(at >= block + 24 && at < block + bytes) << call.label() << ": a string outside the record";
            EXPECT_LE(at + (std::wcslen(text) + 1) * sizeof(wchar_t), block + bytes) << call.label();
        }
        expect_status(call, release(*slot), KQ_S_OK);
    }
}

void free_device_command_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetDeviceCommand)>("KQGetDeviceCommand");
    expect_record_freed(pass.resolve<decltype(KQFreeDeviceCommand)>("KQFreeDeviceCommand"), "KQFreeDeviceCommand",
                        "keyboard command 2",
                        [&](KQDeviceCommand** record) { return get(2, 7, 0, 0, L"a-500", record); });
}

// ---- Content texts ---------------------------------------------------------------------------

void content_tooltip_row(const Pass& pass) {
    const auto tooltip = pass.resolve<decltype(KQGetContentTooltip)>("KQGetContentTooltip");
    {
        CallArguments call("KQGetContentTooltip(floppy, null buffer, 64)");
        expect_status(call, tooltip(0, 0, nullptr, nullptr, nullptr, 64), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetContentTooltip(0xFF, 0xFFFFFFFF, null, null, null, 0)");
        expect_status(call, tooltip(0xFF, 0xFFFFFFFF, nullptr, nullptr, nullptr, 0), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetContentTooltip(floppy, buffer of 0)");
        wchar_t* buffer = call.out_text(1);
        expect_status(call, tooltip(0, 0, call.in_text(pass.game_adf), nullptr, buffer, 0), KQ_E_INVALIDARG);
        EXPECT_TRUE(is_unwritten(buffer, 1)) << call.label();
    }
    const std::wstring list = L"Work\t" + pass.game_adf + L"\rSystem\t" + pass.long_missing[2];
    const std::vector<std::pair<const wchar_t*, const wchar_t*>> contents = {
        {nullptr, nullptr},
        {pass.game_adf.c_str(), L"Game"},
        {pass.long_adf[2].c_str(), L"\xD800"},
        {pass.long_missing[1].c_str(), nullptr},
        {pass.surrogate_adf.c_str(), L"\xDBFF"},
        {list.c_str(), L"\xDC00\t\xD800"},
    };
    for (const std::uint8_t drive :
         {std::uint8_t{0}, std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}, std::uint8_t{4}, std::uint8_t{0xFF}}) {
        for (const std::uint32_t index : {0u, 0xFFFFFFFFu}) {
            for (const auto& [path, label] : contents) {
                const std::string what = "KQGetContentTooltip(" + std::to_string(drive) + ", " + hex(index) + ", " +
                                         show(path) + ", " + show(label);
                std::wstring full;
                {
                    CallArguments call(what + ", 2048)");
                    wchar_t* buffer = call.out_text(2048);
                    expect_status(call,
                                  tooltip(drive, index, path ? call.in_text(std::wstring_view(path)) : nullptr,
                                          label ? call.in_text(std::wstring_view(label)) : nullptr, buffer, 2048),
                                  KQ_S_OK);
                    ASSERT_TRUE(is_terminated_within(buffer, 2048)) << call.label();
                    full = buffer;
                    if (drive > 3) {
                        EXPECT_EQ(full, L"") << call.label() << ": an unknown drive has no text";
                    }
                }
                for (const std::uint32_t chars : {1u, 2u, 17u}) {
                    CallArguments call(what + ", " + std::to_string(chars) + ")");
                    wchar_t* buffer = call.out_text(chars);
                    expect_status(call,
                                  tooltip(drive, index, path ? call.in_text(std::wstring_view(path)) : nullptr,
                                          label ? call.in_text(std::wstring_view(label)) : nullptr, buffer, chars),
                                  KQ_S_OK);
                    expect_cut_text(call, buffer, chars, full);
                }
            }
        }
    }
}

void content_info_row(const Pass& pass) {
    const auto info = pass.resolve<decltype(KQGetContentInfo)>("KQGetContentInfo");
    for (const std::uint8_t drive : {std::uint8_t{0}, std::uint8_t{2}, std::uint8_t{3}, std::uint8_t{0xFF}}) {
        CallArguments call("KQGetContentInfo(drive " + std::to_string(drive) + ")");
        wchar_t* buffer = call.out_text(64);
        expect_status(call, info(drive, 0, nullptr, nullptr, buffer, 64, 0), KQ_E_INVALIDARG);
        EXPECT_TRUE(is_unwritten(buffer, 64)) << call.label() << ": the buffer stays untouched";
    }
    {
        CallArguments call("KQGetContentInfo(hard disk, null buffer)");
        expect_status(call, info(1, 0, nullptr, nullptr, nullptr, 64, 0), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetContentInfo(hard disk, buffer of 0)");
        wchar_t* buffer = call.out_text(1);
        expect_status(call, info(1, 0, nullptr, nullptr, buffer, 0, 0), KQ_E_INVALIDARG);
        EXPECT_TRUE(is_unwritten(buffer, 1)) << call.label();
    }
    {
        CallArguments call("KQGetContentInfo(0xFF, all null)");
        expect_status(call, info(0xFF, 0xFFFFFFFF, nullptr, nullptr, nullptr, 0, 0xFFFFFFFF), KQ_E_INVALIDARG);
    }
    const std::wstring list = L"Work\t" + pass.game_adf + L"\rSystem\t" + pass.long_adf[0];
    const std::wstring records =
        pass.game_adf + L"\tDH0\tWork\thardfile\n" + pass.long_missing[2] + L"\tDH1\tData\thardfile";
    const std::wstring runtime = pass.game_adf + L"\tdevicename=DH0\tbootpriority=0\n" + pass.long_adf[2] +
                                 L"\tdevicename=DH1\n" + pass.surrogate_adf + L"\tvolumename=\xD800";
    const std::wstring odd = L"\xD800\t\xDC00\r\xDBFF\n\t\t\r\n";
    const struct {
        const wchar_t* list;
        const wchar_t* records;
        std::uint32_t flags;
    } cases[] = {
        {nullptr, nullptr, 0},
        {nullptr, nullptr, KQ_CONTENT_INFO_RUNTIME},
        {nullptr, nullptr, 0xFFFFFFFF},
        {list.c_str(), records.c_str(), 0},
        {list.c_str(), records.c_str(), KQ_CONTENT_INFO_SHORT},
        {nullptr, runtime.c_str(), KQ_CONTENT_INFO_RUNTIME},
        {odd.c_str(), odd.c_str(), 0},
        {odd.c_str(), odd.c_str(), KQ_CONTENT_INFO_SHORT},
        {odd.c_str(), odd.c_str(), KQ_CONTENT_INFO_RUNTIME},
        {pass.long_missing[2].c_str(), pass.long_missing[2].c_str(), KQ_CONTENT_INFO_RUNTIME},
    };
    for (const auto& row : cases) {
        const std::string what =
            "KQGetContentInfo(hard disk, " + show(row.list) + ", " + show(row.records) + ", flags " + hex(row.flags);
        const auto call_with = [&](CallArguments& call, std::uint32_t chars) {
            wchar_t* buffer = call.out_text(chars);
            const kq_status status =
                info(1, 0xFFFFFFFF, row.list ? call.in_text(std::wstring_view(row.list)) : nullptr,
                     row.records ? call.in_text(std::wstring_view(row.records)) : nullptr, buffer, chars, row.flags);
            return std::pair{status, buffer};
        };
        std::wstring full;
        {
            CallArguments call(what + ", 8192)");
            const auto [status, buffer] = call_with(call, 8192);
            expect_status(call, status, KQ_S_OK);
            ASSERT_TRUE(is_terminated_within(buffer, 8192)) << call.label();
            full = buffer;
        }
        const auto length = static_cast<std::uint32_t>(full.size());
        // A text that does not fit with its NUL leaves the buffer empty; one that fits is whole.
        for (const std::uint32_t chars : std::set<std::uint32_t>{1u, std::max(length, 1u), length + 1}) {
            CallArguments call(what + ", " + std::to_string(chars) + ")");
            const auto [status, buffer] = call_with(call, chars);
            if (chars > length) {
                expect_status(call, status, KQ_S_OK);
                EXPECT_EQ(std::wstring(buffer), full) << call.label();
            } else {
                expect_status(call, status, kBufferOverflow);
                EXPECT_EQ(buffer[0], L'\0') << call.label();
            }
        }
    }
}

// ---- Auto-configuration and manifests --------------------------------------------------------

std::wstring catalog(const std::wstring& media) {
    return L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><xadml><catalog><application><media>" + media +
           L"</media></application></catalog></xadml>";
}

void auto_configure_row(const Pass& pass) {
    const auto configure = pass.resolve<decltype(KQAutoConfigureApplication)>("KQAutoConfigureApplication");
    for (const std::uint32_t flags : {0u, std::uint32_t{KQ_AUTOCONFIGURE_IMPORT}}) {
        {
            CallArguments call("KQAutoConfigureApplication(null input, flags " + hex(flags) + ")");
            char** slot = call.out_slot(poison<char>());
            expect_status(call, configure(nullptr, nullptr, flags, slot), KQ_E_POINTER);
            EXPECT_EQ(*slot, nullptr) << call.label();
        }
        {
            CallArguments call("KQAutoConfigureApplication(input, null xml, flags " + hex(flags) + ")");
            expect_status(call, configure(call.in_text(catalog(L"")), nullptr, flags, nullptr), KQ_E_POINTER);
        }
    }
    {
        CallArguments call("KQAutoConfigureApplication(all null)");
        expect_status(call, configure(nullptr, nullptr, 0xFFFFFFFF, nullptr), KQ_E_POINTER);
    }
    const struct {
        std::wstring input;
        std::uint32_t flags;
        kq_status status; // 0x80070000 alone: the file system's error
        bool has_text;
    } cases[] = {
        {L"", 0, kMalformed, false},
        {L"<xadml>", 0, kMalformed, false},
        {L"\xD800", 0, kMalformed, false},
        {catalog(L"<floppy>\xDC00</floppy>"), 0, kMalformed, false},
        {catalog(L"<floppy>" + pass.surrogate_adf + L"</floppy>"), 0, kMalformed, false},
        {catalog(L""), 0, KQ_S_OK, false},
        {catalog(L"<floppy></floppy>"), 0xFFFFFFFE, KQ_S_OK, false},
        {catalog(L"<floppy>" + pass.missing_adf + L"</floppy>"), 0, KQ_E_FAIL, false},
        {catalog(L"<floppy>" + pass.long_missing[0] + L"</floppy>"), 0, KQ_E_FAIL, false},
        {catalog(L"<floppy>" + pass.long_missing[1] + L"</floppy>"), 0, KQ_E_FAIL, false},
        {catalog(L"<floppy>" + pass.long_missing[2] + L"</floppy>"), 0, KQ_E_FAIL, false},
        {catalog(L"<floppy>" + pass.game_adf + L"</floppy>"), 0, KQ_S_OK, true},
        {L"", KQ_AUTOCONFIGURE_IMPORT, KQ_E_INVALIDARG, false},
        {L"\xD800", KQ_AUTOCONFIGURE_IMPORT, KQ_E_INVALIDARG, false},
        {pass.folder_name + L"\\Game.cfg", KQ_AUTOCONFIGURE_IMPORT, KQ_E_INVALIDARG, false},
        {pass.folder_name + L"\\Game.uae\xD800", 0xFFFFFFFF, KQ_E_INVALIDARG, false},
        {catalog(L""), KQ_AUTOCONFIGURE_IMPORT, KQ_E_INVALIDARG, false},
        {pass.folder_name + L"\\\xD800.uae", KQ_AUTOCONFIGURE_IMPORT, static_cast<kq_status>(0x80070000), false},
        {path_of_length(pass.folder_name, 259, L".uae"), KQ_AUTOCONFIGURE_IMPORT, static_cast<kq_status>(0x80070000),
         false},
        {path_of_length(pass.folder_name, 260, L".uae"), KQ_AUTOCONFIGURE_IMPORT, static_cast<kq_status>(0x80070000),
         false},
        {path_of_length(pass.folder_name, 261, L".UAE"), 0xFFFFFFFF, static_cast<kq_status>(0x80070000), false},
    };
    for (const auto& row : cases) {
        CallArguments call("KQAutoConfigureApplication(" + show(row.input.c_str()) + ", flags " + hex(row.flags) + ")");
        char** slot = call.out_slot(poison<char>());
        const kq_status status = configure(call.in_text(row.input), reinterpret_cast<void*>(1), row.flags, slot);
        if (row.status == static_cast<kq_status>(0x80070000))
            EXPECT_TRUE(is_file_system_error(status))
                << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
        else
            expect_status(call, status, row.status);
        if (!row.has_text) {
            EXPECT_EQ(*slot, nullptr) << call.label();
            continue;
        }
        ASSERT_NE(*slot, nullptr) << call.label();
        EXPECT_GE(GlobalSize(*slot), std::strlen(*slot) + 1) << call.label();
        EXPECT_EQ(GlobalFree(*slot), nullptr) << call.label();
    }
}

std::string kq9(const std::string& configuration) {
    return "<kq9><application><configuration>" + configuration + "</configuration></application></kq9>";
}

void application_info_row(const Pass& pass) {
    const auto info = pass.resolve<decltype(KQGetApplicationInfo)>("KQGetApplicationInfo");
    {
        CallArguments call("KQGetApplicationInfo(null, manifest)");
        expect_status(call, info(nullptr, call.in_text(kq9("<system>a-1200</system>"))), KQ_E_POINTER);
    }
    {
        CallArguments call("KQGetApplicationInfo(null, null)");
        expect_status(call, info(nullptr, nullptr), KQ_E_POINTER);
    }
    const std::string long_model(261, 'm');
    const struct {
        std::optional<std::string> manifest;
        kq_status status;
    } cases[] = {
        {std::nullopt, KQ_E_INVALIDARG},
        {"", kMalformed},
        {"<kq9>", kMalformed},
        {"\xED\xA0\x80", kMalformed},
        {kq9("<system>\xED\xA0\x80</system>"), kMalformed},
        {kq9("<system>\xFF\xFE</system>"), kMalformed},
        {"\xFF\xFE<\0k\0q\0", kMalformed},
        {kq9("<system>a-1200</system>"), KQ_S_OK},
        {kq9("<system>" + long_model + "</system><rom>" + long_model + "</rom>"), KQ_S_OK},
        {kq9(""), KQ_S_OK},
        {"<kq9/>", KQ_S_OK},
    };
    for (const auto& row : cases) {
        CallArguments call("KQGetApplicationInfo(" + show(row.manifest ? row.manifest->c_str() : nullptr) + ")");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, info(slot, row.manifest ? call.in_text(*row.manifest) : nullptr), row.status);
        if (row.status != KQ_S_OK) {
            EXPECT_EQ(*slot, nullptr) << call.label();
            continue;
        }
        ASSERT_NE(*slot, nullptr) << call.label();
        EXPECT_GE(GlobalSize(*slot), (std::wcslen(*slot) + 1) * sizeof(wchar_t)) << call.label();
        EXPECT_EQ(GlobalFree(*slot), nullptr) << call.label();
    }
}

void boot_tag_row(const Pass& pass) {
    const auto boot_tag = pass.resolve<decltype(KQBootTag)>("KQBootTag");
    const std::string adf = kq9("<boot type=\"adf\">310</boot>");
    {
        CallArguments call("KQBootTag(all null)");
        expect_status(call, boot_tag(nullptr, nullptr, 0xFFFFFFFF, nullptr), KQ_E_INVALIDARG);
    }
    const std::wstring long_root(261, L'r');
    const struct {
        std::optional<std::string> manifest;
        std::optional<std::wstring> root;
        std::uint32_t operation;
        kq_status status;
    } cases[] = {
        {std::nullopt, L"C:\\Data", 0, KQ_E_INVALIDARG},
        {adf, std::nullopt, 0, KQ_E_INVALIDARG},
        {adf, L"C:\\Data", 1, KQ_E_INVALIDARG},
        {adf, L"C:\\Data", 0xFFFFFFFF, KQ_E_INVALIDARG},
        {kq9("<boot type=\"zip\">310</boot>"), L"C:\\Data", 0, KQ_E_INVALIDARG},
        {kq9("<boot type=\"\xED\xA0\x80\">310</boot>"), L"C:\\Data", 0, kMalformed},
        {kq9("<boot type=\"dir\">nothing</boot>"), L"C:\\Data", 0, KQ_E_INVALIDARG},
        {kq9("<boot type=\"dir\"></boot>"), L"C:\\Data", 0, KQ_E_FAIL}, // the tag's lookup fails
        {kq9("<boot type=\"adf\"> </boot>"), L"C:\\Data", 0, KQ_E_FAIL},
        {kq9(""), L"C:\\Data", 0, kNotFound},
        {kq9("<boot>310</boot>"), L"C:\\Data", 0, kNotFound},
        {"", L"C:\\Data", 0, kMalformed},
        {"<kq9><application>", L"C:\\Data", 0, kMalformed},
        {adf, L"", 0, KQ_S_OK},
        {adf, L"C:\\Data", 0, KQ_S_OK},
        {adf, long_root, 0, KQ_S_OK},
        {adf, L"\xD800", 0, KQ_S_OK},
        {kq9("<boot type=\"ADF\">" + std::string(261, 't') + "</boot>"), pass.folder_name, 0, KQ_S_OK},
        {kq9("<boot type=\"hdf\">\xEF\xBF\xBD</boot>"), pass.folder_name, 0, KQ_S_OK},
        {kq9("<boot type=\"adf\">aros-latest</boot>"), pass.data_with_adf, 0, KQ_S_OK},
        {kq9("<boot type=\"adf\">aros-latest</boot>"), long_root, 0, KQ_S_OK},
    };
    for (const auto& row : cases) {
        for (const bool with_slot : {false, true}) {
            CallArguments call("KQBootTag(" + show(row.manifest ? row.manifest->c_str() : nullptr) + ", " +
                               show(row.root ? row.root->c_str() : nullptr) + ", " + hex(row.operation) +
                               (with_slot ? ", path)" : ", null)"));
            kq_char** slot = with_slot ? call.out_slot(poison<kq_char>()) : nullptr;
            expect_status(call,
                          boot_tag(row.manifest ? call.in_text(*row.manifest) : nullptr,
                                   row.root ? call.in_text(*row.root) : nullptr, row.operation, slot),
                          row.status);
            if (slot == nullptr) continue;
            if (row.status != KQ_S_OK) {
                EXPECT_EQ(*slot, nullptr) << call.label();
                continue;
            }
            ASSERT_NE(*slot, nullptr) << call.label();
            EXPECT_EQ(std::wstring(*slot).rfind(*row.root, 0), 0u) << call.label() << ": a path under the root";
            EXPECT_GE(GlobalSize(*slot), (std::wcslen(*slot) + 1) * sizeof(wchar_t)) << call.label();
            EXPECT_EQ(GlobalFree(*slot), nullptr) << call.label();
        }
    }
}

// ---- Models, ROMs and input ports ------------------------------------------------------------

void rom_exists_row(const Pass& pass) {
    const auto exists = pass.resolve<decltype(KQROMExists)>("KQROMExists");
    const wchar_t* folder = pass.folder_name.c_str();
    const struct {
        const wchar_t* rom;
        const wchar_t* folder;
    } missing[] = {{nullptr, folder}, {L"", folder}, {L"310", nullptr}, {L"310", L""}, {nullptr, nullptr}, {L"", L""}};
    for (const auto& row : missing) {
        CallArguments call("KQROMExists(" + show(row.rom) + ", a-1200, ntsc, " + show(row.folder) + ")");
        expect_status(call,
                      exists(row.rom ? call.in_text(std::wstring_view(row.rom)) : nullptr, L"a-1200", L"ntsc",
                             row.folder ? call.in_text(std::wstring_view(row.folder)) : nullptr),
                      KQ_E_INVALIDARG);
    }
    // No ROM files anywhere: every ROM is missing, whatever the ids.
    std::vector<std::wstring> roms = odd_texts();
    roms.erase(roms.begin()); // an empty id is refused above
    roms.insert(roms.end(), {L"310-a1200", L"3x0-a4000", L"aros-latest", L"120", L"zz"});
    const std::wstring long_folder = path_of_length(pass.folder_name, 261, L"");
    for (const std::wstring& rom : roms) {
        for (const wchar_t* model : {static_cast<const wchar_t*>(nullptr), L"a-4000", L"\xD800"}) {
            for (const wchar_t* video : {static_cast<const wchar_t*>(nullptr), L"NTSC", L"\xDBFF"}) {
                for (const std::wstring& data : {pass.folder_name, long_folder, std::wstring(L"\xDC00")}) {
                    CallArguments call("KQROMExists(" + show(rom.c_str()) + ", " + show(model) + ", " + show(video) +
                                       ", " + show(data.c_str()) + ")");
                    expect_status(call,
                                  exists(call.in_text(rom), model ? call.in_text(std::wstring_view(model)) : nullptr,
                                         video ? call.in_text(std::wstring_view(video)) : nullptr, call.in_text(data)),
                                  KQ_S_FALSE);
                }
            }
        }
    }
}

void default_system_rom_row(const Pass& pass) {
    const auto rom = pass.resolve<decltype(KQGetDefaultSystemROM)>("KQGetDefaultSystemROM");
    {
        CallArguments call("KQGetDefaultSystemROM(null, a-500)");
        expect_status(call, rom(nullptr, call.in_text(std::wstring_view(L"a-500"))), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetDefaultSystemROM(null, null)");
        expect_status(call, rom(nullptr, nullptr), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetDefaultSystemROM(slot, null)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, rom(slot, nullptr), KQ_E_INVALIDARG);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    std::vector<std::wstring> models = unknown_names(L"a-1200");
    models.push_back(L"a-1200");
    for (const std::wstring& model : models) {
        CallArguments call("KQGetDefaultSystemROM(" + show(model.c_str()) + ")");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, rom(slot, call.in_text(model)), KQ_S_OK);
        ASSERT_NE(*slot, nullptr) << call.label();
        const bool known = model == L"a-1200" || model == L"A-1200";
        if (!known) {
            EXPECT_STREQ(*slot, L"120") << call.label();
        }
        EXPECT_GE(GlobalSize(*slot), (std::wcslen(*slot) + 1) * sizeof(wchar_t)) << call.label();
        EXPECT_EQ(GlobalFree(*slot), nullptr) << call.label();
    }
}

void restore_paths_row(const Pass& pass) {
    const auto paths = pass.resolve<decltype(KQGetRestoreSystemFilesPaths)>("KQGetRestoreSystemFilesPaths");
    {
        CallArguments call("KQGetRestoreSystemFilesPaths(null, folder)");
        expect_status(call, paths(nullptr, call.in_text(pass.folder_name)), KQ_S_OK);
    }
    {
        CallArguments call("KQGetRestoreSystemFilesPaths(null, null)");
        expect_status(call, paths(nullptr, nullptr), KQ_S_OK);
    }
    {
        CallArguments call("KQGetRestoreSystemFilesPaths(slot, null)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, paths(slot, nullptr), KQ_S_OK);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    std::vector<std::wstring> folders = odd_texts();
    for (const std::uint32_t chars : kPathLengths) folders.push_back(path_of_length(pass.folder_name, chars, L""));
    folders.push_back(pass.folder_name);
    folders.push_back(pass.data_with_adf);
    for (const std::wstring& folder : folders) {
        CallArguments call("KQGetRestoreSystemFilesPaths(" + show(folder.c_str()) + ")");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, paths(slot, call.in_text(folder)), KQ_S_OK);
        ASSERT_NE(*slot, nullptr) << call.label();
        const std::wstring text(*slot);
        EXPECT_EQ(text.find(L"Shared\\adf\t") == 0, folder == pass.data_with_adf)
            << call.label() << ": " << narrow(text);
        EXPECT_GE(GlobalSize(*slot), (text.size() + 1) * sizeof(wchar_t)) << call.label();
        EXPECT_EQ(GlobalFree(*slot), nullptr) << call.label();
    }
}

void input_ports_row(const Pass& pass) {
    const auto ports = pass.resolve<decltype(KQGetInputPortsInfo)>("KQGetInputPortsInfo");
    {
        CallArguments call("KQGetInputPortsInfo(null model, outputs)");
        std::uint32_t* outputs[4];
        for (std::uint32_t*& output : outputs) output = call.out_slot<std::uint32_t>(0xA5A5A5A5);
        expect_status(call, ports(nullptr, L"parallel", outputs[0], outputs[1], outputs[2], outputs[3]),
                      KQ_E_INVALIDARG);
        for (std::uint32_t* output : outputs) EXPECT_EQ(*output, 0xA5A5A5A5u) << call.label() << ": untouched";
    }
    {
        CallArguments call("KQGetInputPortsInfo(all null)");
        expect_status(call, ports(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), KQ_E_INVALIDARG);
    }
    std::vector<std::wstring> models = odd_texts();
    models.push_back(L"a-1200");
    const struct {
        const wchar_t* multitap;
        std::uint32_t multitap_ports;
    } multitaps[] = {{nullptr, 0}, {L"parallel", 3},       {L"PARALLEL", 3},
                     {L"", 0},     {L"parallel\xD800", 0}, {L"\xDC00", 0}};
    for (const std::wstring& model : models) {
        for (const auto& [multitap, multitap_ports] : multitaps) {
            for (int skipped = -1; skipped < 4; ++skipped) {
                CallArguments call("KQGetInputPortsInfo(" + show(model.c_str()) + ", " + show(multitap) + ", output " +
                                   std::to_string(skipped) + " null)");
                std::uint32_t* outputs[4];
                for (int i = 0; i < 4; ++i)
                    outputs[i] = i == skipped ? nullptr : call.out_slot<std::uint32_t>(0xA5A5A5A5);
                expect_status(call,
                              ports(call.in_text(model), multitap ? call.in_text(std::wstring_view(multitap)) : nullptr,
                                    outputs[0], outputs[1], outputs[2], outputs[3]),
                              KQ_S_OK);
                const std::uint32_t expected[4] = {3, multitap_ports, 0, 1};
                for (int i = 0; i < 4; ++i)
                    if (outputs[i] != nullptr) {
                        EXPECT_EQ(*outputs[i], expected[i]) << call.label() << ", output " << i;
                    }
            }
        }
        CallArguments call("KQGetInputPortsInfo(" + show(model.c_str()) + ", no outputs)");
        expect_status(call, ports(call.in_text(model), nullptr, nullptr, nullptr, nullptr, nullptr), KQ_S_OK);
    }
}

void default_port_content_row(const Pass& pass) {
    const auto content = pass.resolve<decltype(KQGetDefaultInputPortContent)>("KQGetDefaultInputPortContent");
    {
        CallArguments call("KQGetDefaultInputPortContent(null model, 0, content)");
        std::uint32_t* slot = call.out_slot<std::uint32_t>(0xA5A5A5A5);
        expect_status(call, content(nullptr, 0, slot), KQ_E_INVALIDARG);
        EXPECT_EQ(*slot, 0xA5A5A5A5u) << call.label();
    }
    {
        CallArguments call("KQGetDefaultInputPortContent(a-cd32, 0, null)");
        expect_status(call, content(call.in_text(std::wstring_view(L"a-cd32")), 0, nullptr), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetDefaultInputPortContent(null, 0xFFFFFFFF, null)");
        expect_status(call, content(nullptr, 0xFFFFFFFF, nullptr), KQ_E_INVALIDARG);
    }
    std::vector<std::pair<std::wstring, std::uint32_t>> models = {
        {L"a-cd32", 4}, {L"A-CD32", 4}, {L"a-cdtv", 2}, {L"a-1200", 1}};
    for (const std::wstring& unknown : unknown_names(L"a-cd32"))
        if (unknown != L"A-CD32") models.emplace_back(unknown, 1);
    for (const auto& [model, port0] : models) {
        for (const std::uint32_t port : {0u, 1u, 2u, 3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
            CallArguments call("KQGetDefaultInputPortContent(" + show(model.c_str()) + ", " + hex(port) + ")");
            std::uint32_t* slot = call.out_slot<std::uint32_t>(0xA5A5A5A5);
            expect_status(call, content(call.in_text(model), port, slot), KQ_S_OK);
            EXPECT_EQ(*slot, port == 0 ? port0 : 0u) << call.label();
        }
    }
}

// ---- Media -----------------------------------------------------------------------------------

void get_runtime_medium_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
    const auto dismiss = pass.resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    const struct {
        bool image, buffer;
        std::uint32_t chars;
    } refused[] = {{false, true, 260}, {true, false, 260}, {true, true, 0}, {false, false, 0}, {false, true, 0}};
    for (const auto& row : refused) {
        CallArguments call(std::string("KQGetRuntimeMedium(") + (row.image ? "image" : "null") + ", null, " +
                           (row.buffer ? "buffer" : "null") + ", " + std::to_string(row.chars) + ")");
        wchar_t* buffer = row.buffer ? call.out_text(260) : nullptr;
        expect_status(call, get(row.image ? call.in_text(pass.game_adf) : nullptr, nullptr, buffer, row.chars, 0),
                      KQ_E_INVALIDARG);
        if (buffer) {
            EXPECT_TRUE(is_unwritten(buffer, 260)) << call.label();
        }
    }
    // Refusals and failures that leave the buffer alone.
    const std::wstring long_alternate = path_of_length(pass.folder_name, 261, L"");
    const struct {
        std::wstring image;
        kq_status status; // 0x80070000 alone: the file system's error
    } failing[] = {
        {L"Game.adf", KQ_E_INVALIDARG},
        {L"", KQ_S_FALSE},
        {L"\xD800", KQ_S_FALSE},
        {pass.folder_name + L"\\Game.txt", KQ_S_FALSE},
        {pass.folder_name + L"\\Game.adf\xD800", KQ_S_FALSE},
        {pass.long_adf[0], kBufferOverflow},
        {pass.long_adf[1], kBufferOverflow},
        {pass.long_adf[2], kBufferOverflow},
        {pass.long_missing[2], kBufferOverflow},
        {pass.missing_adf, static_cast<kq_status>(0x80070000)},
        {pass.surrogate_adf, static_cast<kq_status>(0x80070000)},
        {pass.folder_name + L"\\missing.hdz", static_cast<kq_status>(0x80040002)},
    };
    for (const auto& row : failing) {
        for (const std::uint32_t chars : {1u, 260u}) {
            CallArguments call("KQGetRuntimeMedium(" + show(row.image.c_str()) + ", " + std::to_string(chars) + ")");
            wchar_t* buffer = call.out_text(chars);
            const kq_status status = get(call.in_text(row.image), call.in_text(long_alternate), buffer, chars, 0);
            if (row.status == static_cast<kq_status>(0x80070000))
                EXPECT_TRUE(is_file_system_error(status))
                    << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
            else
                expect_status(call, status, row.status);
            EXPECT_TRUE(is_unwritten(buffer, chars)) << call.label();
        }
    }
    // Keys of the caller that are not 36 characters of a file name.
    const std::wstring bad_keys[] = {L"",
                                     std::wstring(kCallerKey.substr(1)),
                                     std::wstring(kCallerKey) + L"0",
                                     L"0123abcd-4567-89ab-cdef-0123456789a\\",
                                     L"0123abcd-4567-89ab-cdef-0123456789a*",
                                     L"0123abcd-4567-89ab-cdef-0123456789a\x01",
                                     L"\x1F" + std::wstring(kCallerKey.substr(1))};
    for (const std::wstring& key : bad_keys) {
        const auto chars = static_cast<std::uint32_t>(key.size() + 1);
        CallArguments call("KQGetRuntimeMedium(image, caller key " + show(key.c_str()) + ")");
        wchar_t* buffer = call.out_text(chars);
        std::copy(key.begin(), key.end(), buffer);
        buffer[key.size()] = 0;
        expect_status(call, get(call.in_text(pass.runtime_image), nullptr, buffer, chars, KQ_RUNTIME_MEDIUM_CALLER_KEY),
                      KQ_E_INVALIDARG);
    }
    // An unpaired surrogate is a character of a file name on NTFS, not on every file system.
    {
        const std::wstring key = L"0123abcd-4567-89ab-cdef-0123456789a\xD800";
        CallArguments call("KQGetRuntimeMedium(image, caller key " + show(key.c_str()) + ")");
        wchar_t* buffer = call.out_text(MAX_PATH);
        std::copy(key.begin(), key.end(), buffer);
        buffer[key.size()] = 0;
        const kq_status status =
            get(call.in_text(pass.runtime_image), nullptr, buffer, MAX_PATH, KQ_RUNTIME_MEDIUM_CALLER_KEY);
        EXPECT_TRUE(status == KQ_S_OK || is_file_system_error(status))
            << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
        dismiss_working_copies(pass, pass.runtime_name);
    }
    // Copies made: the path cut to the buffer. A key filling the buffer without a NUL is read to
    // the buffer's end only.
    const std::wstring copy = runtime_folder() + L"\\" + std::wstring(kCallerKey) + L"-" + pass.runtime_name;
    for (const std::uint32_t chars : {36u, 37u, static_cast<std::uint32_t>(copy.size()), 260u}) {
        for (const std::uint32_t flags : {std::uint32_t{KQ_RUNTIME_MEDIUM_CALLER_KEY}, 0xFFFFFFFFu}) {
            CallArguments call("KQGetRuntimeMedium(image, alternate folder of 261, caller key, " +
                               std::to_string(chars) + ", flags " + hex(flags) + ")");
            wchar_t* buffer = call.out_text(chars);
            std::copy(kCallerKey.begin(), kCallerKey.end(), buffer);
            if (chars > kCallerKey.size()) buffer[kCallerKey.size()] = 0;
            expect_status(call,
                          get(call.in_text(pass.runtime_image), call.in_text(long_alternate), buffer, chars, flags),
                          KQ_S_OK);
            expect_cut_text(call, buffer, chars, copy);
            EXPECT_EQ(dismiss(copy.c_str(), nullptr, 0), KQ_S_OK) << call.label();
        }
    }
    for (const std::uint32_t chars : {1u, 2u}) {
        CallArguments call("KQGetRuntimeMedium(image, new key, " + std::to_string(chars) + ")");
        wchar_t* buffer = call.out_text(chars);
        expect_status(call,
                      get(call.in_text(pass.runtime_image), call.in_text(std::wstring_view(L"\xD800")), buffer, chars,
                          KQ_RUNTIME_MEDIUM_NO_TIMESTAMP),
                      KQ_S_OK);
        expect_cut_text(call, buffer, chars, runtime_folder());
        dismiss_working_copies(pass, pass.runtime_name);
    }
}

// A working copy of the run's image under the caller's key, dismissed when this goes.
class WorkingCopy {
public:
    explicit WorkingCopy(const Pass& pass) : pass_(pass) {
        const auto get = pass.resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
        wchar_t buffer[MAX_PATH + 1] = {};
        std::copy(kCallerKey.begin(), kCallerKey.end(), buffer);
        EXPECT_EQ(get(pass.runtime_image.c_str(), nullptr, buffer, MAX_PATH + 1, KQ_RUNTIME_MEDIUM_CALLER_KEY),
                  KQ_S_OK);
        path = buffer;
    }
    ~WorkingCopy() { dismiss_working_copies(pass_, pass_.runtime_name); }
    WorkingCopy(const WorkingCopy&) = delete;
    WorkingCopy& operator=(const WorkingCopy&) = delete;

    std::wstring path;

private:
    const Pass& pass_;
};

// Names that are not "<key>-<name>" of a working copy, and one that is but has no record.
std::vector<std::pair<std::wstring, kq_status>> not_working_copies(const Pass& pass) {
    std::vector<std::pair<std::wstring, kq_status>> names;
    for (const std::wstring& text : odd_texts()) names.emplace_back(text, KQ_E_INVALIDARG);
    names.emplace_back(pass.game_adf, KQ_E_INVALIDARG);
    names.emplace_back(L"\\" + std::wstring(kCallerKey), KQ_E_INVALIDARG);
    names.emplace_back(L"\\" + std::wstring(kCallerKey) + L"-", static_cast<kq_status>(0x80070000));
    for (const std::wstring& path : pass.long_adf) names.emplace_back(path, KQ_E_INVALIDARG);
    names.emplace_back(runtime_folder() + L"\\0000abcd-4567-89ab-cdef-0123456789ab-None.adf",
                       static_cast<kq_status>(0x80070000));
    names.emplace_back(runtime_folder() + L"\\\xD800\xD800\xD800\xD800" + std::wstring(32, L'k') + L"-None.adf",
                       static_cast<kq_status>(0x80070000));
    names.emplace_back(path_of_length(runtime_folder(), 261, L"-None.adf"), KQ_E_INVALIDARG);
    return names;
}

void check_runtime_medium_row(const Pass& pass) {
    const auto check = pass.resolve<decltype(KQCheckRuntimeMedium)>("KQCheckRuntimeMedium");
    const WorkingCopy copy(pass);
    {
        CallArguments call("KQCheckRuntimeMedium(null, changed)");
        std::uint32_t* changed = call.out_slot<std::uint32_t>(7);
        expect_status(call, check(nullptr, changed), KQ_E_INVALIDARG);
        EXPECT_EQ(*changed, 7u) << call.label();
    }
    {
        CallArguments call("KQCheckRuntimeMedium(copy, null)");
        expect_status(call, check(call.in_text(copy.path), nullptr), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQCheckRuntimeMedium(null, null)");
        expect_status(call, check(nullptr, nullptr), KQ_E_INVALIDARG);
    }
    for (const auto& [name, expected] : not_working_copies(pass)) {
        CallArguments call("KQCheckRuntimeMedium(" + show(name.c_str()) + ")");
        std::uint32_t* changed = call.out_slot<std::uint32_t>(7);
        const kq_status status = check(call.in_text(name), changed);
        if (expected == static_cast<kq_status>(0x80070000))
            EXPECT_TRUE(is_file_system_error(status))
                << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
        else
            expect_status(call, status, expected);
        EXPECT_EQ(*changed, 7u) << call.label() << ": untouched on failure";
    }
    CallArguments call("KQCheckRuntimeMedium(copy)");
    std::uint32_t* changed = call.out_slot<std::uint32_t>(7);
    expect_status(call, check(call.in_text(copy.path), changed), KQ_S_OK);
    EXPECT_EQ(*changed, 0u) << call.label();
}

void dismiss_runtime_medium_row(const Pass& pass) {
    const auto dismiss = pass.resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    {
        CallArguments call("KQDismissRuntimeMedium(null, null, 0xFFFFFFFF)");
        expect_status(call, dismiss(nullptr, nullptr, 0xFFFFFFFF), KQ_E_INVALIDARG);
    }
    for (const auto& [name, expected] : not_working_copies(pass)) {
        CallArguments call("KQDismissRuntimeMedium(" + show(name.c_str()) + ")");
        const kq_status status = dismiss(call.in_text(name), reinterpret_cast<void*>(1), 0);
        if (expected == static_cast<kq_status>(0x80070000))
            EXPECT_TRUE(is_file_system_error(status))
                << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
        else
            expect_status(call, status, expected);
    }
    for (const std::uint32_t flags : {0u, 0xFFFFFFFFu}) {
        const WorkingCopy copy(pass);
        CallArguments call("KQDismissRuntimeMedium(copy, garbage, " + hex(flags) + ")");
        expect_status(call, dismiss(call.in_text(copy.path), reinterpret_cast<void*>(~std::uintptr_t{0}), flags),
                      KQ_S_OK);
        EXPECT_EQ(GetFileAttributesW(copy.path.c_str()), INVALID_FILE_ATTRIBUTES) << call.label() << ": the copy goes";
    }
}

void check_empty_medium(const CallArguments& call, const Pass& pass, kq_char* path) {
    const auto release = pass.resolve<decltype(KQFreeEmptyMedium)>("KQFreeEmptyMedium");
    ASSERT_NE(path, nullptr) << call.label();
    const std::wstring file(path);
    EXPECT_GE(GlobalSize(path), (file.size() + 1) * sizeof(wchar_t)) << call.label();
    EXPECT_NE(GetFileAttributesW(file.c_str()), INVALID_FILE_ATTRIBUTES) << call.label();
    expect_status(call, release(path), KQ_S_OK);
    EXPECT_EQ(GetFileAttributesW(file.c_str()), INVALID_FILE_ATTRIBUTES) << call.label() << ": released with its file";
}

void empty_medium_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetEmptyMedium)>("KQGetEmptyMedium");
    for (const std::uint32_t must_be_zero : {1u, 0x100u, 0xFFFFFFFFu}) {
        {
            CallArguments call("KQGetEmptyMedium(null, null, " + hex(must_be_zero) + ")");
            expect_status(call, get(nullptr, nullptr, must_be_zero), KQ_E_INVALIDARG);
        }
        CallArguments call("KQGetEmptyMedium(path, null, " + hex(must_be_zero) + ")");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, get(slot, nullptr, must_be_zero), KQ_E_INVALIDARG);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    {
        CallArguments call("KQGetEmptyMedium(null, garbage, 0)");
        expect_status(call, get(nullptr, reinterpret_cast<void*>(1), 0), KQ_S_OK);
    }
    CallArguments call("KQGetEmptyMedium(path, garbage, 0)");
    kq_char** slot = call.out_slot(poison<kq_char>());
    expect_status(call, get(slot, reinterpret_cast<void*>(1), 0), KQ_S_OK);
    check_empty_medium(call, pass, *slot);
}

void empty_medium2_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetEmptyMedium2)>("KQGetEmptyMedium2");
    const struct {
        std::uint32_t must_be_zero, kind;
        kq_status status;
    } cases[] = {
        {0, 0, KQ_S_OK},
        {0, 1, KQ_S_OK},
        {0, 0x100, KQ_S_OK},
        {0, 0xFFFFFF01, KQ_S_OK},
        {0, 2, KQ_E_INVALIDARG},
        {0, 0xFF, KQ_E_INVALIDARG},
        {0, 0xFFFFFFFF, KQ_E_INVALIDARG},
        {1, 0, KQ_E_INVALIDARG},
        {0xFFFFFFFF, 1, KQ_E_INVALIDARG},
        {0xFFFFFFFF, 0xFFFFFFFF, KQ_E_INVALIDARG},
    };
    for (const auto& row : cases) {
        const std::string what = "KQGetEmptyMedium2(" + hex(row.must_be_zero) + ", " + hex(row.kind);
        {
            CallArguments call(what + ", null path)");
            expect_status(call, get(nullptr, reinterpret_cast<void*>(1), row.must_be_zero, row.kind), row.status);
        }
        CallArguments call(what + ", path)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, get(slot, nullptr, row.must_be_zero, row.kind), row.status);
        if (row.status == KQ_S_OK)
            check_empty_medium(call, pass, *slot);
        else
            EXPECT_EQ(*slot, nullptr) << call.label();
    }
}

void free_empty_medium_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetEmptyMedium2)>("KQGetEmptyMedium2");
    const auto release = pass.resolve<decltype(KQFreeEmptyMedium)>("KQFreeEmptyMedium");
    {
        CallArguments call("KQFreeEmptyMedium(null)");
        expect_status(call, release(nullptr), KQ_S_OK);
    }
    CallArguments call("KQFreeEmptyMedium(kind 1)");
    kq_char* path = nullptr;
    ASSERT_EQ(get(&path, nullptr, 0, 1), KQ_S_OK);
    check_empty_medium(call, pass, path);
}

void copy_medium_row(const Pass& pass) {
    const auto copy = pass.resolve<decltype(KQCopyMediumFile)>("KQCopyMediumFile");
    const struct {
        bool source, target, buffer;
        std::uint32_t chars;
    } refused[] = {
        {false, true, true, 260}, {true, false, true, 260}, {true, true, false, 260},
        {true, true, true, 0},    {false, false, false, 0},
    };
    for (const auto& row : refused) {
        CallArguments call(std::string("KQCopyMediumFile(") + (row.source ? "source" : "null") + ", " +
                           (row.target ? "target" : "null") + ", " + (row.buffer ? "buffer" : "null") + ", " +
                           std::to_string(row.chars) + ")");
        wchar_t* buffer = row.buffer ? call.out_text(260) : nullptr;
        expect_status(call,
                      copy(row.source ? call.in_text(pass.game_adf) : nullptr,
                           row.target ? call.in_text(pass.target_folder) : nullptr, 0, buffer, row.chars),
                      KQ_E_INVALIDARG);
        if (buffer) {
            EXPECT_TRUE(is_unwritten(buffer, 260)) << call.label();
        }
    }
    // Failures that leave the buffer alone.
    const std::wstring missing_targets[] = {path_of_length(pass.folder_name, 259, L""),
                                            path_of_length(pass.folder_name, 260, L""),
                                            path_of_length(pass.folder_name, 261, L"")};
    const struct {
        std::wstring source, target;
        kq_status status; // 0x80070000 alone: the file system's error
    } failing[] = {
        {L"Game.adf", pass.target_folder, KQ_E_INVALIDARG},
        {L"", pass.target_folder, KQ_E_INVALIDARG},
        {L"\xD800", pass.target_folder, KQ_E_INVALIDARG},
        {pass.missing_adf, pass.target_folder, static_cast<kq_status>(0x80070000)},
        {pass.surrogate_adf, pass.target_folder, static_cast<kq_status>(0x80070000)},
        {pass.long_missing[0], pass.target_folder, static_cast<kq_status>(0x80070000)},
        {pass.long_missing[1], pass.target_folder, static_cast<kq_status>(0x80070000)},
        {pass.long_missing[2], pass.target_folder, static_cast<kq_status>(0x80070000)},
        {pass.game_adf, missing_targets[0], static_cast<kq_status>(0x80070000)},
        {pass.game_adf, missing_targets[1], static_cast<kq_status>(0x80070000)},
        {pass.game_adf, missing_targets[2], static_cast<kq_status>(0x80070000)},
        {pass.game_adf, pass.folder_name + L"\\\xDC00", static_cast<kq_status>(0x80070000)},
    };
    for (const auto& row : failing) {
        for (const std::uint32_t chars : {1u, 260u}) {
            CallArguments call("KQCopyMediumFile(" + show(row.source.c_str()) + ", " + show(row.target.c_str()) + ", " +
                               std::to_string(chars) + ")");
            wchar_t* buffer = call.out_text(chars);
            const kq_status status = copy(call.in_text(row.source), call.in_text(row.target), 0, buffer, chars);
            if (row.status == static_cast<kq_status>(0x80070000))
                EXPECT_TRUE(is_file_system_error(status))
                    << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
            else
                expect_status(call, status, row.status);
            EXPECT_TRUE(is_unwritten(buffer, chars)) << call.label();
        }
    }
    // Copies made: the target's path cut to the buffer.
    const std::wstring target = pass.target_folder + L"\\Game.adf";
    for (const std::uint32_t chars : {1u, 2u, static_cast<std::uint32_t>(target.size()), 261u}) {
        for (const std::uint32_t flags : {0u, std::uint32_t{KQ_COPY_MEDIUM_CONVERT}}) {
            CallArguments call("KQCopyMediumFile(Game.adf, target, " + hex(flags) + ", " + std::to_string(chars) + ")");
            wchar_t* buffer = call.out_text(chars);
            expect_status(call,
                          copy(call.in_text(pass.game_adf), call.in_text(pass.target_folder), flags, buffer, chars),
                          KQ_S_OK);
            expect_cut_text(call, buffer, chars, target);
        }
    }
    {
        CallArguments call("KQCopyMediumFile(Game.adf, target, no overwrite)");
        wchar_t* buffer = call.out_text(1);
        expect_status(
            call,
            copy(call.in_text(pass.game_adf), call.in_text(pass.target_folder), KQ_COPY_MEDIUM_NO_OVERWRITE, buffer, 1),
            KQ_STATUS_FROM_WIN32(80));
        EXPECT_TRUE(is_unwritten(buffer, 1)) << call.label();
    }
    {
        // A free name is taken, so the name changes and the copy is made.
        CallArguments call("KQCopyMediumFile(Game.adf, target, 0xFFFFFFFF)");
        wchar_t* buffer = call.out_text(1);
        expect_status(call, copy(call.in_text(pass.game_adf), call.in_text(pass.target_folder), 0xFFFFFFFF, buffer, 1),
                      KQ_S_OK);
        EXPECT_EQ(buffer[0], L'\0') << call.label();
    }
    {
        CallArguments call("KQCopyMediumFile(Game.adf, target, skip same name)");
        wchar_t* buffer = call.out_text(1);
        expect_status(call,
                      copy(call.in_text(pass.game_adf), call.in_text(pass.target_folder), KQ_COPY_MEDIUM_SKIP_SAME_NAME,
                           buffer, 1),
                      KQ_S_FALSE);
        EXPECT_TRUE(is_unwritten(buffer, 1)) << call.label();
    }
    // Sources of 259 to 261 characters, where the file system let them be made.
    for (std::size_t i = 0; i < std::size(kPathLengths); ++i) {
        if (!pass.long_adf_exists[i]) continue;
        CallArguments call("KQCopyMediumFile(source of " + std::to_string(kPathLengths[i]) + ", target, unique)");
        wchar_t* buffer = call.out_text(MAX_PATH);
        const kq_status status = copy(call.in_text(pass.long_adf[i]), call.in_text(pass.target_folder),
                                      KQ_COPY_MEDIUM_UNIQUE_NAME, buffer, MAX_PATH);
        if (status == KQ_S_OK) {
            ASSERT_TRUE(is_terminated_within(buffer, MAX_PATH)) << call.label();
            EXPECT_EQ(std::wstring(buffer).rfind(pass.target_folder + L"\\", 0), 0u) << call.label();
        } else {
            EXPECT_TRUE(is_file_system_error(status))
                << call.label() << ": " << hex(static_cast<std::uint32_t>(status));
            EXPECT_TRUE(is_unwritten(buffer, MAX_PATH)) << call.label();
        }
    }
}

void volume_name_row(const Pass& pass) {
    const auto volume = pass.resolve<decltype(KQGetVolumeName)>("KQGetVolumeName");
    const struct {
        bool image, buffer;
        std::uint32_t chars;
    } refused[] = {{false, true, 40}, {true, false, 40}, {true, true, 0}, {false, false, 0}};
    for (const auto& row : refused) {
        CallArguments call(std::string("KQGetVolumeName(") + (row.image ? "image" : "null") + ", " +
                           (row.buffer ? "buffer" : "null") + ", " + std::to_string(row.chars) + ")");
        wchar_t* buffer = row.buffer ? call.out_text(40) : nullptr;
        expect_status(call, volume(row.image ? call.in_text(pass.game_adf) : nullptr, buffer, row.chars),
                      KQ_E_INVALIDARG);
        if (buffer) {
            EXPECT_TRUE(is_unwritten(buffer, 40)) << call.label();
        }
    }
    std::vector<std::pair<std::wstring, bool>> images = {
        {pass.game_adf, true}, {pass.missing_adf, false}, {pass.surrogate_adf, false}};
    for (std::size_t i = 0; i < std::size(kPathLengths); ++i) {
        images.emplace_back(pass.long_adf[i], pass.long_adf_exists[i]);
        images.emplace_back(pass.long_missing[i], false);
    }
    for (const std::wstring& text : odd_texts()) images.emplace_back(text, false);
    for (const auto& [image, readable] : images) {
        for (const std::uint32_t chars : {1u, 2u, 8u, 9u, 40u}) {
            CallArguments call("KQGetVolumeName(" + show(image.c_str()) + ", " + std::to_string(chars) + ")");
            wchar_t* buffer = call.out_text(chars);
            expect_status(call, volume(call.in_text(image), buffer, chars), readable ? KQ_S_OK : KQ_E_FAIL);
            if (readable)
                expect_cut_text(call, buffer, chars, L"GameDisk");
            else
                EXPECT_TRUE(is_unwritten(buffer, chars)) << call.label();
        }
    }
}

// ---- Keyboard --------------------------------------------------------------------------------

std::vector<std::uint8_t> garbage_keymap(std::size_t bytes) {
    std::vector<std::uint8_t> keymap(bytes);
    for (std::size_t i = 0; i < bytes; ++i) keymap[i] = static_cast<std::uint8_t>(i * 37 + 11);
    return keymap;
}

template <class Get>
void keyboard_input_data_cases(const Pass& pass, const char* name, Get make) {
    const auto release = pass.resolve<decltype(KQFreeKeyboardInputData)>("KQFreeKeyboardInputData");
    {
        CallArguments call(std::string(name) + "(a-500, en-us, ..., null)");
        expect_status(call, make(call.in_text(std::wstring_view(L"a-500")), L"en-us", nullptr, 0, 0, 0, nullptr),
                      KQ_E_POINTER);
    }
    {
        CallArguments call(std::string(name) + "(all null)");
        expect_status(call, make(nullptr, nullptr, nullptr, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, nullptr), KQ_E_POINTER);
    }
    {
        CallArguments call(std::string(name) + "(null system)");
        KQKeyboardInputData** slot = call.out_slot<KQKeyboardInputData*>(nullptr);
        expect_status(call, make(nullptr, L"en-us", nullptr, 0, 0, 0, slot), kNotFound);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    {
        // A record the caller holds stays valid and in place when no new one is made.
        KQKeyboardInputData* held = nullptr;
        ASSERT_EQ(make(L"a-500", L"de-de", nullptr, 0, 0, 0, &held), KQ_S_OK);
        CallArguments call(std::string(name) + "(null system, held record)");
        KQKeyboardInputData** slot = call.out_slot(held);
        expect_status(call, make(nullptr, nullptr, nullptr, 0, 0, 0, slot), kNotFound);
        EXPECT_EQ(*slot, held) << call.label();
        expect_status(call, release(held), KQ_S_OK);
    }
    std::vector<std::wstring> ids = unknown_names(L"en-gb");
    ids.push_back(L"en-gb");
    const std::vector<std::uint8_t> keymaps[] = {garbage_keymap(1), garbage_keymap(657), garbage_keymap(658),
                                                 garbage_keymap(4096)};
    const std::uint32_t descriptors[] = {0, 0x01010000, 0x010101FF, 0x0101FFFF, 0xFFFFFFFF};
    KQKeyboardInputData* kept = nullptr; // each new record replaces the one before
    for (const std::wstring& id : ids) {
        for (std::size_t i = 0; i < std::size(keymaps); ++i) {
            const std::uint32_t descriptor = descriptors[i % std::size(descriptors)];
            for (const bool with_layout : {false, true}) {
                CallArguments call(std::string(name) + "(" + show(id.c_str()) + ", " +
                                   (with_layout ? show(id.c_str()) : "null") + ", keymap of " +
                                   std::to_string(keymaps[i].size()) + ", keys " + hex(descriptor) + ")");
                KQKeyboardInputData** slot = call.out_slot(kept);
                expect_status(call,
                              make(call.in_text(id), with_layout ? call.in_text(id) : nullptr,
                                   call.in_bytes(keymaps[i]), static_cast<std::uint32_t>(keymaps[i].size()), descriptor,
                                   ~descriptor, slot),
                              KQ_S_OK);
                ASSERT_NE(*slot, nullptr) << call.label();
                EXPECT_GE(GlobalSize(*slot), 2440u) << call.label();
                kept = *slot;
            }
        }
    }
    {
        CallArguments call(std::string(name) + "(x, null layout, null keymap of 0xFFFFFFFF bytes)");
        KQKeyboardInputData** slot = call.out_slot(kept);
        expect_status(call, make(call.in_text(std::wstring_view(L"x")), nullptr, nullptr, 0xFFFFFFFF, 0, 0, slot),
                      KQ_S_OK);
        kept = *slot;
    }
    CallArguments call(std::string(name) + " record released");
    expect_status(call, release(kept), KQ_S_OK);
}

void keyboard_input_data_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetKeyboardInputData)>("KQGetKeyboardInputData");
    keyboard_input_data_cases(pass, "KQGetKeyboardInputData",
                              [get](const kq_char* system, const kq_char* layout, const std::uint8_t* keymap,
                                    std::uint32_t bytes, std::uint32_t a, std::uint32_t b, KQKeyboardInputData** data) {
                                  return get(system, layout, keymap, bytes, a, b, 0xFFFFFFFF, data);
                              });
}

void keyboard_input_data2_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetKeyboardInputData2)>("KQGetKeyboardInputData2");
    keyboard_input_data_cases(pass, "KQGetKeyboardInputData2",
                              [get](const kq_char* system, const kq_char* layout, const std::uint8_t* keymap,
                                    std::uint32_t bytes, std::uint32_t a, std::uint32_t b, KQKeyboardInputData** data) {
                                  return get(system, layout, keymap, bytes, a, b, a ^ b, 0xFFFFFFFF, data);
                              });
}

// A keyboard record for the calls that take one, released when this goes.
class KeyboardRecord {
public:
    KeyboardRecord(const Pass& pass, const wchar_t* layout)
        : release_(pass.resolve<decltype(KQFreeKeyboardInputData)>("KQFreeKeyboardInputData")) {
        const auto get = pass.resolve<decltype(KQGetKeyboardInputData2)>("KQGetKeyboardInputData2");
        EXPECT_EQ(get(L"a-1200", layout, nullptr, 0, 0, 0, 0, 0, &data), KQ_S_OK);
    }
    ~KeyboardRecord() { release_(data); }
    KeyboardRecord(const KeyboardRecord&) = delete;
    KeyboardRecord& operator=(const KeyboardRecord&) = delete;

    KQKeyboardInputData* data = nullptr;

private:
    decltype(KQFreeKeyboardInputData)* release_;
};

void free_keyboard_input_data_row(const Pass& pass) {
    const auto get = pass.resolve<decltype(KQGetKeyboardInputData2)>("KQGetKeyboardInputData2");
    const auto release = pass.resolve<decltype(KQFreeKeyboardInputData)>("KQFreeKeyboardInputData");
    {
        CallArguments call("KQFreeKeyboardInputData(null)");
        expect_status(call, release(nullptr), KQ_S_OK);
    }
    CallArguments call("KQFreeKeyboardInputData(record)");
    KQKeyboardInputData* data = nullptr;
    ASSERT_EQ(get(L"a-500", L"fr-fr", nullptr, 0, 0, 0, 0, 0, &data), KQ_S_OK);
    expect_status(call, release(data), KQ_S_OK);
}

void preprocess_keyboard_row(const Pass& pass) {
    const auto preprocess = pass.resolve<decltype(KQPreprocessKeyboardInput)>("KQPreprocessKeyboardInput");
    {
        CallArguments call("KQPreprocessKeyboardInput(A, null record)");
        std::uint32_t* answer = call.out_slot<std::uint32_t>(0xA5A5A5A5);
        expect_status(call, preprocess(0x41, 0, nullptr, 0, answer), KQ_E_INVALIDARG);
        EXPECT_EQ(*answer, 0xA5A5A5A5u) << call.label();
    }
    {
        CallArguments call("KQPreprocessKeyboardInput(all null)");
        expect_status(call, preprocess(~0ull, ~0ull, nullptr, 0xFFFFFFFF, nullptr), KQ_E_INVALIDARG);
    }
    const KeyboardRecord record(pass, L"de-de");
    // Every virtual key with every flag pattern that matters, with and without an answer slot.
    for (const std::uint64_t flags : {0ull, 0x00010000ull, 0x01000000ull | 0x08000000ull, 0xFFFFFF00ull, ~0xFFull}) {
        for (std::uint64_t key = 0; key < 256; ++key) {
            CallArguments call("KQPreprocessKeyboardInput(" + hex(key | flags) + ")");
            std::uint32_t* answer = call.out_slot<std::uint32_t>(0);
            expect_status(call, preprocess(key | flags, ~0ull, record.data, 0xFFFFFFFF, answer), KQ_S_OK);
            EXPECT_NE(*answer & 0x80000000u, 0u) << call.label() << ": a valid answer";
            expect_status(call, preprocess(key | flags, 0, record.data, 0, nullptr), KQ_S_OK);
        }
    }
}

void process_keyboard_row(const Pass& pass) {
    const auto process = pass.resolve<decltype(KQProcessKeyboardInput)>("KQProcessKeyboardInput");
    constexpr std::uint64_t kDown = 1u << 20, kFetch = 1u << 28, kTranslate = 1u << 18, kDefer = 3u << 18;
    {
        CallArguments call("KQProcessKeyboardInput(A, null record)");
        std::uint32_t* answer = call.out_slot<std::uint32_t>(0xA5A5A5A5);
        expect_status(call, process(0x41 | kDown, u'a', nullptr, 0, answer), KQ_E_INVALIDARG);
        EXPECT_EQ(*answer, 0xA5A5A5A5u) << call.label();
    }
    {
        CallArguments call("KQProcessKeyboardInput(all null)");
        expect_status(call, process(~0ull, ~0ull, nullptr, 0xFFFFFFFF, nullptr), KQ_E_INVALIDARG);
    }
    const KeyboardRecord record(pass, L"fr-fr");
    {
        CallArguments call("KQProcessKeyboardInput(fetch from an empty queue)");
        std::uint32_t* answer = call.out_slot<std::uint32_t>(0xA5A5A5A5);
        expect_status(call, process(kFetch, 0, record.data, 0, answer), KQ_E_FAIL);
        EXPECT_EQ(*answer, 0xA5A5A5A5u) << call.label() << ": untouched";
        expect_status(call, process(kFetch, 0, record.data, 0, nullptr), KQ_E_FAIL);
    }
    // Drains the queue; it never holds more than its 32 events.
    const auto drain = [&](const std::string& after) {
        CallArguments call("KQProcessKeyboardInput(fetch after " + after + ")");
        std::uint32_t* answer = call.out_slot<std::uint32_t>(0);
        int fetched = 0;
        while (process(kFetch, 0, record.data, 0, answer) == KQ_S_OK && fetched <= 32) ++fetched;
        EXPECT_LE(fetched, 32) << call.label();
    };
    // Characters a host may hand over: unpaired surrogates, non-characters, high bits set.
    const std::uint64_t characters[] = {u'a', u'~', 0xD800, 0xDFFF, 0xFFFF, 0xFFFE, 0x10000, ~0ull};
    for (const std::uint64_t mode : {std::uint64_t{0}, kTranslate, kDefer}) {
        for (const std::uint64_t character : characters) {
            for (std::uint64_t key = 0; key < 256; ++key) {
                for (const std::uint64_t extra : {kDown, std::uint64_t{0}, kDown | 0x00030000ull}) {
                    CallArguments call("KQProcessKeyboardInput(" + hex(key | mode | extra) + ", " + hex(character) +
                                       ")");
                    std::uint32_t* answer = call.out_slot<std::uint32_t>(0);
                    expect_status(call, process(key | mode | extra, character, record.data, 0xFFFFFFFF, answer),
                                  KQ_S_OK);
                }
            }
            // Many presses without fetching: the queue must not run over.
            for (int i = 0; i < 100; ++i) {
                CallArguments call("KQProcessKeyboardInput(press " + std::to_string(i) + " without fetching, " +
                                   hex(character) + ")");
                expect_status(call, process(0x41 | kDown | kTranslate, character, record.data, 0, nullptr), KQ_S_OK);
            }
            drain("100 presses of " + hex(character));
        }
    }
}

void keyboard_layout_row(const Pass& pass) {
    const auto layout = pass.resolve<decltype(KQGetKeyboardLayout)>("KQGetKeyboardLayout");
    const std::vector<std::uint8_t> keymap = garbage_keymap(658);
    const struct {
        bool keymap;
        std::uint32_t bytes;
        bool buffer;
        std::uint32_t chars;
    } refused[] = {{false, 658, true, 64},
                   {true, 0, true, 64},
                   {true, 658, false, 64},
                   {true, 658, true, 0},
                   {false, 0, false, 0}};
    for (const auto& row : refused) {
        CallArguments call(std::string("KQGetKeyboardLayout(") + (row.keymap ? "keymap" : "null") + ", " +
                           std::to_string(row.bytes) + ", " + (row.buffer ? "buffer" : "null") + ", " +
                           std::to_string(row.chars) + ")");
        wchar_t* buffer = row.buffer ? call.out_text(64) : nullptr;
        expect_status(call,
                      layout(0xFFFFFFFF, row.keymap ? call.in_bytes(keymap) : nullptr, row.bytes, buffer, row.chars),
                      KQ_E_INVALIDARG);
        if (buffer) {
            EXPECT_TRUE(is_unwritten(buffer, 64)) << call.label();
        }
    }
    for (const std::size_t bytes :
         {std::size_t{1}, std::size_t{100}, std::size_t{657}, std::size_t{658}, std::size_t{5000}}) {
        const std::vector<std::uint8_t> image = garbage_keymap(bytes);
        const std::string what = "KQGetKeyboardLayout(keymap of " + std::to_string(bytes);
        std::wstring full;
        {
            CallArguments call(what + ", 256)");
            wchar_t* buffer = call.out_text(256);
            expect_status(call, layout(0, call.in_bytes(image), static_cast<std::uint32_t>(bytes), buffer, 256),
                          KQ_S_OK);
            ASSERT_TRUE(is_terminated_within(buffer, 256)) << call.label();
            full = buffer;
            EXPECT_EQ(full.rfind(L"en-us", 0), 0u) << call.label() << ": no layout recognised";
        }
        const auto length = static_cast<std::uint32_t>(full.size());
        for (const std::uint32_t chars : {1u, 2u, length, length + 1}) {
            CallArguments call(what + ", " + std::to_string(chars) + ")");
            wchar_t* buffer = call.out_text(chars);
            const kq_status status = layout(0, call.in_bytes(image), static_cast<std::uint32_t>(bytes), buffer, chars);
            if (chars > length) {
                expect_status(call, status, KQ_S_OK);
                EXPECT_EQ(std::wstring(buffer), full) << call.label();
            } else {
                expect_status(call, status, kBufferOverflow);
            }
        }
    }
}

void key_display_name_row(const Pass& pass) {
    const auto name = pass.resolve<decltype(KQGetKeyDisplayName)>("KQGetKeyDisplayName");
    const struct {
        bool text, buffer;
        std::uint32_t chars;
    } refused[] = {{false, true, 64}, {true, false, 64}, {true, true, 0}, {false, false, 0}};
    for (const auto& row : refused) {
        CallArguments call(std::string("KQGetKeyDisplayName(") + (row.text ? "a" : "null") + ", x, en-us, " +
                           (row.buffer ? "buffer" : "null") + ", " + std::to_string(row.chars) + ")");
        wchar_t* buffer = row.buffer ? call.out_text(64) : nullptr;
        expect_status(
            call,
            name(row.text ? call.in_text(std::wstring_view(L"a")) : nullptr, L"x", L"en-us", buffer, row.chars, 0, 0),
            KQ_E_INVALIDARG);
        if (buffer) {
            EXPECT_TRUE(is_unwritten(buffer, 64)) << call.label();
        }
    }
    {
        CallArguments call("KQGetKeyDisplayName(all null)");
        expect_status(call, name(nullptr, nullptr, nullptr, nullptr, 0, 0xFFFFFFFF, 0xFFFFFFFF), KQ_E_INVALIDARG);
    }
    {
        CallArguments call("KQGetKeyDisplayName(a, null system)");
        wchar_t* buffer = call.out_text(64);
        expect_status(call, name(call.in_text(std::wstring_view(L"a")), nullptr, L"en-us", buffer, 64, 0, 0),
                      kNotFound);
    }
    {
        // No layout id: the default layout.
        CallArguments call("KQGetKeyDisplayName(a, x, null layout)");
        wchar_t* buffer = call.out_text(64);
        expect_status(call, name(call.in_text(std::wstring_view(L"a")), L"x", nullptr, buffer, 64, 0, 0), KQ_S_OK);
        EXPECT_STREQ(buffer, L"A") << call.label();
    }
    std::wstring many_keys;
    while (many_keys.size() < 259) many_keys += L"a+";
    many_keys += L"b"; // 261 characters
    const std::vector<std::wstring> texts = {
        L"a", L"shift+a", L"CONTROL+LEFT AMIGA", L"!", L"NUMPAD [", L"+", L"++", L"a+", L"shift+", many_keys};
    std::vector<std::wstring> unknown = {L"NOSUCHKEY", L"\xD800", L"a+\xDC00", std::wstring(261, L'q')};
    for (const std::wstring& layout_id : {std::wstring(L"de-de"), std::wstring(L"\xD800"), std::wstring(261, L'l')}) {
        for (const std::wstring& text : unknown) {
            CallArguments call("KQGetKeyDisplayName(" + show(text.c_str()) + ", layout " + show(layout_id.c_str()) +
                               ")");
            wchar_t* buffer = call.out_text(64);
            expect_status(call, name(call.in_text(text), L"x", call.in_text(layout_id), buffer, 64, 0xFFFFFFFF, 0),
                          kNotFound);
        }
        for (const std::wstring& text : texts) {
            const std::string what =
                "KQGetKeyDisplayName(" + show(text.c_str()) + ", layout " + show(layout_id.c_str());
            std::vector<wchar_t> full;
            {
                CallArguments call(what + ", 2048)");
                wchar_t* buffer = call.out_text(2048);
                const kq_status status =
                    name(call.in_text(text), L"\xDBFF", call.in_text(layout_id), buffer, 2048, 0, 0);
                if (status == kNotFound) continue; // a token this layout does not have
                expect_status(call, status, KQ_S_OK);
                // The names end where the buffer is still unwritten.
                const wchar_t* end = std::find(buffer, buffer + 2048, test::kUnwritten);
                full.assign(static_cast<const wchar_t*>(buffer), end);
                ASSERT_FALSE(full.empty()) << call.label();
                EXPECT_EQ(full.back(), L'\0') << call.label();
            }
            // Too short a buffer fails; one as long as the names succeeds with the same names.
            const auto needed = static_cast<std::uint32_t>(full.size());
            for (const std::uint32_t chars : std::set<std::uint32_t>{1u, 2u, needed - 1, needed}) {
                if (chars == 0) continue;
                CallArguments call(what + ", " + std::to_string(chars) + ")");
                wchar_t* buffer = call.out_text(chars);
                const kq_status status =
                    name(call.in_text(text), L"\xDBFF", call.in_text(layout_id), buffer, chars, 0, 0);
                if (chars >= needed) {
                    expect_status(call, status, KQ_S_OK);
                    EXPECT_TRUE(std::equal(full.begin(), full.end(), buffer)) << call.label();
                } else {
                    expect_status(call, status, kBufferOverflow);
                }
            }
        }
    }
}

void string_raw_keys_row(const Pass& pass) {
    const auto keys = pass.resolve<decltype(KQGetStringRawKeys)>("KQGetStringRawKeys");
    const auto release = pass.resolve<decltype(KQFreeStringRawKeys)>("KQFreeStringRawKeys");
    const KeyboardRecord record(pass, L"sv-se");
    {
        CallArguments call("KQGetStringRawKeys(text, record, 0, null)");
        expect_status(call, keys(call.in_text(std::wstring_view(L"a")), record.data, 0, nullptr), KQ_E_POINTER);
    }
    {
        CallArguments call("KQGetStringRawKeys(all null)");
        expect_status(call, keys(nullptr, nullptr, 0xFFFFFFFF, nullptr), KQ_E_POINTER);
    }
    {
        CallArguments call("KQGetStringRawKeys(null text, record)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, keys(nullptr, record.data, 0, slot), KQ_S_OK);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    {
        CallArguments call("KQGetStringRawKeys(null text, null record)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, keys(nullptr, nullptr, 0, slot), KQ_S_OK);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    {
        CallArguments call("KQGetStringRawKeys(text, null record)");
        kq_char** slot = call.out_slot(poison<kq_char>());
        expect_status(call, keys(call.in_text(std::wstring_view(L"a")), nullptr, 0, slot), KQ_E_INVALIDARG);
        EXPECT_EQ(*slot, nullptr) << call.label();
    }
    std::vector<std::wstring> texts = odd_texts();
    texts.insert(texts.end(), {L"Ab", L"CONTROL+LEFT AMIGA", L"NOSUCHKEY", L"+", L"shift+", L"\xFFFF\xFFFE"});
    for (const std::wstring& text : texts) {
        for (const std::uint32_t mode : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
            CallArguments call("KQGetStringRawKeys(" + show(text.c_str()) + ", mode " + hex(mode) + ")");
            kq_char** slot = call.out_slot(poison<kq_char>());
            expect_status(call, keys(call.in_text(text), record.data, mode, slot), KQ_S_OK);
            ASSERT_NE(*slot, nullptr) << call.label();
            EXPECT_GE(GlobalSize(*slot), (std::wcslen(*slot) + 1) * sizeof(wchar_t)) << call.label();
            expect_status(call, release(*slot), KQ_S_OK);
        }
    }
}

void free_string_raw_keys_row(const Pass& pass) {
    const auto keys = pass.resolve<decltype(KQGetStringRawKeys)>("KQGetStringRawKeys");
    const auto release = pass.resolve<decltype(KQFreeStringRawKeys)>("KQFreeStringRawKeys");
    {
        CallArguments call("KQFreeStringRawKeys(null)");
        expect_status(call, release(nullptr), KQ_S_OK);
    }
    const KeyboardRecord record(pass, L"en-us");
    CallArguments call("KQFreeStringRawKeys(string)");
    kq_char* script = nullptr;
    ASSERT_EQ(keys(L"x", record.data, 0, &script), KQ_S_OK);
    expect_status(call, release(script), KQ_S_OK);
}

void backup_keyboard_settings_row(const Pass& pass) {
    const auto backup = pass.resolve<decltype(KQBackupKeyboardSettings)>("KQBackupKeyboardSettings");
    // Only actions that do nothing: the real ones would change the user's settings.
    for (const std::uint32_t action : {0u, 4u, 0x101u, 0x80000001u, 0xFFFFFFFFu}) {
        CallArguments call("KQBackupKeyboardSettings(" + hex(action) + ")");
        expect_status(call, backup(action), KQ_E_INVALIDARG);
    }
}

void input_button_name_row(const Pass& pass) {
    const auto button = pass.resolve<decltype(KQGetInputButtonName)>("KQGetInputButtonName");
    const struct {
        std::uint32_t mask, kind;
    } named[] = {{1, 2}, {32, 2}, {64, 3}, {1024, 4}, {16, 4}},
      unnamed[] = {{0, 2}, {3, 2}, {64, 2}, {128, 3},        {0x80000000, 4},
                   {1, 0}, {1, 1}, {1, 5},  {1, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}};
    for (const auto& [mask, kind] : unnamed) {
        for (const std::uint32_t chars : {0u, 1u, 64u}) {
            CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", " + std::to_string(chars) +
                               ")");
            wchar_t* buffer = call.out_text(std::max(chars, 1u));
            expect_status(call, button(mask, 0xFFFFFFFF, kind, buffer, chars), kNotFound);
            EXPECT_TRUE(is_unwritten(buffer, std::max(chars, 1u))) << call.label();
        }
        CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", null)");
        expect_status(call, button(mask, 0, kind, nullptr, 64), kNotFound);
    }
    for (const auto& [mask, kind] : named) {
        {
            CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", null, 64)");
            expect_status(call, button(mask, 0, kind, nullptr, 64), KQ_S_OK);
        }
        {
            CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", buffer, 0)");
            wchar_t* buffer = call.out_text(1);
            expect_status(call, button(mask, 0, kind, buffer, 0), KQ_S_OK);
            EXPECT_TRUE(is_unwritten(buffer, 1)) << call.label();
        }
        std::wstring full;
        {
            CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", 256)");
            wchar_t* buffer = call.out_text(256);
            expect_status(call, button(mask, 0xFFFFFFFF, kind, buffer, 256), KQ_S_OK);
            ASSERT_TRUE(is_terminated_within(buffer, 256)) << call.label();
            full = buffer;
            EXPECT_FALSE(full.empty()) << call.label();
        }
        for (const std::uint32_t chars : {1u, 2u, static_cast<std::uint32_t>(full.size())}) {
            CallArguments call("KQGetInputButtonName(" + hex(mask) + ", " + hex(kind) + ", " + std::to_string(chars) +
                               ")");
            wchar_t* buffer = call.out_text(chars);
            expect_status(call, button(mask, 0, kind, buffer, chars), KQ_S_OK);
            expect_cut_text(call, buffer, chars, full);
        }
    }
}

// One row per export of the DLL.
// clang-format off
const ExportRow kExportRows[] = {
    {"DllMain", dll_main_row},
    {"KQGetPlatformName", platform_name_row},
    {"KQGetOption", get_option_row},
    {"KQFreeOption", free_option_row},
    {"KQSetOption", set_option_row},
    {"KQGetFileAssociation", get_file_association_row},
    {"KQFreeFileAssociation", free_file_association_row},
    {"KQGetRuntimeMedium", get_runtime_medium_row},
    {"KQCheckRuntimeMedium", check_runtime_medium_row},
    {"KQDismissRuntimeMedium", dismiss_runtime_medium_row},
    {"KQAutoConfigureApplication", auto_configure_row},
    {"KQGetEmptyMedium", empty_medium_row},
    {"KQFreeEmptyMedium", free_empty_medium_row},
    {"KQ9Editor", [](const Pass& pass) { shell_window_row<15>(pass, "KQ9Editor"); }},
    {"KQGetDefaultInputPortContent", default_port_content_row},
    {"KQBootTag", boot_tag_row},
    {"KQGetVolumeName", volume_name_row},
    {"KQGetDeviceCommand", get_device_command_row},
    {"KQFreeDeviceCommand", free_device_command_row},
    {"KQCopyMediumFile", copy_medium_row},
    {"KQGetEmptyMedium2", empty_medium2_row},
    {"KQEditScreenClip", [](const Pass& pass) { shell_window_row<23>(pass, "KQEditScreenClip"); }},
    {"KQEditScreenClip2", [](const Pass& pass) { shell_window_row<24>(pass, "KQEditScreenClip2"); }},
    {"KQGetRestoreSystemFilesPaths", restore_paths_row},
    {"KQROMExists", rom_exists_row},
    {"KQGetDefaultSystemROM", default_system_rom_row},
    {"KQGetApplicationInfo", application_info_row},
    {"KQGetContentTooltip", content_tooltip_row},
    {"KQPreprocessKeyboardInput", preprocess_keyboard_row},
    {"KQGetKeyboardInputData", keyboard_input_data_row},
    {"KQFreeKeyboardInputData", free_keyboard_input_data_row},
    {"KQProcessKeyboardInput", process_keyboard_row},
    {"KQGetStringRawKeys", string_raw_keys_row},
    {"KQFreeStringRawKeys", free_string_raw_keys_row},
    {"KQGetKeyDisplayName", key_display_name_row},
    {"KQGetInputButtonName", input_button_name_row},
    {"KQProcessVButtonEditMessage",
     [](const Pass& pass) { shell_window_row<39>(pass, "KQProcessVButtonEditMessage"); }},
    {"KQGetInputPortsInfo", input_ports_row},
    {"KQGetContentInfo", content_info_row},
    {"KQGetKeyboardInputData2", keyboard_input_data2_row},
    {"KQProcessVButtonEditMessage2",
     [](const Pass& pass) { shell_window_row<43>(pass, "KQProcessVButtonEditMessage2"); }},
    {"KQGetKeyboardLayout", keyboard_layout_row},
    {"KQSetKeyboardWindow", [](const Pass& pass) { shell_window_row<45>(pass, "KQSetKeyboardWindow"); }},
    {"KQGetKeyboardWindowInfo", [](const Pass& pass) { shell_window_row<46>(pass, "KQGetKeyboardWindowInfo"); }},
    {"KQOpenKeyboardWindow", [](const Pass& pass) { shell_window_row<47>(pass, "KQOpenKeyboardWindow"); }},
    {"KQGetKeyDialog2", [](const Pass& pass) { shell_window_row<48>(pass, "KQGetKeyDialog2"); }},
    {"KQBackupKeyboardSettings", backup_keyboard_settings_row},
    {"KQResetKeyboardWindow", [](const Pass& pass) { shell_window_row<50>(pass, "KQResetKeyboardWindow"); }},
    {"KQROMToolbox", [](const Pass& pass) { shell_window_row<51>(pass, "KQROMToolbox"); }},
};
// clang-format on

class HostileHost : public test::AmigaDllTest {
protected:
    void run_table() const {
        const Pass pass(module_);
        for (const ExportRow& row : kExportRows) {
            SCOPED_TRACE(row.name);
            row.run(pass);
        }
    }
};

TEST_F(HostileHost, EveryExportHasOneRow) {
    std::set<std::string> rows;
    for (const ExportRow& row : kExportRows) EXPECT_TRUE(rows.insert(row.name).second) << "two rows for " << row.name;
    std::set<std::string> exports;
    for (const kqhost::PeExport& entry : kqhost::list_exports(module_)) exports.insert(entry.name);
    EXPECT_EQ(rows, exports);
}

TEST_F(HostileHost, MetersSeeWhatTheyCount) {
    // A leaked block of the global heap shows in the heap walk.
    const test::HeapCount before = test::count_heap_blocks();
    HGLOBAL block = GlobalAlloc(GMEM_FIXED, 40);
    ASSERT_NE(block, nullptr);
    const test::HeapCount during = test::count_heap_blocks();
    GlobalFree(block);
    EXPECT_EQ(during.blocks, before.blocks + 1);
    EXPECT_GE(during.bytes, before.bytes + 40);
    EXPECT_EQ(test::count_heap_blocks(), before);

    // A block the module takes from the C runtime and keeps shows in the allocation meter.
    const test::CrtAllocationMeter meter(module_);
    ASSERT_GE(meter.hooked(), 3) << "malloc, realloc and free at least";
    const auto module_malloc = reinterpret_cast<void* (*)(std::size_t)>(meter.import_named("malloc"));
    const auto module_realloc = reinterpret_cast<void* (*)(void*, std::size_t)>(meter.import_named("realloc"));
    const auto module_free = reinterpret_cast<void (*)(void*)>(meter.import_named("free"));
    ASSERT_TRUE(module_malloc && module_realloc && module_free);
    const test::HeapCount start = meter.outstanding();
    void* kept = module_malloc(24);
    EXPECT_EQ(meter.outstanding(), (test::HeapCount{start.blocks + 1, start.bytes + 24}));
    kept = module_realloc(kept, 4000);
    EXPECT_EQ(meter.outstanding(), (test::HeapCount{start.blocks + 1, start.bytes + 4000}));
    module_free(kept);
    EXPECT_EQ(meter.outstanding(), start);
    void* foreign = std::malloc(16); // not the module's: freeing it through the module counts nothing
    module_free(foreign);
    EXPECT_EQ(meter.outstanding(), start);
    EXPECT_TRUE(meter.kept_up());
}

TEST_F(HostileHost, EveryExportSurvivesHostileArgumentsAndLeaksNothing) {
    const test::CrashNote crash_note;
    const test::CrtAllocationMeter meter(module_);
    ASSERT_GE(meter.hooked(), 3);
    const std::vector<std::wstring> settings = settings_tree();

    run_table(); // warm-up: one-time allocations of the module, the C runtime and Wine
    const test::HeapCount crt_warm = meter.outstanding(), heap_warm = test::count_heap_blocks();
    const std::size_t taken_before = meter.taken();
    run_table();
    const test::HeapCount crt_first = meter.outstanding(), heap_first = test::count_heap_blocks();
    EXPECT_GT(meter.taken(), taken_before + 1000) << "the module's allocations pass the meter";
    run_table();
    const test::HeapCount crt_second = meter.outstanding(), heap_second = test::count_heap_blocks();

    EXPECT_TRUE(meter.kept_up());
    EXPECT_EQ(crt_first, crt_warm) << "C runtime blocks the module kept from the first run";
    EXPECT_EQ(crt_second, crt_first) << "C runtime blocks the module kept from the second run";
    // Failures recorded during the runs take heap blocks of their own.
    if (!HasFailure()) {
        EXPECT_EQ(heap_first, heap_warm) << "heap blocks kept from the first run";
        EXPECT_EQ(heap_second, heap_first) << "heap blocks kept from the second run";
    }
    EXPECT_EQ(settings_tree(), settings) << "the module's settings changed";
}

} // namespace
} // namespace kq
