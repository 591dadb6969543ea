// The compressed-image code against independent tools: what GNU gzip, Info-ZIP's zip and 7-Zip
// write inflates to the original bytes, and what the deflater writes passes gzip's own checks.
// Native only: the tools run as child processes.

#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "tests/support/compressed_files.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace kq::media {
namespace {

namespace fs = std::filesystem;

std::u16string module_path(const fs::path& path) { return path.u16string(); }

using test::run_shell;

// An image with what makes Deflate64 differ: long runs (length code 285) and repeats farther
// back than 32 KiB (distance codes 30 and 31).
test::Bytes oracle_image() {
    test::Bytes image = test::sample_image(600000, 11);
    image.insert(image.end(), 300000, std::byte{0});
    const test::Bytes block = test::short_repeats(20000, 12);
    for (int i = 0; i < 4; ++i) {
        image.insert(image.end(), block.begin(), block.end());
        const test::Bytes spacer = test::short_repeats(35000, 13 + static_cast<unsigned>(i));
        image.insert(image.end(), spacer.begin(), spacer.end());
    }
    return image;
}

class CompressionOracle : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* tool : {"gzip", "zip", "7zz", "cmp"})
            ASSERT_TRUE(test::have_tool(tool)) << tool << " is not installed";
        image_ = oracle_image();
        std::ofstream(folder_.native(u"disk.hdf"), std::ios::binary)
            .write(reinterpret_cast<const char*>(image_.data()), static_cast<std::streamsize>(image_.size()));
    }
    std::string file(std::u16string_view name) const { return folder_.native(name).string(); }

    test::TempFolder folder_;
    test::Bytes image_;
};

TEST_F(CompressionOracle, WhatTheToolsWriteInflatesToTheImage) {
    const std::string in = file(u"disk.hdf");
    const struct {
        std::u16string_view name;
        std::string command;
        int zip_flags;  // expected general-purpose flags of a ZIP entry, or -1
        int zip_method; // expected method of a ZIP entry, or -1
    } cases[] = {
        {u"plain.adz", "gzip -c -n '" + in + "' > '" + file(u"plain.adz") + "'", -1, -1},
        {u"named.adz", "gzip -c -9 '" + in + "' > '" + file(u"named.adz") + "'", -1, -1},
        {u"stored.zip", "cd '" + file(u"") + "' && zip -q -0 stored.zip disk.hdf", 0, 0},
        {u"deflated.zip", "cd '" + file(u"") + "' && zip -q deflated.zip disk.hdf", 0, 8},
        {u"piped.zip", "zip -q - - < '" + in + "' | cat > '" + file(u"piped.zip") + "'", 8, 8},
        {u"deflate64.zip", "cd '" + file(u"") + "' && 7zz a -bd -tzip -mm=Deflate64 deflate64.zip disk.hdf >/dev/null",
         0, 9},
        {u"deflate64-max.zip",
         "cd '" + file(u"") + "' && 7zz a -bd -tzip -mm=Deflate64 -mx=9 deflate64-max.zip disk.hdf >/dev/null", 0, 9},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(run_shell(c.command), 0) << c.command;
        const std::string archive = test::read_file(folder_.native(c.name));
        ASSERT_GT(archive.size(), 30u);
        if (c.zip_method >= 0) {
            // The entry is of the kind that this case is meant to exercise.
            EXPECT_EQ(archive[6] & 0x08, c.zip_flags & 0x08) << file(c.name);
            EXPECT_EQ(static_cast<int>(archive[8]), c.zip_method) << file(c.name);
        }
        const std::u16string out = std::u16string(c.name) + u".out";
        EXPECT_EQ(inflate_file(module_path(folder_.native(c.name)), module_path(folder_.native(out))),
                  InflateError::none)
            << file(c.name);
        EXPECT_EQ(run_shell("cmp -s '" + in + "' '" + file(out) + "'"), 0) << file(c.name);
    }
}

TEST_F(CompressionOracle, WhatTheDeflaterWritesPassesGzip) {
    const std::string out = file(u"Disk.HDZ");
    ASSERT_EQ(deflate_file(module_path(folder_.native(u"disk.hdf")), module_path(folder_.native(u"Disk.HDZ"))),
              status::ok);
    EXPECT_EQ(run_shell("gzip -t '" + out + "'"), 0);
    std::string listing;
    ASSERT_EQ(run_shell("gzip -l '" + out + "'", &listing), 0);
    EXPECT_NE(listing.find(std::to_string(image_.size())), std::string::npos) << listing;
    EXPECT_EQ(run_shell("gzip -dc '" + out + "' | cmp -s - '" + file(u"disk.hdf") + "'"), 0);
    // gzip -N restores the name stored in the header: the compressed file's own, lower-cased.
    ASSERT_EQ(run_shell("cd '" + file(u"") +
                        "' && mkdir named && cp Disk.HDZ named/ && cd named && gzip -d -N -S .HDZ Disk.HDZ"),
              0);
    EXPECT_TRUE(fs::exists(folder_.native(u"named\\disk.hdz")));
}

} // namespace
} // namespace kq::media
