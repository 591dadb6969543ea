#include "manifest/application_info.h"

#include "manifest/xml_parser.h"

#include "tests/support/manifest_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::manifest {
namespace {

TEST(ApplicationInfo, LinesForTheConfiguration) {
    const struct {
        const char* configuration;
        std::u16string_view text;
    } rows[] = {
        {"<system>a-1200</system>", u"Model: Amiga 1200\r\nROM: Amiga 3.1\r\nCPU: 68EC020\r\n"},
        // "310" is completed to "310-a4000", which the A1200 does not offer: no ROM line.
        {"<system>a-1200</system><rom>310</rom>", u"Model: Amiga 1200\r\nCPU: 68EC020\r\n"},
        {"<system>A-CD32</system>", u"Model: CD\u00b3\u00b2\r\nROM: Amiga 3.1\r\nCPU: 68EC020\r\n"},
        {"<system>a-4000</system><peripheral type=\"68060\">cpu</peripheral><peripheral>ppc</peripheral>"
         "<peripheral type=\"ES1370\">audio</peripheral>",
         u"Model: Amiga 4000\r\nROM: Amiga 3.1\r\nCPU 1: 68060\r\nCPU 2: PPC 604e\r\n"
         u"PCI bridge: Prometheus\r\n"},
        {"<system>a-3000</system><peripheral type=\"rtl8029\">network</peripheral>"
         "<peripheral type=\"a2065\">network</peripheral>",
         u"Model: Amiga 3000\r\nROM: Amiga 3.1\r\nCPU: 68030\r\nPCI bridge: Prometheus\r\n"},
        {"<system>a-500</system><peripheral type=\"a2065\">network</peripheral>"
         "<peripheral type=\"68ec040\">cpu</peripheral>",
         u"Model: Amiga 500\r\nROM: Amiga 1.2\r\nCPU: 68EC040\r\n"},
        // An unknown model writes no model line but goes on with the A500 row.
        {"<system>a-9000</system><rom>130</rom>", u"ROM: Amiga 1.3\r\nCPU: 68000\r\n"},
        {"<system>a-1200</system><peripheral type=\"80386\">cpu</peripheral>",
         u"Model: Amiga 1200\r\nROM: Amiga 3.1\r\n"},
        {"<rom>310-a1200</rom>", u""}, // no model: no text
    };
    for (const auto& row : rows) {
        std::u16string text = u"stale";
        EXPECT_EQ(application_info(test::kq9_with_configuration(row.configuration).c_str(), text), status::ok);
        EXPECT_EQ(text, row.text) << row.configuration;
    }
}

TEST(ApplicationInfo, UnparsableManifestsGiveTheirParseStatus) {
    std::u16string text = u"stale";
    EXPECT_EQ(application_info("<kq9><application>", text), kMalformedDocument);
    EXPECT_EQ(text, u"");
    EXPECT_EQ(application_info(nullptr, text), status::invalid_argument);
}

} // namespace
} // namespace kq::manifest
