// The content analysis against independent tools, run as child processes (native only): unadf
// reads the same volume names from the floppies that the tests build and lists the blank-disk
// templates and the empty media made from them as empty OFS volumes named "Empty" (it checks
// the root block's checksum), and an ISO image written by genisoimage gives its label.

#include "media/analysis/medium_analysis.h"
#include "media/empty_medium.h"
#include "platform/native/native_controls.h"
#include "tests/support/amiga_images.h"
#include "tests/support/shell_command.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace kq::media {
namespace {

using test::run_shell;

TEST(AnalysisOracle, UnadfAndGenisoimage) {
    for (const char* tool : {"unadf", "genisoimage"}) ASSERT_TRUE(test::have_tool(tool)) << tool;
    const test::TempFolder folder;
    const std::string adf = folder.native(u"disk.adf").string(), iso = folder.native(u"disc.iso").string();
    std::string listing;
    MediumAnalysis analysis;
    for (const test::FloppySpec& spec :
         {test::FloppySpec{.name = "OFS Disk"}, test::FloppySpec{.first_long = 0x444F5301, .name = "FFS Disk"},
          test::FloppySpec{.high_density = true, .name = "HD Disk"}}) {
        folder.create_file(u"disk.adf", test::as_string(test::floppy_image(spec)));
        ASSERT_EQ(run_shell("unadf -l '" + adf + "'", &listing), 0) << listing;
        EXPECT_NE(listing.find('"' + spec.name + '"'), std::string::npos) << listing;
        ASSERT_EQ(analyse_medium(folder.path(u"disk.adf"), analysis), AnalysisFailure::none);
        EXPECT_EQ(analysis.volume_name, std::u16string(spec.name.begin(), spec.name.end()));
    }
    std::u16string module = u"" KQ_TEST_MODULE_FOLDER "/amiga.dll";
    std::replace(module.begin(), module.end(), u'/', u'\\');
    platform::native::set_module_file_path(module);
    for (const std::uint32_t kind : {0u, 1u}) {
        std::u16string stamped;
        ASSERT_EQ(make_empty_medium(0, kind, &stamped), status::ok);
        for (const std::u16string& image : {empty_medium_template_path(kEmptyMediumTemplates[kind]), stamped}) {
            EXPECT_EQ(run_shell("unadf -l '" + test::to_fs_path(image).string() + "'", &listing), 0) << listing;
            EXPECT_NE(listing.find(kind == 0 ? "Floppy 880 KBytes, \"Empty\"" : "Floppy 1760 KBytes, \"Empty\""),
                      std::string::npos)
                << listing;
            EXPECT_NE(listing.find("OFS"), std::string::npos) << listing;
            // Nothing besides the banner, the device and volume lines and blank lines: no files.
            EXPECT_EQ(std::count(listing.begin(), listing.end(), '\n'), 5) << listing;
        }
        free_empty_medium(stamped);
    }
    platform::native::set_module_file_path(u"");
    folder.create_file(u"content\\readme.txt", "a file on the disc");
    ASSERT_EQ(run_shell("genisoimage -quiet -V AMIGA_CD -o '" + iso + "' '" + folder.native(u"content").string() + "'",
                        &listing),
              0)
        << listing;
    ASSERT_EQ(analyse_medium(folder.path(u"disc.iso"), analysis), AnalysisFailure::none);
    EXPECT_EQ(std::pair(analysis.kind, analysis.volume_name), std::pair(MediumKind::cd, std::u16string(u"AMIGA_CD")));
    // Written just now (the descriptor holds local time; allow a day either way).
    const auto now_days = static_cast<std::int64_t>(std::time(nullptr) / 86400) + 134774;
    EXPECT_LE(std::abs(static_cast<std::int64_t>(analysis.date.value_or(0) / 864000000000ull) - now_days), 1);
}

} // namespace
} // namespace kq::media
