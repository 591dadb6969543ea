// The blank-disk templates and the empty media made from them, read by Debian's unadf (an
// independent AmigaDOS reader that checks the root block's checksum): empty OFS volumes named
// "Empty". Native only: unadf runs as a child process.

#include "media/empty_medium.h"
#include "platform/native/native_controls.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>
#include <string>

namespace kq::media {
namespace {

struct Listing {
    int status;
    std::string text;
};

Listing unadf_list(const std::string& image) {
    Listing listing;
    listing.status = test::run_shell("unadf -l '" + image + "'", &listing.text);
    return listing;
}

// What unadf lists besides its banner and the device and volume lines: the volume's files.
std::vector<std::string> entries(const std::string& listing) {
    std::vector<std::string> out;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.rfind("unADF", 0) == 0 || line.rfind("Device :", 0) == 0 ||
            line.rfind("Volume :", 0) == 0)
            continue;
        out.push_back(line);
    }
    return out;
}

TEST(BlankFloppyOracle, UnadfReadsEmptyVolumes) {
    ASSERT_TRUE(test::have_tool("unadf")) << "unadf is not installed";
    std::u16string module = u"" KQ_TEST_MODULE_FOLDER "/amiga.dll";
    std::replace(module.begin(), module.end(), u'/', u'\\');
    platform::native::set_module_file_path(module);
    const struct {
        std::uint32_t kind;
        const char* volume;
    } cases[] = {{0, "Floppy 880 KBytes, \"Empty\""}, {1, "Floppy 1760 KBytes, \"Empty\""}};
    for (const auto& c : cases) {
        std::u16string stamped;
        ASSERT_EQ(make_empty_medium(0, c.kind, &stamped), status::ok);
        for (const std::u16string& image : {empty_medium_template_path(kEmptyMediumTemplates[c.kind]), stamped}) {
            const Listing listing = unadf_list(test::to_fs_path(image).string());
            EXPECT_EQ(listing.status, 0) << listing.text;
            EXPECT_NE(listing.text.find(c.volume), std::string::npos) << listing.text;
            EXPECT_NE(listing.text.find("OFS"), std::string::npos) << listing.text;
            EXPECT_TRUE(entries(listing.text).empty()) << listing.text;
        }
        free_empty_medium(stamped);
    }
    platform::native::set_module_file_path(u"");
}

} // namespace
} // namespace kq::media
