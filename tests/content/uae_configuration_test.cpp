// The configuration file reader and its value readers, and the hard-drive line formats.

#include "content/configuration_import/drive_lines.h"
#include "content/configuration_import/uae_configuration.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::content {
namespace {

using test::printable;

std::string joined_entries(const UaeConfiguration& configuration) {
    std::string text;
    for (const UaeConfiguration::Entry& entry : configuration.entries())
        text += printable(entry.key) + "=" + printable(entry.value) + "|";
    return text;
}

TEST(UaeConfiguration, ReadsLinesAndSkipsWhatIsNoEntry) {
    const struct {
        const char* what;
        std::string text;
        const char* entries;
    } rows[] = {
        {"LF, CR LF and CR, blanks around key and value", "a=1\r\n  b \t=\t two words \nc=3\rd=4",
         "a=1|b=two words|c=3|d=4|"},
        {"byte-order mark", "\xEF\xBB\xBFkey=v\n", "key=v|"},
        {"comments and blank lines", "; comment\n# comment=1\n\n   \n  ;x=1\nk=v", "k=v|"},
        {"no equals sign, empty key", "just text\n=value\n k =\n", "k=|"},
        {"only the first equals sign splits", "path=C:\\a=b\n", "path=C:\\a=b|"},
        {"repeated keys kept in order", "hardfile2=one\nx=1\nHARDFILE2=two\n", "hardfile2=one|x=1|HARDFILE2=two|"},
        {"malformed UTF-8 drops its line only", "a=\xC3\x28\nb=\xC3\xA9\n", "b=?|"},
        {"characters XML cannot hold drop their line", "a=x\x01y\nb=\xEF\xBF\xBE\nc=\x7F\td\nk\x1B=1\n", "c=??d|"},
        {"empty text", "", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(joined_entries(UaeConfiguration::parse(row.text)), row.entries) << row.what;
}

TEST(UaeConfiguration, LooksUpKeysWithoutRegardToCaseLastValueCounting) {
    const UaeConfiguration configuration =
        UaeConfiguration::parse("Chipset=ocs\nchipset=AGA\nempty=x\nempty=\nhardfile2=a\nhardfile2=\nhardfile2=b\n");
    EXPECT_EQ(configuration.value(u"CHIPSET"), u"AGA");
    EXPECT_TRUE(configuration.is(u"chipset", u"aga"));
    EXPECT_FALSE(configuration.is(u"missing", u""));
    EXPECT_FALSE(configuration.has(u"empty")) << "the last value, empty, counts as absent";
    const std::vector<std::u16string_view> drives = configuration.values(u"HardFile2");
    EXPECT_EQ(drives, (std::vector<std::u16string_view>{u"a", u"b"}));
}

TEST(UaeConfiguration, ReadsBooleansAndNumbers) {
    const struct {
        const char* value;
        bool if_absent_true, if_absent_false;
        std::optional<std::int32_t> number;
    } rows[] = {
        {"true", true, true, std::nullopt},
        {"YES", true, true, std::nullopt},
        {"1", true, true, 1},
        {"-3", true, true, -3},
        {"12mb", true, true, 12},
        {"false", false, false, std::nullopt},
        {"No", false, false, std::nullopt},
        {"0", false, false, 0},
        {"on", false, false, std::nullopt},
        {"", true, false, std::nullopt}, // absent: the default
    };
    for (const auto& row : rows) {
        const UaeConfiguration configuration = UaeConfiguration::parse(std::string("k=") + row.value);
        EXPECT_EQ(configuration.boolean(u"k", true), row.if_absent_true) << row.value;
        EXPECT_EQ(configuration.boolean(u"k", false), row.if_absent_false) << row.value;
        EXPECT_EQ(configuration.number(u"k"), row.number) << row.value;
    }
}

TEST(DriveLines, ReadsHardFileLines) {
    const struct {
        std::u16string_view value;
        const char* fields; // ro|device|path|sectors|surfaces|reserved|blocksize|bootpri|fs|controller
    } rows[] = {
        {u"rw,DH0:C:\\Games\\work.hdf,32,1,2,512,0,,uae0", "0|DH0|C:\\Games\\work.hdf|32|1|2|512|0||uae0"},
        {u"ro,DH1:hdf\\data.hdf,0,0,0,512,-128,C:\\L\\FastFileSystem,ide1,0,extra",
         "1|DH1|hdf\\data.hdf|0|0|0|512|-128|C:\\L\\FastFileSystem|ide1"},
        {u"rw,DH2:\"C:\\My, Games\\x.hdf\",32,x", "0|DH2|C:\\My, Games\\x.hdf|32|-|-|-|-||"},
        {u"RO,DH3:d.hdf", "1|DH3|d.hdf|-|-|-|-|-||"},
        {u"rw,C:\\no-device.hdf,32", "0|C|\\no-device.hdf|32|-|-|-|-||"},
        {u"rw,DH0", "none"},
        {u"rw,DH0:,32", "none"},
        {u"", "none"},
    };
    const auto shown = [](const std::optional<std::int32_t>& number) {
        return number ? std::to_string(*number) : std::string("-");
    };
    for (const auto& row : rows) {
        const std::optional<HardfileLine> line = read_hardfile_line(row.value);
        const std::string fields = !line ? "none"
                                         : std::to_string(line->is_read_only) + "|" + printable(line->device_name) +
                                               "|" + printable(line->path) + "|" + shown(line->sectors) + "|" +
                                               shown(line->surfaces) + "|" + shown(line->reserved) + "|" +
                                               shown(line->block_size) + "|" + shown(line->boot_priority) + "|" +
                                               printable(line->file_system) + "|" + printable(line->controller);
        EXPECT_EQ(fields, row.fields) << printable(row.value);
    }
}

TEST(DriveLines, ReadsFolderLines) {
    const struct {
        std::u16string_view value;
        const char* fields; // ro|device|volume|path|bootpri
    } rows[] = {
        {u"rw,DH0:System:C:\\Amiga\\System,5", "0|DH0|System|C:\\Amiga\\System|5"},
        {u"ro,DH1::Work,", "1|DH1||Work|-"},
        {u"rw,DH2:Name:\"C:\\a,b\",-1,more", "0|DH2|Name|C:\\a,b|-1"},
        {u"rw,DH0:System", "none"},
        {u"rw,DH0:System:", "none"},
    };
    for (const auto& row : rows) {
        const std::optional<FolderLine> line = read_folder_line(row.value);
        const std::string fields = !line ? "none"
                                         : std::to_string(line->is_read_only) + "|" + printable(line->device_name) +
                                               "|" + printable(line->volume_name) + "|" + printable(line->path) + "|" +
                                               (line->boot_priority ? std::to_string(*line->boot_priority) : "-");
        EXPECT_EQ(fields, row.fields) << printable(row.value);
    }
}

} // namespace
} // namespace kq::content
