// The data files that CUE sheets name: the forms FILE lines take, the text encodings, the names
// that are refused because they would reach outside the sheet's folder, and sheets read from files.

#include "media/cue_sheet.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace kq::media {
namespace {

TEST(CueSheet, FileLines) {
    // A sheet and its files as "relative path|file name;" each.
    const std::pair<std::string_view, std::u16string_view> cases[] = {
        {"FILE \"Disc 1.bin\" BINARY\n   file \"x.bin\" MOTOROLA\n", u"Disc 1.bin|Disc 1.bin;x.bin|x.bin;"}, // any case
        {"REM comment\r\nFILE\tgame.iso\tBINARY\r\n  TRACK 01 MODE1/2048\r\n", u"game.iso|game.iso;"},
        {"FILE \"data.bin\" BINARY\nTRACK 01 MODE1/2352\nFILE \"track 02.wav\" WAVE\nTRACK 02 AUDIO\nFILE t3.flac FLAC\n",
         u"data.bin|data.bin;track 02.wav|track 02.wav;t3.flac|t3.flac;"},
        {"FILE \"images/disc.bin\" BINARY\nFILE sub\\a.bin BINARY\n", u"images\\disc.bin|disc.bin;sub\\a.bin|a.bin;"},
        {"\xEF\xBB\xBF\x46ILE \"Sp\xC3\xA4t.bin\" BINARY\n", u"Sp\u00E4t.bin|Sp\u00E4t.bin;"}, // UTF-8, with a BOM
        {"FILE \"Sp\xE4t.bin\" BINARY\n", u"Sp\u00E4t.bin|Sp\u00E4t.bin;"},                    // Latin-1
        {"FILES x.bin\nTITLE \"FILE y.bin\"\nFILE\nFILE \"unclosed.bin BINARY\nFILE \"\" BINARY\n", u""},
        {"FILE \"..disc..bin\" BINARY\n", u"..disc..bin|..disc..bin;"},
    };
    std::vector<CueDataFile> files;
    for (const auto& [sheet, expected] : cases) {
        EXPECT_EQ(read_cue_sheet(sheet, files), CueError::none) << sheet;
        std::u16string listed;
        for (const CueDataFile& file : files) listed += file.relative_path + u"|" + file.file_name + u";";
        EXPECT_EQ(listed, expected) << sheet;
    }
    // A name that would reach outside the sheet's folder refuses the whole sheet.
    for (const std::string_view name :
         {"\"..\\secret.bin\"", "../secret.bin", "\"a/../../b.bin\"", "\"C:\\Windows\\x.bin\"", "c:x.bin",
          "\"\\\\server\\share\\x.bin\"", "/etc/passwd", "ok.bin BINARY\nFILE .."}) {
        EXPECT_EQ(read_cue_sheet("FILE " + std::string(name) + " BINARY\n", files), CueError::unsafe_name) << name;
        EXPECT_TRUE(files.empty()) << name;
    }
}

TEST(CueSheet, FromFiles) {
    const test::TempFolder folder;
    folder.create_file(u"huge.cue", std::string(kMaxCueSheetBytes + 1, ' '));
    std::vector<CueDataFile> files = {{u"stale", u"stale"}};
    EXPECT_EQ(read_cue_sheet_file(folder.path(u"huge.cue"), files), CueError::too_large);
    EXPECT_EQ(read_cue_sheet_file(folder.path(u"missing.cue"), files), CueError::unreadable);
    EXPECT_TRUE(files.empty());
}

} // namespace
} // namespace kq::media
