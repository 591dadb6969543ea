// The import of emulator configurations: one small configuration per step with the elements it
// must add (files answered by a stand-in file system), the real file system for file
// attributes and relative folders, and whole configuration files from tests/data/uae compared
// byte for byte with their expected documents.

#include "content/configuration_import/configuration_import.h"
#include "platform/files.h"
#include "tests/content/rom_image_builder.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace kq::content {
namespace {

constexpr std::u16string_view kConfigurationFolder = u"C:\\Amiga\\Configurations";

std::string utf8(std::u16string_view text) { return {text.begin(), text.end()}; } // ASCII only
std::u16string utf16(std::string_view text) { return {text.begin(), text.end()}; }

// Files as the stand-in file system knows them: attributes by path, ROM ids by path.
struct StandInFiles {
    std::map<std::u16string, std::uint32_t, std::less<>> attributes;
    std::map<std::u16string, std::u16string, std::less<>> roms;
    std::vector<std::string> rom_questions; // "path on model"

    ImportFileSystem file_system() {
        return {
            .attributes = [this](std::u16string_view path) -> std::optional<std::uint32_t> {
                const auto found = attributes.find(path);
                return found == attributes.end() ? std::nullopt : std::optional(found->second);
            },
            .system_rom = [this](std::u16string_view path, std::u16string_view model) -> std::optional<std::u16string> {
                rom_questions.push_back(utf8(path) + " on " + utf8(model));
                const auto found = roms.find(path);
                return found == roms.end() ? std::nullopt : std::optional(found->second);
            }};
    }
};

// The children of one section of the document, one per line, without indentation.
std::string section(const std::string& xml, const std::string& name) {
    const std::string open = "\t\t\t<" + name + ">\r\n", close = "\t\t\t</" + name + ">\r\n";
    const std::size_t begin = xml.find(open), end = xml.find(close);
    if (begin == std::string::npos || end == std::string::npos) return "";
    std::string lines;
    for (std::size_t at = begin + open.size(); at < end;) {
        const std::size_t line_end = xml.find("\r\n", at);
        if (!lines.empty()) lines += '\n';
        lines += xml.substr(at + 4, line_end - at - 4); // after four tabs
        at = line_end + 2;
    }
    return lines;
}

std::string imported(const std::string& text, StandInFiles& files) {
    std::string xml;
    EXPECT_EQ(build_catalog(UaeConfiguration::parse(text), kConfigurationFolder, files.file_system(), xml), status::ok);
    return xml;
}

struct StepRow {
    const char* what;
    std::string uae;
    std::string expected; // the section's children
};

void expect_rows(const std::string& section_name, std::initializer_list<StepRow> rows, StandInFiles files = {}) {
    for (const StepRow& row : rows)
        EXPECT_EQ(section(imported(row.uae, files), section_name), row.expected) << row.what;
}

TEST(ConfigurationImport, WritesTheDescription) {
    expect_rows(
        "description",
        {
            {"a description", "config_description=Turrican II\n", "<text priority=\"1\">Turrican II</text>"},
            {"escaped", "config_description=Fish & <Chips>\n", "<text priority=\"1\">Fish &amp; &lt;Chips&gt;</text>"},
            {"empty", "config_description=\n", ""},
        });
}

TEST(ConfigurationImport, SettlesTheModel) {
    expect_rows("configuration",
                {
                    {"A500", "chipset_compatible=A500", "<system>a-500</system>"},
                    {"A500 with 512 KiB slow memory is an A2000", "chipset_compatible=A500\nbogomem_size=2",
                     "<system>a-2000</system>\n<ram type=\"slow\">524288</ram>"},
                    {"A500 with 256 KiB slow memory", "chipset_compatible=A500\nbogomem_size=1",
                     "<system>a-500</system>\n<ram type=\"slow\">262144</ram>"},
                    {"A500+", "chipset_compatible=a500+", "<system>a-500plus</system>"},
                    {"A1200", "chipset_compatible=A1200", "<system>a-1200</system>"},
                    {"A4000 without the key", "chipset_compatible=A4000", "<system>a-4000</system>"},
                    {"A4000, 24-bit addressing on", "chipset_compatible=A4000\ncpu_24bit_addressing=true",
                     "<system>a-4000</system>"},
                    {"A4000, 24-bit addressing off", "chipset_compatible=A4000\ncpu_24bit_addressing=false",
                     "<system>a-4000t</system>"},
                    {"CD32", "chipset_compatible=CD32", "<system>a-cd32</system>"},
                    {"CDTV", "chipset_compatible=CDTV", "<system>a-cdtv</system>"},
                    {"unknown", "chipset_compatible=A5000", ""},
                });
}

TEST(ConfigurationImport, RecognisesTheSystemRom) {
    StandInFiles files;
    files.roms[u"D:\\Roms\\kick31.rom"] = u"310-a1200";
    files.roms[u"C:\\Amiga\\Configurations\\Roms\\kick31.rom"] = u"310-a600";
    const struct {
        const char* what;
        std::string uae, expected, asked;
    } rows[] = {
        {"relative to win32.rom_path",
         "chipset_compatible=A1200\nwin32.rom_path=D:\\Roms\\\nkickstart_rom_file=kick31.rom",
         "<system>a-1200</system>\n<rom type=\"system\">310-a1200</rom>", "D:\\Roms\\kick31.rom on a-1200"},
        {"absolute", "win32.rom_path=E:\\\nkickstart_rom_file=D:\\Roms\\kick31.rom",
         "<rom type=\"system\">310-a1200</rom>", "D:\\Roms\\kick31.rom on "},
        {"relative rom_path", "win32.rom_path=Roms\nkickstart_rom_file=kick31.rom",
         "<rom type=\"system\">310-a600</rom>", "C:\\Amiga\\Configurations\\Roms\\kick31.rom on "},
        {"not recognised", "kickstart_rom_file=D:\\Roms\\other.rom", "", "D:\\Roms\\other.rom on "},
    };
    for (const auto& row : rows) {
        files.rom_questions.clear();
        EXPECT_EQ(section(imported(row.uae, files), "configuration"), row.expected) << row.what;
        EXPECT_EQ(files.rom_questions, std::vector<std::string>{row.asked}) << row.what;
    }
}

TEST(ConfigurationImport, WritesMemoryAndVideo) {
    expect_rows("configuration",
                {
                    {"chip and slow", "chipmem_size=2\nbogomem_size=2",
                     "<ram type=\"chip\">1048576</ram>\n<ram type=\"slow\">524288</ram>"},
                    {"fast", "fastmem_size=8", "<ram type=\"fast\">8388608</ram>"},
                    {"A3000 memory wins", "a3000mem_size=16\nfastmem_size=8", "<ram type=\"fast\">16777216</ram>"},
                    {"A3000 memory 0", "a3000mem_size=0\nfastmem_size=4", "<ram type=\"fast\">4194304</ram>"},
                    {"Z3 summed", "z3mem_size=64\nz3mem2_size=32\nz3mem3_size=0\nz3mem4_size=128",
                     "<ram type=\"z3\">234881024</ram>"},
                    {"Z3 past 4 GiB", "z3mem_size=2048\nz3mem2_size=2048", "<ram type=\"z3\">4294967296</ram>"},
                    {"zero, negative and unreadable sizes", "chipmem_size=0\nbogomem_size=-2\nfastmem_size=lots", ""},
                    {"NTSC", "ntsc=true", "<video>ntsc</video>"},
                    {"NTSC as yes", "ntsc=yes", "<video>ntsc</video>"},
                    {"PAL", "ntsc=false", "<video>pal</video>"},
                    {"PAL from other text", "ntsc=maybe", "<video>pal</video>"},
                    {"no video", "ntsc=", ""},
                });
}

TEST(ConfigurationImport, WritesDrives) {
    expect_rows(
        "configuration",
        {
            {"units 1 to 3", "floppy0type=0\nfloppy1type=1\nfloppy2type=0\nfloppy3type=-1",
             "<peripheral unit=\"1\" type=\"hd\">floppy</peripheral>\n<peripheral unit=\"2\" type=\"dd\">floppy</peripheral>"},
            {"unit 0 on the CD32", "chipset_compatible=CD32\nfloppy0type=0",
             "<system>a-cd32</system>\n<peripheral unit=\"0\" type=\"dd\">floppy</peripheral>"},
            {"type 2 is double density", "floppy3type=2", "<peripheral unit=\"3\" type=\"dd\">floppy</peripheral>"},
            {"CD drive", "cdimage0=E:\\game.iso", "<peripheral type=\"cd\">optical</peripheral>"},
        });
}

TEST(ConfigurationImport, WritesProcessors) {
    expect_rows(
        "configuration",
        {
            {"68000", "cpu_type=68000", "<peripheral type=\"68000\">cpu</peripheral>"},
            {"68010 at full speed", "cpu_type=68010\ncpu_speed=max",
             "<peripheral type=\"68010\" speed=\"max\">cpu</peripheral>"},
            {"68EC020 at real speed", "cpu_type=68EC020\ncpu_speed=real",
             "<peripheral type=\"68ec020\" speed=\"real\">cpu</peripheral>"},
            {"speed other than max", "cpu_type=68000\ncpu_speed=15",
             "<peripheral type=\"68000\" speed=\"real\">cpu</peripheral>"},
            {"68EC020 with FPU", "cpu_type=68ec020/68881",
             "<peripheral type=\"68ec020\">cpu</peripheral>\n<peripheral type=\"68881\">fpu</peripheral>"},
            {"68020 as 68030", "cpu_type=68020\ncpu_model=68030", "<peripheral type=\"68030\">cpu</peripheral>"},
            {"68020 with FPU model", "cpu_type=68020/68881\ncpu_model=68020\nfpu_model=68882",
             "<peripheral type=\"68020\">cpu</peripheral>\n<peripheral type=\"68882\">fpu</peripheral>"},
            {"68040 as 68060", "cpu_type=68040\ncpu_model=68060\nmmu_model=68ec040",
             "<peripheral type=\"68060\">cpu</peripheral>"},
            {"68040 with EC MMU", "cpu_type=68040\nmmu_model=68ec040\nfpu_model=68040",
             "<peripheral type=\"68EC040\">cpu</peripheral>"},
            {"68040 with its FPU", "cpu_type=68040\nfpu_model=68040", "<peripheral type=\"68040\">cpu</peripheral>"},
            {"68040 without either", "cpu_type=68040", "<peripheral type=\"68LC040\">cpu</peripheral>"},
            {"unknown CPU type", "cpu_type=68030\nfpu_model=68881", "<peripheral type=\"68881\">fpu</peripheral>"},
            {"JIT", "cachesize=8192", "<peripheral memory=\"8388608\" fpu=\"true\">jit</peripheral>"},
            {"JIT without FPU", "cachesize=1024\ncompfpu=false",
             "<peripheral memory=\"1048576\" fpu=\"false\">jit</peripheral>"},
            {"no JIT", "cachesize=0\ncompfpu=true", ""},
            {"CyberStorm PPC", "cpuboard_type=CyberStormPPC\ncpuboardmem1_size=128\nuaeboard=full+indirect",
             "<peripheral memory=\"134217728\" mode=\"exclusive\" type=\"cyberstorm\">ppc</peripheral>"},
            {"CyberStorm PPC, other board mode", "cpuboard_type=cyberstormppc\nuaeboard=full",
             "<peripheral type=\"cyberstorm\">ppc</peripheral>"},
            {"other board", "cpuboard_type=Blizzard1230IV\ncpuboardmem1_size=128", ""},
        });
}

TEST(ConfigurationImport, WritesExpansions) {
    expect_rows(
        "configuration",
        {
            {"Picasso IV", "gfxcard_size=4\ngfxcard_type=PicassoIV_Z3",
             "<peripheral type=\"picasso-iv\" memory=\"4194304\">rtg</peripheral>"},
            {"UAE graphics card", "gfxcard_size=16\ngfxcard_type=ZorroIII",
             "<peripheral type=\"synthetic\" memory=\"16777216\">rtg</peripheral>"},
            {"A4091 before A2091", "a2091_rom_file=x.rom\na4091_rom_file=y.rom\nscsi=true",
             "<peripheral type=\"a4091\">scsi</peripheral>"},
            {"A2091", "a2091_rom_file=x.rom", "<peripheral type=\"a590\">scsi</peripheral>"},
            {"UAE SCSI", "scsi=true", "<peripheral type=\"synthetic\">scsi</peripheral>"},
            {"FM801 before ES1370", "fm801_pci=true\nes1370_pci=true", "<peripheral type=\"fm801\">audio</peripheral>"},
            {"ES1370", "es1370_pci=yes", "<peripheral type=\"es1370\">audio</peripheral>"},
            {"A2065", "a2065=slirp_inbound\nne2000_pci=slirp", "<peripheral type=\"a2065\">network</peripheral>"},
            {"NE2000", "a2065=slirp\nne2000_pci=slirp", "<peripheral type=\"rtl8029\">network</peripheral>"},
            {"bsdsocket", "bsdsocket_emu=true", "<peripheral type=\"synthetic\">network</peripheral>"},
            {"host drives",
             "win32.map_drives_auto=true\nwin32.map_cd_drives=1\nwin32.map_net_drives=yes\nwin32.map_drives=true",
             "<peripheral>automount-harddrives</peripheral>\n<peripheral>automount-network</peripheral>\n"
             "<peripheral>automount-optical</peripheral>\n<peripheral>automount-removable</peripheral>"},
            {"filtered low resolution", "gfx_lores_mode=filtered", "<peripheral>filter-interpolation</peripheral>"},
            {"A501 clock", "chipset_compatible=A500\nrtc=MSM6242B",
             "<system>a-500</system>\n<peripheral>a-501</peripheral>"},
            {"A601 clock", "chipset_compatible=A600\nrtc=msm6242b\nchipmem_size=2",
             "<system>a-600</system>\n<ram type=\"chip\">1048576</ram>\n<peripheral memory=\"1048576\">a-601</peripheral>"},
            {"clock on another model", "chipset_compatible=A1200\nrtc=MSM6242B", "<system>a-1200</system>"},
            {"no clock", "chipset_compatible=A500\nrtc=none", "<system>a-500</system>"},
            {"all drives silent", "floppy0sound=0\nfloppy1sound=0\nfloppy2sound=0\nfloppy3sound=0",
             "<peripheral>silent-drives</peripheral>"},
            {"three drives silent", "floppy0sound=0\nfloppy1sound=0\nfloppy2sound=0", ""},
            {"parallel port", "win32.parallel_port=LPT1\nparallel_postscript_emulation=true",
             "<peripheral mode=\"native\">parallel</peripheral>"},
            {"matrix printer",
             "win32.parallel_port=LPT1\nparallel_matrix_emulation=epson_matrix_48pin\n"
             "parallel_postscript_emulation=true\nparallel_postscript_detection=true",
             "<peripheral mode=\"epsonq\">parallel</peripheral>"},
            {"PostScript printer",
             "win32.parallel_port=LPT1\nparallel_postscript_emulation=true\nparallel_postscript_detection=true",
             "<peripheral mode=\"postscript\">parallel</peripheral>"},
            {"MIDI", "win32.serial_port=COM1\nwin32.midiin_device_name=Synth",
             "<peripheral mode=\"midi\">serial</peripheral>"},
            {"serial port", "win32.serial_port=COM1", "<peripheral mode=\"native\">serial</peripheral>"},
            {"ECS Agnus", "chipset=ecs_agnus", "<peripheral type=\"ecs\">agnus</peripheral>"},
            {"AGA", "chipset=aga", ""},
        });
}

TEST(ConfigurationImport, WritesCompatibilitySwitchesAndClip) {
    expect_rows(
        "configuration",
        {
            {"every switch in order",
             "gfx_max_vertical=lores\ngfx_max_horizontal=hires\nmagic_mouse=true\ncachesize=1024\nfloppy_speed=0\n"
             "collision_level=sprites\nsound_output=normal\nfpu_strict=false\ncpu_compatible=false\ncpu_cycle_exact=false\n"
             "immediate_blits=true\nblitter_cycle_exact=false\ncompfpu=false",
             "<peripheral memory=\"1048576\" fpu=\"false\">jit</peripheral>\n"
             "<compatibility>flexible-blitter-cycles</compatibility>\n<compatibility>flexible-blitter-immediate</compatibility>\n"
             "<compatibility>flexible-cpu-cycles</compatibility>\n<compatibility>flexible-cpu-compatibility</compatibility>\n"
             "<compatibility>flexible-fpu-compatibility</compatibility>\n<compatibility>flexible-sound</compatibility>\n"
             "<compatibility>flexible-sprite-collisions-spritesonly</compatibility>\n<compatibility>turbo-floppy</compatibility>\n"
             "<compatibility>jit</compatibility>\n<compatibility>mouseintegration</compatibility>\n"
             "<compatibility>flexible-maxhorizontal-nosuperhires</compatibility>\n"
             "<compatibility>flexible-maxvertical-nointerlace</compatibility>"},
            {"the other values", "collision_level=playfields\ngfx_max_horizontal=lores",
             "<compatibility>flexible-sprite-collisions-spritesplayfield</compatibility>\n"
             "<compatibility>flexible-maxhorizontal-nohires</compatibility>"},
            {"defaults and values that switch nothing",
             "blitter_cycle_exact=true\nimmediate_blits=false\ncpu_cycle_exact=yes\nsound_output=exact\nfloppy_speed=100\n"
             "cpu_compatible=false\ncachesize=0\ngfx_max_vertical=interlace",
             "<compatibility>flexible-cpu-compatibility</compatibility>"},
            {"clip",
             "gfx_filter_autoscale=manual\ngfx_center_horizontal_position=300\ngfx_center_vertical_position=40\n"
             "gfx_width=352\ngfx_height=270",
             "<clip left=\"44\" top=\"40\" width=\"704\" height=\"270\" version=\"2\"/>"},
            {"clip without a vertical position",
             "gfx_filter_autoscale=manual\ngfx_center_horizontal_position=300\n"
             "gfx_width=352\ngfx_height=270",
             ""},
            {"clip at the unset position",
             "gfx_filter_autoscale=manual\ngfx_center_horizontal_position=-1000\n"
             "gfx_center_vertical_position=40\ngfx_width=352\ngfx_height=270",
             ""},
            {"clip without autoscale",
             "gfx_filter_autoscale=auto\ngfx_center_horizontal_position=300\n"
             "gfx_center_vertical_position=40\ngfx_width=352\ngfx_height=270",
             ""},
        });
}

TEST(ConfigurationImport, WritesGamePorts) {
    const struct {
        const char* what;
        std::string uae, configuration, description;
    } rows[] = {
        {"mouse and joystick", "joyport0=mouse\njoyport1=joy1", "<peripheral unit=\"1\">input-joystick</peripheral>",
         "<joystick>true</joystick>"},
        {"joystick in port 0", "joyport0=joy0\njoyport0mode=default",
         "<peripheral unit=\"0\">input-joystick</peripheral>", "<joystick>true</joystick>"},
        {"nothing in port 0", "joyport0=none\njoyport1=none", "<peripheral unit=\"0\">input-empty</peripheral>", ""},
        {"a named mouse", "joyport0=Logitech USB Optical Mouse", "", ""},
        {"a named pad", "joyport1=Wireless Gamepad F710", "<peripheral unit=\"1\">input-joystick</peripheral>",
         "<joystick>true</joystick>"},
        {"mode over device", "joyport0=joy0\njoyport0mode=wheelmouse\njoyport1=kbd1\njoyport1mode=gamepad",
         "<peripheral unit=\"1\">input-gamepad</peripheral>", ""},
        {"CD32 joystick in port 0", "chipset_compatible=CD32\njoyport0=joy0\njoyport1=joy1\njoyport1mode=cd32joy",
         "<system>a-cd32</system>\n<peripheral unit=\"1\">input-joypad</peripheral>", "<joystick>true</joystick>"},
        {"CD32 pad in port 0", "chipset_compatible=CD32\njoyport0=joy0\njoyport0mode=cd32joy",
         "<system>a-cd32</system>\n<peripheral unit=\"0\">input-joypad</peripheral>", ""},
        {"CDTV mouse in port 0", "chipset_compatible=CDTV\njoyport0=mouse",
         "<system>a-cdtv</system>\n<peripheral unit=\"0\">input-mouse</peripheral>", ""},
        {"parallel adapter", "joyport2=joy2\njoyport3=none",
         "<peripheral type=\"parallel\">input-multitap</peripheral>\n"
         "<peripheral unit=\"0\" multitap=\"true\">input-joystick</peripheral>",
         "<joystick>true</joystick>"},
        {"parallel adapter's second port", "joyport3=joy3\njoyport3mode=cd32joy",
         "<peripheral type=\"parallel\">input-multitap</peripheral>\n"
         "<peripheral unit=\"1\" multitap=\"true\">input-joypad</peripheral>",
         ""},
    };
    StandInFiles files;
    for (const auto& row : rows) {
        const std::string xml = imported(row.uae, files);
        EXPECT_EQ(section(xml, "configuration"), row.configuration) << row.what;
        EXPECT_EQ(section(xml, "description"), row.description) << row.what;
    }
}

TEST(ConfigurationImport, WritesMedia) {
    StandInFiles files;
    files.attributes[u"C:\\Games\\Disk1.adf"] = platform::kAttributeReadOnly;
    files.attributes[u"D:\\Floppies\\Disk2.adf"] = 0x20;
    files.attributes[u"D:\\Work"] = platform::kAttributeDirectory;
    files.attributes[u"E:\\Drives\\Data"] = platform::kAttributeDirectory;
    files.attributes[u"E:\\Drives\\Plain"] = 0x20;
    expect_rows(
        "media",
        {
            {"floppies: absolute, relative, read-only, gaps",
             "win32.floppy_path=D:\\Floppies\\\nfloppy0=C:\\Games\\Disk1.adf\nfloppy2=Disk2.adf\nfloppy3=\\\\nas\\Missing.adf",
             "<floppy root=\"absolute\" priority=\"1\" readonly=\"true\">C:\\Games\\Disk1.adf</floppy>\n"
             "<floppy root=\"absolute\" priority=\"2\">D:\\Floppies\\Disk2.adf</floppy>\n"
             "<floppy root=\"absolute\" priority=\"3\">\\\\nas\\Missing.adf</floppy>"},
            {"floppy without a folder key", "floppy1=Disk3.adf",
             "<floppy root=\"absolute\" priority=\"1\">C:\\Amiga\\Configurations\\Disk3.adf</floppy>"},
            {"repeated hard files and folders share one count",
             "win32.hardfile_path=E:\\Drives\nhardfile2=rw,DH0:C:\\Games\\work.hdf,32,1,2,512,0,,uae0\n"
             "filesystem2=ro,DH1:Data:Data,-5\nhardfile2=ro,DH2:games.hdf,0,0,0,512,-128,ffs,ide1\n"
             "hardfile2=broken\nfilesystem2=rw,DH3:Gone:E:\\Gone,0\nfilesystem2=rw,DH4:Plain:Plain,0\n"
             "filesystem2=rw,DH5:Work:D:\\Work",
             "<harddrive root=\"absolute\" priority=\"1\" devicename=\"DH0\" sectors=\"32\" surfaces=\"1\" reserved=\"2\" "
             "blocksize=\"512\" bootpriority=\"0\" controller=\"uae0\">C:\\Games\\work.hdf</harddrive>\n"
             "<harddrive root=\"absolute\" priority=\"2\" readonly=\"true\" devicename=\"DH2\" sectors=\"0\" surfaces=\"0\" "
             "reserved=\"0\" blocksize=\"512\" bootpriority=\"-128\" filesystem=\"ffs-130\" controller=\"ide1\">"
             "E:\\Drives\\games.hdf</harddrive>\n"
             "<harddrive root=\"absolute\" priority=\"3\" readonly=\"true\" devicename=\"DH1\" volumename=\"Data\" "
             "bootpriority=\"-5\">E:\\Drives\\Data</harddrive>\n"
             "<harddrive root=\"absolute\" priority=\"4\" devicename=\"DH5\" volumename=\"Work\">D:\\Work</harddrive>"},
            {"CD image with options after it", "win32.cd_path=F:\\CD\ncdimage0=Game.cue,image",
             "<cd root=\"absolute\" priority=\"1\" readonly=\"true\">F:\\CD\\Game.cue</cd>"},
            {"relative folder key", "win32.cd_path=CD\ncdimage0=\"My, Game.iso\"",
             "<cd root=\"absolute\" priority=\"1\" readonly=\"true\">C:\\Amiga\\Configurations\\CD\\My, Game.iso</cd>"},
        },
        files);
}

// Whole configuration files: the .uae text and the expected document hold "@FOLDER@" where
// the test's folder goes; the files that a configuration names are made in that folder.
struct FileSpec {
    std::u16string_view name;
    std::string content; // a name ending in "\" is a folder
    bool is_read_only = false;
};

std::string replaced(std::string text, const std::string& folder) {
    for (std::size_t at; (at = text.find("@FOLDER@")) != std::string::npos;) text.replace(at, 8, folder);
    return text;
}

void expect_import_of_data_file(const char* name, const std::vector<FileSpec>& files) {
    SCOPED_TRACE(name);
    test::TempFolder folder;
    for (const FileSpec& file : files) {
        if (file.name.ends_with(u'\\'))
            folder.create_folder(file.name.substr(0, file.name.size() - 1));
        else
            folder.create_file(file.name, file.content);
        if (file.is_read_only) {
            ASSERT_EQ(platform::set_file_attributes(folder.path(file.name), platform::kAttributeReadOnly), 0u);
        }
    }
    const auto data_file = [&](std::u16string_view extension) {
        return replaced(
            test::read_file(test::to_fs_path(test::test_data_path(u"uae\\" + utf16(name) + std::u16string(extension)))),
            utf8(folder.path()));
    };
    const std::string uae = data_file(u".uae"), expected = data_file(u".xml");
    ASSERT_FALSE(uae.empty() || expected.empty());
    folder.create_file(u"test.uae", uae);
    std::string xml;
    EXPECT_EQ(import_emulator_configuration(folder.path(u"test.uae"), xml), status::ok);
    EXPECT_EQ(xml, expected);
    for (const FileSpec& file : files)
        if (file.is_read_only) platform::set_file_attributes(folder.path(file.name), 0);
}

TEST(ConfigurationImport, ImportsWholeConfigurationFiles) {
    using test::rom_image;
    expect_import_of_data_file("a500", {{u"Kickstarts\\kick13.rom", rom_image(262'144, 0xc4f0f55f)},
                                        {u"Floppies\\Workbench13.adf", "disk"},
                                        {u"Floppies\\Extras13.adf", "disk", true}});
    expect_import_of_data_file("a1200",
                               {{u"Kickstarts\\kick31-a1200.rom", test::byte_swapped(rom_image(524'288, 0x1483a091))},
                                {u"HardDrives\\System.hdf", "hdf"},
                                {u"HardDrives\\Games.hdf", "hdf"},
                                {u"Work\\", ""}});
    expect_import_of_data_file("a4000", {{u"Kickstarts\\kick32-a4000.rom", rom_image(524'288, 0x9bb8fc93)},
                                         {u"HardDrives\\A4000.hdf", "hdf"},
                                         {u"CD\\AmigaOS3.2.iso", "iso"}});
    expect_import_of_data_file("cd32",
                               {{u"Kickstarts\\cd32.rom", rom_image(1'048'576, 0xf5d4f3c8)}, {u"CD\\Game.cue", "cue"}});
}

TEST(ConfigurationImport, ReportsConfigurationFilesThatCannotBeRead) {
    test::TempFolder folder;
    folder.create_file(u"huge.uae", std::string(kMaxConfigurationBytes + 1, '#'));
    folder.create_file(u"limit.uae", std::string("config_description=x\n").append(kMaxConfigurationBytes - 21, '#'));
    std::string xml = "left over";
    EXPECT_EQ(import_emulator_configuration(folder.path(u"missing.uae"), xml), status::from_win32(2));
    EXPECT_EQ(xml, "");
    EXPECT_EQ(import_emulator_configuration(folder.path(u"huge.uae"), xml), kConfigurationTooLarge);
    EXPECT_EQ(xml, "");
    EXPECT_EQ(import_emulator_configuration(folder.path(u"limit.uae"), xml), status::ok);
    EXPECT_EQ(section(xml, "description"), "<text priority=\"1\">x</text>");
}

} // namespace
} // namespace kq::content
