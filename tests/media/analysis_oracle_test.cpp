// The content analysis against independent tools: unadf reads the same volume names from the
// floppies that the tests build, xdms unpacks the tests' DMS archives to the same images, and
// an ISO image written by genisoimage gives the label it was given. Native only: the tools run
// as child processes.

#include "media/analysis/medium_analysis.h"
#include "tests/support/amiga_images.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

namespace kq::media {
namespace {

using test::run_shell;

class AnalysisOracle : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* tool : {"unadf", "xdms", "genisoimage"})
            ASSERT_TRUE(test::have_tool(tool)) << tool << " is not installed";
    }
    std::string native(std::u16string_view name) const { return folder_.native(name).string(); }
    test::TempFolder folder_;
};

TEST_F(AnalysisOracle, UnadfReadsTheSameVolumes) {
    for (const test::FloppySpec& spec :
         {test::FloppySpec{.name = "OFS Disk"}, test::FloppySpec{.first_long = 0x444F5301, .name = "FFS Disk"},
          test::FloppySpec{.high_density = true, .name = "HD Disk"}}) {
        folder_.create_file(u"disk.adf", test::as_string(test::floppy_image(spec)));
        std::string listing;
        ASSERT_EQ(run_shell("unadf -l '" + native(u"disk.adf") + "'", &listing), 0) << listing;
        EXPECT_NE(listing.find('"' + spec.name + '"'), std::string::npos) << listing;
        MediumAnalysis analysis;
        ASSERT_EQ(analyse_medium(folder_.path(u"disk.adf"), analysis), AnalysisFailure::none);
        EXPECT_EQ(analysis.volume_name, std::u16string(spec.name.begin(), spec.name.end()));
    }
}

TEST_F(AnalysisOracle, XdmsUnpacksTheTestArchives) {
    const test::Image adf = test::floppy_image({.name = "Archived"});
    folder_.create_file(u"disk.dms", test::as_string(test::dms_archive(adf)));
    std::string output;
    ASSERT_EQ(run_shell("xdms -q u '" + native(u"disk.dms") + "' +'" + native(u"out.adf") + "'", &output), 0) << output;
    EXPECT_EQ(test::read_file(folder_.native(u"out.adf")), test::as_string(adf));
}

TEST_F(AnalysisOracle, GenisoimageLabels) {
    folder_.create_file(u"content\\readme.txt", "a file on the disc");
    std::string output;
    ASSERT_EQ(run_shell("genisoimage -quiet -V AMIGA_CD -o '" + native(u"disc.iso") + "' '" + native(u"content") + "'",
                        &output),
              0)
        << output;
    MediumAnalysis analysis;
    ASSERT_EQ(analyse_medium(folder_.path(u"disc.iso"), analysis), AnalysisFailure::none);
    EXPECT_EQ(analysis.kind, MediumKind::cd);
    EXPECT_EQ(analysis.volume_name, u"AMIGA_CD");
    ASSERT_TRUE(analysis.date.has_value());
    // Written just now (the descriptor holds local time; allow a day either way).
    const auto now_days = static_cast<std::int64_t>(std::time(nullptr) / 86400) + 134774;
    const auto date_days = static_cast<std::int64_t>(*analysis.date / 864000000000ull);
    EXPECT_LE(std::abs(date_days - now_days), 1);
}

} // namespace
} // namespace kq::media
