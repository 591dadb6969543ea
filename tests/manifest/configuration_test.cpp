// The machine configuration read from and written to a manifest, the summary lines shown for
// it, and the game ports' defaults.

#include "manifest/application_info.h"
#include "manifest/configuration.h"
#include "manifest/input_ports.h"
#include "manifest/system_models.h"
#include "manifest/xml_parser.h"
#include "tests/support/manifest_text.h"
#include "tests/support/printable.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::manifest {
namespace {

using test::printable;

ManifestDocument load(std::string_view configuration) {
    ManifestDocument document;
    EXPECT_EQ(document.load(test::kq9_with_configuration(configuration).c_str()), status::ok) << configuration;
    return document;
}

std::string configuration_of(const ManifestDocument& document) {
    std::string out;
    document.save(Encoding::ascii, &out, Layout::compact);
    const std::size_t start = out.find("<configuration>"), end = out.find("</configuration>");
    return start == std::string::npos || end == std::string::npos ? "" : out.substr(start + 15, end - start - 15);
}

// Every value that the readers give, in one line.
std::string values_of(const ManifestDocument& d) {
    const JitSetting jit = read_jit(d);
    return printable(read_model_id(d)) + " cpu " + printable(read_cpu(d).id) + (read_cpu(d).max_speed ? "+" : "") +
           " fpu " + printable(read_fpu(d)) + " chip " + std::to_string(read_chip_memory(d)) + " ppc " +
           std::to_string(static_cast<int>(read_second_processor(d))) + " jit " + std::to_string(jit.enabled) +
           std::to_string(jit.fpu) + " " + std::to_string(jit.cache_bytes) + " net " + std::to_string(read_network(d)) +
           " audio " + std::to_string(read_audio(d)) + " scsi " + std::to_string(read_scsi(d)) + " kb " +
           printable(read_keyboard_layout(d).value_or(u"-")) + " ntsc " + std::to_string(read_is_ntsc(d)) + " agnus " +
           std::to_string(read_ecs_agnus(d)) + " compat " + std::to_string(read_compatibility(d));
}

TEST(Configuration, ReadsEachValueOrItsDefault) {
    const struct {
        const char* configuration;
        const char* values;
    } rows[] = {
        {"<system>a-1200</system>",
         "a-1200 cpu 68EC020 fpu  chip 2097152 ppc 0 jit 00 0 net 0 audio 0 scsi 0 kb - ntsc 0 agnus 0 compat 0"},
        {"", " cpu 68000 fpu  chip 524288 ppc 0 jit 00 0 net 0 audio 0 scsi 0 kb - ntsc 0 agnus 0 compat 0"},
        {"<system>A-3000</system><video>NTSC</video><ram type=\"chip\">2097152</ram>"
         "<peripheral type=\"68060\" speed=\"MAX\">cpu</peripheral><peripheral mode=\"parallel\">ppc</peripheral>"
         "<peripheral fpu=\"true\" memory=\"8388608\">jit</peripheral><peripheral type=\"ecs\">agnus</peripheral>"
         "<peripheral type=\"RTL8029\">network</peripheral><peripheral type=\"es1370\">audio</peripheral>"
         "<peripheral type=\"a4091\">scsi</peripheral><peripheral layout=\"de-de\">keyboard</peripheral>"
         "<compatibility>turbo-cpu</compatibility><compatibility>jit</compatibility>"
         "<compatibility>no-such-switch</compatibility><compatibility>HOSTIO</compatibility>",
         "A-3000 cpu 68060+ fpu  chip 2097152 ppc 1 jit 11 8388608 net 3 audio 2 scsi 3 kb de-de ntsc 1 agnus 1 "
         "compat 77824"},
        {"<system>a-3000</system><peripheral type=\"68030\">cpu</peripheral><peripheral mode=\"exclusive\">ppc"
         "</peripheral>",
         "a-3000 cpu 68030 fpu 68882 chip 1048576 ppc 2 jit 00 0 net 0 audio 0 scsi 0 kb - ntsc 0 agnus 0 compat 0"},
        // The model's FPU needs the model's own CPU, with its letter case.
        {"<system>a-3000</system><peripheral type=\"68040\">cpu</peripheral>",
         "a-3000 cpu 68040 fpu  chip 1048576 ppc 0 jit 00 0 net 0 audio 0 scsi 0 kb - ntsc 0 agnus 0 compat 0"},
        {"<system>a-walker</system><peripheral type=\"68ec020\">cpu</peripheral><peripheral type=\"68881\">fpu"
         "</peripheral><video>pal</video>",
         "a-walker cpu 68ec020 fpu 68881 chip 2097152 ppc 0 jit 00 0 net 0 audio 0 scsi 0 kb - ntsc 0 agnus 0 compat 0"},
    };
    for (const auto& row : rows) EXPECT_EQ(values_of(load(row.configuration)), row.values) << row.configuration;
}

TEST(Configuration, SystemRomIsCompletedAndWrittenBack) {
    const struct {
        const char* configuration;
        std::u16string_view id;
        bool rewritten;
        const char* after;
    } rows[] = {
        {"<system>a-1200</system><rom>310</rom>", u"310-a4000", true, "<system>a-1200</system><rom>310-a4000</rom>"},
        {"<system>a-1000</system><video>pal</video><rom type=\"system\">110</rom>", u"110-pal", true,
         "<system>a-1000</system><video>pal</video><rom type=\"system\">110-pal</rom>"},
        {"<system>a-1200</system><rom>120</rom><rom type=\"system\">310-a1200</rom>", u"310-a1200", false, nullptr},
        {"<system>a-1200</system><rom type=\"extension\">x</rom>", u"310-a1200", false, nullptr},
    };
    for (const auto& row : rows) {
        ManifestDocument document = load(row.configuration);
        const SystemRom rom = read_system_rom(document);
        EXPECT_EQ(std::tuple(rom.id, rom.rewritten), std::tuple(std::u16string(row.id), row.rewritten));
        EXPECT_EQ(configuration_of(document), row.after ? row.after : row.configuration);
    }
}

TEST(Configuration, WritersSetTheirElements) {
    using Write = HResult (*)(ManifestDocument&);
    const struct {
        const char* before;
        Write write;
        const char* after;
    } rows[] = {
        {"<system>a-500</system>", [](ManifestDocument& d) { return write_chip_memory(d, 1 * M); },
         "<system>a-500</system><ram type=\"chip\">1048576</ram><peripheral type=\"ecs\">agnus</peripheral>"},
        {"<system>a-500</system><ram type=\"chip\">1048576</ram><peripheral type=\"ecs\">agnus</peripheral>",
         [](ManifestDocument& d) { return write_chip_memory(d, 512 * K); }, "<system>a-500</system>"},
        {"<system>a-1200</system>", [](ManifestDocument& d) { return write_chip_memory(d, 1 * M); },
         "<system>a-1200</system><ram type=\"chip\">1048576</ram>"},
        {"<rom>310</rom>", [](ManifestDocument& d) { return write_system_rom(d, u"3x0-a1200"); },
         "<rom>3x0-a1200</rom>"},
        {"", [](ManifestDocument& d) { return write_system_rom(d, u"120"); }, "<rom type=\"system\">120</rom>"},
        {"", [](ManifestDocument& d) { return write_cpu(d, u"68030", true); },
         "<peripheral type=\"68030\" speed=\"max\">cpu</peripheral>"},
        {"<peripheral type=\"68030\" speed=\"max\">cpu</peripheral>",
         [](ManifestDocument& d) { return write_cpu(d, u"68020", false); },
         "<peripheral type=\"68020\">cpu</peripheral>"},
        {"", [](ManifestDocument& d) { return write_second_processor(d, SecondProcessor::exclusive); },
         "<peripheral mode=\"exclusive\">ppc</peripheral>"},
        {"<peripheral mode=\"exclusive\">ppc</peripheral>",
         [](ManifestDocument& d) { return write_second_processor(d, SecondProcessor::none); }, ""},
        {"<video mode=\"x\">pal</video>", [](ManifestDocument& d) { return write_video(d, true); },
         "<video mode=\"x\">ntsc</video>"},
        {"<compatibility>turbo-cpu</compatibility><compatibility>mine</compatibility>"
         "<compatibility>turbo-cpu</compatibility>",
         [](ManifestDocument& d) { return write_compatibility(d, 0x2000 | 0x1000 | 0x1); },
         "<compatibility>turbo-cpu</compatibility><compatibility>mine</compatibility>"
         "<compatibility>flexible-blitter-cycles</compatibility><compatibility>jit</compatibility>"},
    };
    for (const auto& row : rows) {
        ManifestDocument document = load(row.before);
        EXPECT_EQ(row.write(document), status::ok) << row.before;
        EXPECT_EQ(configuration_of(document), row.after) << row.before;
    }
}

TEST(ApplicationInfo, LinesForTheConfiguration) {
    const struct {
        const char* configuration;
        std::u16string_view text;
    } rows[] = {
        {"<system>a-1200</system>", u"Model: Amiga 1200\r\nROM: Amiga 3.1\r\nCPU: 68EC020\r\n"},
        // "310" is completed to "310-a4000", which the A1200 does not offer: no ROM line.
        {"<system>a-1200</system><rom>310</rom>", u"Model: Amiga 1200\r\nCPU: 68EC020\r\n"},
        {"<system>a-4000</system><peripheral type=\"68060\">cpu</peripheral><peripheral>ppc</peripheral>"
         "<peripheral type=\"ES1370\">audio</peripheral>",
         u"Model: Amiga 4000\r\nROM: Amiga 3.1\r\nCPU 1: 68060\r\nCPU 2: PPC 604e\r\nPCI bridge: Prometheus\r\n"},
        {"<system>a-3000</system><peripheral type=\"rtl8029\">network</peripheral>",
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
    std::u16string text = u"stale";
    EXPECT_EQ(application_info("<kq9><application>", text), kMalformedDocument);
    EXPECT_EQ(text, u"");
    EXPECT_EQ(application_info(nullptr, text), status::invalid_argument);
}

TEST(InputPorts, DefaultsKindsAndMultitap) {
    const struct {
        std::u16string_view model;
        std::uint32_t port;
        PortContent content;
    } rows[] = {
        {u"A-CD32", 0, PortContent::joypad}, {u"a-cd32", 1, PortContent::empty}, {u"a-cdtv", 0, PortContent::joystick},
        {u"a-1200", 0, PortContent::mouse},  {u"a-9000", 0, PortContent::mouse}, {u"a-500", 2, PortContent::empty},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(default_port_content(row.model, row.port), row.content) << printable(row.model) << row.port;
        EXPECT_EQ(is_port_default_empty(row.model, row.port), row.content == PortContent::empty);
    }
    EXPECT_EQ(port_content_of_kind(u"INPUT-GAMEPAD"), PortContent::gamepad);
    EXPECT_EQ(port_content_of_kind(u"input-multitap"), std::nullopt);
    EXPECT_TRUE(is_joystick_like(u"input-joypad"));
    EXPECT_FALSE(is_joystick_like(u"input-mouse"));
    EXPECT_EQ(multitap_port_index(u"input-joystick"), 1u);
    EXPECT_EQ(multitap_port_index(u"input-gamepad"), 0u) << "multitap ports offer empty and joystick only";
    EXPECT_EQ(input_ports_info(u"PARALLEL").multitap_ports, 3u);
    EXPECT_EQ(input_ports_info(u"").multitap_ports, 0u);
}

} // namespace
} // namespace kq::manifest
