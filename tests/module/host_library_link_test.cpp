#include "module/host_library_link.h"

#include "tests/support/fake_data_access_client.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

int local_marker;
void* const kParentWindow = &local_marker;

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
        EXPECT_EQ(log.show_calls, 1);
        EXPECT_EQ(log.instance, 0x1122334455667788u);
        EXPECT_EQ(std::u16string_view(log.context), context);
        EXPECT_EQ(log.error_code, 0x80070485u);
        EXPECT_EQ(log.parent_window, kParentWindow);
        EXPECT_EQ(std::u16string_view(log.text), text);
        EXPECT_EQ(log.flags, 0x5Au);
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

} // namespace
} // namespace kq
