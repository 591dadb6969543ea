// The data files that CUE sheets name: the forms FILE lines take, the text encodings, and the
// names that are refused because they would reach outside the sheet's folder.

#include "media/cue_sheet.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace kq::media {
namespace {

std::vector<std::u16string> paths(std::string_view sheet, CueError expected = CueError::none) {
    std::vector<CueDataFile> files;
    EXPECT_EQ(read_cue_sheet(sheet, files), expected) << sheet;
    std::vector<std::u16string> out;
    for (const CueDataFile& file : files) out.push_back(file.relative_path + u"|" + file.file_name);
    return out;
}

using Paths = std::vector<std::u16string>;

TEST(CueSheet, FileLinesInTheirForms) {
    const struct {
        const char* what;
        std::string_view sheet;
        Paths expected;
    } cases[] = {
        {"one quoted file",
         "FILE \"Disc 1.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n",
         {u"Disc 1.bin|Disc 1.bin"}},
        {"unquoted, CRLF, tabs",
         "REM comment\r\nFILE\tgame.iso\tBINARY\r\n  TRACK 01 MODE1/2048\r\n",
         {u"game.iso|game.iso"}},
        {"several files, audio types",
         "FILE \"data.bin\" BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\nFILE \"track 02.wav\" WAVE\nTRACK 02 "
         "AUDIO\nINDEX 01 00:00:00\nFILE t3.flac FLAC\n",
         {u"data.bin|data.bin", u"track 02.wav|track 02.wav", u"t3.flac|t3.flac"}},
        {"command in lower case, indented", "   file \"x.bin\" MOTOROLA\n", {u"x.bin|x.bin"}},
        {"subfolders, either separator",
         "FILE \"images/disc.bin\" BINARY\nFILE sub\\a.bin BINARY\n",
         {u"images\\disc.bin|disc.bin", u"sub\\a.bin|a.bin"}},
        {"UTF-8 with a byte-order mark",
         "\xEF\xBB\xBF\x46ILE \"Sp\xC3\xA4t.bin\" BINARY\n",
         {u"Sp\u00E4t.bin|Sp\u00E4t.bin"}},
        {"Latin-1", "FILE \"Sp\xE4t.bin\" BINARY\n", {u"Sp\u00E4t.bin|Sp\u00E4t.bin"}},
        {"not FILE lines",
         "FILES x.bin\nTITLE \"FILE y.bin\"\nFILE\nFILE \"unclosed.bin BINARY\nFILE \"\" BINARY\n",
         {}},
        {"empty", "", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(paths(c.sheet), c.expected) << c.what;
}

TEST(CueSheet, NamesOutsideTheFolderAreRefused) {
    for (const std::string_view sheet :
         {std::string_view("FILE \"..\\secret.bin\" BINARY\n"), std::string_view("FILE ../secret.bin BINARY\n"),
          std::string_view("FILE \"a/../../b.bin\" BINARY\n"), std::string_view("FILE \"C:\\Windows\\x.bin\" BINARY\n"),
          std::string_view("FILE c:x.bin BINARY\n"), std::string_view("FILE \"\\\\server\\share\\x.bin\" BINARY\n"),
          std::string_view("FILE /etc/passwd BINARY\n"),
          std::string_view("FILE \"ok.bin\" BINARY\nFILE .. BINARY\n")}) {
        EXPECT_TRUE(paths(sheet, CueError::unsafe_name).empty()) << sheet;
    }
    // A name that merely contains dots is fine.
    EXPECT_EQ(paths("FILE \"..disc..bin\" BINARY\n"), Paths{u"..disc..bin|..disc..bin"});
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
