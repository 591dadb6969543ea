// Calls into the host library run while the machine-wide mutex is owned; the stand-in library
// checks it from another thread.

#include "module/host_library_link.h"
#include "tests/support/fake_data_access_client.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace kq {
namespace {

bool mutex_is_free() {
    HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, L"KQlayerDataAccessMx");
    if (mutex == nullptr) return true;
    const DWORD wait = WaitForSingleObject(mutex, 0);
    if (wait == WAIT_OBJECT_0) ReleaseMutex(mutex);
    CloseHandle(mutex);
    return wait == WAIT_OBJECT_0;
}

TEST(HostLibraryLinkMutex, IsOwnedDuringEachCallAndReleasedAfter) {
    const test::FakeDataAccess fake(u"with-library");
    ASSERT_TRUE(fake.ready());
    fake.reset();

    HostLibraryLink link(test::host_folder(u"with-library"));
    link.set_instance_handle(5);
    EXPECT_EQ(link.show_error_message(u"c", 1, nullptr, u"t", 0), status::ok);
    EXPECT_EQ(fake.log().mutex_owned_during_call, 1) << "while showing";
    EXPECT_TRUE(mutex_is_free()) << "after showing";
    fake.reset();
    EXPECT_EQ(link.close(), status::ok);
    EXPECT_EQ(fake.log().mutex_owned_during_call, 1) << "while closing";
    EXPECT_TRUE(mutex_is_free()) << "after closing";
}

TEST(HostLibraryLinkMutex, IsReleasedWhenTheLibraryIsMissing) {
    HostLibraryLink link(test::host_folder(u"missing"));
    EXPECT_EQ(link.show_error_message(u"c", 1, nullptr, u"t", 0), status::from_win32(1154));
    EXPECT_TRUE(mutex_is_free());
}

} // namespace
} // namespace kq
