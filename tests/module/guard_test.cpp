#include "module/guard.h"
#include "platform/system_error.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

} // namespace
} // namespace kq
