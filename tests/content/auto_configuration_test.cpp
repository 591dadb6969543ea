// Auto-configuration of catalogs that list loose media, built by the tests from real images:
// the model chosen by the boot medium (classes, dates and their bounds, a CD's label, the
// catalog's year), the boot medium moved first, CUE sheets and their ISO images folded, fixed
// models, the system boot disk, floppy drives and ports; the whole documents are compared.

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

using test::FloppySpec;
using test::IsoSpec;

std::string utf8(std::u16string_view text) { return {text.begin(), text.end()}; } // ASCII paths only

class AutoConfiguration : public ::testing::Test {
protected:
    AutoConfiguration() {
        FloppySpec custom{.first_long = 0x12345678, .boot_code = "custom boot code", .root = false};
        FloppySpec old_dos{.created = {4018, 0, 0}}; // 1989-01-01
        FloppySpec not_bootable{.boot_checksum = false};
        FloppySpec later{.first_long = 0x444F5303};
        write(u"noise.adf", std::string(901120, '\x5A'));
        write(u"old.adf", test::as_string(test::floppy_image(old_dos)));
        write(u"new.adf", test::as_string(test::floppy_image())); // 2024
        write(u"data.adf", test::as_string(test::floppy_image(not_bootable)));
        write(u"custom.adf", test::as_string(test::floppy_image(custom)));
        write(u"ffs-intl.adf", test::as_string(test::floppy_image(later)));
        write(u"work.hdf", test::as_string(test::amiga_volume(2048, "Work", {16000, 0, 0})));
        write(u"plain.hdf", std::string(1 << 20, '\x5A'));
        write(u"game.iso", test::as_string(test::iso_image({.volume = "GAME", .created = "2006010516501900"})));
        write(u"game.cue", "FILE \"game.iso\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n");
    }

    void write(std::u16string_view name, const std::string& content) { folder_.create_file(name, content); }
    std::string path(std::u16string_view name) const { return utf8(folder_.path(name)); }

    // A catalog listing the media (element name, file) with an optional model and year.
    std::u16string catalog(std::initializer_list<std::pair<const char*, std::u16string_view>> media,
                           const std::string& system = {}, const std::string& year = {}) const {
        std::string text = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<xadml><catalog><application>";
        text +=
            "<description><title>Loose</title>" + (year.empty() ? "" : "<year>" + year + "</year>") + "</description>";
        if (!system.empty()) text += "<configuration>" + system + "<video>ntsc</video></configuration>";
        text += "<media>";
        for (const auto& [element, name] : media)
            text += std::string("<") + element + ">" + (name.empty() ? "" : path(name)) + "</" + element + ">";
        text += "</media></application></catalog></xadml>";
        return {text.begin(), text.end()};
    }

    // The completed document, with the test folder's path shown as "F\".
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

// The document around the configuration and media that auto-configuration writes; each line
// is an element inside them.
std::string document(std::initializer_list<std::string> configuration, std::initializer_list<std::string> media,
                     const std::string& year = {}) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xadml>\n\t<catalog>\n\t\t<application>\n"
                       "\t\t\t<description>\n\t\t\t\t<title>Loose</title>\n";
    if (!year.empty()) text += "\t\t\t\t<year>" + year + "</year>\n";
    text += "\t\t\t</description>\n\t\t\t<configuration>\n";
    for (const std::string& line : configuration) text += "\t\t\t\t" + line + "\n";
    text += "\t\t\t</configuration>\n\t\t\t<media>\n";
    for (const std::string& line : media) text += "\t\t\t\t" + line + "\n";
    text += "\t\t\t</media>\n\t\t</application>\n\t</catalog>\n</xadml>\n";
    // The writer starts with a byte-order mark and ends its lines with CR LF.
    std::string written = "\xEF\xBB\xBF";
    for (const char c : text) written += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return written;
}

const std::string kMouse = "<peripheral unit=\"0\">input-mouse</peripheral>";
const std::string kJoystick1 = "<peripheral unit=\"1\">input-joystick</peripheral>";
const std::string kJoystick0 = "<peripheral unit=\"0\">input-joystick</peripheral>";
const std::string kA1200Memory = "<ram type=\"fast\">8388608</ram>";

std::string system(const std::string& model) { return "<system>" + model + "</system>"; }
std::string floppy(const std::string& name) { return "<floppy>F\\" + name + "</floppy>"; }
std::string floppy_drive(int unit) {
    return "<peripheral type=\"dd\" unit=\"" + std::to_string(unit) + "\">floppy</peripheral>";
}

TEST_F(AutoConfiguration, FloppiesChooseTheModelAndBoot) {
    const struct {
        const char* what;
        std::u16string catalog;
        std::string expected;
    } rows[] = {
        {"unreadable: the system floppy boots", catalog({{"floppy", u"noise.adf"}}),
         document({system("a-500"), "<boot type=\"adf\" readonly=\"true\">134</boot>", kMouse, kJoystick1},
                  {floppy("noise.adf")})},
        {"AmigaDOS before 1993", catalog({{"floppy", u"old.adf"}}),
         document({system("a-500"), kMouse, kJoystick1}, {floppy("old.adf")})},
        {"AmigaDOS from 1993 on", catalog({{"floppy", u"new.adf"}}),
         document({system("a-1200"), kA1200Memory, kMouse, kJoystick1}, {floppy("new.adf")})},
        {"the catalog's year comes first", catalog({{"floppy", u"new.adf"}}, {}, "1992"),
         document({system("a-500"), kMouse, kJoystick1}, {floppy("new.adf")}, "1992")},
        {"a year that is no date is dropped", catalog({{"floppy", u"new.adf"}}, {}, "1234"),
         document({system("a-1200"), kA1200Memory, kMouse, kJoystick1}, {floppy("new.adf")}, "1234")},
        {"a later file system", catalog({{"floppy", u"ffs-intl.adf"}}, {}, "1987"),
         document({system("a-1200"), kA1200Memory, kMouse, kJoystick1}, {floppy("ffs-intl.adf")}, "1987")},
        {"custom boot code leaves the model", catalog({{"floppy", u"custom.adf"}}, {}, "1995"),
         document({system("a-500"), kMouse, kJoystick1}, {floppy("custom.adf")}, "1995")},
        {"the boot medium goes first",
         catalog({{"floppy", u"noise.adf"}, {"floppy", u"data.adf"}, {"floppy", u"old.adf"}}),
         document({system("a-500"), kMouse, kJoystick1}, {floppy("old.adf"), floppy("noise.adf"), floppy("data.adf")})},
        {"a bootable hard disk", catalog({{"floppy", u"noise.adf"}, {"harddrive", u"work.hdf"}}),
         document({system("a-1200"), kA1200Memory, kMouse, kJoystick1},
                  {"<harddrive>F\\work.hdf</harddrive>", floppy("noise.adf")})},
        {"else the first hard disk", catalog({{"floppy", u"noise.adf"}, {"harddrive", u"plain.hdf"}}),
         document({system("a-500"), kMouse, kJoystick1}, {"<harddrive>F\\plain.hdf</harddrive>", floppy("noise.adf")})},
        {"a hard disk first boots", catalog({{"harddrive", u"plain.hdf"}, {"floppy", u"new.adf"}}),
         document({system("a-500"), kMouse, kJoystick1}, {"<harddrive>F\\plain.hdf</harddrive>", floppy("new.adf")})},
        {"a fixed model stays", catalog({{"floppy", u"noise.adf"}, {"floppy", u"new.adf"}}, "<system>a-600</system>"),
         document({system("a-600"), kMouse, kJoystick1}, {floppy("new.adf"), floppy("noise.adf")})},
        {"a weak model is replaced", catalog({{"floppy", u"new.adf"}}, "<system weak=\"TRUE\">a-600</system>"),
         document({system("a-1200"), kA1200Memory, kMouse, kJoystick1}, {floppy("new.adf")})},
        {"an A1200 without boot medium boots the system hard disk",
         catalog({{"floppy", u"noise.adf"}, {"floppy", u"data.adf"}, {"floppy", u"noise.adf"}},
                 "<system>a-1200</system>"),
         document({system("a-1200"), kA1200Memory, "<boot type=\"hdf\" readonly=\"true\">311</boot>", floppy_drive(1),
                   floppy_drive(2), kMouse, kJoystick1},
                  {floppy("noise.adf"), floppy("data.adf"), floppy("noise.adf")})},
        {"an A1200 has four floppy drives at most",
         catalog({{"floppy", u"noise.adf"},
                  {"floppy", u"data.adf"},
                  {"floppy", u"noise.adf"},
                  {"floppy", u"data.adf"},
                  {"floppy", u"old.adf"}},
                 "<system>a-1200</system>"),
         document(
             {system("a-1200"), kA1200Memory, floppy_drive(1), floppy_drive(2), floppy_drive(3), kMouse, kJoystick1},
             {floppy("old.adf"), floppy("noise.adf"), floppy("data.adf"), floppy("noise.adf"), floppy("data.adf")})},
        {"a CDTV with a floppy drive", catalog({{"floppy", u"noise.adf"}}, "<system>A-CDTV</system>"),
         document({system("A-CDTV"), floppy_drive(0), kJoystick0}, {floppy("noise.adf")})},
        {"empty entries and unknown kinds", catalog({{"floppy", u""}, {"disk", u"noise.adf"}}),
         document({system("a-500"), "<boot type=\"adf\" readonly=\"true\">134</boot>", kMouse, kJoystick1},
                  {floppy("noise.adf")})},
    };
    for (const auto& row : rows) EXPECT_EQ(configured(row.catalog), row.expected) << row.what;
}

TEST_F(AutoConfiguration, DiscsChooseBetweenCd32AndCdtv) {
    const struct {
        const char* what;
        IsoSpec disc;
        std::string year, model;
    } rows[] = {
        {"the last day's first moment", {.volume = "GAME", .created = "1993060100000000"}, "", "a-cdtv"},
        {"a moment later", {.volume = "GAME", .created = "1993060100000001"}, "", "a-cd32"},
        {"the first day's first moment", {.volume = "GAME", .created = "1991010100000000"}, "", "a-cdtv"},
        {"the day before", {.volume = "GAME", .created = "1990123123595999"}, "", "a-cd32"},
        {"the label wins over the date", {.volume = "CD32", .created = "1992010100000000"}, "", "a-cd32"},
        {"the year wins over the disc", {.volume = "GAME", .created = "2006010516501900"}, "1992", "a-cdtv"},
        {"no date at all", {.volume = "GAME", .created = "0000000000000000"}, "", "a-cd32"},
    };
    for (const auto& row : rows) {
        write(u"disc.iso", test::as_string(test::iso_image(row.disc)));
        EXPECT_EQ(configured(catalog({{"cd", u"disc.iso"}}, {}, row.year)),
                  document({system(row.model), kJoystick0}, {"<cd>F\\disc.iso</cd>"}, row.year))
            << row.what;
    }
}

TEST_F(AutoConfiguration, CueSheetsTakeTheirImageAlong) {
    const std::string cd32 = document({system("a-cd32"), kJoystick0}, {"<cd>F\\game.cue</cd>"});
    EXPECT_EQ(configured(catalog({{"cd", u"game.cue"}, {"cd", u"game.iso"}})), cd32);
    EXPECT_EQ(configured(catalog({{"cd", u"game.iso"}, {"cd", u"game.cue"}})), cd32) << "in either order";
    write(u"other.iso", test::as_string(test::iso_image({.volume = "OTHER", .created = "1992010100000000"})));
    EXPECT_EQ(configured(catalog({{"cd", u"other.iso"}, {"cd", u"game.cue"}})),
              document({system("a-cdtv"), kJoystick0}, {"<cd>F\\other.iso</cd>", "<cd>F\\game.cue</cd>"}))
        << "an image that the sheet does not name stays";
    EXPECT_EQ(configured(catalog({{"floppy", u"noise.adf"}, {"cd", u"game.cue"}, {"cd", u"game.iso"}})),
              document({system("a-cd32"), floppy_drive(0), kJoystick0}, {"<cd>F\\game.cue</cd>", floppy("noise.adf")}))
        << "a disc boots before floppies";
}

TEST_F(AutoConfiguration, NothingToConfigureAndFailures) {
    const struct {
        const char* what;
        std::u16string catalog;
        HResult expected;
    } rows[] = {
        {"no media element", u"<xadml><catalog><application/></catalog></xadml>", status::ok},
        {"only empty media", catalog({{"floppy", u""}, {"cd", u""}}), status::ok},
        {"a missing file", catalog({{"floppy", u"missing.adf"}}), status::failed},
        {"not XML", u"<xadml><catalog>", manifest::kMalformedDocument},
        {"not UTF-16", std::u16string(u"<xadml>\xD800</xadml>"), manifest::kMalformedDocument},
    };
    for (const auto& row : rows) EXPECT_EQ(configured(row.catalog, row.expected), "(none)") << row.what;
}

TEST_F(AutoConfiguration, AnalysisFailuresStopTheCall) {
    std::map<std::u16string, media::AnalysisFailure> failures;
    const MediumAnalyser analyser = [&](std::u16string_view path, media::MediumAnalysis& analysis) {
        analysis.analysis_class = media::AnalysisClass::unknown;
        const auto found = failures.find(std::u16string(path));
        return found == failures.end() ? media::AnalysisFailure::none : found->second;
    };
    const std::u16string text = catalog({{"floppy", u"noise.adf"}, {"floppy", u"game.ipf"}});
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
    const struct {
        std::u16string_view path;
        MediumKind kind;
    } rows[] = {
        {u"C:\\a.hdf", MediumKind::hard_disk},  {u"C:\\a.HDZ", MediumKind::hard_disk}, {u"C:\\a.iso", MediumKind::cd},
        {u"C:\\a.Cue", MediumKind::cd},         {u"C:\\a.adf", MediumKind::floppy},    {u"C:\\hdf", MediumKind::floppy},
        {u"C:\\a.hdf.adz", MediumKind::floppy}, {u"C:\\a.iso\\b", MediumKind::floppy}, {u"C:\\a.", MediumKind::floppy},
    };
    for (const auto& row : rows) EXPECT_EQ(media_kind_of(row.path), row.kind) << utf8(row.path);
}

} // namespace
} // namespace kq::content
