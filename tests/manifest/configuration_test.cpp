#include "manifest/configuration.h"

#include "manifest/system_models.h"

#include "tests/support/manifest_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kq::manifest {
namespace {

ManifestDocument load(std::string_view configuration) {
    ManifestDocument document;
    EXPECT_EQ(document.load(test::kq9_with_configuration(configuration).c_str()), status::ok) << configuration;
    return document;
}

std::string configuration_of(const ManifestDocument& document) {
    std::string out;
    document.save(Encoding::ascii, &out, Layout::compact);
    if (out.find("<configuration/>") != std::string::npos) return "";
    const std::size_t start = out.find("<configuration>"), end = out.find("</configuration>");
    if (start == std::string::npos || end == std::string::npos) return out;
    return out.substr(start + 15, end - start - 15);
}

TEST(Configuration, DefaultsWhenTheManifestIsSilent) {
    const ManifestDocument a1200 = load("<system>a-1200</system>");
    EXPECT_EQ(read_cpu(a1200).id, u"68EC020");
    EXPECT_FALSE(read_cpu(a1200).max_speed);
    EXPECT_EQ(read_fpu(a1200), u"");
    EXPECT_EQ(read_chip_memory(a1200), 2 * M);
    EXPECT_EQ(read_second_processor(a1200), SecondProcessor::none);
    EXPECT_FALSE(read_jit(a1200).enabled);
    EXPECT_EQ(read_network(a1200), 0u);
    EXPECT_FALSE(read_keyboard_layout(a1200));
    EXPECT_FALSE(read_is_ntsc(a1200));
    EXPECT_EQ(read_compatibility(a1200), 0u);
    const ManifestDocument nothing = load("");
    EXPECT_EQ(read_model_id(nothing), u"");
    EXPECT_EQ(read_chip_memory(nothing), 512 * K) << "no model is the a-500 row";
    EXPECT_EQ(read_cpu(nothing).id, u"68000");
}

TEST(Configuration, ReadsWhatTheManifestNames) {
    const ManifestDocument document =
        load("<system>A-3000</system><video>NTSC</video><ram type=\"chip\">2097152</ram>"
             "<peripheral type=\"68060\" speed=\"MAX\">cpu</peripheral>"
             "<peripheral mode=\"parallel\">ppc</peripheral>"
             "<peripheral fpu=\"true\" memory=\"8388608\">jit</peripheral>"
             "<peripheral type=\"ecs\">agnus</peripheral>"
             "<peripheral type=\"RTL8029\">network</peripheral><peripheral type=\"es1370\">audio</peripheral>"
             "<peripheral type=\"a4091\">scsi</peripheral><peripheral layout=\"de-de\">keyboard</peripheral>"
             "<compatibility>turbo-cpu</compatibility><compatibility>jit</compatibility>"
             "<compatibility>no-such-switch</compatibility><compatibility>HOSTIO</compatibility>");
    EXPECT_EQ(read_cpu(document).id, u"68060");
    EXPECT_TRUE(read_cpu(document).max_speed);
    EXPECT_EQ(read_fpu(document), u"") << "another CPU than the model's: no default FPU";
    EXPECT_EQ(read_second_processor(document), SecondProcessor::parallel);
    const JitSetting jit = read_jit(document);
    EXPECT_TRUE(jit.enabled && jit.fpu);
    EXPECT_EQ(jit.cache_bytes, 8388608u);
    EXPECT_EQ(read_chip_memory(document), 2 * M);
    EXPECT_TRUE(read_ecs_agnus(document));
    EXPECT_EQ(read_network(document), 3u);
    EXPECT_EQ(read_audio(document), 2u);
    EXPECT_EQ(read_scsi(document), 3u);
    EXPECT_EQ(read_keyboard_layout(document), u"de-de");
    EXPECT_TRUE(read_is_ntsc(document));
    EXPECT_EQ(read_compatibility(document), 0x1000u | 0x2000u | 0x10000u);
}

TEST(Configuration, FpuDefaultNeedsTheModelsOwnCpuWithItsLetterCase) {
    const struct {
        const char* configuration;
        std::u16string_view fpu;
    } rows[] = {
        {"<system>a-3000</system>", u"68882"},
        {"<system>a-3000</system><peripheral type=\"68030\">cpu</peripheral>", u"68882"},
        {"<system>a-1200</system><peripheral type=\"68ec020\">cpu</peripheral>", u""}, // not "68EC020"
        {"<system>a-3000</system><peripheral type=\"68040\">cpu</peripheral>", u""},
        {"<system>a-1200</system><peripheral type=\"68881\">fpu</peripheral>", u"68881"},
    };
    for (const auto& row : rows) EXPECT_EQ(read_fpu(load(row.configuration)), row.fpu) << row.configuration;
}

TEST(Configuration, SystemRomIsCompletedAndWrittenBack) {
    const struct {
        const char* configuration;
        std::u16string_view id;
        bool rewritten;
        const char* after;
    } rows[] = {
        {"<system>a-1200</system><rom>310</rom>", u"310-a4000", true, "<system>a-1200</system><rom>310-a4000</rom>"},
        {"<system>a-1000</system><rom type=\"system\">110</rom>", u"110-ntsc", true,
         "<system>a-1000</system><rom type=\"system\">110-ntsc</rom>"},
        {"<system>a-1000</system><video>pal</video><rom>110</rom>", u"110-pal", true,
         "<system>a-1000</system><video>pal</video><rom>110-pal</rom>"},
        {"<system>a-1200</system><rom>120</rom><rom type=\"system\">310-a1200</rom>", u"310-a1200", false,
         "<system>a-1200</system><rom>120</rom><rom type=\"system\">310-a1200</rom>"},
        {"<system>a-1200</system><rom type=\"extension\">x</rom>", u"310-a1200", false,
         "<system>a-1200</system><rom type=\"extension\">x</rom>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.configuration);
        ManifestDocument document = load(row.configuration);
        const SystemRom rom = read_system_rom(document);
        EXPECT_EQ(rom.id, row.id);
        EXPECT_EQ(rom.rewritten, row.rewritten);
        EXPECT_EQ(configuration_of(document), row.after);
    }
}

TEST(Configuration, WritersSetTheirElements) {
    using Write = HResult (*)(ManifestDocument&);
    const struct {
        const char* name;
        const char* before;
        Write write;
        const char* after;
    } rows[] = {
        {"chip above the Agnus limit", "<system>a-500</system>",
         [](ManifestDocument& d) { return write_chip_memory(d, 1 * M); },
         "<system>a-500</system><ram type=\"chip\">1048576</ram><peripheral type=\"ecs\">agnus</peripheral>"},
        {"chip back to the default",
         "<system>a-500</system><ram type=\"chip\">1048576</ram><peripheral type=\"ecs\">agnus</peripheral>",
         [](ManifestDocument& d) { return write_chip_memory(d, 512 * K); }, "<system>a-500</system>"},
        {"no Agnus choice on the A1200", "<system>a-1200</system>",
         [](ManifestDocument& d) { return write_chip_memory(d, 1 * M); },
         "<system>a-1200</system><ram type=\"chip\">1048576</ram>"},
        {"system ROM replaces the untyped one", "<rom>310</rom>",
         [](ManifestDocument& d) { return write_system_rom(d, u"3x0-a1200"); }, "<rom>3x0-a1200</rom>"},
        {"system ROM created", "", [](ManifestDocument& d) { return write_system_rom(d, u"120"); },
         "<rom type=\"system\">120</rom>"},
        {"CPU at full speed", "", [](ManifestDocument& d) { return write_cpu(d, u"68030", true); },
         "<peripheral type=\"68030\" speed=\"max\">cpu</peripheral>"},
        {"CPU at real speed", "<peripheral type=\"68030\" speed=\"max\">cpu</peripheral>",
         [](ManifestDocument& d) { return write_cpu(d, u"68020", false); },
         "<peripheral type=\"68020\">cpu</peripheral>"},
        {"second processor", "",
         [](ManifestDocument& d) { return write_second_processor(d, SecondProcessor::exclusive); },
         "<peripheral mode=\"exclusive\">ppc</peripheral>"},
        {"no second processor", "<peripheral mode=\"exclusive\">ppc</peripheral>",
         [](ManifestDocument& d) { return write_second_processor(d, SecondProcessor::none); }, ""},
        {"video", "<video mode=\"x\">pal</video>", [](ManifestDocument& d) { return write_video(d, true); },
         "<video mode=\"x\">ntsc</video>"},
        {"compatibility",
         "<compatibility>turbo-cpu</compatibility><compatibility>mine</compatibility>"
         "<compatibility>turbo-cpu</compatibility>",
         [](ManifestDocument& d) { return write_compatibility(d, 0x2000 | 0x1000 | 0x1); },
         "<compatibility>turbo-cpu</compatibility><compatibility>mine</compatibility>"
         "<compatibility>flexible-blitter-cycles</compatibility><compatibility>jit</compatibility>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ManifestDocument document = load(row.before);
        EXPECT_EQ(row.write(document), status::ok);
        EXPECT_EQ(configuration_of(document), row.after);
    }
}

} // namespace
} // namespace kq::manifest
