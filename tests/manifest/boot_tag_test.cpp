// Boot tags resolved against the shared data root: every type's rules, the newest AROS boot
// disk, and the manifests' own failures.

#include "manifest/boot_tag.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace kq::manifest {
namespace {

std::string manifest_with_boot(std::string_view tag, std::string_view type) {
    return "<kq9><application><configuration><system>a-1200</system><boot type=\"" + std::string(type) + "\">" +
           std::string(tag) + "</boot></configuration></application></kq9>";
}

TEST(BootTag, EveryTypesRules) {
    const test::TempFolder root;
    root.create_file(u"Shared\\hdf\\mydisk.hdf");
    root.create_file(u"Shared\\hdf\\310.hdf");
    const std::u16string base = root.path() + u"\\";
    const struct {
        std::string_view tag, type;
        HResult expected;
        std::u16string_view path; // below the root
    } cases[] = {
        {"310", "adf", status::ok, u"Shared\\adf\\amiga-os-310-workbench.adf"},
        {"mydisk", "ADF", status::ok, u"Shared\\adf\\mydisk.adf"},
        {"aros-latest", "adf", status::ok, u"Shared\\adf\\aros-latest.adf"}, // no AROS disk there
        {"310", "hdf", status::ok, u"Shared\\hdf\\workbench-310.hdf"},       // although 310.hdf exists
        {"mydisk", "hdf", status::ok, u"Shared\\hdf\\mydisk.hdf"},
        {"other", "Hdf", status::ok, u"Shared\\hdf\\workbench-other.hdf"},
        {"3x0", "dir", status::ok, u"Shared\\dir\\System"},
        {"aros", "DIR", status::ok, u"Shared\\dir\\AROS"},
        {"3x1", "dir", status::invalid_argument, u""},
        {"310", "iso", status::invalid_argument, u""},
    };
    for (const auto& c : cases) {
        std::u16string path;
        EXPECT_EQ(boot_tag_path(manifest_with_boot(c.tag, c.type).c_str(), root.path(), 0, path), c.expected) << c.tag;
        if (c.expected == status::ok) {
            EXPECT_EQ(path, base + std::u16string(c.path)) << c.tag;
        }
    }
}

TEST(BootTag, TheNewestArosBootDisk) {
    const test::TempFolder root;
    for (const std::u16string_view name : {u"aros-20120101-boot.adf", u"aros-20130502-boot.adf", u"aros-2013-boot.adf",
                                           u"aros-20130502-extra.adf", u"AROS-20121231-BOOT.ADF"})
        root.create_file(u"Shared\\adf\\" + std::u16string(name));
    std::u16string path;
    ASSERT_EQ(boot_tag_path(manifest_with_boot("aros-latest", "adf").c_str(), root.path() + u"\\", 0, path),
              status::ok);
    EXPECT_EQ(path, root.path() + u"\\Shared\\adf\\aros-20130502-boot.adf") << test::printable(path);

    const test::TempFolder versions;
    for (const std::u16string_view name : {u"aros-1.9-boot.adf", u"aros-1.10-boot.adf", u"aros-1.2-boot.adf"})
        versions.create_file(name);
    EXPECT_EQ(newest_aros_boot_disk(versions.path()), u"aros-1.10-boot");
    EXPECT_EQ(newest_aros_boot_disk(versions.path(u"missing")), std::nullopt);
}

TEST(BootTag, ManifestFailures) {
    std::u16string path;
    const HResult no_boot =
        boot_tag_path("<kq9><application><configuration/></application></kq9>", u"C:\\Data", 0, path);
    EXPECT_LT(no_boot, 0);
    EXPECT_LT(boot_tag_path("<kq9><application><configuration><boot>310</boot></configuration></application></kq9>",
                            u"C:\\Data", 0, path),
              0)
        << "no type";
    EXPECT_LT(boot_tag_path("not xml", u"C:\\Data", 0, path), 0);
    EXPECT_EQ(boot_tag_path(manifest_with_boot("310", "adf").c_str(), u"C:\\Data", 1, path), status::invalid_argument);
}

} // namespace
} // namespace kq::manifest
