// Auto-configuration of catalogs that list loose media, built by the tests from real images:
// the model chosen by the boot medium (classes, dates and their bounds, a CD's label, the
// catalog's year), the boot medium moved first, CUE sheets and their ISO images folded, fixed
// models, the system boot disk, floppy drives and ports.

#include "content/auto_configuration.h"
#include "manifest/xml_parser.h"
#include "module/status.h"
#include "tests/support/amiga_images.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <string>

namespace kq::content {
namespace {

using test::as_string;

std::string utf8(std::u16string_view text) { return {text.begin(), text.end()}; } // ASCII paths only

class AutoConfiguration : public ::testing::Test {
protected:
    AutoConfiguration() {
        write(u"noise.adf", std::string(901120, '\x5A'));
        write(u"old.adf", as_string(test::floppy_image({.created = {4018, 0, 0}}))); // 1989-01-01
        write(u"new.adf", as_string(test::floppy_image()));                          // 2024
        write(u"data.adf", as_string(test::floppy_image({.boot_checksum = false})));
        write(u"custom.adf", as_string(test::floppy_image(
                                 {.first_long = 0x12345678, .boot_code = "custom boot code", .root = false})));
        write(u"ffs-intl.adf", as_string(test::floppy_image({.first_long = 0x444F5303})));
        write(u"work.hdf", as_string(test::amiga_volume(2048, "Work", {16000, 0, 0})));
        write(u"plain.hdf", std::string(1 << 20, '\x5A'));
        write(u"game.iso", as_string(test::iso_image({.volume = "GAME", .created = "2006010516501900"})));
        write(u"game.cue", "FILE \"game.iso\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n");
    }

    void write(std::u16string_view name, const std::string& content) { folder_.create_file(name, content); }

    // A catalog listing the media ("kind:file" each) with an optional configuration and year.
    std::u16string catalog(std::initializer_list<std::string> media, const std::string& system = {},
                           const std::string& year = {}) const {
        std::string text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<xadml><catalog><application>"
                           "<description><title>Loose</title>" +
                           (year.empty() ? "" : "<year>" + year + "</year>") + "</description>";
        if (!system.empty()) text += "<configuration>" + system + "<video>ntsc</video></configuration>";
        text += "<media>";
        for (const std::string& medium : media) {
            const std::string kind = medium.substr(0, medium.find(':')), name = medium.substr(kind.size() + 1);
            const std::u16string path = folder_.path(std::u16string(name.begin(), name.end()));
            text += "<" + kind + ">" + (name.empty() ? "" : utf8(path)) + "</" + kind + ">";
        }
        text += "</media></application></catalog></xadml>";
        return {text.begin(), text.end()};
    }

    // The completed document, the test folder shown as "F\"; "(none)" when none was written.
    std::string configured(const std::u16string& catalog_text, HResult expected = status::ok) const {
        std::optional<std::string> xml;
        EXPECT_EQ(auto_configure(catalog_text, media_layer_analyser(), xml), expected);
        if (!xml) return "(none)";
        std::string text = *xml;
        const std::string folder = utf8(folder_.path()) + "\\";
        for (std::size_t at; (at = text.find(folder)) != std::string::npos;) text.replace(at, folder.size(), "F\\");
        return text;
    }

    test::TempFolder folder_;
};

// The children of the document's configuration, then " / ", then those of its media; each as
// written, without its line's indentation.
std::string sections(const std::string& xml) {
    std::string out;
    for (const std::string name : {"configuration", "media"}) {
        const std::size_t open = xml.find("\t\t\t<" + name + ">\r\n"), close = xml.find("\t\t\t</" + name + ">");
        if (open == std::string::npos || close == std::string::npos) return "(missing " + name + ")";
        for (std::size_t at = xml.find('\n', open) + 1; at < close; at = xml.find('\n', at) + 1)
            out += xml.substr(at + 4, xml.find('\r', at) - at - 4) + " ";
        if (name == std::string("configuration")) out += "/ ";
    }
    return out;
}

const std::string kPorts = "<peripheral unit=\"0\">input-mouse</peripheral> "
                           "<peripheral unit=\"1\">input-joystick</peripheral> ";
const std::string kJoystick0 = "<peripheral unit=\"0\">input-joystick</peripheral> ";
const std::string kA500 = "<system>a-500</system> ",
                  kA1200 = "<system>a-1200</system> <ram type=\"fast\">8388608</ram> ";
std::string floppies(std::initializer_list<const char*> names) {
    std::string out;
    for (const char* name : names) out += std::string("<floppy>F\\") + name + "</floppy> ";
    return out;
}
std::string drives(std::initializer_list<int> units) {
    std::string out;
    for (const int unit : units)
        out += "<peripheral type=\"dd\" unit=\"" + std::to_string(unit) + "\">floppy</peripheral> ";
    return out;
}

TEST_F(AutoConfiguration, WritesTheWholeDocument) {
    EXPECT_EQ(
        configured(catalog({"floppy:old.adf"}, {}, "1988")),
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<xadml>\r\n\t<catalog>\r\n\t\t<application>\r\n"
        "\t\t\t<description>\r\n\t\t\t\t<title>Loose</title>\r\n\t\t\t\t<year>1988</year>\r\n\t\t\t</description>\r\n"
        "\t\t\t<configuration>\r\n\t\t\t\t<system>a-500</system>\r\n"
        "\t\t\t\t<peripheral unit=\"0\">input-mouse</peripheral>\r\n"
        "\t\t\t\t<peripheral unit=\"1\">input-joystick</peripheral>\r\n\t\t\t</configuration>\r\n"
        "\t\t\t<media>\r\n\t\t\t\t<floppy>F\\old.adf</floppy>\r\n\t\t\t</media>\r\n\t\t</application>\r\n"
        "\t</catalog>\r\n</xadml>\r\n");
}

TEST_F(AutoConfiguration, FloppiesAndHardDisksChooseTheModelAndBoot) {
    const std::string system_floppy = "<boot type=\"adf\" readonly=\"true\">134</boot> ";
    const struct {
        const char* what;
        std::u16string catalog;
        std::string expected;
    } rows[] = {
        {"unreadable: the system floppy boots", catalog({"floppy:noise.adf"}),
         kA500 + system_floppy + kPorts + "/ " + floppies({"noise.adf"})},
        {"AmigaDOS before 1993", catalog({"floppy:old.adf"}), kA500 + kPorts + "/ " + floppies({"old.adf"})},
        {"AmigaDOS from 1993 on", catalog({"floppy:new.adf"}), kA1200 + kPorts + "/ " + floppies({"new.adf"})},
        {"the catalog's year comes first", catalog({"floppy:new.adf"}, {}, "1992"),
         kA500 + kPorts + "/ " + floppies({"new.adf"})},
        {"a year that is no date is dropped", catalog({"floppy:new.adf"}, {}, "1234"),
         kA1200 + kPorts + "/ " + floppies({"new.adf"})},
        {"a later file system", catalog({"floppy:ffs-intl.adf"}, {}, "1987"),
         kA1200 + kPorts + "/ " + floppies({"ffs-intl.adf"})},
        {"custom boot code leaves the model", catalog({"floppy:custom.adf"}, {}, "1995"),
         kA500 + kPorts + "/ " + floppies({"custom.adf"})},
        {"the boot medium goes first", catalog({"floppy:noise.adf", "floppy:data.adf", "floppy:old.adf"}),
         kA500 + kPorts + "/ " + floppies({"old.adf", "noise.adf", "data.adf"})},
        {"a bootable hard disk", catalog({"floppy:noise.adf", "harddrive:work.hdf"}),
         kA1200 + kPorts + "/ <harddrive>F\\work.hdf</harddrive> " + floppies({"noise.adf"})},
        {"else the first hard disk", catalog({"floppy:noise.adf", "harddrive:plain.hdf"}),
         kA500 + kPorts + "/ <harddrive>F\\plain.hdf</harddrive> " + floppies({"noise.adf"})},
        {"a hard disk first boots", catalog({"harddrive:plain.hdf", "floppy:new.adf"}),
         kA500 + kPorts + "/ <harddrive>F\\plain.hdf</harddrive> " + floppies({"new.adf"})},
        {"a fixed model stays", catalog({"floppy:noise.adf", "floppy:new.adf"}, "<system>a-600</system>"),
         "<system>a-600</system> " + kPorts + "/ " + floppies({"new.adf", "noise.adf"})},
        {"a weak model is replaced", catalog({"floppy:new.adf"}, "<system weak=\"TRUE\">a-600</system>"),
         kA1200 + kPorts + "/ " + floppies({"new.adf"})},
        {"an A1200 without boot medium boots the system hard disk",
         catalog({"floppy:noise.adf", "floppy:data.adf", "floppy:noise.adf"}, "<system>a-1200</system>"),
         kA1200 + "<boot type=\"hdf\" readonly=\"true\">311</boot> " + drives({1, 2}) + kPorts + "/ " +
             floppies({"noise.adf", "data.adf", "noise.adf"})},
        {"an A1200 has four floppy drives at most",
         catalog({"floppy:noise.adf", "floppy:data.adf", "floppy:noise.adf", "floppy:data.adf", "floppy:old.adf"},
                 "<system>a-1200</system>"),
         kA1200 + drives({1, 2, 3}) + kPorts + "/ " +
             floppies({"old.adf", "noise.adf", "data.adf", "noise.adf", "data.adf"})},
        {"a CDTV with a floppy drive", catalog({"floppy:noise.adf"}, "<system>A-CDTV</system>"),
         "<system>A-CDTV</system> " + drives({0}) + kJoystick0 + "/ " + floppies({"noise.adf"})},
        {"empty entries and unknown kinds", catalog({"floppy:", "disk:noise.adf"}),
         kA500 + system_floppy + kPorts + "/ " + floppies({"noise.adf"})},
    };
    for (const auto& row : rows) EXPECT_EQ(sections(configured(row.catalog)), row.expected) << row.what;
}

TEST_F(AutoConfiguration, DiscsChooseBetweenCd32AndCdtv) {
    const struct {
        const char *volume, *created, *year, *model;
    } rows[] = {
        {"GAME", "1993060100000000", "", "a-cdtv"}, // the last day's first moment
        {"GAME", "1993060100000001", "", "a-cd32"},
        {"GAME", "1991010100000000", "", "a-cdtv"}, // the first day's first moment
        {"GAME", "1990123123595999", "", "a-cd32"},
        {"CD32", "1992010100000000", "", "a-cd32"},     // the label wins over the date
        {"GAME", "2006010516501900", "1992", "a-cdtv"}, // the year wins over the disc
        {"GAME", "0000000000000000", "", "a-cd32"},     // no date at all
    };
    for (const auto& row : rows) {
        write(u"disc.iso", as_string(test::iso_image({.volume = row.volume, .created = row.created})));
        EXPECT_EQ(sections(configured(catalog({"cd:disc.iso"}, {}, row.year))),
                  "<system>" + std::string(row.model) + "</system> " + kJoystick0 + "/ <cd>F\\disc.iso</cd> ")
            << row.created;
    }
}

TEST_F(AutoConfiguration, CueSheetsTakeTheirImageAlong) {
    const std::string cd32 = "<system>a-cd32</system> " + kJoystick0 + "/ <cd>F\\game.cue</cd> ";
    EXPECT_EQ(sections(configured(catalog({"cd:game.cue", "cd:game.iso"}))), cd32);
    EXPECT_EQ(sections(configured(catalog({"cd:game.iso", "cd:game.cue"}))), cd32) << "in either order";
    write(u"other.iso", as_string(test::iso_image({.volume = "OTHER", .created = "1992010100000000"})));
    EXPECT_EQ(sections(configured(catalog({"cd:other.iso", "cd:game.cue"}))),
              "<system>a-cdtv</system> " + kJoystick0 + "/ <cd>F\\other.iso</cd> <cd>F\\game.cue</cd> ")
        << "an image that the sheet does not name stays";
    EXPECT_EQ(sections(configured(catalog({"floppy:noise.adf", "cd:game.cue", "cd:game.iso"}))),
              "<system>a-cd32</system> " + drives({0}) + kJoystick0 + "/ <cd>F\\game.cue</cd> " +
                  floppies({"noise.adf"}))
        << "a disc boots before floppies";
}

TEST_F(AutoConfiguration, NothingToConfigureAndFailures) {
    const std::pair<std::u16string, HResult> rows[] = {
        {u"<xadml><catalog><application/></catalog></xadml>", status::ok},
        {catalog({"floppy:", "cd:"}), status::ok},
        {catalog({"floppy:missing.adf"}), status::failed},
        {u"<xadml><catalog>", manifest::kMalformedDocument},
        {std::u16string(u"<xadml>\xD800</xadml>"), manifest::kMalformedDocument},
    };
    for (const auto& [text, expected] : rows) EXPECT_EQ(configured(text, expected), "(none)");
    std::map<std::u16string, media::AnalysisFailure> failures;
    const MediumAnalyser analyser = [&](std::u16string_view path, media::MediumAnalysis& analysis) {
        analysis.analysis_class = media::AnalysisClass::unknown;
        const auto found = failures.find(std::u16string(path));
        return found == failures.end() ? media::AnalysisFailure::none : found->second;
    };
    const std::u16string text = catalog({"floppy:noise.adf", "floppy:game.ipf"});
    std::optional<std::string> xml;
    failures[folder_.path(u"game.ipf")] = media::AnalysisFailure::ipf_library_missing;
    EXPECT_EQ(auto_configure(text, analyser, xml), kIpfLibraryMissing);
    EXPECT_FALSE(xml);
    failures[folder_.path(u"game.ipf")] = media::AnalysisFailure::unreadable;
    EXPECT_EQ(auto_configure(text, analyser, xml), status::failed);
    EXPECT_FALSE(xml);
}

TEST(MediaKind, ByExtensionAlone) {
    using media::MediumKind;
    const std::pair<std::u16string_view, MediumKind> rows[] = {
        {u"C:\\a.hdf", MediumKind::hard_disk},  {u"C:\\a.HDZ", MediumKind::hard_disk}, {u"C:\\a.iso", MediumKind::cd},
        {u"C:\\a.Cue", MediumKind::cd},         {u"C:\\a.adf", MediumKind::floppy},    {u"C:\\hdf", MediumKind::floppy},
        {u"C:\\a.hdf.adz", MediumKind::floppy}, {u"C:\\a.iso\\b", MediumKind::floppy}, {u"C:\\a.", MediumKind::floppy},
    };
    for (const auto& [path, kind] : rows) EXPECT_EQ(media_kind_of(path), kind) << utf8(path);
}

} // namespace
} // namespace kq::content
