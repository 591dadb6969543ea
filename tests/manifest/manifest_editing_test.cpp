#include "manifest/manifest_document.h"

#include "tests/support/manifest_text.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace kq::manifest {
namespace {

constexpr const char* kHeader = "<?xml version=\"1.0\" encoding=\"ascii\"?>\r\n";

std::string compact(const ManifestDocument& document) {
    std::string out;
    EXPECT_EQ(document.save(Encoding::ascii, &out, Layout::compact), status::ok);
    return out.substr(std::string_view(kHeader).size());
}

// Each row edits a fresh copy of a small manifest and states the configuration it leaves.
TEST(ManifestEditing, SettersCreateChangeAndRemoveTheirElements) {
    const std::string start =
        test::kq9_with_configuration("<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>");
    using Edit = std::function<HResult(ManifestDocument&)>;
    const struct {
        const char* name;
        Edit edit;
        HResult status;
        const char* configuration;
    } rows[] = {
        {"fpu changed", [](auto& d) { return d.set_fpu(u"68882"); }, status::ok,
         "<peripheral type=\"68882\">fpu</peripheral><ram type=\"chip\">524288</ram>"},
        {"fpu removed", [](auto& d) { return d.set_fpu(u""); }, status::ok, "<ram type=\"chip\">524288</ram>"},
        {"network created", [](auto& d) { return d.set_network(2); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<peripheral type=\"a2065\">network</peripheral>"},
        {"network index past the table", [](auto& d) { return d.set_network(4); }, status::invalid_argument,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"},
        {"scsi and audio",
         [](auto& d) {
             d.set_scsi(5);
             return d.set_audio(1);
         },
         status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<peripheral type=\"wd33c93\">scsi</peripheral><peripheral type=\"fm801\">audio</peripheral>"},
        {"keyboard layout", [](auto& d) { return d.set_keyboard(u"de-de"); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<peripheral layout=\"de-de\">keyboard</peripheral>"},
        {"typed element changed", [](auto& d) { return d.set_typed_element("ram", u"CHIP", u"1048576"); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">1048576</ram>"},
        {"typed element created", [](auto& d) { return d.set_typed_element("ram", u"fast", u"8388608"); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<ram type=\"fast\">8388608</ram>"},
        {"untyped element created", [](auto& d) { return d.set_typed_element("system", std::nullopt, u"a-600"); },
         status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<system>a-600</system>"},
        {"typed element removed", [](auto& d) { return d.set_typed_element("ram", u"chip", u""); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral>"},
        {"jit on", [](auto& d) { return d.set_jit(true, u"a-1200"); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<peripheral fpu=\"true\" memory=\"8388608\">jit</peripheral>"},
        {"jit off on a flexible model",
         [](auto& d) {
             d.set_jit(true, u"a-aros");
             return d.set_jit(false, u"A-4XXX");
         },
         status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"
         "<peripheral memory=\"0\">jit</peripheral>"},
        {"jit off elsewhere",
         [](auto& d) {
             d.set_jit(true, u"a-500");
             return d.set_jit(false, u"a-500");
         },
         status::ok, "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"},
        {"text and attributes are escaped when written",
         [](auto& d) {
             Element ram = d.find_typed_element("ram", u"chip");
             ManifestDocument::set_attribute(ram, "note", u"a<b & \"c\"");
             return ManifestDocument::set_element_text(ram, u"&amp; <x>");
         },
         status::ok,
         "<peripheral type=\"68881\">fpu</peripheral>"
         "<ram type=\"chip\" note=\"a&lt;b &amp; &quot;c&quot;\">&amp;amp; &lt;x&gt;</ram>"},
        {"empty attribute value removes the attribute",
         [](auto& d) { return d.set_path_attribute("kq9/application/configuration/ram", "type", u""); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram>524288</ram>"},
        {"element appended under a path",
         [](auto& d) { return d.create_element("kq9/application/configuration", "rom", u"310"); }, status::ok,
         "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram><rom>310</rom>"},
        {"no parent", [](auto& d) { return d.create_element("kq9/application/media", "floppy", u"x"); },
         kElementNotFound, "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"},
        {"unpaired surrogate", [](auto& d) { return d.set_keyboard(std::u16string_view(u"\xD800", 1)); },
         status::invalid_argument, "<peripheral type=\"68881\">fpu</peripheral><ram type=\"chip\">524288</ram>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ManifestDocument document;
        ASSERT_EQ(document.load(start.c_str()), status::ok);
        EXPECT_EQ(row.edit(document), row.status);
        EXPECT_EQ(compact(document), test::kq9_with_configuration(row.configuration));
    }
}

TEST(ManifestEditing, MissingConfigurationAndNullArguments) {
    ManifestDocument document;
    ASSERT_EQ(document.load("<kq9><application/></kq9>"), status::ok);
    EXPECT_EQ(document.set_fpu(u"68882"), kElementNotFound);
    EXPECT_EQ(document.set_fpu(u""), status::ok) << "nothing to remove";
    EXPECT_EQ(ManifestDocument::set_attribute(nullptr, "a", u"b"), status::invalid_argument);
    EXPECT_EQ(ManifestDocument::set_attribute(document.find_element_by_path("kq9"), nullptr, u"b"),
              status::invalid_argument);
    EXPECT_EQ(ManifestDocument::set_element_text(nullptr, u"x"), status::invalid_argument);
    EXPECT_EQ(document.set_path_attribute("kq9/none", "a", u"b"), kElementNotFound);
    EXPECT_EQ(compact(document), "<kq9><application/></kq9>");
}

} // namespace
} // namespace kq::manifest
