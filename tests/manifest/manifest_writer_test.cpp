#include "manifest/manifest_document.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::manifest {
namespace {

// A manifest with the features the writer treats differently: a DTD with an internal entity,
// comments, namespaces (default, prefixed, on attributes), an empty element, blank and mixed
// text, escapes, the apostrophe, a Latin-1 character and one outside the Basic Multilingual
// Plane.
constexpr const char* kSource =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE kq9 [<!ENTITY pub \"Mervane &#38;amp; Co\">]>\n"
    "<!-- a package -->\n"
    "<kq9 xmlns=\"urn:kq9\" xmlns:x=\"urn:extra\">\n"
    "  <application user-edited=\"true\">\n"
    "    <!-- a comment inside -->\n"
    "    <description x:lang=\"fr\">Caf\xC3\xA9 &amp; \"bar\" &lt;it's&gt; \xF0\x9D\x91\x8E</description>\n"
    "    <publisher>&pub;</publisher>\n"
    "    <empty/>\n"
    "    <blank>   </blank>\n"
    "    <mixed>  head  <b>bold</b>  tail  </mixed>\n"
    "    <x:note x:a='it&apos;s'>hi</x:note>\n"
    "    <x:ext/>\n"
    "    <configuration>\n"
    "      <system>a-1200</system>\n"
    "      <peripheral type=\"68030\" speed=\"max\">cpu</peripheral>\n"
    "    </configuration>\n"
    "  </application>\n"
    "</kq9>\n";

// Expected output, written by hand from the layout rules. The prefixed element with content
// closes without its prefix, as the module's writer always has.
const std::string kBody = std::string() + "<kq9 xmlns=\"urn:kq9\" xmlns:x=\"urn:extra\">\r\n"
                                          "\t<application user-edited=\"true\">\r\n"
                                          "\t\t<description x:lang=\"fr\">@DESCRIPTION@</description>\r\n"
                                          "\t\t<publisher>Mervane &amp; Co</publisher>\r\n"
                                          "\t\t<empty/>\r\n"
                                          "\t\t<blank></blank>\r\n"
                                          "\t\t<mixed>\r\n"
                                          "\t\t\thead\r\n"
                                          "\t\t\t<b>bold</b>\r\n"
                                          "tail\t\t</mixed>\r\n"
                                          "\t\t<x:note x:a=\"it's\">hi</note>\r\n"
                                          "\t\t<x:ext/>\r\n"
                                          "\t\t<configuration>\r\n"
                                          "\t\t\t<system>a-1200</system>\r\n"
                                          "\t\t\t<peripheral type=\"68030\" speed=\"max\">cpu</peripheral>\r\n"
                                          "\t\t</configuration>\r\n"
                                          "\t</application>\r\n"
                                          "</kq9>\r\n";

std::string with_description(std::string text, std::string_view description) {
    text.replace(text.find("@DESCRIPTION@"), 13, description);
    return text;
}

std::string saved(const ManifestDocument& document, Encoding encoding, Layout layout = Layout::indented) {
    std::string out;
    EXPECT_EQ(document.save(encoding, &out, layout), status::ok);
    return out;
}

TEST(ManifestWriter, WritesBothFormsByteForByte) {
    ManifestDocument document;
    ASSERT_EQ(document.load(kSource), status::ok);
    EXPECT_EQ(saved(document, Encoding::ascii),
              "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n" +
                  with_description(kBody, "Caf&#xE9; &amp; &quot;bar&quot; &lt;it's&gt; &#x1D44E;"));
    EXPECT_EQ(saved(document, Encoding::utf8),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n" +
                  with_description(kBody, "Caf\xC3\xA9 &amp; &quot;bar&quot; &lt;it's&gt; "
                                          "\xF0\x9D\x91\x8E"));
}

TEST(ManifestWriter, CompactLayoutDropsTabsAndLineEnds) {
    ManifestDocument document;
    ASSERT_EQ(document.load("<a x=\"1\">\n  <b>t</b>\n  <c/>  tail </a>"), status::ok);
    EXPECT_EQ(saved(document, Encoding::ascii, Layout::compact),
              "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n<a x=\"1\"><b>t</b><c/>tail</a>");
}

TEST(ManifestWriter, OutputReadsBackToTheSameOutput) {
    const char* documents[] = {
        "<kq9><application><media><floppy root=\"shared\">Disk &amp; 1.adf</floppy></media>"
        "</application></kq9>",
        "<a>one<b/>two<c>three</c></a>",
        "<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>",
    };
    for (const char* source : documents) {
        for (const Encoding encoding : {Encoding::ascii, Encoding::utf8}) {
            ManifestDocument first;
            ASSERT_EQ(first.load(source), status::ok) << source;
            const std::string written = saved(first, encoding);
            ManifestDocument second;
            ASSERT_EQ(second.load(written.c_str()), status::ok) << written;
            EXPECT_EQ(saved(second, encoding), written);
        }
    }
}

TEST(ManifestWriter, RefusesBadArgumentsAndAnEmptyDocument) {
    ManifestDocument document;
    std::string out = "stale";
    EXPECT_EQ(document.save(Encoding::utf8, &out), kDocumentEmpty);
    EXPECT_EQ(out, "");
    ASSERT_EQ(document.load("<a/>"), status::ok);
    EXPECT_EQ(document.save(static_cast<Encoding>(2), &out), status::invalid_argument);
    EXPECT_EQ(document.save(Encoding::ascii, nullptr), status::null_pointer);
}

} // namespace
} // namespace kq::manifest
