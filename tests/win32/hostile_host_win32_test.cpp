// Every export of the built DLL called as a careless or hostile host calls it, from one table of
// argument shapes per export run by one engine. Each export has a call that works; the engine
// also makes each pointer null in turn and all at once, and passes each buffer with a length of
// 0, 1, 2 and one short of its text. The rows put in unpaired UTF-16 surrogates, paths of 259,
// 260 and 261 characters, indexes past the end and unknown names. Every call is checked for its
// documented status, for writing nothing outside the buffers and slots it was given (input texts
// end right before an inaccessible page), and what it hands back is released as the header says.
// The table runs once to warm up and twice more: the process heaps, the C runtime blocks that the
// module holds and its registry settings must stay as they were.

#include "kq_amiga.h"
#include "kqhost/pe_image.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/amiga_images.h"
#include "tests/support/hostile_host.h"
#include "tests/support/temp_folder.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kq {
namespace {

constexpr std::int64_t kNotFound = KQ_STATUS_FROM_WIN32(1168), kOverflow = KQ_STATUS_FROM_WIN32(111),
                       kMalformed = KQ_STATUS_FROM_WIN32(13);
constexpr std::int64_t kFileSystemError = 0x80070000; // any HRESULT_FROM_WIN32 status but E_INVALIDARG
constexpr std::int64_t kOptional = INT64_MIN;         // a pointer that may be null
constexpr std::uint64_t kPoison = 0x5A5A5A5A5A5A5A50ull;
constexpr std::uint64_t kHeld = 1; // a slot holding a keyboard record of the caller's
constexpr std::uint32_t kPathLengths[] = {259, 260, 261}, kReference = 8192;
constexpr const wchar_t* kSettingsKey = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";
constexpr const wchar_t* kBackupKey = L"Software\\Mervane\\Quennet\\HostileBackup";
constexpr std::wstring_view kCallerKey = L"0123abcd-4567-89ab-cdef-0123456789ab";
constexpr std::string_view kWideResults[] = {"KQGetPlatformName",         "KQGetKeyboardInputData",
                                             "KQGetKeyboardInputData2",   "KQFreeKeyboardInputData",
                                             "KQPreprocessKeyboardInput", "KQProcessKeyboardInput"};
// The records handed back, by the export that frees them: size and the offsets of their texts.
const struct {
    std::string_view release;
    std::uint32_t bytes;
    std::vector<std::size_t> texts;
} kRecords[] = {{"KQFreeOption", 136, {8, 16, 24, 32, 40, 120, 128}},
                {"KQFreeFileAssociation", 72, {8, 16, 24, 32, 40, 48, 56}},
                {"KQFreeDeviceCommand", 24, {8, 16}}};

enum class Kind { null, value, wide, narrow, bytes, buffer, slot, slot32, keyboard, copy };
// What a buffer or slot holds after a call that succeeds; on failure buffers and slots stay as
// they were, but slots of what is handed back are cleared. A sweep calls with 8192 characters to
// learn the text, then with 1, 2, 17, the text's length and one more.
enum class Then {
    same,
    null,
    value,
    any,
    valid,
    cut,
    cut_sweep,
    whole_sweep,
    emptied_sweep,
    names_sweep,
    record,
    text,
    utf8,
    keyboard
};

struct Arg {
    Kind kind = Kind::null;
    std::uint64_t value = 0; // value; buffer: its characters (0 for a sweep); slot: what it holds first
    std::wstring text;       // wide; buffer: what it holds first; keyboard: the layout
    std::string bytes;       // narrow, bytes
    Then then = Then::same;
    std::wstring expected = L"*";           // an exact text, or a prefix before '*'
    std::int64_t null = kOptional;          // the status when this pointer is null (or a buffer's length 0)
    std::uint64_t want = 0, passed = ~0ull; // value slot: what it holds; buffer: the length passed
    const char* release = nullptr;          // the KQFree* export of what a slot receives
};
const Arg N{};
Arg V(std::uint64_t value) { return {.kind = Kind::value, .value = value}; }
Arg W(std::wstring text, std::int64_t null = kOptional) { return {.kind = Kind::wide, .text = text, .null = null}; }
Arg U8(std::string text, std::int64_t null = kOptional) { return {.kind = Kind::narrow, .bytes = text, .null = null}; }
Arg Bytes(std::string bytes, std::int64_t null = kOptional) {
    return {.kind = Kind::bytes, .bytes = bytes, .null = null};
}
Arg Kb(std::wstring layout, std::int64_t null) { return {.kind = Kind::keyboard, .text = layout, .null = null}; }
Arg Copy(std::int64_t null) { return {.kind = Kind::copy, .null = null}; }
// A buffer of `chars` characters and its length (or `passed`) as the next argument.
Arg Buf(std::uint32_t chars, Then then = Then::same, std::wstring expected = L"*", std::wstring initial = {},
        std::int64_t null = KQ_E_INVALIDARG, std::uint64_t passed = ~0ull) {
    return {.kind = Kind::buffer,
            .value = chars,
            .text = initial,
            .then = then,
            .expected = expected,
            .null = null,
            .passed = passed};
}
Arg Sweep(Then then, std::wstring expected = L"*", std::int64_t null = KQ_E_INVALIDARG) {
    return Buf(0, then, expected, {}, null);
}
Arg Out(Then then, const char* release = nullptr, std::int64_t null = kOptional, std::wstring expected = L"*",
        std::uint64_t initial = kPoison) {
    return {.kind = Kind::slot, .value = initial, .then = then, .expected = expected, .null = null, .release = release};
}
Arg Out32(std::uint64_t initial, Then then = Then::same, std::uint64_t want = 0, std::int64_t null = kOptional) {
    return {.kind = Kind::slot32, .value = initial, .then = then, .null = null, .want = want};
}

struct Status {
    Status(std::int64_t one, std::int64_t another) : value(one), other(another) {}
    Status(std::int64_t one) : Status(one, one) {}
    std::int64_t value, other;
};
struct Row {
    std::vector<std::pair<std::size_t, Arg>> with; // the base call's arguments replaced
    Status status;
    int repeat = 1;
};
struct Export {
    std::string name;
    std::vector<Arg> base;   // a call as a host makes it
    Status status, all_null; // of the base call, and with every pointer null and every length 0
    std::vector<Row> rows = {};
    void vary(std::vector<std::pair<std::size_t, Arg>> with, Status expected, int repeat = 1) {
        rows.push_back({std::move(with), expected, repeat});
    }
};

bool status_is(std::int64_t got, const Status& status) {
    const auto one = [got](std::int64_t want) {
        return got == want ||
               (want == kFileSystemError && got < 0 && (got & 0xFFFF0000) == 0x80070000 && got != KQ_E_INVALIDARG);
    };
    return one(status.value) || one(status.other);
}
bool matches(std::wstring_view text, std::wstring_view pattern) {
    return pattern.ends_with(L'*') ? text.starts_with(pattern.substr(0, pattern.size() - 1)) : text == pattern;
}
std::string show(std::wstring_view text) {
    std::string out = "\"";
    for (const wchar_t c : text.substr(0, 40))
        out += c >= 0x20 && c < 0x7F ? std::string(1, char(c)) : "\\u" + std::to_string(c);
    return out + (text.size() > 40 ? "...(" + std::to_string(text.size()) + ")\"" : "\"");
}
std::string show(const Arg& arg, std::uint32_t chars) {
    if (arg.kind == Kind::value) return std::to_string(arg.value);
    if (arg.kind == Kind::wide || arg.kind == Kind::keyboard) return show(arg.text);
    if (arg.kind == Kind::narrow || arg.kind == Kind::bytes)
        return show(std::wstring(arg.bytes.begin(), arg.bytes.end()));
    if (arg.kind == Kind::buffer)
        return "buffer[" + std::to_string(arg.value ? arg.value : chars) + "] of " + std::to_string(arg.passed);
    return arg.kind == Kind::null ? "null" : arg.kind == Kind::copy ? "copy" : "&slot";
}
template <class T>
std::uint64_t raw(T* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}
std::wstring path_of_length(const std::wstring& folder, std::uint32_t chars, std::wstring_view suffix) {
    return folder + L"\\" + std::wstring(chars - folder.size() - 1 - suffix.size(), L'p') + std::wstring(suffix);
}
std::wstring runtime_folder() {
    wchar_t temp[MAX_PATH + 1];
    return std::wstring(temp, GetTempPathW(MAX_PATH + 1, temp)) + L"Quennet";
}

// The registry values below `path`, one line each, to compare before and after.
void read_registry_tree(const std::wstring& path, std::vector<std::wstring>& lines) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    lines.push_back(L"[" + path + L"]");
    wchar_t name[16384], data[32768];
    DWORD name_chars = 16384, type = 0, bytes = sizeof data;
    for (DWORD i = 0;
         RegEnumValueW(key, i, name, &name_chars, nullptr, &type, reinterpret_cast<BYTE*>(data), &bytes) == 0; ++i) {
        lines.push_back(std::wstring(name, name_chars) + L"=" + std::to_wstring(type) + L":" +
                        std::wstring(data, bytes / 2));
        name_chars = 16384, bytes = sizeof data;
    }
    std::set<std::wstring> subkeys;
    for (DWORD i = 0; RegEnumKeyW(key, i, name, 256) == ERROR_SUCCESS; ++i) subkeys.insert(name);
    RegCloseKey(key);
    for (const std::wstring& subkey : subkeys) read_registry_tree(path + L"\\" + subkey, lines);
}

using AnyExport = std::int64_t(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,
                               std::uint64_t, std::uint64_t, std::uint64_t);

// The files that one run of the table works on, keyboard records made once a run, and the
// module's settings, copied aside and put back when the run ends.
class Pass {
public:
    explicit Pass(HMODULE module) : module_(module), dir(folder.path().begin(), folder.path().end()) {
        const std::string floppy = test::as_string(test::floppy_image({.name = "GameDisk"}));
        // A name of its own, so that this run's working copies are told from anybody else's.
        runtime_name =
            L"Hostile" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount64()) + L".adf";
        for (const std::wstring& name : {std::wstring(L"Game.adf"), runtime_name})
            folder.create_file(std::u16string(name.begin(), name.end()), floppy);
        for (std::size_t i = 0; i < 3; ++i) {
            long_adf[i] = path_of_length(dir, kPathLengths[i], L".adf");
            std::ofstream(std::filesystem::path(long_adf[i]), std::ios::binary) << floppy;
            long_adf_exists[i] = GetFileAttributesW(long_adf[i].c_str()) != INVALID_FILE_ATTRIBUTES;
            long_missing[i] = path_of_length(dir + L"\\missing", kPathLengths[i], L".adf");
        }
        folder.create_folder(u"target");
        folder.create_file(u"data\\Shared\\adf\\aros-20240101-boot.adf", "boot");
        HKEY backup = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, kBackupKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &backup, nullptr);
        settings_existed_ = RegCopyTreeW(HKEY_CURRENT_USER, kSettingsKey, backup) == ERROR_SUCCESS;
        RegCloseKey(backup);
    }
    ~Pass() {
        for (const auto& [layout, record] : keyboards_) call("KQFreeKeyboardInputData", {record});
        // Working copies that the table made and left: each with its record.
        WIN32_FIND_DATAW entry;
        HANDLE search = FindFirstFileW((runtime_folder() + L"\\*-" + runtime_name).c_str(), &entry);
        std::vector<std::wstring> copies;
        for (bool found = search != INVALID_HANDLE_VALUE; found; found = FindNextFileW(search, &entry))
            copies.push_back(runtime_folder() + L"\\" + entry.cFileName);
        FindClose(search);
        for (const std::wstring& copy : copies) EXPECT_EQ(call("KQDismissRuntimeMedium", {raw(copy.c_str())}), 0);
        // Every file the module made or opened here must be closed again: the folder goes.
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(dir), error);
        EXPECT_FALSE(error) << "the run's folder stays: " << error.message();
        RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
        HKEY settings = nullptr, backup = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, kBackupKey, 0, KEY_READ, &backup);
        if (settings_existed_ && RegCreateKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                                 nullptr, &settings, nullptr) == 0)
            RegCopyTreeW(backup, nullptr, settings);
        RegCloseKey(settings);
        RegCloseKey(backup);
        RegDeleteTreeW(HKEY_CURRENT_USER, kBackupKey);
    }

    std::int64_t call(const std::string& name, std::vector<std::uint64_t> args) const {
        args.resize(9);
        const auto function =
            reinterpret_cast<AnyExport*>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name.c_str())));
        const std::int64_t result =
            function(args[0], args[1], args[2], args[3], args[4], args[5], args[6], args[7], args[8]);
        return std::ranges::find(kWideResults, name) != std::end(kWideResults) ? result
                                                                               : static_cast<std::int32_t>(result);
    }
    std::uint64_t new_keyboard(const wchar_t* layout) const {
        std::uint64_t data = 0;
        EXPECT_EQ(call("KQGetKeyboardInputData2", {raw(L"a-1200"), raw(layout), 0, 0, 0, 0, 0, 0, raw(&data)}), 0);
        return data;
    }
    std::uint64_t keyboard(const std::wstring& layout) {
        auto [at, added] = keyboards_.emplace(layout, 0);
        if (added) at->second = new_keyboard(layout.c_str());
        return at->second;
    }
    // A working copy of the run's image under the caller's key.
    std::wstring new_copy() const {
        wchar_t buffer[MAX_PATH] = {};
        std::ranges::copy(kCallerKey, buffer);
        EXPECT_EQ(call("KQGetRuntimeMedium", {raw((dir + L"\\" + runtime_name).c_str()), 0, raw(buffer), MAX_PATH, 2}),
                  0);
        return buffer;
    }

private:
    HMODULE module_;
    std::map<std::wstring, std::uint64_t> keyboards_;
    bool settings_existed_ = false;

public:
    test::TempFolder folder;
    const std::wstring dir;
    std::wstring runtime_name, long_adf[3], long_missing[3];
    bool long_adf_exists[3] = {};
};

struct Outcome {
    std::int64_t status;
    std::wstring swept; // the sweep buffer up to its first unwritten character
};

// Checks what a slot received and releases it as the header says.
void release(const Pass& pass, const std::string& label, const Arg& arg, std::uint64_t handed) {
    auto* block = reinterpret_cast<std::byte*>(handed);
    const std::wstring text = arg.then == Then::text ? reinterpret_cast<const wchar_t*>(block) : L"";
    const bool medium = arg.release != nullptr && std::string_view(arg.release) == "KQFreeEmptyMedium";
    if (arg.then == Then::record) {
        const auto& record =
            *std::ranges::find_if(kRecords, [&](const auto& row) { return row.release == arg.release; });
        const std::size_t bytes = LocalSize(block);
        EXPECT_EQ(*reinterpret_cast<const std::uint32_t*>(block), record.bytes) << label;
        EXPECT_GE(bytes, record.bytes) << label;
        for (const std::size_t offset : record.texts) {
            const auto* field = *reinterpret_cast<const wchar_t* const*>(block + offset);
            const auto* at = reinterpret_cast<const std::byte*>(field);
            EXPECT_TRUE(!field || (at >= block + record.bytes && at + (std::wcslen(field) + 1) * 2 <= block + bytes))
                << label << ": the text at " << offset << " lies outside the record";
        }
    } else if (arg.then == Then::utf8) {
        EXPECT_GE(GlobalSize(block), std::strlen(reinterpret_cast<const char*>(block)) + 1) << label;
    } else if (arg.then == Then::keyboard) {
        EXPECT_GE(GlobalSize(block), 2440u) << label;
    } else {
        EXPECT_GE(GlobalSize(block), (text.size() + 1) * 2) << label;
        EXPECT_TRUE(matches(text, arg.expected)) << label << ": " << show(text);
        EXPECT_TRUE(!medium || GetFileAttributesW(text.c_str()) != INVALID_FILE_ATTRIBUTES) << label;
    }
    EXPECT_EQ(arg.release ? pass.call(arg.release, {handed}) : raw(GlobalFree(block)), 0) << label << ": released";
    EXPECT_TRUE(!medium || GetFileAttributesW(text.c_str()) == INVALID_FILE_ATTRIBUTES) << label << ": file left";
}

// One call, its sweep buffer given `chars` characters: checks the status and every buffer and
// slot but the sweep buffer, and releases what the call handed back. `loose` for the engine's
// own variants of a row, which may succeed without handing anything back.
Outcome call_once(Pass& pass, const std::string& name, const std::vector<Arg>& shape, std::uint32_t chars,
                  const Status& status, bool loose) {
    std::string label = name + "(";
    for (const Arg& arg : shape) label += (label.back() == '(' ? "" : ", ") + show(arg, chars);
    test::CallArguments call(label + ")");
    std::vector<std::uint64_t> args;
    std::vector<std::tuple<const Arg*, std::uint64_t, std::uint64_t>> places; // argument, address, first content
    for (const Arg& arg : shape) {
        const std::wstring wide = arg.kind == Kind::copy ? pass.new_copy() : arg.text;
        const std::uint64_t initial =
            arg.kind == Kind::slot && arg.value == kHeld ? pass.new_keyboard(L"de-de") : arg.value;
        const std::size_t size = arg.kind == Kind::buffer ? (arg.value ? arg.value : chars) : 0;
        if (arg.kind == Kind::wide || arg.kind == Kind::copy)
            args.push_back(raw(call.in_bytes({reinterpret_cast<const char*>(wide.c_str()), wide.size() * 2 + 2})));
        else if (arg.kind == Kind::narrow || arg.kind == Kind::bytes)
            args.push_back(raw(call.in_bytes({arg.bytes.c_str(), arg.bytes.size() + (arg.kind == Kind::narrow)})));
        else if (arg.kind == Kind::keyboard)
            args.push_back(pass.keyboard(arg.text));
        else if (arg.kind == Kind::slot || arg.kind == Kind::slot32)
            args.push_back(raw(call.out_slot(initial, arg.kind == Kind::slot ? 8 : 4)));
        else if (arg.kind == Kind::buffer)
            args.push_back(raw(call.out_text(size)));
        else
            args.push_back(arg.value);
        if (arg.kind == Kind::buffer)
            std::ranges::copy(std::wstring_view(arg.text).substr(0, size), reinterpret_cast<wchar_t*>(args.back()));
        if (arg.passed != ~0ull || arg.kind == Kind::buffer) args.push_back(arg.passed != ~0ull ? arg.passed : size);
        if (arg.kind == Kind::buffer) places.emplace_back(&arg, args[args.size() - 2], size);
        if (arg.kind == Kind::slot || arg.kind == Kind::slot32) places.emplace_back(&arg, args.back(), initial);
    }
    Outcome outcome{pass.call(name, args), {}};
    const bool ok = outcome.status == KQ_S_OK;
    EXPECT_TRUE(status_is(outcome.status, status)) << call.label() << ": status 0x" << std::hex << outcome.status;
    for (const auto& [arg, address, initial] : places) {
        if (arg->kind == Kind::buffer) {
            const std::wstring_view now(reinterpret_cast<const wchar_t*>(address), initial);
            const std::wstring before = arg->text.substr(0, initial);
            const std::wstring want =
                arg->expected.ends_with(L'*') ? arg->expected : arg->expected.substr(0, initial - 1);
            if (arg->value == 0) outcome.swept = now.substr(0, now.find(test::kUnwritten));
            const bool cut = arg->then == Then::cut && ok && now.find(L'\0') != now.npos;
            EXPECT_TRUE(arg->value == 0 ||
                        (cut ? matches(now.substr(0, now.find(L'\0')), want)
                             : now == before + std::wstring(initial - before.size(), test::kUnwritten)))
                << call.label() << ": the buffer holds " << show(now);
            continue;
        }
        std::uint64_t now = 0;
        std::memcpy(&now, reinterpret_cast<void*>(address), arg->kind == Kind::slot ? 8 : 4);
        const bool handed = arg->then >= Then::record,
                   cleared = arg->then == Then::null || (handed && arg->then != Then::keyboard);
        if (handed && ok && (now != 0 || !loose)) {
            EXPECT_NE(now, 0u) << call.label() << ": nothing handed back";
            if (now != 0) release(pass, call.label(), *arg, now);
        } else if (ok && arg->then == Then::valid) {
            EXPECT_EQ(now >> 31, 1u) << call.label() << ": not a valid answer";
        } else {
            const bool checked = cleared || !ok || arg->then == Then::same || (arg->then == Then::value && !loose);
            const std::uint64_t want = cleared ? 0 : ok && arg->then == Then::value ? arg->want : initial;
            EXPECT_TRUE(!checked || now == want) << call.label() << ": the slot holds " << now << ", not " << want;
        }
        if (arg->value == kHeld && now == initial) pass.call("KQFreeKeyboardInputData", {initial});
    }
    return outcome;
}

// Runs one shape; one with a sweep buffer learns the whole text first, then cuts the buffer short.
void run(Pass& pass, const std::string& name, const std::vector<Arg>& shape, const Status& status, int repeat,
         bool loose) {
    const auto sweep =
        std::ranges::find_if(shape, [](const Arg& arg) { return arg.kind == Kind::buffer && !arg.value; });
    if (sweep == shape.end()) {
        for (int i = 0; i < repeat; ++i) call_once(pass, name, shape, 0, status, loose);
        return;
    }
    const Outcome reference = call_once(pass, name, shape, kReference, status, loose);
    const std::size_t end = reference.swept.find(L'\0');
    if (reference.status != KQ_S_OK || end == std::wstring::npos) {
        EXPECT_TRUE(reference.swept.empty() || sweep->then == Then::names_sweep) << name << ": the buffer changed";
        return;
    }
    const std::wstring full = sweep->then == Then::names_sweep ? reference.swept : reference.swept.substr(0, end + 1);
    EXPECT_TRUE(loose || matches(full.substr(0, end), sweep->expected)) << name << ": " << show(full);
    const auto length = static_cast<std::uint32_t>(full.size() - 1);
    for (const std::uint32_t chars : std::set<std::uint32_t>{1, 2, 17, std::max(length, 1u), length + 1}) {
        const bool cut = sweep->then == Then::cut_sweep, fits = chars > length;
        const Outcome outcome = call_once(pass, name, shape, chars, cut || fits ? KQ_S_OK : kOverflow, loose);
        const std::wstring want = cut || fits ? full.substr(0, std::min(chars - 1, length)) + L'\0' : L"";
        EXPECT_TRUE(want.empty() ? sweep->then != Then::emptied_sweep || outcome.swept.starts_with(L'\0')
                                 : outcome.swept == want)
            << name << " with " << chars << " characters: " << show(outcome.swept);
    }
}

// The base call, each pointer null in turn, all of them null, each buffer's length 0, the rows.
void run(Pass& pass, const Export& e) {
    run(pass, e.name, e.base, e.status, 1, false);
    std::vector<Arg> all_null = e.base;
    for (std::size_t i = 0; i < e.base.size(); ++i) {
        const Arg& arg = e.base[i];
        if (arg.kind == Kind::null || arg.kind == Kind::value) continue;
        std::vector<Arg> shape = e.base;
        shape[i] = {.passed = arg.kind == Kind::buffer ? 64u : ~0ull};
        all_null[i] = {.passed = arg.kind == Kind::buffer ? 0u : ~0ull};
        run(pass, e.name, shape, arg.null == kOptional ? e.status : Status(arg.null), 1, true);
        if (arg.kind != Kind::buffer) continue;
        shape[i] = Buf(std::max<std::uint64_t>(arg.value, 1), Then::same, L"*", arg.text, arg.null, 0);
        run(pass, e.name, shape, arg.null == kOptional ? e.status : Status(arg.null), 1, true);
    }
    run(pass, e.name, all_null, e.all_null, 1, true);
    for (const Row& row : e.rows) {
        std::vector<Arg> shape = e.base;
        for (const auto& [at, arg] : row.with) shape[at] = arg;
        run(pass, e.name, shape, row.status, row.repeat, false);
    }
}

// Texts near a known name: empty, padded, with unpaired surrogates (also as the last unit before
// the NUL), too long, and in other case, which still names it where names compare without case.
std::vector<std::wstring> unknown_names(const std::wstring& known) {
    std::wstring upper = known;
    for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
    return {L"", known + L" ", L"\xDC00" + known, known + L"\xD800", L"\xDBFF\xDBFF", upper, std::wstring(261, L'n')};
}
// Texts a module must take without tripping: unpaired surrogates and long ones.
std::vector<std::wstring> odd_texts() {
    return {L"",
            L"\xD800",
            L"a\xDBFF",
            L"\xDC00\xD800",
            std::wstring(261, L'\xD800'),
            std::wstring(259, L'x'),
            std::wstring(260, L'x'),
            std::wstring(261, L'x')};
}
std::string garbage(std::size_t bytes) {
    std::string keymap(bytes, 0);
    for (std::size_t i = 0; i < bytes; ++i) keymap[i] = static_cast<char>(i * 37 + 11);
    return keymap;
}
std::wstring floppy(const std::wstring& path) {
    return L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><xadml><catalog><application><media><floppy>" + path +
           L"</floppy></media></application></catalog></xadml>";
}
std::string kq9(const std::string& configuration) {
    return "<kq9><application><configuration>" + configuration + "</configuration></application></kq9>";
}

std::vector<Export> table(const Pass& p) {
    const std::wstring game = p.dir + L"\\Game.adf", missing = p.dir + L"\\missing.adf", target = p.dir + L"\\target",
                       surrogate = p.dir + L"\\Game\xD800.adf", data = p.dir + L"\\data",
                       long_folder = path_of_length(p.dir, 261, L""), runtime_image = p.dir + L"\\" + p.runtime_name,
                       copy = runtime_folder() + L"\\" + std::wstring(kCallerKey) + L"-" + p.runtime_name,
                       key = std::wstring(kCallerKey) + L'\0';
    const std::int64_t invalid = KQ_E_INVALIDARG;
    std::vector<Export> t;
    t.push_back({"DllMain", {N, V(DLL_THREAD_ATTACH), N}, TRUE, TRUE});
    t.back().vary({{1, V(DLL_THREAD_DETACH)}}, TRUE);
    t.back().vary({{1, V(0xFFFFFFFF)}}, TRUE);
    t.push_back({"KQGetPlatformName", {}, 0, 0});
    for (const char* name :
         {"KQ9Editor", "KQEditScreenClip", "KQEditScreenClip2", "KQROMToolbox", "KQOpenKeyboardWindow",
          "KQSetKeyboardWindow", "KQResetKeyboardWindow", "KQGetKeyboardWindowInfo", "KQGetKeyDialog2",
          "KQProcessVButtonEditMessage", "KQProcessVButtonEditMessage2"})
        t.push_back({name,
                     {N, Out(Then::same, nullptr, kOptional, L"*", 0), V(~0ull), W(L"\xD800"),
                      Buf(1, Then::same, L"*", {}, kOptional)},
                     KQ_E_NOTIMPL,
                     KQ_E_NOTIMPL});
    for (const char* name : {"KQFreeOption", "KQFreeFileAssociation", "KQFreeDeviceCommand", "KQFreeEmptyMedium",
                             "KQFreeKeyboardInputData", "KQFreeStringRawKeys"})
        t.push_back({name, {N}, 0, 0});

    // Options and their records, the settings that the run puts back.
    t.push_back({"KQGetOption", {V(0), V(~0u), Out(Then::record, "KQFreeOption", invalid), W(L"\xD800")}, 0, invalid});
    for (std::uint64_t index = 1; index < 6; ++index) t.back().vary({{0, V(index)}}, 0);
    for (const std::wstring& text : odd_texts()) t.back().vary({{3, W(text)}}, 0);
    for (const std::uint64_t index : {6u, 0x80000000u, ~0u}) t.back().vary({{0, V(index)}}, KQ_S_FALSE);
    t.push_back({"KQSetOption", {W(L"MouseHack", invalid), W(L"1"), W(L"\xDC00"), W(L"\xD800")}, 0, invalid});
    for (const std::wstring& name : unknown_names(L"MouseHack")) t.back().vary({{0, W(name)}}, invalid);
    for (const wchar_t* value : {L"\xD800", L"99999999999999999999", L"-1"}) t.back().vary({{1, W(value)}}, 0);
    for (const wchar_t* name : {L"WindowsPrinter", L"WindowsSerial", L"WindowsMIDIOut", L"WindowsMIDIIn"})
        for (const std::wstring& value : {std::wstring(261, L'v'), std::wstring(L"\xDBFF"), std::wstring()})
            t.back().vary({{0, W(name)}, {1, W(value)}}, 0);

    // Records by index.
    t.push_back({"KQGetFileAssociation", {V(0), Out(Then::record, "KQFreeFileAssociation", invalid)}, 0, invalid});
    for (std::uint64_t index = 1; index < KQ_FILE_ASSOCIATION_COUNT; ++index) t.back().vary({{0, V(index)}}, 0);
    for (const std::uint64_t index : {10u, 0x80000000u, ~0u}) t.back().vary({{0, V(index)}}, KQ_S_FALSE);
    t.push_back({"KQGetDeviceCommand",
                 {V(0), V(7), V(~0u), V(~0u), W(L"a-500"), Out(Then::record, "KQFreeDeviceCommand", invalid)},
                 0,
                 invalid});
    for (const auto& [index, category, model, status] :
         std::vector<std::tuple<std::uint64_t, std::uint64_t, std::wstring, std::int64_t>>{
             {3, 7, L"\xD800", 0},
             {4, 7, L"", KQ_S_FALSE},
             {~0u, 7, L"", KQ_S_FALSE},
             {0, 0xFFFFFF07, std::wstring(261, L'm'), 0},
             {5, 0x102, L"A-CDTV", 0},
             {6, 2, L"a-cdtv", KQ_S_FALSE},
             {0, 2, L"a-cdtv\xDBFF", KQ_S_FALSE},
             {0, ~0u, L"a-cdtv", KQ_S_FALSE}})
        t.back().vary({{0, V(index)}, {1, V(category)}, {4, W(model)}}, status);

    // Content texts.
    const std::wstring list = L"Work\t" + game + L"\rSystem\t" + p.long_missing[2],
                       odd = L"\xD800\t\xDC00\r\xDBFF\n\t\t\r\n";
    t.push_back({"KQGetContentTooltip", {V(0), V(0), W(game), W(L"Game"), Sweep(Then::cut_sweep, L"*")}, 0, invalid});
    for (const std::uint64_t drive : {1, 2, 3, 4, 0xFF})
        for (const auto& [path, label] : std::vector<std::pair<std::wstring, std::wstring>>{{game, L"Game"},
                                                                                            {p.long_adf[2], L"\xD800"},
                                                                                            {p.long_missing[1], L""},
                                                                                            {surrogate, L"\xDBFF"},
                                                                                            {list, L"\xDC00\t"}})
            t.back().vary({{0, V(drive)},
                           {1, V(~0u)},
                           {2, W(path)},
                           {3, W(label)},
                           {4, Sweep(Then::cut_sweep, drive > 3 ? L"" : L"*")}},
                          0);
    t.push_back({"KQGetContentInfo",
                 {V(1), V(~0u), W(list), W(game + L"\tDH0\tWork\thardfile\n" + p.long_missing[2]),
                  Sweep(Then::emptied_sweep), V(0)},
                 0,
                 invalid});
    for (const std::uint64_t drive : {0, 2, 3, 0xFF}) t.back().vary({{0, V(drive)}}, invalid);
    for (const std::uint64_t flags : {1u, 2u, ~0u}) t.back().vary({{5, V(flags)}}, 0);
    t.back().vary({{2, N},
                   {3, W(game + L"\tdevicename=DH0\n" + p.long_adf[2] + L"\tdevicename=DH1\n" + surrogate +
                         L"\tvolumename=\xD800")},
                   {5, V(1)}},
                  0);
    for (const std::uint64_t flags : {0, 1, 2}) t.back().vary({{2, W(odd)}, {3, W(odd)}, {5, V(flags)}}, 0);

    // Auto-configuration and manifests.
    t.push_back({"KQAutoConfigureApplication",
                 {W(floppy(game), KQ_E_POINTER), V(1), V(0), Out(Then::utf8, nullptr, KQ_E_POINTER)},
                 0,
                 KQ_E_POINTER});
    for (const auto& [input, flags, status] : std::vector<std::tuple<std::wstring, std::uint64_t, std::int64_t>>{
             {L"", 0, kMalformed},
             {L"\xD800", 0, kMalformed},
             {floppy(L"\xDC00"), 0, kMalformed},
             {floppy(surrogate), 0, kMalformed},
             {floppy(missing), 0, KQ_E_FAIL},
             {floppy(p.long_missing[0]), 0, KQ_E_FAIL},
             {floppy(p.long_missing[1]), 0, KQ_E_FAIL},
             {floppy(p.long_missing[2]), 0, KQ_E_FAIL},
             {L"\xD800", 1, invalid},
             {p.dir + L"\\Game.uae\xD800", ~0u, invalid},
             {p.dir + L"\\\xD800.uae", 1, kFileSystemError},
             {path_of_length(p.dir, 259, L".uae"), 1, kFileSystemError},
             {path_of_length(p.dir, 260, L".uae"), 1, kFileSystemError},
             {path_of_length(p.dir, 261, L".UAE"), ~0u, kFileSystemError}})
        t.back().vary({{0, W(input)}, {2, V(flags)}}, status);
    t.back().vary({{0, W(floppy(L""))}, {2, V(0xFFFFFFFE)}, {3, Out(Then::null)}}, 0); // no media
    t.push_back({"KQGetApplicationInfo",
                 {Out(Then::text, nullptr, KQ_E_POINTER), U8(kq9("<system>a-1200</system>"), invalid)},
                 0,
                 KQ_E_POINTER});
    for (const auto& [manifest, status] : std::vector<std::pair<std::string, std::int64_t>>{
             {"", kMalformed},
             {"\xED\xA0\x80", kMalformed},
             {kq9("<system>\xFF\xFE</system>"), kMalformed},
             {"\xFF\xFE<", kMalformed},
             {kq9("<system>" + std::string(261, 'm') + "</system><rom>" + std::string(261, 'm') + "</rom>"), 0},
             {"<kq9/>", 0}})
        t.back().vary({{1, U8(manifest)}}, status);
    const std::string adf = kq9("<boot type=\"adf\">310</boot>"), aros = kq9("<boot type=\"adf\">aros-latest</boot>");
    t.push_back({"KQBootTag",
                 {U8(adf, invalid), W(L"C:\\Data", invalid), V(0), Out(Then::text, nullptr, kOptional, L"C:\\Data\\*")},
                 0,
                 invalid});
    for (const auto& [manifest, operation, status] : std::vector<std::tuple<std::string, std::uint64_t, std::int64_t>>{
             {adf, 1, invalid},
             {adf, ~0u, invalid},
             {kq9("<boot type=\"zip\">310</boot>"), 0, invalid},
             {kq9("<boot type=\"\xED\xA0\x80\">310</boot>"), 0, kMalformed},
             {kq9("<boot type=\"dir\">nothing</boot>"), 0, invalid},
             {kq9("<boot type=\"dir\"></boot>"), 0, KQ_E_FAIL},
             {kq9("<boot>310</boot>"), 0, kNotFound},
             {"<kq9><application>", 0, kMalformed}})
        t.back().vary({{0, U8(manifest)}, {2, V(operation)}}, status);
    for (const auto& [manifest, root] : std::vector<std::pair<std::string, std::wstring>>{
             {adf, L""},
             {adf, long_folder},
             {adf, L"\xD800"},
             {kq9("<boot type=\"ADF\">" + std::string(261, 't') + "</boot>"), p.dir},
             {kq9("<boot type=\"hdf\">\xEF\xBF\xBD</boot>"), p.dir},
             {aros, data},
             {aros, long_folder}})
        t.back().vary({{0, U8(manifest)}, {1, W(root)}, {3, Out(Then::text, nullptr, kOptional, root + L"*")}}, 0);

    // Models, ROMs and input ports.
    t.push_back(
        {"KQROMExists", {W(L"310-a1200", invalid), W(L"a-4000"), W(L"NTSC"), W(p.dir, invalid)}, KQ_S_FALSE, invalid});
    for (const std::wstring& text : odd_texts())
        t.back().vary({{0, W(text)}, {1, W(text)}, {2, W(text)}}, text.empty() ? invalid : KQ_S_FALSE);
    for (const wchar_t* rom : {L"3x0-a4000", L"aros-latest", L"120"}) t.back().vary({{0, W(rom)}}, KQ_S_FALSE);
    for (const std::wstring& folder : {long_folder, std::wstring(L"\xDC00"), std::wstring()})
        t.back().vary({{3, W(folder)}}, folder.empty() ? invalid : KQ_S_FALSE);
    t.push_back({"KQGetDefaultSystemROM", {Out(Then::text, nullptr, invalid), W(L"a-1200", invalid)}, 0, invalid});
    for (const std::wstring& model : unknown_names(L"a-1200"))
        t.back().vary({{0, Out(Then::text, nullptr, invalid, model == L"A-1200" ? L"*" : L"120")}, {1, W(model)}}, 0);
    t.push_back(
        {"KQGetRestoreSystemFilesPaths", {Out(Then::text, nullptr, kOptional, L"Shared\\adf\t*"), W(data)}, 0, 0});
    for (std::wstring folder : odd_texts())
        t.back().vary({{0, Out(Then::text, nullptr, kOptional, L"")}, {1, W(folder)}}, 0);
    for (std::uint32_t chars : kPathLengths)
        t.back().vary({{0, Out(Then::text, nullptr, kOptional, L"")}, {1, W(path_of_length(p.dir, chars, L""))}}, 0);
    t.push_back({"KQGetInputPortsInfo",
                 {W(L"a-1200", invalid), W(L"parallel"), Out32(7, Then::value, 3), Out32(7, Then::value, 3),
                  Out32(7, Then::value, 0), Out32(7, Then::value, 1)},
                 0,
                 invalid});
    for (const std::wstring& model : odd_texts()) t.back().vary({{0, W(model)}}, 0);
    for (const auto& [multitap, ports] : std::vector<std::pair<std::wstring, std::uint64_t>>{
             {L"PARALLEL", 3}, {L"", 0}, {L"parallel\xD800", 0}, {L"\xDC00", 0}})
        t.back().vary({{1, W(multitap)}, {3, Out32(7, Then::value, ports)}}, 0);
    t.push_back(
        {"KQGetDefaultInputPortContent", {W(L"a-cd32", invalid), V(0), Out32(7, Then::value, 4, invalid)}, 0, invalid});
    for (const auto& [model, first] : std::vector<std::pair<std::wstring, std::uint64_t>>{
             {L"A-CD32", 4}, {L"a-cdtv", 2}, {L"a-1200", 1}, {L"a-cd32\xD800", 1}, {std::wstring(261, L'n'), 1}})
        t.back().vary({{0, W(model)}, {2, Out32(7, Then::value, first)}}, 0);
    for (const std::uint64_t port : {1u, 4u, 0x80000000u, ~0u})
        t.back().vary({{1, V(port)}, {2, Out32(7, Then::value, 0)}}, 0);

    // Runtime media: copies of the run's image under the caller's key, checked and dismissed.
    t.push_back({"KQGetRuntimeMedium",
                 {W(runtime_image, invalid), W(long_folder), Buf(MAX_PATH, Then::cut, copy, key), V(2)},
                 0,
                 invalid});
    for (const auto& [image, status] :
         std::vector<std::pair<std::wstring, std::int64_t>>{{L"Game.adf", invalid},
                                                            {L"\xD800", KQ_S_FALSE},
                                                            {p.dir + L"\\Game.txt", KQ_S_FALSE},
                                                            {game + L"\xD800", KQ_S_FALSE},
                                                            {p.long_adf[0], kOverflow},
                                                            {p.long_adf[1], kOverflow},
                                                            {p.long_missing[2], kOverflow},
                                                            {missing, kFileSystemError},
                                                            {surrogate, kFileSystemError},
                                                            {p.dir + L"\\missing.hdz", std::int32_t(0x80040002)}})
        for (const std::uint32_t chars : {1u, 260u}) t.back().vary({{0, W(image)}, {2, Buf(chars)}, {3, V(0)}}, status);
    for (const std::wstring& bad :
         {std::wstring(), std::wstring(kCallerKey.substr(1)), std::wstring(kCallerKey) + L"0",
          std::wstring(L"0123abcd-4567-89ab-cdef-0123456789a*"), L"\x1F" + std::wstring(kCallerKey.substr(1))})
        t.back().vary({{2, Buf(bad.size() + 1, Then::same, L"*", bad + L'\0')}},
                      invalid); // not 36 characters of a file name
    // An unpaired surrogate is a character of a file name on NTFS, not on every file system.
    t.back().vary({{2, Buf(MAX_PATH, Then::cut, runtime_folder() + L"*",
                           std::wstring(L"0123abcd-4567-89ab-cdef-0123456789a\xD800") + L'\0')}},
                  {0, kFileSystemError});
    for (const std::uint32_t chars :
         {36u, 37u, static_cast<std::uint32_t>(copy.size())}) // a full buffer: read to its end
        t.back().vary({{2, Buf(chars, Then::cut, copy, chars > 36 ? key : std::wstring(kCallerKey))}, {3, V(~0u)}}, 0);
    for (const std::uint32_t chars : {1u, 2u})
        t.back().vary({{1, W(L"\xD800")}, {2, Buf(chars, Then::cut, runtime_folder())}, {3, V(1)}}, 0);
    std::vector<std::pair<std::wstring, std::int64_t>> not_copies = {
        // names not "<key>-<name>", or without a record
        {game, invalid},
        {p.long_adf[2], invalid},
        {L"\\" + std::wstring(kCallerKey), invalid},
        {L"\\" + std::wstring(kCallerKey) + L"-", kFileSystemError},
        {runtime_folder() + L"\\0000abcd-4567-89ab-cdef-0123456789ab-None.adf", kFileSystemError},
        {runtime_folder() + L"\\\xD800\xD800\xD800\xD800" + std::wstring(32, L'k') + L"-None.adf", kFileSystemError},
        {path_of_length(runtime_folder(), 261, L"-None.adf"), invalid}};
    for (const std::wstring& text : odd_texts()) not_copies.emplace_back(text, invalid);
    t.push_back({"KQCheckRuntimeMedium", {Copy(invalid), Out32(7, Then::value, 0, invalid)}, 0, invalid});
    for (const auto& [name, status] : not_copies) t.back().vary({{0, W(name)}}, status);
    t.push_back({"KQDismissRuntimeMedium", {Copy(invalid), V(1), V(0)}, 0, invalid});
    for (const auto& [name, status] : not_copies) t.back().vary({{0, W(name)}}, status);
    t.back().vary({{1, V(~0ull)}, {2, V(~0u)}}, 0);

    // Empty media, copies of medium files, volume names.
    for (const char* name : {"KQGetEmptyMedium", "KQGetEmptyMedium2"}) {
        t.push_back({name, {Out(Then::text, "KQFreeEmptyMedium"), V(1), V(0), V(1)}, 0, 0});
        for (const auto& [must_be_zero, kind, status] :
             std::vector<std::tuple<std::uint64_t, std::uint64_t, std::int64_t>>{{1, 1, invalid},
                                                                                 {0x100, 1, invalid},
                                                                                 {~0u, 1, invalid},
                                                                                 {0, 0, 0},
                                                                                 {0, 0xFFFFFF01, 0},
                                                                                 {0, 2, invalid},
                                                                                 {0, 0xFF, invalid}})
            if (name[16] == '2' || kind == 1) t.back().vary({{2, V(must_be_zero)}, {3, V(kind)}}, status);
    }
    const std::wstring target_file = target + L"\\Game.adf";
    t.push_back({"KQCopyMediumFile",
                 {W(game, invalid), W(target, invalid), V(0), Buf(261, Then::cut, target_file)},
                 0,
                 invalid});
    std::vector<std::pair<std::wstring, std::int64_t>> sources = {{L"Game.adf", invalid},
                                                                  {L"", invalid},
                                                                  {L"\xD800", invalid},
                                                                  {missing, kFileSystemError},
                                                                  {surrogate, kFileSystemError}};
    for (const std::wstring& source : p.long_missing) sources.emplace_back(source, kFileSystemError);
    for (const auto& [source, status] : sources)
        for (const std::uint32_t chars : {1u, 260u}) t.back().vary({{0, W(source)}, {3, Buf(chars)}}, status);
    for (const std::uint32_t chars : kPathLengths)
        t.back().vary({{1, W(path_of_length(p.dir, chars, L""))}, {3, Buf(1)}}, kFileSystemError);
    t.back().vary({{1, W(p.dir + L"\\\xDC00")}}, kFileSystemError);
    for (const std::uint32_t chars : {1u, 2u, static_cast<std::uint32_t>(target_file.size())})
        for (const std::uint64_t flags : {0, 1})
            t.back().vary({{2, V(flags)}, {3, Buf(chars, Then::cut, target_file)}}, 0);
    t.back().vary({{2, V(2)}, {3, Buf(1)}}, KQ_STATUS_FROM_WIN32(80)); // no overwrite
    t.back().vary({{2, V(~0u)}, {3, Buf(1, Then::cut, L"")}}, 0);      // a free name is taken
    t.back().vary({{2, V(8)}, {3, Buf(1)}}, KQ_S_FALSE);               // the name stays
    for (std::size_t i = 0; i < 3; ++i)                                // where the file system made them
        if (p.long_adf_exists[i])
            t.back().vary({{0, W(p.long_adf[i])}, {2, V(4)}, {3, Buf(MAX_PATH, Then::cut, target + L"\\*")}},
                          {0, kFileSystemError});
    t.push_back({"KQGetVolumeName", {W(game, invalid), Sweep(Then::cut_sweep, L"GameDisk")}, 0, invalid});
    std::vector<std::wstring> unreadable = odd_texts();
    unreadable.insert(unreadable.end(), {missing, surrogate, p.long_missing[0], p.long_missing[1], p.long_missing[2]});
    for (std::size_t i = 0; i < 3; ++i)
        p.long_adf_exists[i] ? t.back().vary({{0, W(p.long_adf[i])}}, 0) : unreadable.push_back(p.long_adf[i]);
    for (const std::wstring& image : unreadable)
        for (const std::uint32_t chars : {1u, 40u}) t.back().vary({{0, W(image)}, {1, Buf(chars)}}, KQ_E_FAIL);

    // Keyboard records, translation and names.
    for (const char* name : {"KQGetKeyboardInputData", "KQGetKeyboardInputData2"}) {
        const bool second = name[22] == '2';
        std::vector<Arg> base = {W(L"a-500", kNotFound),
                                 W(L"en-gb"),
                                 Bytes(garbage(658)),
                                 V(658),
                                 V(0x010101FF),
                                 V(0x0101FFFF),
                                 V(~0u),
                                 V(~0u)};
        if (!second) base.pop_back();
        base.push_back(Out(Then::keyboard, "KQFreeKeyboardInputData", KQ_E_POINTER, L"*", kHeld));
        t.push_back({name, base, 0, KQ_E_POINTER});
        for (const std::wstring& id : unknown_names(L"en-gb")) t.back().vary({{0, W(id)}, {1, W(id)}}, 0);
        for (const std::size_t bytes : {1, 657, 4096})
            t.back().vary({{2, Bytes(garbage(bytes))}, {3, V(bytes)}, {4, V(0)}, {5, V(0x01010000)}}, 0);
        t.back().vary({{0, W(L"x")}, {2, N}, {3, V(~0u)}, {4, V(~0u)}, {5, V(0)}}, 0);
    }
    t.push_back({"KQPreprocessKeyboardInput",
                 {V(0x41), V(~0ull), Kb(L"de-de", invalid), V(~0u), Out32(0, Then::valid)},
                 0,
                 invalid});
    for (const std::uint64_t flags : {0ull, 0x00010000ull, 0x09000000ull, ~0xFFull})
        for (std::uint64_t code = 0; code < 256; ++code) t.back().vary({{0, V(code | flags)}}, 0);
    constexpr std::uint64_t kDown = 1u << 20, kFetch = 1u << 28, kTranslate = 1u << 18, kDefer = 3u << 18;
    t.push_back({"KQProcessKeyboardInput",
                 {V(0x41 | kDown | kTranslate), V(u'a'), Kb(L"fr-fr", invalid), V(~0u), Out32(0, Then::any)},
                 0,
                 invalid});
    t.back().vary({{0, V(kFetch)}, {2, Kb(L"en-us", invalid)}, {4, Out32(7)}}, KQ_E_FAIL); // an empty queue
    // Characters a host may hand over: unpaired surrogates, non-characters, high bits set.
    for (const std::uint64_t character : {0x7Eull, 0xD800ull, 0xDFFFull, 0xFFFEull, 0x10000ull, ~0ull}) {
        for (const std::uint64_t mode : {std::uint64_t{0}, kTranslate, kDefer})
            for (std::uint64_t code = 0; code < 256; ++code)
                for (const std::uint64_t extra : {kDown, std::uint64_t{0}, kDown | 0x30000})
                    t.back().vary({{0, V(code | mode | extra)}, {1, V(character)}}, 0);
        // Many presses without fetching: the queue holds 32 events at most.
        t.back().vary({{1, V(character)}}, 0, 100);
        t.back().vary({{0, V(kFetch)}}, {0, KQ_E_FAIL}, 32);
        t.back().vary({{0, V(kFetch)}, {4, Out32(7)}}, KQ_E_FAIL);
    }
    t.push_back({"KQGetKeyboardLayout",
                 {V(0), Bytes(garbage(658), invalid), V(658), Sweep(Then::whole_sweep, L"en-us*")},
                 0,
                 invalid});
    t.back().vary({{2, V(0)}, {3, Buf(64)}}, invalid);
    for (const std::size_t bytes : {1, 100, 657, 5000}) t.back().vary({{1, Bytes(garbage(bytes))}, {2, V(bytes)}}, 0);
    std::wstring many_keys;
    while (many_keys.size() < 259) many_keys += L"a+";
    t.push_back({"KQGetKeyDisplayName",
                 {W(L"shift+a", invalid), W(L"x", kNotFound), W(L"de-de"), Sweep(Then::names_sweep), V(0), V(0)},
                 0,
                 invalid});
    for (const std::wstring& layout : {std::wstring(L"\xD800"), std::wstring(261, L'l'), std::wstring(L"de-de")}) {
        for (const std::wstring& text :
             {std::wstring(L"NOSUCHKEY"), std::wstring(L"a+\xDC00"), std::wstring(261, L'q')})
            t.back().vary({{0, W(text)}, {2, W(layout)}, {4, V(~0u)}}, kNotFound);
        for (const std::wstring& text :
             {std::wstring(L"CONTROL+LEFT AMIGA"), std::wstring(L"!"), std::wstring(L"NUMPAD ["), std::wstring(L"++"),
              std::wstring(L"shift+"), many_keys + L"b"})
            t.back().vary({{0, W(text)}, {1, W(L"\xDBFF")}, {2, W(layout)}}, {0, kNotFound});
    }
    t.push_back({"KQGetStringRawKeys",
                 {W(L"Ab"), Kb(L"sv-se", invalid), V(0), Out(Then::text, "KQFreeStringRawKeys", KQ_E_POINTER)},
                 0,
                 KQ_E_POINTER});
    for (const std::wstring& text : odd_texts()) t.back().vary({{0, W(text)}}, 0);
    for (const wchar_t* text : {L"CONTROL+LEFT AMIGA", L"NOSUCHKEY", L"+", L"shift+", L"\xFFFF\xFFFE"})
        for (const std::uint64_t mode : {0u, 1u, 2u, 3u, ~0u}) t.back().vary({{0, W(text)}, {2, V(mode)}}, 0);
    t.push_back({"KQBackupKeyboardSettings", {V(0)}, invalid, invalid}); // only actions that change nothing
    for (const std::uint64_t action : {4u, 0x101u, 0x80000001u, ~0u}) t.back().vary({{0, V(action)}}, invalid);
    t.push_back({"KQGetInputButtonName", {V(1), V(~0u), V(2), Sweep(Then::cut_sweep, L"*", kOptional)}, 0, 0});
    for (const auto& [mask, kind] :
         std::vector<std::pair<std::uint64_t, std::uint64_t>>{{32, 2}, {64, 3}, {1024, 4}, {16, 4}})
        t.back().vary({{0, V(mask)}, {2, V(kind)}}, 0);
    for (const auto& [mask, kind] : std::vector<std::pair<std::uint64_t, std::uint64_t>>{
             {0, 2}, {3, 2}, {64, 2}, {128, 3}, {0x80000000, 4}, {1, 0}, {1, 5}, {~0u, ~0u}})
        for (const std::uint32_t chars : {1u, 64u})
            t.back().vary({{0, V(mask)}, {2, V(kind)}, {3, Buf(chars)}}, kNotFound);
    return t;
}

class HostileHost : public test::AmigaDllTest {
protected:
    // Runs the table in a run of its own; returns the exports it called.
    std::set<std::string> run_table() const {
        Pass pass(module_);
        std::set<std::string> called;
        for (const Export& e : table(pass)) {
            if (e.name == "KQGetPlatformName") {
                const std::int64_t name = pass.call(e.name, {});
                EXPECT_STREQ(reinterpret_cast<const wchar_t*>(name), L"Amiga");
                EXPECT_EQ(pass.call(e.name, {}), name) << "the same constant every time";
            } else {
                run(pass, e);
            }
            called.insert(e.name);
        }
        return called;
    }
};

TEST_F(HostileHost, EveryExportSurvivesHostileArgumentsAndLeaksNothing) {
    const test::CrashNote crash_note;
    const test::CrtAllocationMeter meter(module_);
    ASSERT_GE(meter.hooked(), 3u) << "malloc, realloc and free at least";
    std::vector<std::wstring> settings, settings_after;
    read_registry_tree(kSettingsKey, settings);

    std::set<std::string> exports;
    for (const kqhost::PeExport& entry : kqhost::list_exports(module_)) exports.insert(entry.name);
    EXPECT_EQ(run_table(), exports); // all of them; and the warm-up of the module, the C runtime and Wine
    const test::HeapCount crt_warm = meter.outstanding(), heap_warm = test::count_heap_blocks();
    const std::size_t taken_before = meter.taken();
    run_table();
    const test::HeapCount crt_first = meter.outstanding(), heap_first = test::count_heap_blocks();
    EXPECT_GT(meter.taken(), taken_before + 1000) << "the module's allocations pass the meter";
    run_table();
    const test::HeapCount crt_second = meter.outstanding(), heap_second = test::count_heap_blocks();

    EXPECT_EQ(crt_first, crt_warm) << "C runtime blocks the module kept from the first run";
    EXPECT_EQ(crt_second, crt_first) << "C runtime blocks the module kept from the second run";
    if (!HasFailure()) { // failures recorded during the runs take heap blocks of their own
        EXPECT_EQ(heap_first, heap_warm) << "heap blocks kept from the first run";
        EXPECT_EQ(heap_second, heap_first) << "heap blocks kept from the second run";
    }
    read_registry_tree(kSettingsKey, settings_after);
    EXPECT_EQ(settings_after, settings) << "the module's settings changed";
}

} // namespace
} // namespace kq
