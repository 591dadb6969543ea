// The compressed-image code against independent tools: what GNU gzip, Info-ZIP's zip and 7-Zip
// write inflates to the original bytes, and what the deflater writes passes gzip's own checks.
// Native only: the tools run as child processes.

#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kq::media {
namespace {

using test::run_shell;

TEST(CompressionOracle, WhatTheToolsWriteAndWhatTheDeflaterWrites) {
    for (const char* tool : {"gzip", "zip", "7zz", "cmp"}) ASSERT_TRUE(test::have_tool(tool)) << tool;
    // Long runs (length code 285) and repeats farther back than 32 KiB (distance codes 30, 31).
    test::Bytes image = test::sample_image(600000, 11);
    image.insert(image.end(), 300000, std::byte{0});
    for (unsigned i = 0; i < 4; ++i)
        for (const test::Bytes& part : {test::sample_image(20000, 12), test::sample_image(35000, 13 + i)})
            image.insert(image.end(), part.begin(), part.end());
    const test::TempFolder folder;
    std::ofstream(folder.native(u"disk.hdf"), std::ios::binary)
        .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
    const std::string in = folder.native(u"disk.hdf").string(), at = "cd '" + folder.native(u"").string() + "' && ";
    // The file, the command, the entry's general-purpose flag 0x08 and method (ZIP only).
    const std::tuple<std::u16string_view, std::string, int, int> cases[] = {
        {u"plain.adz", at + "gzip -c -n disk.hdf > plain.adz", -1, -1},
        {u"named.adz", at + "gzip -c -9 disk.hdf > named.adz", -1, -1},
        {u"stored.zip", at + "zip -q -0 stored.zip disk.hdf", 0, 0},
        {u"deflated.zip", at + "zip -q deflated.zip disk.hdf", 0, 8},
        {u"piped.zip", at + "zip -q - - < disk.hdf | cat > piped.zip", 8, 8},
        {u"deflate64.zip", at + "7zz a -bd -tzip -mm=Deflate64 deflate64.zip disk.hdf >/dev/null", 0, 9},
        {u"max.zip", at + "7zz a -bd -tzip -mm=Deflate64 -mx=9 max.zip disk.hdf >/dev/null", 0, 9}};
    for (const auto& [name, command, flag, method] : cases) {
        ASSERT_EQ(run_shell(command), 0) << command;
        const std::string archive = test::read_file(folder.native(name));
        if (method >= 0) { // the entry is of the kind that this case is meant to exercise
            EXPECT_EQ(archive.at(6) & 0x08, flag) << command;
            EXPECT_EQ(static_cast<int>(archive.at(8)), method) << command;
        }
        EXPECT_EQ(inflate_file(folder.path(name), folder.path(u"out")), InflateError::none) << command;
        EXPECT_EQ(run_shell("cmp -s '" + in + "' '" + folder.native(u"out").string() + "'"), 0) << command;
    }
    const std::string out = folder.native(u"Disk.HDZ").string();
    ASSERT_EQ(deflate_file(folder.path(u"disk.hdf"), folder.path(u"Disk.HDZ")), status::ok);
    EXPECT_EQ(run_shell("gzip -t '" + out + "'"), 0);
    std::string listing;
    ASSERT_EQ(run_shell("gzip -l '" + out + "'", &listing), 0);
    EXPECT_NE(listing.find(std::to_string(image.size())), std::string::npos) << listing;
    EXPECT_EQ(run_shell("gzip -dc '" + out + "' | cmp -s - '" + in + "'"), 0);
    // gzip -N restores the name stored in the header: the compressed file's own, lower-cased.
    ASSERT_EQ(run_shell(at + "mkdir named && cp Disk.HDZ named/ && cd named && gzip -d -N -S .HDZ Disk.HDZ"), 0);
    EXPECT_TRUE(std::filesystem::exists(folder.native(u"named\\disk.hdz")));
}

} // namespace
} // namespace kq::media
