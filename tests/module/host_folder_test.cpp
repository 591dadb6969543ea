#include "module/host_folder.h"

#include <gtest/gtest.h>

namespace kq {
namespace {

TEST(HostFolder, IsTheParentOfTheModuleFolderCutByPosition) {
    const struct {
        std::u16string_view module_path, host_folder;
    } rows[] = {
        {u"C:\\Quennet\\Platforms\\Amiga\\amiga.dll", u"C:\\Quennet\\Platforms"},
        {u"X\\Platforms\\Amiga\\file.dll", u"X\\Platforms"},
        {u"C:\\Amiga\\amiga.dll", u"C:"},
        {u"\\\\server\\share\\Platforms\\Amiga\\amiga.dll", u"\\\\server\\share\\Platforms"},
        {u"C:\\a\\\\b.dll", u"C:\\a"}, // an empty element still counts
        {u"C:\\Platforms\\Amiga\\", u"C:\\Platforms"},
        {u"amiga.dll", u""},
        {u"C:\\amiga.dll", u""},
        {u"\\amiga.dll", u""},
        {u"", u""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(host_folder_of(row.module_path), row.host_folder)
            << std::string(row.module_path.begin(), row.module_path.end());
}

} // namespace
} // namespace kq
