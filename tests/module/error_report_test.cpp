#include "module/error_report.h"

#include "string_ids.h"
#include "tests/support/fake_data_access_client.h"
#include "tests/support/message_box_capture.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <optional>

namespace kq {
namespace {

constexpr HResult interface_status(std::uint32_t severity, std::uint16_t code) {
    return static_cast<HResult>(severity << 31 | status::kFacilityInterface << 16 | code);
}

int window_marker;
void* const kParentWindow = &window_marker;

TEST(ErrorReport, EachStatusTakesItsOwnPath) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());

    struct Box {
        std::u16string_view text, caption;
    };
    const struct {
        const char* name;
        HResult code;
        std::u16string_view host;
        bool reaches_host;
        std::optional<Box> box;
        void* parent;
    } rows[] = {
        {"missing IPF library", kIpfLibraryMissing, u"with-library", true, std::nullopt, kParentWindow},
        {"missing IPF library without host library", kIpfLibraryMissing, u"missing", false, std::nullopt,
         kParentWindow},
        {"missing IPF library, host library without functions", kIpfLibraryMissing, u"without-entries", false,
         std::nullopt, kParentWindow},
        {"interface failure naming a text", interface_status(1, strings::empty_drive), u"with-library", false,
         Box{u"Empty", u"Add Media Files"}, nullptr},
        {"interface success naming a text", interface_status(0, strings::not_available), u"with-library", false,
         Box{u"N/A", u"Add Media Files"}, nullptr},
        {"template expanded, inserts kept", interface_status(1, strings::floppy_drive_template), u"with-library", false,
         Box{u"Floppy disk drive DF%1!d!:\r\n%2", u"Add Media Files"}, nullptr},
        {"interface status naming no text", interface_status(1, 11), u"with-library", false, std::nullopt, nullptr},
        {"E_FAIL", status::failed, u"with-library", false, std::nullopt, nullptr},
        {"a Windows error", status::from_win32(2), u"with-library", false, std::nullopt, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake.reset();
        test::MessageBoxCapture capture;
        report_error_from(test::host_folder(row.host), row.parent, row.code);

        const FakeDataAccessLog& log = fake.log();
        EXPECT_EQ(log.show_calls, row.reaches_host ? 1 : 0);
        if (row.reaches_host) {
            EXPECT_EQ(std::u16string_view(log.context), u"file.ipf");
            EXPECT_EQ(log.error_code, 0x80070485u); // HRESULT_FROM_WIN32(ERROR_DLL_NOT_FOUND)
            EXPECT_EQ(log.parent_window, row.parent);
            EXPECT_EQ(std::u16string_view(log.text), u"IPF Support Library Not Found");
            EXPECT_EQ(log.flags, 0u);
        }
        const auto boxes = capture.take();
        ASSERT_EQ(boxes.size(), row.box ? 1u : 0u);
        if (row.box) {
            EXPECT_EQ(boxes[0].text, row.box->text);
            EXPECT_EQ(boxes[0].caption, row.box->caption);
        }
    }
}

} // namespace
} // namespace kq
