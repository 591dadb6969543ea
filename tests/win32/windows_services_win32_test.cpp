// The module's use of Windows' own services: the STRINGTABLE resource, the system's message
// formatter as an oracle, the Common Files folder. And concurrency: reports made at the same time
// take turns under the machine-wide mutex "KQlayerDataAccessMx" (a mutex is owned by a thread, so
// threads wait for each other as processes do), and working copies of one image made at the same
// time are distinct and are all dismissed correctly.

#include "kq_amiga.h"
#include "media/caps_library.h"
#include "media/compression/inflate.h"
#include "module/error_report.h"
#include "module/host_library_link.h"
#include "module/message_format.h"
#include "platform/string_table.h"
#include "tests/support/amiga_dll.h"
#include "tests/support/compressed_files.h"
#include "tests/support/fake_data_access_client.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <latch>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace kq {
namespace {

struct StringRow {
    std::uint32_t id;
    std::u16string_view text;
};
constexpr StringRow kStrings[] = {
#include "string_table_rows.inc"
};

TEST(StringResources, EveryTextLoadsAsGenerated) {
    for (const StringRow& row : kStrings) EXPECT_EQ(platform::load_string(row.id, 4096), row.text) << row.id;
}

// FormatMessageW with the template as a string and an argument array.
std::optional<std::u16string> system_format(std::u16string_view message_template,
                                            const std::vector<MessageArgument>& arguments, DWORD extra_flags) {
    const std::u16string terminated(message_template);
    std::vector<std::u16string> texts;
    texts.reserve(arguments.size());
    std::vector<DWORD_PTR> values;
    for (const MessageArgument& argument : arguments) {
        if (const auto* text = std::get_if<std::u16string_view>(&argument))
            values.push_back(reinterpret_cast<DWORD_PTR>(texts.emplace_back(*text).c_str()));
        else if (const auto* number = std::get_if<std::int64_t>(&argument))
            values.push_back(static_cast<DWORD_PTR>(*number));
        else
            values.push_back(std::get<char16_t>(argument));
    }
    wchar_t buffer[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY | extra_flags,
                                        reinterpret_cast<const wchar_t*>(terminated.c_str()), 0, 0, buffer, 512,
                                        reinterpret_cast<va_list*>(values.empty() ? nullptr : values.data()));
    if (length == 0) return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(buffer), length);
}

TEST(MessageFormatOracle, AgreesWithTheSystemFormatter) {
    const struct {
        std::u16string_view message_template;
        std::vector<MessageArgument> arguments;
    } rows[] = {
        {u"Floppy disk drive DF%1!d!:\n%2", {std::int64_t{3}, u"\"Disk\" (Game)"}},
        {u"Hard disk drives:\n%2", {u"x", u"a\nb"}},
        {u"Numeric Keypad %1!c!", {char16_t{0xB0}}},
        {u"%2 %1 %2", {u"a", u"b"}},
        {u"a%%b%nc%.d%!e%rf%tg%0never", {}},
        {u"x%1!s!!y", {u"one"}},
        {u"%1!5d!|%1!-5d!|%1!05d!|%2!05d!|%2!u!|%2!x!|%1!X!", {std::int64_t{42}, std::int64_t{-7}}},
        {u"%1!-6s!|%1!6s!|", {u"one"}},
        {u"one\ntwo\r\nthree\rfour", {}},
        {u"%a%b%z", {}},
        {u"trailing %", {}},
        {u"%1!s", {u"x"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.message_template.begin(), row.message_template.end()));
        EXPECT_EQ(format_message(row.message_template, row.arguments),
                  system_format(row.message_template, row.arguments, 0));
        EXPECT_EQ(format_message_keeping_inserts(row.message_template),
                  system_format(row.message_template, {}, FORMAT_MESSAGE_IGNORE_INSERTS));
    }
}

// The CAPSImg library is looked for below Common Files, where Wine has none.
TEST(CapsLibraryWin32, LookedForBelowCommonFiles) {
    wchar_t common[MAX_PATH];
    ASSERT_EQ(SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES_COMMON, nullptr, SHGFP_TYPE_CURRENT, common), S_OK);
    const std::wstring expected = std::wstring(common) + L"\\Software Preservation Society\\CAPSImg.dll";
    const std::optional<std::u16string> path = media::caps_library_path(false);
    ASSERT_TRUE(path.has_value());
    EXPECT_EQ(std::wstring(path->begin(), path->end()), expected);
    std::optional<media::CapsLibrary> caps;
    EXPECT_EQ(media::CapsLibrary::load(false, caps), kIpfLibraryMissing);
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
class RuntimeMediaAtOnce : public test::AmigaDllTest {};

TEST_F(RuntimeMediaAtOnce, CopiesOfOneImageHaveTheirOwnKeysAndAreAllDismissed) {
    const auto get = resolve<decltype(KQGetRuntimeMedium)>("KQGetRuntimeMedium");
    const auto dismiss = resolve<decltype(KQDismissRuntimeMedium)>("KQDismissRuntimeMedium");
    const test::Bytes image = test::sample_image(200000, 7), gzip = test::gzip_member(image);
    const auto text = [](const test::Bytes& bytes) {
        return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    for (const std::u16string name : {u"Game.adf", u"Game.adz"}) {
        SCOPED_TRACE(std::string(name.begin(), name.end()));
        const test::TempFolder folder;
        folder.create_file(name, text(name.ends_with(u"z") ? gzip : image));
        const std::u16string path16 = folder.path(name);
        const std::wstring path(path16.begin(), path16.end());
        std::vector<std::wstring> copies(kThreads);
        std::vector<kq_status> made(kThreads, KQ_E_FAIL), dismissed(kThreads, KQ_E_FAIL);
        at_once([&](int t) {
            wchar_t buffer[MAX_PATH + 1] = {};
            made[t] = get(path.c_str(), nullptr, buffer, MAX_PATH + 1, 0);
            copies[t] = buffer;
        });
        std::set<std::wstring> keys;
        for (int t = 0; t < kThreads; ++t) {
            ASSERT_EQ(made[t], KQ_S_OK) << t;
            keys.insert(copies[t].substr(copies[t].rfind(L'\\') + 1, 36));
            EXPECT_TRUE(test::read_file(copies[t]) == text(image)) << "copy " << t << " is the whole image";
            std::ofstream(std::filesystem::path(copies[t]), std::ios::binary) << "changed by " << t;
        }
        EXPECT_EQ(keys.size(), std::size_t{kThreads}) << "every copy has its own key";
        // The emulators changed every copy; only the first is written back.
        at_once([&](int t) {
            dismissed[t] = dismiss(copies[t].c_str(), nullptr,
                                   KQ_RUNTIME_MEDIUM_ASSUME_CHANGED | (t == 0 ? KQ_RUNTIME_MEDIUM_WRITE_BACK : 0));
        });
        for (int t = 0; t < kThreads; ++t) {
            const std::wstring record = copies[t].substr(0, copies[t].rfind(L'\\') + 37) + L".info";
            EXPECT_EQ(dismissed[t], KQ_S_OK) << t;
            EXPECT_EQ(GetFileAttributesW(copies[t].c_str()) & GetFileAttributesW(record.c_str()),
                      INVALID_FILE_ATTRIBUTES)
                << "copy " << t << " and its record are gone";
        }
        std::string content = test::read_file(folder.native(name));
        media::MemorySource source(std::as_bytes(std::span(content)));
        media::MemorySink sink;
        if (name.ends_with(u"z") && media::inflate(source, sink) == media::InflateError::none)
            content.assign(reinterpret_cast<const char*>(sink.bytes().data()), sink.bytes().size());
        EXPECT_EQ(content, "changed by 0");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.native(u"")), {}), 1) << "no side file";
    }
}

} // namespace
} // namespace kq
