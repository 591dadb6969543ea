// The module's own services: statuses, the host folder and library, error reports, message
// templates, the string table, serial port names and the record packer.

#include "module/error_report.h"
#include "module/guard.h"
#include "module/host_folder.h"
#include "module/host_library_link.h"
#include "module/message_format.h"
#include "module/record_packer.h"
#include "module/serial_ports.h"
#include "platform/string_table.h"
#include "platform/system_error.h"
#include "string_ids.h"
#include "tests/support/fake_data_access_client.h"
#include "tests/support/message_box_capture.h"
#include "tests/support/printable.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kq {
namespace {

TEST(Guard, TurnsEveryExceptionIntoAStatus) {
    EXPECT_EQ(guard([] { return HResult{7}; }), 7);
    EXPECT_EQ(guard([]() -> HResult { throw std::bad_alloc(); }), status::out_of_memory);
    EXPECT_EQ(guard([]() -> HResult { throw std::length_error("x"); }), status::unexpected);
    EXPECT_EQ(guard([]() -> HResult { throw 42; }), status::unexpected);
}

TEST(Status, Win32CodesAndFacilities) {
    EXPECT_EQ(status::from_win32(0), status::ok);
    EXPECT_EQ(static_cast<std::uint32_t>(status::from_win32(platform::system_error::dll_not_found)), 0x80070485u);
    EXPECT_EQ(static_cast<std::uint32_t>(status::from_win32(platform::system_error::not_found)), 0x80070490u);
    EXPECT_EQ(status::facility(0x00040000), status::kFacilityInterface);
    EXPECT_EQ(status::facility(static_cast<HResult>(0x80040203u)), 4u);
    EXPECT_EQ(status::facility(status::failed), 0u);
    EXPECT_EQ(status::facility(status::invalid_argument), 7u);
}

TEST(HostFolder, IsTheParentOfTheModuleFolderCutByPosition) {
    const struct {
        std::u16string_view module_path, host_folder;
    } rows[] = {
        {u"C:\\Quennet\\Platforms\\Amiga\\amiga.dll", u"C:\\Quennet\\Platforms"},
        {u"C:\\Amiga\\amiga.dll", u"C:"},
        {u"C:\\a\\\\b.dll", u"C:\\a"}, // an empty element still counts
        {u"C:\\Platforms\\Amiga\\", u"C:\\Platforms"},
        {u"amiga.dll", u""},
        {u"C:\\amiga.dll", u""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(host_folder_of(row.module_path), row.host_folder)
            << std::string(row.module_path.begin(), row.module_path.end());
}

TEST(SerialPorts, PortNameFromFriendlyName) {
    const struct {
        std::u16string_view friendly_name;
        std::optional<std::u16string_view> port;
    } rows[] = {
        {u"USB Serial Port (COM3)", u"COM3"},
        {u"Adapter (COM1a)", u"COM1"}, // one digit, then something else
        {u"Port (COMX)", u"COMX)"},    // a letter: the rest, uncut
        {u"Port (COMXY) tail", u"COMXY) tail"},
        {u"Bluetooth (COM123)", std::nullopt}, // ")" comes too late
        {u"Hub (COM12)", u"COM12"},
        {u"Dangling (COM3", std::nullopt},
        {u"Printer port (LPT1)", std::nullopt},
        {u"Two (COM5) and (COM6)", u"COM5"}, // the first "(COM" only
    };
    for (const auto& row : rows)
        EXPECT_EQ(port_name_from_friendly_name(row.friendly_name),
                  row.port ? std::optional<std::u16string>(*row.port) : std::nullopt)
            << std::string(row.friendly_name.begin(), row.friendly_name.end());
}

// Texts whose form the string table's generator must carry through (quotes, line feeds, leading
// blanks, a lone comma); unknown ids are empty, long texts are cut.
TEST(StringTable, LoadsTextsAsWrittenCutOrEmpty) {
    const struct {
        std::uint32_t id;
        std::size_t max_chars;
        std::u16string_view text;
    } rows[] = {
        {strings::floppy_drive_template, 2048, u"Floppy disk drive DF%1!d!:\n%2"},
        {strings::list_comma, 2048, u","},
        {strings::list_and, 2048, u" and"},
        {strings::ipf_library_missing, 3, u"IPF"},
        {strings::ipf_library_missing, 0, u""},
        {1, 2048, u""},
        {65535, 2048, u""},
    };
    for (const auto& row : rows) EXPECT_EQ(platform::load_string(row.id, row.max_chars), row.text) << row.id;
    const std::u16string quoted = platform::load_string(strings::auto_mouse_untrap_description, 2048);
    EXPECT_NE(quoted.find(u"\"pushed out\""), std::u16string::npos);
}

TEST(MessageFormat, ExpandsTheTemplatesOfTheStringTable) {
    const struct {
        std::u16string_view message_template;
        std::vector<MessageArgument> arguments;
        std::u16string_view expected;
    } rows[] = {
        {u"Floppy disk drive DF%1!d!:\n%2", {std::int64_t{1}, u"Empty"}, u"Floppy disk drive DF1:\r\nEmpty"},
        {u"Hard Disk %1", {u"\"Work\""}, u"Hard Disk \"Work\""},
        {u"Numeric Keypad %1!c!", {char16_t{u'['}}, u"Numeric Keypad ["},
        {u"Numeric Keypad %1!c!", {std::int64_t{0xB0}}, u"Numeric Keypad \u00b0"},
        {u"%2 before %1", {u"a", u"b"}, u"b before a"},
        {u"%1%1", {u"x"}, u"xx"},
        {u"100%% %. %! %z", {}, u"100% . ! z"},
        {u"a%nb%rc%td", {}, u"a\r\nb\rc\td"},
        {u"line\nline\r\nline\rend", {}, u"line\r\nline\r\nline\r\nend"},
        {u"kept%0 cut", {}, u"kept"},
        {u"[%1!5d!][%1!-5d!][%1!05d!][%2!05d!]",
         {std::int64_t{42}, std::int64_t{-42}},
         u"[   42][42   ][00042][-0042]"},
        {u"%1!u! %1!x! %1!X!", {std::int64_t{-5}}, u"4294967291 fffffffb FFFFFFFB"},
        {u"%1!-6s!|", {u"one"}, u"one   |"},
    };
    for (const auto& row : rows) {
        const auto text = format_message(row.message_template, row.arguments);
        ASSERT_TRUE(text) << test::printable(row.message_template);
        EXPECT_EQ(*text, row.expected) << test::printable(row.message_template);
    }
}

TEST(MessageFormat, MalformedTemplatesFail) {
    const std::vector<MessageArgument> one{u"x"};
    for (std::u16string_view bad : {u"ends in %", u"%1!s", u"%1!", u"%1!q!", u"%2", u"%1!ls!"})
        EXPECT_FALSE(format_message(bad, one)) << test::printable(bad);
}

TEST(MessageFormat, KeepingInsertsExpandsOnlyLineBreaksAndTheEnd) {
    const struct {
        std::u16string_view message_template, expected;
    } rows[] = {
        {u"DF%1!d!:\n%2", u"DF%1!d!:\r\n%2"},
        {u"%% %. %n %r %t", u"%% %. \r\n \r \t"},
        {u"cut%0here", u"cut"},
    };
    for (const auto& row : rows) {
        const auto text = format_message_keeping_inserts(row.message_template);
        ASSERT_TRUE(text) << test::printable(row.message_template);
        EXPECT_EQ(*text, row.expected);
    }
    EXPECT_FALSE(format_message_keeping_inserts(u"lone %"));
}

int local_marker;
void* const kParentWindow = &local_marker;

// What the host library was shown: calls, context, error code, parent window, text and flags.
auto shown(const FakeDataAccessLog& log) {
    return std::tuple(log.show_calls, std::u16string(log.context), log.error_code, log.parent_window,
                      std::u16string(log.text), log.flags);
}

TEST(HostLibraryLink, PassesTheArgumentsInOrderAndReturnsTheHostsStatus) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());
    for (const HResult host_status : {status::ok, status::nothing_more, status::failed}) {
        fake.reset(host_status);
        const std::u16string context = u"file.ipf", text = u"Caf\u00e9 message";
        HostLibraryLink link(test::host_folder(u"with-library"));
        ASSERT_TRUE(link.is_loaded());
        link.set_instance_handle(0x1122334455667788u);
        EXPECT_EQ(link.show_error_message(context, 0x80070485u, kParentWindow, text, 0x5A), host_status);
        const FakeDataAccessLog& log = fake.log();
        EXPECT_EQ(shown(log), std::tuple(1, context, 0x80070485u, kParentWindow, text, 0x5Au));
        EXPECT_EQ(log.instance, 0x1122334455667788u);
        EXPECT_NE(log.context_address, context.c_str()) << "the host gets copies of the texts";
        EXPECT_NE(log.text_address, text.c_str());
    }
}

TEST(HostLibraryLink, ClosesTheLibraryInstanceOnlyWhenOneIsSet) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());
    fake.reset();
    { HostLibraryLink link(test::host_folder(u"with-library")); }
    EXPECT_EQ(fake.log().close_calls, 0) << "this module never opens an instance of its own";
    {
        HostLibraryLink link(test::host_folder(u"with-library"));
        link.set_instance_handle(77);
    }
    EXPECT_EQ(fake.log().close_calls, 1) << "teardown closes the instance";
    EXPECT_EQ(fake.log().closed_instance, 77u);
}

TEST(HostLibraryLink, StatusesWhenTheLibraryOrItsFunctionsAreMissing) {
    const struct {
        std::u16string_view host;
        HResult show, close;
    } rows[] = {
        {u"missing", status::from_win32(1154), status::from_win32(1157)},
        {u"no-such-folder", status::from_win32(1154), status::from_win32(1157)},
        {u"without-entries", status::not_implemented, status::not_implemented},
    };
    for (const auto& row : rows) {
        HostLibraryLink link(test::host_folder(row.host));
        EXPECT_EQ(link.show_error_message(u"c", 1, nullptr, u"t", 0), row.show)
            << std::string(row.host.begin(), row.host.end());
        EXPECT_EQ(link.close(), status::ok) << "no instance handle: nothing to close";
        link.set_instance_handle(1);
        EXPECT_EQ(link.close(), row.close);
        link.set_instance_handle(0);
    }
    HostLibraryLink without_folder(u"");
    EXPECT_FALSE(without_folder.is_loaded());
}

constexpr HResult interface_status(std::uint32_t severity, std::uint16_t code) {
    return static_cast<HResult>(severity << 31 | status::kFacilityInterface << 16 | code);
}

TEST(ErrorReport, EachStatusTakesItsOwnPath) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());

    const struct {
        const char* name;
        HResult code;
        std::u16string_view host;
        bool reaches_host;
        std::optional<std::u16string_view> box; // its text; the caption is always the same
        void* parent;
    } rows[] = {
        {"missing IPF library", kIpfLibraryMissing, u"with-library", true, std::nullopt, kParentWindow},
        {"missing IPF library without host library", kIpfLibraryMissing, u"missing", false, std::nullopt,
         kParentWindow},
        {"interface failure naming a text", interface_status(1, strings::empty_drive), u"with-library", false, u"Empty",
         nullptr},
        {"interface success naming a text", interface_status(0, strings::not_available), u"with-library", false, u"N/A",
         nullptr},
        {"template expanded, inserts kept", interface_status(1, strings::floppy_drive_template), u"with-library", false,
         u"Floppy disk drive DF%1!d!:\r\n%2", nullptr},
        {"interface status naming no text", interface_status(1, 11), u"with-library", false, std::nullopt, nullptr},
        {"E_FAIL", status::failed, u"with-library", false, std::nullopt, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake.reset();
        test::MessageBoxCapture capture;
        report_error_from(test::host_folder(row.host), row.parent, row.code);

        if (row.reaches_host)
            EXPECT_EQ(shown(fake.log()),
                      std::tuple(1, u"file.ipf", 0x80070485u, row.parent, u"IPF Support Library Not Found", 0u));
        else
            EXPECT_EQ(fake.log().show_calls, 0);
        const auto boxes = capture.take();
        ASSERT_EQ(boxes.size(), row.box ? 1u : 0u);
        if (row.box) {
            EXPECT_EQ(std::tie(boxes[0].text, boxes[0].caption), std::tuple(*row.box, u"Add Media Files"));
        }
    }
}

template <class T = const std::byte*>
T at(const std::byte* block, std::size_t offset) {
    T value;
    std::memcpy(&value, block + offset, sizeof value);
    return value;
}

// A 48-byte header: a text from the string table at 8, an absent text at 16, an array at 24 of a
// text, an absent entry, an unknown string id and a text, an empty array at 32, a u32 at 44. The
// array follows the header, then every present string back to back in the order added, the
// last one ending the block.
TEST(RecordPacker, LaysOutHeaderArraysThenStringsOnBothHeaps) {
    RecordPacker packer(48);
    packer.set_u32(44, 0xA1B2C3D4);
    packer.add_text(8, TextRef::from_string_id(strings::windows_midi_input_label));
    packer.add_text(16, TextRef());
    const std::array<TextRef, 4> entries{u"Synth \u00e9", TextRef(), TextRef::from_string_id(1), u"x"};
    packer.add_text_array(24, entries);
    packer.add_text_array(32, {});
    const std::size_t bytes = 48 + 4 * 8 + 2 * (19 + 8 + 1 + 2); // each string and its NUL
    EXPECT_EQ(packer.packed_bytes(), bytes);
    for (const platform::Heap heap : {platform::Heap::local, platform::Heap::global}) {
        const platform::HeapBlock block = packer.pack(heap);
        ASSERT_TRUE(block);
        const std::byte* base = block.data();
        const auto u32_at = [&](std::size_t offset) { return at<std::uint32_t>(base, offset); };
        EXPECT_EQ(std::tuple(u32_at(0), u32_at(4), u32_at(40), u32_at(44)), std::tuple(48u, 0u, 0u, 0xA1B2C3D4u));
        EXPECT_EQ(at(base, 16), nullptr);
        EXPECT_EQ(at(base, 32), nullptr) << "an empty array";
        EXPECT_EQ(at(base, 24), base + 48);
        EXPECT_EQ(at(base, 48 + 8), nullptr) << "an absent entry";
        const struct {
            std::size_t pointer_offset;
            std::u16string_view text;
        } strings[] = {{8, u"Windows MIDI Input"}, {48, u"Synth \u00e9"}, {48 + 16, u""}, {48 + 24, u"x"}};
        const std::byte* next = base + 48 + 4 * 8;
        for (const auto& row : strings) {
            ASSERT_EQ(at(base, row.pointer_offset), next) << "string at field " << row.pointer_offset;
            EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(next)), row.text);
            next += (row.text.size() + 1) * 2;
        }
        EXPECT_EQ(next, base + bytes) << "the last string ends the block";
    }
}

TEST(RecordPacker, RejectsLayoutsThatCannotHoldTheirFields) {
    EXPECT_THROW(RecordPacker(12), std::invalid_argument) << "arrays would be misaligned";
    EXPECT_THROW(RecordPacker(0), std::invalid_argument);
    RecordPacker packer(24);
    EXPECT_THROW(packer.add_text(0, u"x"), std::out_of_range) << "cbSize is not a pointer";
    EXPECT_THROW(packer.add_text(20, u"x"), std::out_of_range) << "runs past the header";
    EXPECT_THROW(packer.add_text_array(17, {}), std::out_of_range);
    EXPECT_THROW(packer.set_u32(21, 1), std::out_of_range);
    EXPECT_NO_THROW(packer.set_u32(20, 1));
}

} // namespace
} // namespace kq
