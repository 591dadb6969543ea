// Manifest documents: lookups by path and in the configuration, the setters, the writer's two
// encodings and layouts, and hostile or broken documents from downloaded packages.

#include "manifest/manifest_document.h"
#include "tests/support/manifest_text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace kq::manifest {
namespace {

namespace fs = std::filesystem;

constexpr const char* kManifest = R"(<?xml version="1.0" encoding="UTF-8"?>
<kq9>
  <application user-edited="true">
    text
    <configuration>
      <system>a-1200</system>
      <rom>310</rom>
      <rom type="System">310-a1200</rom>
      <rom type="">empty-type</rom>
      <peripheral>  keyboard
</peripheral>
      <peripheral multitap=" true" unit="2">input-joypad</peripheral>
      <peripheral unit="01">input-joystick</peripheral>
      <peripheral unit="0">input-virtualbuttons</peripheral>
      <peripheral unit="0" buttons="pad">INPUT-MOUSE</peripheral>
      <peripheral multitap="TRUE" unit="0">input-gamepad</peripheral>
      <peripheral type="parallel">input-multitap</peripheral>
      <buttons id="other"/>
      <buttons id="PAD"><button/></buttons>
      <peripheral priority="12abc" empty="">blank-attrs</peripheral>
    </configuration>
    <media>
      <floppy priority="-3">Game.adf</floppy>
      <harddrive root="shared">system.hdf</harddrive>
      <floppy root="embedded">disk2.adf</floppy>
      <cd>  </cd>
    </media>
  </application>
</kq9>)";

class ManifestLookup : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(document_.load(kManifest), status::ok); }
    ManifestDocument document_;
};

std::u16string text_of(Element element) { return element ? element_text(element).value_or(u"<no text>") : u"<none>"; }

TEST_F(ManifestLookup, PathsTextsAndAttributes) {
    const std::pair<std::string_view, HResult> rows[] = {{"kq9/application/configuration/system", status::ok},
                                                         {"kq9/application/text", kElementNotFound},
                                                         {"kq9/Application", kElementNotFound},
                                                         {"kq9/application/configuration/system/x", kElementNotFound},
                                                         {"kq9//application", kElementNotFound},
                                                         {"", status::invalid_argument}};
    for (const auto& [path, status] : rows) {
        Element element = nullptr;
        EXPECT_EQ(document_.find_element_by_path(path, element), status) << path;
        EXPECT_EQ(text_of(element), status == status::ok ? u"a-1200" : u"<none>") << path;
    }
    Element element = nullptr;
    EXPECT_EQ(ManifestDocument().find_element_by_path("kq9", element), kDocumentEmpty);
    Text text;
    EXPECT_EQ(document_.get_path_text("kq9/application/media/cd", text), status::failed);
    EXPECT_FALSE(text);
    EXPECT_EQ(document_.get_path_text("kq9/nothing", text), kElementNotFound);
    EXPECT_EQ(document_.get_path_attribute("kq9/application", "user-edited", text), status::ok);
    EXPECT_EQ(text, u"true");
    EXPECT_EQ(document_.get_path_attribute("kq9/application", "missing", text), kElementNotFound);
    // Attributes are not trimmed; empty ones exist without text.
    Element blank = document_.find_peripheral(u"blank-attrs");
    EXPECT_TRUE(get_attribute_text(blank, "empty", text));
    EXPECT_FALSE(text);
    EXPECT_FALSE(get_attribute_text(blank, "absent", text));
    EXPECT_EQ(get_priority(blank), 12);
    EXPECT_EQ(get_priority(document_.find_medium(u"game.adf", std::nullopt)), -3);
    EXPECT_EQ(get_priority(document_.configuration()), std::nullopt);
}

TEST_F(ManifestLookup, ConfigurationLookupsAndTheirTraps) {
    EXPECT_EQ(text_of(document_.find_peripheral(u"KEYBOARD")), u"keyboard") << "blank-padded text";
    Text type;
    EXPECT_EQ(document_.find_multitap(&type), document_.find_peripheral(u"input-multitap"));
    EXPECT_EQ(type, u"parallel");
    // Unit "01" is unit 1; multitap=" true" is not "true", so that port is a main port.
    Text kind;
    Element main_1 = document_.find_input_port(1, false, &kind);
    EXPECT_EQ(kind, u"input-joystick");
    EXPECT_EQ(main_1, document_.find_peripheral_unit(u"input-joystick", 1));
    document_.find_input_port(2, false, &kind);
    EXPECT_EQ(kind, u"input-joypad");
    EXPECT_EQ(document_.find_input_port(2, true), nullptr);
    Element main_0 = document_.find_input_port(0, false, &kind);
    EXPECT_EQ(kind, u"INPUT-MOUSE") << "virtual buttons are not a port";
    EXPECT_EQ(document_.find_input_port(0, true, &kind), document_.find_peripheral(u"input-gamepad"));
    EXPECT_EQ(document_.find_input_port(1, true, &kind), nullptr);
    EXPECT_FALSE(kind);
    EXPECT_EQ(document_.find_peripheral_unit(u"input-joystick", 2), nullptr);
    const Element configuration = document_.configuration();
    EXPECT_EQ(document_.find_button_set(main_0),
              find_child_element("buttons", configuration, find_child_element("buttons", configuration)));
    EXPECT_EQ(document_.find_button_set(main_1), nullptr);
    // rom without "type" (or with an empty one) versus rom type="system".
    EXPECT_EQ(text_of(document_.find_typed_element("rom", u"system")), u"310-a1200");
    EXPECT_EQ(text_of(document_.find_typed_element("rom", std::nullopt)), u"310");
    EXPECT_EQ(document_.find_typed_element("rom", u"kickstart"), nullptr);
}

TEST_F(ManifestLookup, MediaChildrenAndMatches) {
    const struct {
        std::optional<std::u16string_view> file_name, root;
        std::u16string_view found;
    } media[] = {
        {u"GAME.ADF", std::nullopt, u"Game.adf"}, // no "root" is embedded
        {u"game.adf", u"embedded", u"Game.adf"},    {u"disk2.adf", std::nullopt, u"disk2.adf"},
        {u"system.hdf", std::nullopt, u"<none>"},   {u"anything", u"shared", u"system.hdf"}, // shared: by root alone
        {std::nullopt, std::nullopt, u"<no text>"}, {u"game.adf", u"other", u"<none>"},
    };
    for (const auto& row : media) EXPECT_EQ(text_of(document_.find_medium(row.file_name, row.root)), row.found);

    Element parent = document_.find_element_by_path("kq9/application/media");
    std::string names;
    for (Element e = find_child_element("", parent); e; e = find_child_element("", parent, e))
        names += std::string(element_name(e)) + " ";
    EXPECT_EQ(names, "floppy harddrive floppy cd ");
    EXPECT_EQ(text_of(find_child_element("floppy", parent, find_child_element("floppy", parent))), u"disk2.adf");
    Element shared = find_child_element("harddrive", parent);
    const struct {
        const char *name, *attribute;
        std::u16string_view expected;
        bool matches;
    } matches[] = {{"floppy", nullptr, u"", false},       {nullptr, "root", u"SHARED", true},
                   {nullptr, "root", u"embedded", false}, {nullptr, "missing", u"", true},
                   {nullptr, "missing", u"x", false},     {"harddrive", "root", u"shared", true}};
    for (const auto& row : matches)
        EXPECT_EQ(match_element(shared, row.name, row.attribute, row.expected), row.matches)
            << (row.name ? row.name : "-") << " " << (row.attribute ? row.attribute : "-");
}

std::string saved(const ManifestDocument& document, Encoding encoding, Layout layout = Layout::indented) {
    std::string out;
    EXPECT_EQ(document.save(encoding, &out, layout), status::ok);
    return out;
}

// Each row edits a fresh copy of a small manifest and states the configuration it leaves.
TEST(ManifestEditing, SettersCreateChangeAndRemoveTheirElements) {
    const std::string fpu = "<peripheral type=\"68881\">fpu</peripheral>", ram = "<ram type=\"chip\">524288</ram>";
    using Edit = std::function<HResult(ManifestDocument&)>;
    const struct {
        Edit edit;
        HResult status;
        std::string configuration;
    } rows[] = {
        {[](auto& d) { return d.set_fpu(u"68882"); }, status::ok, "<peripheral type=\"68882\">fpu</peripheral>" + ram},
        {[](auto& d) { return d.set_network(2); }, status::ok,
         fpu + ram + "<peripheral type=\"a2065\">network</peripheral>"},
        {[](auto& d) { return d.set_network(4); }, status::invalid_argument, fpu + ram},
        {[](auto& d) { return d.set_scsi(5) == status::ok ? d.set_audio(1) : status::failed; }, status::ok,
         fpu + ram + "<peripheral type=\"wd33c93\">scsi</peripheral><peripheral type=\"fm801\">audio</peripheral>"},
        {[](auto& d) { return d.set_typed_element("ram", u"CHIP", u"1048576"); }, status::ok,
         fpu + "<ram type=\"chip\">1048576</ram>"},
        {[](auto& d) { return d.set_typed_element("ram", u"fast", u"8388608"); }, status::ok,
         fpu + ram + "<ram type=\"fast\">8388608</ram>"},
        {[](auto& d) { return d.set_typed_element("ram", u"chip", u""); }, status::ok, fpu},
        {[](auto& d) { return d.set_jit(true, u"a-1200"); }, status::ok,
         fpu + ram + "<peripheral fpu=\"true\" memory=\"8388608\">jit</peripheral>"},
        {[](auto& d) {
             return d.set_jit(true, u"a-aros") == status::ok ? d.set_jit(false, u"A-4XXX") : status::failed;
         },
         status::ok, fpu + ram + "<peripheral memory=\"0\">jit</peripheral>"},
        {[](auto& d) { return d.set_jit(true, u"a-500") == status::ok ? d.set_jit(false, u"a-500") : status::failed; },
         status::ok, fpu + ram},
        {[](auto& d) {
             Element element = d.find_typed_element("ram", u"chip");
             ManifestDocument::set_attribute(element, "note", u"a<b & \"c\"");
             return ManifestDocument::set_element_text(element, u"&amp; <x>");
         },
         status::ok, fpu + "<ram type=\"chip\" note=\"a&lt;b &amp; &quot;c&quot;\">&amp;amp; &lt;x&gt;</ram>"},
        {[](auto& d) { return d.set_path_attribute("kq9/application/configuration/ram", "type", u""); }, status::ok,
         fpu + "<ram>524288</ram>"},
        {[](auto& d) { return d.create_element("kq9/application/media", "floppy", u"x"); }, kElementNotFound,
         fpu + ram},
        {[](auto& d) { return d.set_keyboard(std::u16string_view(u"\xD800", 1)); }, status::invalid_argument,
         fpu + ram},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.configuration);
        ManifestDocument document;
        ASSERT_EQ(document.load(test::kq9_with_configuration(fpu + ram).c_str()), status::ok);
        EXPECT_EQ(row.edit(document), row.status);
        EXPECT_EQ(saved(document, Encoding::ascii, Layout::compact),
                  "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n" + test::kq9_with_configuration(row.configuration));
    }
    ManifestDocument document;
    ASSERT_EQ(document.load("<kq9><application/></kq9>"), status::ok);
    EXPECT_EQ(document.set_fpu(u"68882"), kElementNotFound);
    EXPECT_EQ(document.set_fpu(u""), status::ok) << "nothing to remove";
    EXPECT_EQ(ManifestDocument::set_attribute(nullptr, "a", u"b"), status::invalid_argument);
    EXPECT_EQ(ManifestDocument::set_element_text(nullptr, u"x"), status::invalid_argument);
    EXPECT_EQ(document.set_path_attribute("kq9/none", "a", u"b"), kElementNotFound);
}

// A DTD with an internal entity, comments, namespaces (default, prefixed, on attributes), an
// empty element, blank and mixed text, escapes, the apostrophe, a Latin-1 character and one
// outside the Basic Multilingual Plane. The prefixed element with content closes without its
// prefix, as the module's writer always has.
TEST(ManifestWriter, WritesBothEncodingsAndLayoutsByteForByte) {
    ManifestDocument document;
    ASSERT_EQ(document.load("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE kq9 [<!ENTITY pub \"Mervane &#38;amp; Co\">]>\n<!-- a package -->\n"
                            "<kq9 xmlns=\"urn:kq9\" xmlns:x=\"urn:extra\">\n  <application user-edited=\"true\">\n"
                            "    <!-- inside -->\n    <description x:lang=\"fr\">Caf\xC3\xA9 &amp; \"bar\" "
                            "&lt;it's&gt; \xF0\x9D\x91\x8E</description>\n    <publisher>&pub;</publisher>\n"
                            "    <empty/>\n    <blank>   </blank>\n    <mixed>  head  <b>bold</b>  tail  </mixed>\n"
                            "    <x:note x:a='it&apos;s'>hi</x:note>\n    <x:ext/>\n  </application>\n</kq9>\n"),
              status::ok);
    const auto body = [](const std::string& description) {
        return "<kq9 xmlns=\"urn:kq9\" xmlns:x=\"urn:extra\">\r\n\t<application user-edited=\"true\">\r\n"
               "\t\t<description x:lang=\"fr\">" +
               description +
               "</description>\r\n\t\t<publisher>Mervane &amp; Co</publisher>\r\n\t\t<empty/>\r\n"
               "\t\t<blank></blank>\r\n\t\t<mixed>\r\n\t\t\thead\r\n\t\t\t<b>bold</b>\r\ntail\t\t</mixed>\r\n"
               "\t\t<x:note x:a=\"it's\">hi</note>\r\n\t\t<x:ext/>\r\n\t</application>\r\n</kq9>\r\n";
    };
    EXPECT_EQ(saved(document, Encoding::ascii), "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n" +
                                                    body("Caf&#xE9; &amp; &quot;bar&quot; &lt;it's&gt; &#x1D44E;"));
    EXPECT_EQ(saved(document, Encoding::utf8),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n" +
                  body("Caf\xC3\xA9 &amp; &quot;bar&quot; &lt;it's&gt; \xF0\x9D\x91\x8E"));
    ASSERT_EQ(document.load("<a x=\"1\">\n  <b>t</b>\n  <c/>  tail </a>"), status::ok);
    EXPECT_EQ(saved(document, Encoding::ascii, Layout::compact),
              "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n<a x=\"1\"><b>t</b><c/>tail</a>");
    EXPECT_EQ(document.save(Encoding::ascii, nullptr), status::null_pointer);
    std::string out = "stale";
    EXPECT_EQ(document.save(static_cast<Encoding>(2), &out), status::invalid_argument);
    EXPECT_EQ(ManifestDocument().save(Encoding::utf8, &out), kDocumentEmpty);
    EXPECT_EQ(out, "");
}

// Hostile and broken documents: files that a manifest tries to pull in (a secret, and a DTD
// fragment that would define an entity if it were ever read), entity bombs, bad encodings and
// every cut of a valid document. A failed load leaves the document empty.
TEST(ManifestSafety, HostileAndBrokenDocuments) {
    const fs::path secret = fs::temp_directory_path() / "kq_manifest_secret.txt",
                   dtd_path = secret.parent_path() / "kq_manifest_secret.dtd";
    std::ofstream(secret, std::ios::binary) << "SECRET-4711";
    std::ofstream(dtd_path, std::ios::binary) << "<!ENTITY leak \"SECRET-4711\">";
    const auto url = [](const fs::path& path) {
        return (path.generic_string().front() == '/' ? "file://" : "file:///") + path.generic_string();
    };
    std::string laughs = "<!DOCTYPE kq9 [<!ENTITY a0 \"ha\">";
    for (int level = 1; level <= 10; ++level) {
        laughs += "<!ENTITY a" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i) laughs += "&a" + std::to_string(level - 1) + ";";
        laughs += "\">";
    }
    // One large entity repeated: quadratic growth without any nesting, in text and attributes.
    const std::string big = "<!DOCTYPE kq9 [<!ENTITY big \"" + std::string(50'000, 'x') + "\">]>";
    std::string repeated;
    for (int i = 0; i < 50'000; ++i) repeated += "&big;";
    const std::string valid = "<?xml version=\"1.0\"?><kq9><application><system>a-1200</system></application></kq9>";
    std::vector<std::pair<std::string, HResult>> rows = {
        {"<!DOCTYPE kq9 [<!ENTITY ext SYSTEM \"" + url(secret) + "\">]><kq9>&ext;</kq9>", status::ok},
        {"<!DOCTYPE kq9 [<!ENTITY ext SYSTEM \"" + secret.string() + "\">]><kq9>&ext;</kq9>",
         secret.string().front() == '/' ? status::ok : kMalformedDocument}, // a drive letter is no URI
        {"<!DOCTYPE kq9 [<!ENTITY % p SYSTEM \"" + url(dtd_path) + "\"> %p;]><kq9>&leak;</kq9>", kMalformedDocument},
        {"<!DOCTYPE kq9 SYSTEM \"" + url(dtd_path) + "\"><kq9>&leak;</kq9>", status::ok},
        {"<!DOCTYPE kq9 PUBLIC \"-//x//y\" \"http://127.0.0.1:9/kq9.dtd\"><kq9>text</kq9>", status::ok},
        {laughs + "]><kq9>&a10;</kq9>", kMalformedDocument},
        {big + "<kq9>" + repeated + "</kq9>", kMalformedDocument},
        {big + "<kq9 a=\"" + repeated + "\"/>", kMalformedDocument},
        {"<kq9>caf\xC3\x28</kq9>", kMalformedDocument},
        {"<kq9>\xFF\xFE</kq9>", kMalformedDocument},
        {"<kq9><a></b></kq9>", kMalformedDocument},
        {"<kq9>&undefined;</kq9>", kMalformedDocument},
        {"<?xml version=\"1.0\" encoding=\"no-such-charset\"?><kq9/>", kMalformedDocument},
        {"<kq9/><second/>", kMalformedDocument},
    };
    for (std::size_t length = 0; length < valid.size(); ++length)
        rows.emplace_back(valid.substr(0, length), kMalformedDocument);
    ManifestDocument document;
    for (const auto& [source, expected] : rows) {
        ASSERT_EQ(document.load(valid.c_str()), status::ok);
        EXPECT_EQ(document.load(source.c_str()), expected) << source.substr(0, 80);
        EXPECT_EQ(document.is_empty(), expected != status::ok);
        std::string out;
        document.save(Encoding::utf8, &out);
        EXPECT_EQ(out.find("SECRET"), std::string::npos) << source.substr(0, 80);
    }
    fs::remove(secret);
    fs::remove(dtd_path);
    EXPECT_EQ(document.load(nullptr), status::invalid_argument);
    EXPECT_TRUE(document.is_empty());
    ASSERT_EQ(document.load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><kq9>caf\xE9</kq9>"), status::ok);
    EXPECT_EQ(element_text(document.find_element_by_path("kq9")), u"caf\u00e9");
}

TEST(ManifestSafety, LoadingAFileHidesEveryFailureBehindFileNotFound) {
    const fs::path folder = fs::temp_directory_path() / "kq_manifest_files";
    fs::create_directories(folder);
    std::ofstream(folder / "ok.kq9", std::ios::binary) << "<kq9><application/></kq9>";
    std::ofstream(folder / "with-zero.kq9", std::ios::binary) << std::string("<kq9/>\0<junk", 12);
    std::ofstream(folder / "bad.kq9", std::ios::binary) << "<kq9>";
    const auto path = [&](const char* name) {
        const std::string text = (folder / name).string();
        return std::u16string(text.begin(), text.end());
    };
    ManifestDocument document;
    EXPECT_EQ(document.load_file(path("ok.kq9")), status::ok);
    EXPECT_EQ(document.load_file(path("with-zero.kq9")), status::ok) << "the text ends at its first NUL";
    EXPECT_EQ(document.load_file(path("bad.kq9")), kMalformedDocument);
    EXPECT_TRUE(document.is_empty());
    EXPECT_EQ(document.load_file(path("missing.kq9")), kManifestFileUnreadable);
    EXPECT_EQ(document.load_file(path("")), kManifestFileUnreadable) << "a folder";
    fs::remove_all(folder);
}

} // namespace
} // namespace kq::manifest
