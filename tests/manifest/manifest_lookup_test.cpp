#include "manifest/manifest_document.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::manifest {
namespace {

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

std::u16string text_of(Element element) { return element_text(element).value_or(u"<no text>"); }

TEST_F(ManifestLookup, PathsFindElementsOnlyWithTheirStatuses) {
    const struct {
        std::string_view path;
        HResult status;
        std::u16string_view text;
    } rows[] = {
        {"kq9/application/configuration/system", status::ok, u"a-1200"},
        {"kq9/application/media/cd", status::ok, u"<no text>"},
        {"kq9/application/text", kElementNotFound, u""}, // a text node is never a segment
        {"kq9/Application", kElementNotFound, u""},      // names compare exactly
        {"kq9/application/configuration/system/x", kElementNotFound, u""},
        {"xadml/catalog/application", kElementNotFound, u""},
        {"kq9//application", kElementNotFound, u""},
        {"", status::invalid_argument, u""},
    };
    for (const auto& row : rows) {
        Element element = nullptr;
        EXPECT_EQ(document_.find_element_by_path(row.path, element), row.status) << row.path;
        if (row.status == status::ok)
            EXPECT_EQ(text_of(element), row.text) << row.path;
        else
            EXPECT_EQ(element, nullptr);
    }
    ManifestDocument empty;
    Element element = nullptr;
    EXPECT_EQ(empty.find_element_by_path("kq9", element), kDocumentEmpty);
}

TEST_F(ManifestLookup, PathTextAndAttributeStatuses) {
    Text text;
    EXPECT_EQ(document_.get_path_text("kq9/application/configuration/system", text), status::ok);
    EXPECT_EQ(text, u"a-1200");
    EXPECT_EQ(document_.get_path_text("kq9/application/media/cd", text), status::failed);
    EXPECT_FALSE(text);
    EXPECT_EQ(document_.get_path_text("kq9/nothing", text), kElementNotFound);
    EXPECT_EQ(document_.get_path_attribute("kq9/application", "user-edited", text), status::ok);
    EXPECT_EQ(text, u"true");
    EXPECT_EQ(document_.get_path_attribute("kq9/application", "missing", text), kElementNotFound);
    EXPECT_EQ(document_.get_path_attribute("kq9/nothing", "user-edited", text), kElementNotFound);
}

TEST_F(ManifestLookup, AttributesAreNotTrimmedAndEmptyOnesExistWithoutText) {
    Element blank = document_.find_peripheral(u"blank-attrs");
    ASSERT_NE(blank, nullptr);
    Text value;
    EXPECT_TRUE(get_attribute_text(blank, "empty", value));
    EXPECT_FALSE(value);
    EXPECT_FALSE(get_attribute_text(blank, "absent", value));
    EXPECT_EQ(get_priority(blank), 12);
    EXPECT_EQ(get_priority(document_.find_medium(u"game.adf", std::nullopt)), -3);
    EXPECT_EQ(get_priority(document_.configuration()), std::nullopt);
    Element port = document_.find_peripheral_unit(u"input-joystick", 1);
    ASSERT_TRUE(get_attribute_text(port, "unit", value));
    EXPECT_EQ(value, u"01");
}

TEST_F(ManifestLookup, ConfigurationLookupsAndTheirTraps) {
    EXPECT_EQ(text_of(document_.find_peripheral(u"KEYBOARD")), u"keyboard") << "blank-padded text";
    EXPECT_EQ(document_.find_peripheral(u"input-multitap"), document_.find_multitap());
    Text type;
    document_.find_multitap(&type);
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

    EXPECT_EQ(document_.find_button_set(main_0),
              find_child_element("buttons", document_.configuration(),
                                 find_child_element("buttons", document_.configuration())));
    EXPECT_EQ(document_.find_button_set(main_1), nullptr);

    // rom without "type" (or with an empty one) versus rom type="system".
    EXPECT_EQ(text_of(document_.find_typed_element("rom", u"system")), u"310-a1200");
    EXPECT_EQ(text_of(document_.find_typed_element("rom", std::nullopt)), u"310");
    EXPECT_EQ(document_.find_typed_element("rom", u"kickstart"), nullptr);
    EXPECT_EQ(text_of(document_.find_typed_element("system", std::nullopt)), u"a-1200");
}

TEST_F(ManifestLookup, MediaDefaultToEmbedded) {
    const struct {
        std::optional<std::u16string_view> file_name, root;
        std::u16string_view found;
    } rows[] = {
        {u"GAME.ADF", std::nullopt, u"Game.adf"}, // no "root" is embedded
        {u"game.adf", u"embedded", u"Game.adf"},
        {u"disk2.adf", std::nullopt, u"disk2.adf"},
        {u"system.hdf", std::nullopt, u"<none>"},
        {u"anything", u"shared", u"system.hdf"},    // shared media match by root alone
        {std::nullopt, std::nullopt, u"<no text>"}, // no name matches a medium without text
        {u"game.adf", u"other", u"<none>"},
    };
    for (const auto& row : rows) {
        const Element medium = document_.find_medium(row.file_name, row.root);
        EXPECT_EQ(medium ? text_of(medium) : u"<none>", row.found);
    }
}

TEST_F(ManifestLookup, ChildrenAndMatches) {
    Element media = document_.find_element_by_path("kq9/application/media");
    std::u16string names;
    for (Element e = find_child_element("", media); e; e = find_child_element("", media, e))
        names += std::u16string(element_name(e).begin(), element_name(e).end()) + u" ";
    EXPECT_EQ(names, u"floppy harddrive floppy cd ");
    Element first_floppy = find_child_element("floppy", media);
    EXPECT_EQ(text_of(find_child_element("floppy", media, first_floppy)), u"disk2.adf");

    Element shared = find_child_element("harddrive", media);
    const struct {
        const char *name, *attribute;
        std::u16string_view expected;
        bool matches;
    } rows[] = {
        {"harddrive", nullptr, u"", true},  {"floppy", nullptr, u"", false},
        {nullptr, "root", u"SHARED", true}, {nullptr, "root", u"embedded", false},
        {nullptr, "root", u"", true},    // present, nothing expected
        {nullptr, "missing", u"", true}, // missing, nothing expected
        {nullptr, "missing", u"x", false},  {"harddrive", "root", u"shared", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(match_element(shared, row.name, row.attribute, row.expected), row.matches)
            << (row.name ? row.name : "-") << " " << (row.attribute ? row.attribute : "-");
}

TEST(ManifestCatalog, ServesTheCatalogFormWithTheSameLookups) {
    ManifestDocument catalog;
    ASSERT_EQ(catalog.load("<xadml><catalog><application><configuration><system>a-500</system>"
                           "<peripheral>keyboard</peripheral></configuration><media>"
                           "<floppy>a.adf</floppy></media></application></catalog></xadml>"),
              status::ok);
    EXPECT_EQ(catalog.application_path(), "xadml/catalog/application");
    EXPECT_NE(catalog.find_peripheral(u"keyboard"), nullptr);
    EXPECT_NE(catalog.find_medium(u"a.adf", std::nullopt), nullptr);
    EXPECT_EQ(catalog.set_fpu(u"68882"), status::ok);
    EXPECT_NE(catalog.find_peripheral(u"fpu"), nullptr);
}

} // namespace
} // namespace kq::manifest
