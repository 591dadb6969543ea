// The device names of one summary: new names and reservations.

#include "content/device_name_allocator.h"
#include "tests/content/content_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kq::content {
namespace {

using test::shown;

TEST(ContentDeviceNames, NewNamesAndReservations) {
    // Each step: a name to reserve (empty: ask for a new name), and the name taken.
    const struct {
        const char* what;
        std::vector<std::pair<std::u16string, std::u16string>> steps;
    } rows[] = {
        {"new names skip reserved ones", {{u"DH1", u"DH1"}, {u"", u"DH0"}, {u"", u"DH2"}}},
        {"clashes get suffixes", {{u"", u"DH0"}, {u"DH0", u"DH0_0"}, {u"DH0", u"DH0_1"}}},
        {"suffixes skip taken ones", {{u"DH0_0", u"DH0_0"}, {u"DH0", u"DH0"}, {u"DH0", u"DH0_1"}}},
        {"any name, any case", {{u"WORK", u"WORK"}, {u"work", u"work_0"}, {u"dh0", u"dh0"}, {u"", u"DH1"}}},
    };
    for (const auto& row : rows) {
        DeviceNameAllocator allocator;
        for (const auto& [asked, taken] : row.steps)
            EXPECT_EQ(shown(asked.empty() ? allocator.take_new_name() : allocator.reserve(asked)), shown(taken))
                << row.what;
    }
}

} // namespace
} // namespace kq::content
