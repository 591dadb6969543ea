// Every export of the built DLL called as a careless or hostile host calls it, from one table of
// argument shapes per export run by one engine. Each export has a call as a host makes it; the
// engine also makes each pointer null in turn and all at once, passes each buffer with a length of
// 0, 1, 2 and one short of its text, and puts unpaired UTF-16 surrogates and texts of 259 to 261
// characters into each input text. The rows add paths of 259 to 261 characters, indexes past the
// end and unknown names. Every call is checked for its documented status, for writing nothing
// outside the buffers and slots it was given (input texts end right before an inaccessible page),
// and what it hands back is released as the header says. The table runs once to warm up and twice
// more: the process heaps, the C runtime blocks that the module holds and its registry settings
// must stay as they were.

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
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace kq {
namespace {

constexpr std::int64_t kNotFound = KQ_STATUS_FROM_WIN32(1168), kOverflow = KQ_STATUS_FROM_WIN32(111),
                       kMalformed = KQ_STATUS_FROM_WIN32(13), kInvalid = KQ_E_INVALIDARG;
constexpr std::int64_t kFileSystemError = 0x80070000; // any HRESULT_FROM_WIN32 status but E_INVALIDARG
constexpr std::int64_t kNone = INT64_MIN;             // a null pointer that the export takes; no odd texts
constexpr std::int64_t kAny = INT64_MIN + 1;          // a status not checked
constexpr std::uint64_t kPoison = 0x5A5A5A5A5A5A5A50ull, kHeld = 1; // kHeld: the caller's keyboard record
constexpr std::uint32_t kReference = 8192;
constexpr const wchar_t* kSettingsKey = L"Software\\Mervane\\Quennet\\Platforms\\Amiga";
constexpr const wchar_t* kBackupKey = L"Software\\Mervane\\Quennet\\HostileBackup";
constexpr std::wstring_view kCallerKey = L"0123abcd-4567-89ab-cdef-0123456789ab";
constexpr std::string_view kWideResults[] = {"KQGetPlatformName",         "KQGetKeyboardInputData",
                                             "KQGetKeyboardInputData2",   "KQFreeKeyboardInputData",
                                             "KQPreprocessKeyboardInput", "KQProcessKeyboardInput"};
enum class Kind { null, value, wide, narrow, bytes, buffer, slot, slot32, keyboard };
// What a buffer or slot holds after a call that succeeds: as it was (same), null, `want` (value),
// anything, an answer with bit 31 set (valid), `expected` cut to the buffer (cut); a sweep buffer
// learns the text with 8192 characters, then is cut to 1, 2, 17, the text's length and one more
// (cuts: truncated; whole: overflow unless it fits; emptied: the same, emptied; names: several
// texts); what the slot receives: a record, a UTF-16 or UTF-8 text or a keyboard record. On
// failure buffers and slots stay as they were, but slots of what is handed back are cleared.
enum class Then { same, null, value, any, valid, cut, cuts, whole, emptied, names, record, text, utf8, keyboard };

struct Arg {
    Kind kind = Kind::null;
    std::uint64_t value = 0; // value; buffer: its characters, 0 for a sweep; slot: what it holds first
    std::wstring text;       // wide; buffer: what it holds first
    std::string bytes;       // narrow, bytes
    Then then = Then::same;
    std::wstring expected = L"*";           // an exact text, or a prefix before '*'
    std::int64_t null = kNone;              // the status with this pointer null (or a buffer's length 0)
    std::int64_t odd = kNone;               // the status with each of the odd paths in this text
    std::uint64_t want = 0, passed = ~0ull; // value: what a slot holds, a record's size; the length passed
    const char* release = nullptr;          // the KQFree* export of what a slot receives
};
const Arg N{};
Arg V(std::uint64_t value) { return {.kind = Kind::value, .value = value}; }
Arg W(std::wstring text, std::int64_t null = kNone, std::int64_t odd = kNone) {
    return {.kind = Kind::wide, .text = text, .null = null, .odd = odd};
}
Arg U8(std::string text, std::int64_t null = kNone) { return {.kind = Kind::narrow, .bytes = text, .null = null}; }
Arg Bytes(std::string bytes, std::int64_t null = kNone) { return {.kind = Kind::bytes, .bytes = bytes, .null = null}; }
// A buffer of `chars` characters, followed by its length as the next argument of the call.
Arg Buf(std::uint32_t chars, Then then = Then::same, std::wstring expected = L"*", std::wstring initial = {}) {
    return {Kind::buffer, chars, initial, {}, then, expected, kInvalid};
}
Arg Sweep(Then then, std::wstring expected = L"*", std::int64_t null = kInvalid) {
    return {.kind = Kind::buffer, .then = then, .expected = expected, .null = null};
}
Arg Out(Then then, const char* release = nullptr, std::int64_t null = kNone, std::wstring expected = L"*",
        std::uint64_t want = 0) {
    return {Kind::slot, kPoison, {}, {}, then, expected, null, kNone, want, ~0ull, release};
}
Arg Out32(Then then = Then::same, std::uint64_t want = 0, std::int64_t null = kNone) {
    return {.kind = Kind::slot32, .value = 0xA5A5A5A5, .then = then, .null = null, .want = want};
}

using Row = std::pair<std::vector<std::pair<std::size_t, Arg>>, std::int64_t>; // the base call changed, its status
struct Export {
    std::string name;
    std::int64_t status, all_null; // of the base call, and with every pointer null and every length 0
    std::vector<Arg> base;         // a call as a host makes it
    std::vector<Row> rows = {};
    void vary(std::vector<std::pair<std::size_t, Arg>> with, std::int64_t expected) {
        rows.emplace_back(with, expected);
    }
};

bool status_is(std::int64_t got, std::int64_t want) {
    const bool file_system_error = got < 0 && (got & 0xFFFF0000) == 0x80070000 && got != kInvalid;
    return got == want || want == kAny || (want == kFileSystemError && file_system_error);
}
bool matches(std::wstring_view text, std::wstring_view pattern) {
    return pattern.ends_with(L'*') ? text.starts_with(pattern.substr(0, pattern.size() - 1)) : text == pattern;
}
std::string show(std::wstring_view text) {
    std::string out = "\"";
    for (const wchar_t c : text.substr(0, 40)) out += c >= 0x20 && c < 0x7F ? std::string(1, char(c)) : "\\?";
    return out + "\"(" + std::to_string(text.size()) + ")";
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
    for (DWORD i = 0; RegEnumValueW(key, i, name, &name_chars, nullptr, &type, reinterpret_cast<BYTE*>(data), &bytes) ==
                      ERROR_SUCCESS;
         ++i, name_chars = 16384, bytes = sizeof data)
        lines.push_back(std::wstring(name, name_chars) + L"=" + std::to_wstring(type) + L":" +
                        std::wstring(data, bytes / 2));
    std::set<std::wstring> subkeys;
    for (DWORD i = 0; RegEnumKeyW(key, i, name, 256) == ERROR_SUCCESS; ++i) subkeys.insert(name);
    RegCloseKey(key);
    for (const std::wstring& subkey : subkeys) read_registry_tree(path + L"\\" + subkey, lines);
}

using AnyExport = std::int64_t(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,
                               std::uint64_t, std::uint64_t, std::uint64_t);

// The files that one run of the table works on, odd paths in its folder (unpaired surrogates,
// 259, 260 and 261 characters), a keyboard record, and the module's settings, copied aside and
// put back when the run ends.
class Pass {
public:
    explicit Pass(HMODULE module) : module_(module), dir(folder.path().begin(), folder.path().end()) {
        const std::string floppy = test::as_string(test::floppy_image({.name = "GameDisk"}));
        // A name of its own, so that this run's working copies are told from anybody else's.
        runtime_name = L"Hostile" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount64());
        folder.create_file(u"Game.adf", floppy);
        folder.create_file(std::u16string(runtime_name.begin(), runtime_name.end()) + u".adf", floppy);
        folder.create_folder(u"target");
        folder.create_file(u"data\\Shared\\adf\\aros-20240101-boot.adf", "boot");
        for (const std::wstring& name : {std::wstring(L"\xD800"), std::wstring(L"a\xDBFF"),
                                         std::wstring(L"\xDC00\xD800"), std::wstring(200, 0xD800)})
            odd.push_back(dir + L"\\" + name);
        for (const std::uint32_t chars : {259u, 260u, 261u}) odd.push_back(path_of_length(dir, chars, L""));
        HKEY backup = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, kBackupKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &backup, nullptr);
        settings_existed_ = RegCopyTreeW(HKEY_CURRENT_USER, kSettingsKey, backup) == ERROR_SUCCESS;
        RegCloseKey(backup);
        keyboard = new_keyboard();
    }
    ~Pass() {
        call("KQFreeKeyboardInputData", {keyboard});
        // Working copies that the table left, each with its record.
        WIN32_FIND_DATAW entry;
        HANDLE search = FindFirstFileW((runtime_folder() + L"\\*-" + runtime_name + L".adf").c_str(), &entry);
        for (bool found = search != INVALID_HANDLE_VALUE; found; found = FindNextFileW(search, &entry))
            EXPECT_EQ(call("KQDismissRuntimeMedium", {raw((runtime_folder() + L"\\" + entry.cFileName).c_str())}), 0);
        FindClose(search);
        // Every file the module made or opened here must be closed again: the folder goes.
        std::error_code error;
        std::filesystem::remove_all(std::filesystem::path(dir), error);
        EXPECT_FALSE(error) << "the run's folder stays: " << error.message();
        HKEY settings = nullptr, backup = nullptr;
        RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
        RegOpenKeyExW(HKEY_CURRENT_USER, kBackupKey, 0, KEY_READ, &backup);
        if (settings_existed_ && RegCreateKeyExW(HKEY_CURRENT_USER, kSettingsKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                                 nullptr, &settings, nullptr) == ERROR_SUCCESS)
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
    std::uint64_t new_keyboard() const {
        std::uint64_t data = 0;
        EXPECT_EQ(call("KQGetKeyboardInputData2", {raw(L"a-1200"), raw(L"fr-fr"), 0, 0, 0, 0, 0, 0, raw(&data)}), 0);
        return data;
    }

private:
    HMODULE module_;
    bool settings_existed_ = false;

public:
    test::TempFolder folder;
    const std::wstring dir;
    std::wstring runtime_name;
    std::vector<std::wstring> odd;
    std::uint64_t keyboard = 0;
};

// Checks what a slot received and releases it as the header says.
void release(const Pass& pass, const std::string& label, const Arg& arg, std::uint64_t handed, bool loose) {
    auto* block = reinterpret_cast<const char*>(handed);
    const std::wstring text = arg.then == Then::text ? reinterpret_cast<const wchar_t*>(block) : L"";
    const bool medium = arg.release != nullptr && std::string_view(arg.release) == "KQFreeEmptyMedium";
    if (arg.then == Then::record) {
        EXPECT_EQ(*reinterpret_cast<const std::uint32_t*>(block), arg.want) << label << ": the record's size";
        EXPECT_GE(LocalSize(HLOCAL(block)), arg.want) << label;
    }
    const std::size_t bytes = arg.then == Then::utf8   ? std::strlen(block) + 1
                              : arg.then == Then::text ? (text.size() + 1) * 2
                                                       : 2440 * (arg.then == Then::keyboard);
    EXPECT_GE(arg.then == Then::record ? bytes : GlobalSize(HGLOBAL(block)), bytes) << label;
    EXPECT_TRUE(matches(text, arg.then != Then::text ? L""
                              : loose                ? L"*"
                                                     : arg.expected))
        << label << ": " << show(text);
    EXPECT_TRUE(!medium || GetFileAttributesW(text.c_str()) != INVALID_FILE_ATTRIBUTES) << label << ": no file";
    EXPECT_EQ(arg.release ? pass.call(arg.release, {handed}) : raw(GlobalFree(HGLOBAL(block))), 0) << label;
    EXPECT_TRUE(!medium || GetFileAttributesW(text.c_str()) == INVALID_FILE_ATTRIBUTES) << label << ": file left";
}

struct Outcome {
    std::int64_t status;
    std::wstring swept; // the sweep buffer up to its first unwritten character
};

// One call, its sweep buffer given `chars` characters: checks the status and every buffer and
// slot but the sweep buffer, and releases what the call handed back. `loose` for the engine's own
// variants, which may succeed with other texts and values and without handing anything back.
Outcome call_once(Pass& pass, const std::string& name, const std::vector<Arg>& shape, std::uint32_t chars,
                  std::int64_t status, bool loose) {
    std::string label = name + "(";
    for (const Arg& arg : shape)
        label += std::string("n wubB&&k").substr(int(arg.kind), 1) + ":" +
                 (arg.kind == Kind::value ? std::to_string(arg.value)
                                          : show(arg.text + std::wstring(arg.bytes.begin(), arg.bytes.end()))) +
                 " ";
    test::CallArguments call(label + std::to_string(chars) + ")");
    std::vector<std::uint64_t> args;
    std::vector<std::tuple<const Arg*, std::uint64_t, std::uint64_t>> places; // argument, address, content
    for (const Arg& arg : shape) {
        const std::uint64_t initial = arg.kind == Kind::slot && arg.value == kHeld ? pass.new_keyboard() : arg.value;
        const std::size_t size = arg.kind == Kind::buffer ? (arg.value ? arg.value : chars) : 0;
        args.push_back(arg.value);
        if (arg.kind == Kind::wide)
            args.back() =
                raw(call.in_bytes({reinterpret_cast<const char*>(arg.text.c_str()), arg.text.size() * 2 + 2}));
        if (arg.kind == Kind::narrow || arg.kind == Kind::bytes)
            args.back() = raw(call.in_bytes({arg.bytes.c_str(), arg.bytes.size() + (arg.kind == Kind::narrow)}));
        if (arg.kind == Kind::keyboard) args.back() = pass.keyboard;
        if (arg.kind == Kind::slot || arg.kind == Kind::slot32)
            places.emplace_back(&arg, args.back() = raw(call.out_slot(initial, arg.kind == Kind::slot ? 8 : 4)),
                                initial);
        if (arg.kind == Kind::buffer) {
            places.emplace_back(&arg, args.back() = raw(call.out_text(size)), size);
            std::ranges::copy(std::wstring_view(arg.text).substr(0, size), reinterpret_cast<wchar_t*>(args.back()));
        }
        if (arg.kind == Kind::buffer || arg.passed != ~0ull) args.push_back(arg.passed != ~0ull ? arg.passed : size);
    }
    Outcome outcome{pass.call(name, args), {}};
    const bool ok = outcome.status == KQ_S_OK;
    EXPECT_TRUE(status_is(outcome.status, status)) << call.label() << ": status 0x" << std::hex << outcome.status;
    for (const auto& [arg, address, initial] : places) {
        if (arg->kind == Kind::buffer) {
            const std::wstring_view now(reinterpret_cast<const wchar_t*>(address), initial);
            const std::wstring before = arg->text.substr(0, initial) + std::wstring(initial, test::kUnwritten);
            const std::wstring want =
                arg->expected.ends_with(L'*') ? arg->expected : arg->expected.substr(0, initial - 1);
            const bool cut = arg->then == Then::cut && ok && now.find(L'\0') != now.npos;
            if (arg->value == 0) outcome.swept = now.substr(0, now.find(test::kUnwritten));
            EXPECT_TRUE(arg->value == 0 || (cut ? matches(now.substr(0, now.find(L'\0')), want)
                                                : now == std::wstring_view(before).substr(0, initial)))
                << call.label() << ": the buffer holds " << show(now);
            continue;
        }
        std::uint64_t now = 0;
        std::memcpy(&now, reinterpret_cast<void*>(address), arg->kind == Kind::slot ? 8 : 4);
        const bool handed = arg->then >= Then::record, cleared = arg->then == Then::null || (handed && !ok);
        if (handed && ok && (now != 0 || !loose)) {
            EXPECT_NE(now, 0u) << call.label() << ": nothing handed back";
            if (now != 0) release(pass, call.label(), *arg, now, loose);
        } else if (ok && arg->then == Then::valid) {
            EXPECT_EQ(now >> 31, 1u) << call.label() << ": not a valid answer";
        } else {
            const bool checked = cleared || !ok || arg->then == Then::same || (arg->then == Then::value && !loose);
            const std::uint64_t want = arg->then == Then::keyboard && !ok ? initial
                                       : cleared                          ? 0
                                       : ok && arg->then == Then::value   ? arg->want
                                                                          : initial;
            EXPECT_TRUE(!checked || now == want) << call.label() << ": the slot holds " << now << ", not " << want;
        }
        if (arg->value == kHeld && now == initial) pass.call("KQFreeKeyboardInputData", {initial});
    }
    return outcome;
}

// Runs one shape; one with a sweep buffer learns the whole text first, then cuts the buffer short.
void run(Pass& pass, const std::string& name, const std::vector<Arg>& shape, std::int64_t status, bool loose) {
    const auto sweep =
        std::ranges::find_if(shape, [](const Arg& arg) { return arg.kind == Kind::buffer && !arg.value; });
    if (sweep == shape.end()) {
        call_once(pass, name, shape, 0, status, loose);
        return;
    }
    const Outcome reference = call_once(pass, name, shape, kReference, status, loose);
    const std::size_t end = reference.swept.find(L'\0');
    EXPECT_TRUE(reference.status == KQ_S_OK || reference.swept.empty() || sweep->then == Then::names) << name;
    if (reference.status != KQ_S_OK || end == std::wstring::npos) return;
    const std::wstring full = sweep->then == Then::names ? reference.swept : reference.swept.substr(0, end + 1);
    EXPECT_TRUE(loose || matches(full.substr(0, end), sweep->expected)) << name << ": " << show(full);
    const auto length = static_cast<std::uint32_t>(full.size() - 1);
    for (const std::uint32_t chars : std::set<std::uint32_t>{1, 2, 17, std::max(length, 1u), length + 1}) {
        const bool cut = sweep->then == Then::cuts, fits = chars > length;
        const Outcome outcome = call_once(pass, name, shape, chars, cut || fits ? KQ_S_OK : kOverflow, loose);
        const std::wstring want = cut || fits ? full.substr(0, std::min(chars - 1, length)) + L'\0' : L"";
        EXPECT_TRUE(want.empty() ? sweep->then != Then::emptied || outcome.swept.starts_with(L'\0')
                                 : outcome.swept == want)
            << name << " with " << chars << " characters: " << show(outcome.swept);
    }
}

// The base call, each pointer null in turn, all of them null, each buffer's length 0, each odd
// text in each text that takes them, then the rows.
void run(Pass& pass, const Export& e) {
    run(pass, e.name, e.base, e.status, false);
    std::vector<Arg> all_null = e.base;
    for (std::size_t i = 0; i < e.base.size(); ++i) {
        const Arg& arg = e.base[i];
        std::vector<Arg> shape = e.base;
        for (const std::wstring& text : pass.odd) {
            shape[i] = W(text);
            if (arg.odd != kNone) run(pass, e.name, shape, arg.odd, true);
        }
        if (arg.kind == Kind::null || arg.kind == Kind::value) continue;
        const std::int64_t null_status = arg.null == kNone ? e.status : arg.null;
        shape[i] = {.passed = arg.kind == Kind::buffer ? 64u : ~0ull};
        all_null[i] = {.passed = arg.kind == Kind::buffer ? 0u : ~0ull};
        run(pass, e.name, shape, null_status, true);
        shape[i] = {.kind = Kind::buffer, .value = 1, .text = arg.text, .passed = 0};
        if (arg.kind == Kind::buffer) run(pass, e.name, shape, null_status, true);
    }
    run(pass, e.name, all_null, e.all_null, true);
    for (const auto& [with, status] : e.rows) {
        std::vector<Arg> shape = e.base;
        for (const auto& [at, arg] : with) shape[at] = arg;
        run(pass, e.name, shape, status, false);
    }
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

Export& add(std::vector<Export>& t, std::string name, std::int64_t status, std::int64_t all_null,
            std::vector<Arg> base) {
    return t.emplace_back(Export{std::move(name), status, all_null, std::move(base)});
}

std::vector<Export> table(const Pass& p) {
    const std::wstring game = p.dir + L"\\Game.adf", missing = p.dir + L"\\missing.adf", target = p.dir + L"\\target",
                       data = p.dir + L"\\data", image = p.dir + L"\\" + p.runtime_name + L".adf",
                       copy = runtime_folder() + L"\\" + std::wstring(kCallerKey) + L"-" + p.runtime_name + L".adf",
                       key = std::wstring(kCallerKey) + L'\0', long_adf = path_of_length(p.dir, 261, L".adf");
    const Arg keyboard = {.kind = Kind::keyboard, .null = kInvalid};
    std::vector<Export> t = {{"KQGetPlatformName", 0, 0, {}}, {"DllMain", TRUE, TRUE, {N, V(DLL_THREAD_ATTACH), N}}};
    t.back().vary({{1, V(0xFFFFFFFF)}}, TRUE);
    for (const char* name :
         {"KQ9Editor", "KQEditScreenClip", "KQEditScreenClip2", "KQROMToolbox", "KQOpenKeyboardWindow",
          "KQSetKeyboardWindow", "KQResetKeyboardWindow", "KQGetKeyboardWindowInfo", "KQGetKeyDialog2",
          "KQProcessVButtonEditMessage", "KQProcessVButtonEditMessage2"})
        add(t, name, KQ_E_NOTIMPL, KQ_E_NOTIMPL,
            {N, Out(Then::same), V(~0ull), W(L"\xD800"), Sweep(Then::same, L"*", kNone)});
    for (const char* name : {"KQFreeOption", "KQFreeFileAssociation", "KQFreeDeviceCommand", "KQFreeEmptyMedium",
                             "KQFreeKeyboardInputData", "KQFreeStringRawKeys"})
        add(t, name, 0, 0, {N}); // they take null; the sweep frees all that it gets with them

    // Options, file associations and device commands: records by index.
    add(t, "KQGetOption", 0, kInvalid,
        {V(0), V(~0u), Out(Then::record, "KQFreeOption", kInvalid, L"*", 136), W(L"", kNone, 0)});
    for (const std::uint64_t index : {1, 2, 3, 4, 5}) t.back().vary({{0, V(index)}}, 0);
    for (const std::uint64_t index : {6u, ~0u}) t.back().vary({{0, V(index)}}, KQ_S_FALSE);
    add(t, "KQSetOption", 0, kInvalid,
        {W(L"MouseHack", kInvalid, kInvalid), W(L"1", kNone, 0), W(L"\xDC00"), W(L"\xD800")});
    for (const wchar_t* name : {L"", L"MouseHack ", L"MOUSEHACK"}) t.back().vary({{0, W(name)}}, kInvalid);
    for (const wchar_t* name : {L"WindowsPrinter", L"WindowsSerial", L"WindowsMIDIOut", L"WindowsMIDIIn"})
        t.back().vary({{0, W(name)}, {1, W(L"")}}, 0);
    add(t, "KQGetFileAssociation", 0, kInvalid, {V(0), Out(Then::record, "KQFreeFileAssociation", kInvalid, L"*", 72)});
    for (std::uint64_t index = 1; index <= KQ_FILE_ASSOCIATION_COUNT; ++index)
        t.back().vary({{0, V(index)}}, index < KQ_FILE_ASSOCIATION_COUNT ? 0 : KQ_S_FALSE);
    add(t, "KQGetDeviceCommand", 0, kInvalid,
        {V(5), V(0x102), V(~0u), V(~0u), W(L"A-CDTV", KQ_S_FALSE, KQ_S_FALSE),
         Out(Then::record, "KQFreeDeviceCommand", kInvalid, L"*", 24)});
    for (const std::uint64_t index : {6u, ~0u}) t.back().vary({{0, V(index)}}, KQ_S_FALSE);
    t.back().vary({{0, V(3)}, {1, V(0xFFFFFF07)}}, 0);

    // Content texts.
    const std::wstring list = L"Work\t" + game + L"\rSystem\t" + long_adf, odd = L"\xD800\t\xDC00\r\xDBFF\n\t\t\r\n";
    add(t, "KQGetContentTooltip", 0, kInvalid,
        {V(0), V(0), W(game, kNone, 0), W(L"Game", kNone, 0), Sweep(Then::cuts)});
    for (const std::uint64_t drive : {1, 2, 3, 4, 0xFF})
        t.back().vary({{0, V(drive)}, {1, V(~0u)}, {2, W(list)}, {4, Sweep(Then::cuts, drive > 3 ? L"" : L"*")}}, 0);
    add(t, "KQGetContentInfo", 0, kInvalid,
        {V(1), V(~0u), W(list, kNone, 0), W(game + L"\tDH0\tWork\thardfile\n" + long_adf, kNone, 0),
         Sweep(Then::emptied), V(0)});
    for (const std::uint64_t drive : {0, 2, 0xFF}) t.back().vary({{0, V(drive)}}, kInvalid);
    for (const std::uint64_t flags : {1u, 2u, ~0u}) t.back().vary({{2, W(odd)}, {3, W(odd)}, {5, V(flags)}}, 0);
    t.back().vary({{3, W(game + L"\tdevicename=DH0\n" + long_adf + L"\tvolumename=\xD800")}, {5, V(1)}}, 0);

    // Auto-configuration, manifests, models, ROMs and input ports.
    add(t, "KQAutoConfigureApplication", 0, KQ_E_POINTER,
        {W(floppy(game), KQ_E_POINTER, kMalformed), V(1), V(0), Out(Then::utf8, nullptr, KQ_E_POINTER)});
    for (const std::wstring& path : {missing, long_adf}) t.back().vary({{0, W(floppy(path))}}, KQ_E_FAIL);
    t.back().vary({{0, W(p.odd[0])}, {2, V(~0u)}}, kInvalid);
    t.back().vary({{0, W(path_of_length(p.dir, 261, L".UAE"))}, {2, V(1)}}, kFileSystemError);
    t.back().vary({{0, W(floppy(L""))}, {2, V(0xFFFFFFFE)}, {3, Out(Then::null)}}, 0); // no media
    add(t, "KQGetApplicationInfo", 0, KQ_E_POINTER,
        {Out(Then::text, nullptr, KQ_E_POINTER), U8(kq9("<system>a-1200</system>"), kInvalid)});
    for (const std::string& manifest : {std::string(), std::string("\xED\xA0\x80"), kq9("<system>\xFF\xFE</system>")})
        t.back().vary({{1, U8(manifest)}}, kMalformed);
    const std::string aros = kq9("<boot type=\"adf\">aros-latest</boot>");
    add(t, "KQBootTag", 0, kInvalid,
        {U8(kq9("<boot type=\"adf\">310</boot>"), kInvalid), W(L"C:\\Data", kInvalid, 0), V(0),
         Out(Then::text, nullptr, kNone, L"C:\\Data\\*")});
    t.back().vary({{2, V(~0u)}}, kInvalid);
    t.back().vary({{0, U8(kq9("<boot>310</boot>"))}}, kNotFound);
    for (const std::wstring& root : {p.odd.back(), data})
        t.back().vary({{0, U8(aros)}, {1, W(root)}, {3, Out(Then::text, nullptr, kNone, root + L"\\*")}}, 0);
    add(t, "KQROMExists", KQ_S_FALSE, kInvalid,
        {W(L"310-a1200", kInvalid, KQ_S_FALSE), W(L"a-4000", kNone, KQ_S_FALSE), W(L"NTSC", kNone, KQ_S_FALSE),
         W(p.dir, kInvalid, KQ_S_FALSE)});
    for (const std::size_t empty : {0, 3}) t.back().vary({{empty, W(L"")}}, kInvalid);
    add(t, "KQGetDefaultSystemROM", 0, kInvalid, {Out(Then::text, nullptr, kInvalid), W(L"a-1200", kInvalid, 0)});
    t.back().vary({{0, Out(Then::text, nullptr, kNone, L"120")}, {1, W(L"a-1200 ")}}, 0);
    add(t, "KQGetRestoreSystemFilesPaths", 0, 0,
        {Out(Then::text, nullptr, kNone, L"Shared\\adf\t*"), W(data, kNone, 0)});
    t.back().vary({{0, Out(Then::text, nullptr, kNone, L"")}, {1, W(p.dir)}}, 0);
    add(t, "KQGetInputPortsInfo", 0, kInvalid,
        {W(L"a-1200", kInvalid, 0), W(L"parallel", kNone, 0), Out32(Then::value, 3), Out32(Then::value, 3),
         Out32(Then::value, 0), Out32(Then::value, 1)});
    t.back().vary({{1, W(L"parallel\xD800")}, {3, Out32(Then::value, 0)}}, 0);
    add(t, "KQGetDefaultInputPortContent", 0, kInvalid,
        {W(L"a-cd32", kInvalid, 0), V(0), Out32(Then::value, 4, kInvalid)});
    t.back().vary({{0, W(L"a-cd32\xD800")}, {2, Out32(Then::value, 1)}}, 0);
    t.back().vary({{1, V(~0u)}, {2, Out32(Then::value, 0)}}, 0);

    // Runtime media: copies of the run's image under the caller's key, checked and dismissed.
    add(t, "KQGetRuntimeMedium", 0, kInvalid,
        {W(image, kInvalid, KQ_S_FALSE), W(p.odd.back(), kNone, 0), Buf(MAX_PATH, Then::cut, copy, key), V(2)});
    for (const auto& [path, status] :
         std::vector<std::pair<std::wstring, std::int64_t>>{{L"Game.adf", kInvalid},
                                                            {long_adf, kOverflow},
                                                            {missing, kFileSystemError},
                                                            {p.dir + L"\\missing.hdz", std::int32_t(0x80040002)}})
        for (const std::uint32_t chars : {1u, 260u}) t.back().vary({{0, W(path)}, {2, Buf(chars)}, {3, V(0)}}, status);
    for (const std::wstring& bad : {std::wstring(kCallerKey.substr(1)), std::wstring(kCallerKey) + L"0",
                                    L"\x1F" + std::wstring(kCallerKey.substr(1))}) // not 36 characters of a file name
        t.back().vary({{2, Buf(bad.size() + 1, Then::same, L"*", bad + L'\0')}}, kInvalid);
    for (const std::uint64_t flags : {~0u, 2u}) // a key that fills the buffer is read to its end only
        for (const std::uint32_t chars : {36u, 37u, static_cast<std::uint32_t>(copy.size())})
            t.back().vary(
                {{2, Buf(chars, Then::cut, copy, chars > 36 ? key : std::wstring(kCallerKey))}, {3, V(flags)}}, 0);
    for (const std::uint32_t chars : {1u, 2u})
        t.back().vary({{1, W(L"\xD800")}, {2, Buf(chars, Then::cut, runtime_folder())}, {3, V(1)}}, 0);
    for (const char* name : {"KQCheckRuntimeMedium", "KQDismissRuntimeMedium"}) {
        add(t, name, 0, kInvalid, {W(copy, kInvalid, kInvalid), Out32(Then::value, 0, kInvalid), V(~0u)});
        if (name[2] == 'D') t.back().base[1] = V(1);
        t.back().vary({{0, W(runtime_folder() + L"\\0000abcd-4567-89ab-cdef-0123456789ab-None.adf")}},
                      kFileSystemError);
        t.back().vary({{0, W(path_of_length(runtime_folder(), 261, L"-None.adf"))}}, kInvalid);
    }

    // Empty media, copies of medium files, volume names.
    for (const char* name : {"KQGetEmptyMedium", "KQGetEmptyMedium2"}) {
        add(t, name, 0, 0, {Out(Then::text, "KQFreeEmptyMedium"), V(1), V(0), V(1)});
        for (const std::uint64_t must_be_zero : {1u, ~0u}) t.back().vary({{2, V(must_be_zero)}}, kInvalid);
        t.back().vary({{3, V(0xFFFFFF02)}}, name[16] ? kInvalid : 0);
    }
    const std::wstring target_file = target + L"\\Game.adf";
    add(t, "KQCopyMediumFile", 0, kInvalid,
        {W(game, kInvalid, kFileSystemError), W(target, kInvalid, kFileSystemError), V(0),
         Sweep(Then::cuts, target_file)});
    t.back().vary({{0, W(L"Game.adf")}}, kInvalid);
    t.back().vary({{2, V(2)}, {3, Buf(1)}}, KQ_STATUS_FROM_WIN32(80)); // no overwrite
    t.back().vary({{2, V(~0u)}, {3, Buf(1, Then::cut, L"")}}, 0);      // a free name is taken
    t.back().vary({{2, V(8)}, {3, Buf(1)}}, KQ_S_FALSE);               // the name stays
    add(t, "KQGetVolumeName", 0, kInvalid, {W(game, kInvalid, KQ_E_FAIL), Sweep(Then::cuts, L"GameDisk")});
    t.back().vary({{0, W(missing)}, {1, Buf(1)}}, KQ_E_FAIL);

    // Keyboard records, translation and names.
    for (const char* name : {"KQGetKeyboardInputData", "KQGetKeyboardInputData2"}) {
        std::vector<Arg> base = {W(L"a-500", kNotFound, 0),
                                 W(L"en-gb", kNone, 0),
                                 Bytes(garbage(658)),
                                 V(658),
                                 V(0x010101FF),
                                 V(0x0101FFFF),
                                 V(~0u),
                                 V(~0u),
                                 Out(Then::keyboard, "KQFreeKeyboardInputData", KQ_E_POINTER)};
        base.back().value = kHeld;
        if (name[22] == 0) base.erase(base.begin() + 6);
        add(t, name, 0, KQ_E_POINTER, base);
        t.back().vary({{2, Bytes(garbage(4096))}, {3, V(4096)}}, 0);
    }
    add(t, "KQPreprocessKeyboardInput", 0, kInvalid, {V(0x41), V(~0ull), keyboard, V(~0u), Out32(Then::valid)});
    for (const std::uint64_t flags : {0ull, 0x09000000ull, ~0xFFull})
        for (std::uint64_t code = 0; code < 256; ++code) t.back().vary({{0, V(code | flags)}}, 0);
    constexpr std::uint64_t kDown = 1u << 20, kFetch = 1u << 28, kTranslate = 1u << 18, kDefer = 3u << 18;
    add(t, "KQProcessKeyboardInput", KQ_E_FAIL, kInvalid, {V(kFetch), V(0), keyboard, V(~0u), Out32()});
    // Characters a host may hand over: unpaired surrogates, non-characters, high bits set. Then
    // many presses without fetching: the queue holds 32 events at most.
    for (const std::uint64_t character : {0x7Eull, 0xD800ull, 0xFFFEull, ~0ull}) {
        for (const std::uint64_t mode : {kTranslate | kDown, kDefer | kDown, kDown | 0x30000, 0ull})
            for (std::uint64_t code = 0; code < 256; ++code)
                t.back().vary({{0, V(code | mode)}, {1, V(character)}, {4, Out32(Then::any)}}, 0);
        for (int i = 0; i < 100; ++i) t.back().vary({{0, V(0x41 | kDown | kTranslate)}, {1, V(character)}, {4, N}}, 0);
        for (int i = 0; i < 32; ++i) t.back().vary({{4, Out32(Then::any)}}, kAny);
        t.back().vary({}, KQ_E_FAIL);
    }
    add(t, "KQGetKeyboardLayout", 0, kInvalid,
        {V(0), Bytes(garbage(658), kInvalid), V(658), Sweep(Then::whole, L"en-us*")});
    t.back().vary({{2, V(0)}}, kInvalid);
    t.back().vary({{1, Bytes(garbage(1))}, {2, V(1)}}, 0);
    add(t, "KQGetKeyDisplayName", 0, kInvalid,
        {W(L"CONTROL+LEFT AMIGA", kInvalid, kNotFound), W(L"x", kNotFound), W(L"de-de", kNone, 0), Sweep(Then::names),
         V(0), V(~0u)});
    t.back().vary({{0, W(L"NOSUCHKEY")}}, kNotFound);
    add(t, "KQGetStringRawKeys", 0, KQ_E_POINTER,
        {W(L"Ab", kNone, 0), keyboard, V(0), Out(Then::text, "KQFreeStringRawKeys", KQ_E_POINTER)});
    for (const std::uint64_t mode : {1u, 2u, ~0u}) t.back().vary({{0, W(L"CONTROL+LEFT AMIGA")}, {2, V(mode)}}, 0);
    add(t, "KQBackupKeyboardSettings", kInvalid, kInvalid, {V(0)}); // only actions that change nothing
    t.back().vary({{0, V(~0u)}}, kInvalid);
    add(t, "KQGetInputButtonName", 0, 0, {V(1024), V(~0u), V(4), Sweep(Then::cuts, L"*", kNone)});
    t.back().vary({{0, V(64)}, {2, V(2)}, {3, Buf(64)}}, kNotFound);
    return t;
}

using HostileHost = test::AmigaDllTest;

TEST_F(HostileHost, EveryExportSurvivesHostileArgumentsAndLeaksNothing) {
    const test::CrashNote crash_note;
    const test::CrtAllocationMeter meter(module_);
    ASSERT_GE(meter.hooked(), 3u) << "malloc, realloc and free at least";
    std::vector<std::wstring> settings, settings_after;
    read_registry_tree(kSettingsKey, settings);
    const auto run_table = [&] {
        Pass pass(module_);
        std::set<std::string> called;
        for (const Export& e : table(pass)) {
            called.insert(e.name);
            if (e.name != "KQGetPlatformName") run(pass, e);
        }
        const std::int64_t name = pass.call("KQGetPlatformName", {});
        EXPECT_STREQ(reinterpret_cast<const wchar_t*>(name), L"Amiga");
        EXPECT_EQ(pass.call("KQGetPlatformName", {}), name) << "the same constant every time";
        return called;
    };
    std::set<std::string> exports;
    for (const kqhost::PeExport& entry : kqhost::list_exports(module_)) exports.insert(entry.name);
    EXPECT_EQ(run_table(), exports); // all of them; and the warm-up of the module, the C runtime and Wine
    const test::HeapCount crt_warm = meter.outstanding(), heap_warm = test::count_heap_blocks();
    const std::size_t taken_before = meter.taken();
    run_table();
    const test::HeapCount crt_first = meter.outstanding(), heap_first = test::count_heap_blocks();
    EXPECT_GT(meter.taken(), taken_before + 1000) << "the module's allocations pass the meter";
    run_table();
    EXPECT_EQ(crt_first, crt_warm) << "C runtime blocks (and bytes) the module kept from the first run";
    EXPECT_EQ(meter.outstanding(), crt_first) << "C runtime blocks the module kept from the second run";
    if (!HasFailure()) { // failures recorded during the runs take heap blocks of their own
        EXPECT_EQ(heap_first, heap_warm) << "heap blocks (and bytes) kept from the first run";
        EXPECT_EQ(test::count_heap_blocks(), heap_first) << "heap blocks kept from the second run";
    }
    read_registry_tree(kSettingsKey, settings_after);
    EXPECT_EQ(settings_after, settings) << "the module's settings changed";
}

} // namespace
} // namespace kq
