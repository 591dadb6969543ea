// The data files that CUE sheets name: the forms FILE lines take, the text encodings, the names
// that are refused because they would reach outside the sheet's folder, and sheets read from files.

#include "media/cue_sheet.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace kq::media {
namespace {

TEST(CueSheet, FileLines) {
    constexpr CueError kUnsafe = CueError::unsafe_name;
    // The files as "relative path|file name;" each.
    const struct {
        std::string_view sheet;
        std::u16string_view files;
        CueError error = CueError::none;
    } cases[] = {
        {"FILE \"Disc 1.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n", u"Disc 1.bin|Disc 1.bin;"},
        {"REM comment\r\nFILE\tgame.iso\tBINARY\r\n  TRACK 01 MODE1/2048\r\n", u"game.iso|game.iso;"},
        {"FILE \"data.bin\" BINARY\nTRACK 01 MODE1/2352\nFILE \"track 02.wav\" WAVE\nTRACK 02 AUDIO\nFILE t3.flac FLAC\n",
         u"data.bin|data.bin;track 02.wav|track 02.wav;t3.flac|t3.flac;"},
        {"   file \"x.bin\" MOTOROLA\n", u"x.bin|x.bin;"},
        {"FILE \"images/disc.bin\" BINARY\nFILE sub\\a.bin BINARY\n", u"images\\disc.bin|disc.bin;sub\\a.bin|a.bin;"},
        {"\xEF\xBB\xBF\x46ILE \"Sp\xC3\xA4t.bin\" BINARY\n", u"Sp\u00E4t.bin|Sp\u00E4t.bin;"}, // UTF-8, with a BOM
        {"FILE \"Sp\xE4t.bin\" BINARY\n", u"Sp\u00E4t.bin|Sp\u00E4t.bin;"},                    // Latin-1
        {"FILES x.bin\nTITLE \"FILE y.bin\"\nFILE\nFILE \"unclosed.bin BINARY\nFILE \"\" BINARY\n", u""},
        {"FILE \"..disc..bin\" BINARY\n", u"..disc..bin|..disc..bin;"},
        {"FILE \"..\\secret.bin\" BINARY\n", u"", kUnsafe},
        {"FILE ../secret.bin BINARY\n", u"", kUnsafe},
        {"FILE \"a/../../b.bin\" BINARY\n", u"", kUnsafe},
        {"FILE \"C:\\Windows\\x.bin\" BINARY\n", u"", kUnsafe},
        {"FILE c:x.bin BINARY\n", u"", kUnsafe},
        {"FILE \"\\\\server\\share\\x.bin\" BINARY\n", u"", kUnsafe},
        {"FILE /etc/passwd BINARY\n", u"", kUnsafe},
        {"FILE \"ok.bin\" BINARY\nFILE .. BINARY\n", u"", kUnsafe},
    };
    for (const auto& c : cases) {
        std::vector<CueDataFile> files;
        EXPECT_EQ(read_cue_sheet(c.sheet, files), c.error) << c.sheet;
        std::u16string listed;
        for (const CueDataFile& file : files) listed += file.relative_path + u"|" + file.file_name + u";";
        EXPECT_EQ(listed, c.files) << c.sheet;
    }
}

TEST(CueSheet, FromFiles) {
    const test::TempFolder folder;
    folder.create_file(u"game.cue", "FILE \"game.bin\" BINARY\n  TRACK 01 MODE1/2352\n");
    folder.create_file(u"huge.cue", std::string(kMaxCueSheetBytes + 1, ' '));
    std::vector<CueDataFile> files;
    ASSERT_EQ(read_cue_sheet_file(folder.path(u"game.cue"), files), CueError::none);
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].file_name, u"game.bin");
    EXPECT_EQ(read_cue_sheet_file(folder.path(u"huge.cue"), files), CueError::too_large);
    EXPECT_EQ(read_cue_sheet_file(folder.path(u"missing.cue"), files), CueError::unreadable);
    EXPECT_TRUE(files.empty());
}

} // namespace
} // namespace kq::media
