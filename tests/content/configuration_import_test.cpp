// The import of emulator configurations: the file reader and its value readers, the drive-line
// formats, one small configuration per row with the elements it adds (files answered by a
// stand-in file system), whole configuration files from tests/data/uae compared byte for byte
// with their expected documents, and the Kickstart images recognised by size and CRC-32.

#include "content/configuration_import/configuration_import.h"
#include "content/configuration_import/drive_lines.h"
#include "content/configuration_import/kickstart_roms.h"
#include "content/configuration_import/uae_configuration.h"
#include "platform/files.h"
#include "tests/content/rom_image_builder.h"
#include "tests/support/printable.h"
#include "tests/support/temp_folder.h"
#include "tests/support/test_paths.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <string>
#include <vector>

namespace kq::content {
namespace {

using test::byte_swapped;
using test::printable;
using test::rom_image;

std::u16string utf16(std::string_view text) { return {text.begin(), text.end()}; } // ASCII only

TEST(UaeConfiguration, ReadsLinesAndSkipsWhatIsNoEntry) {
    const std::pair<std::string, std::string> rows[] = {
        {"a=1\r\n  b \t=\t two words \nc=3\rd=4", "a=1|b=two words|c=3|d=4|"}, // blanks around key and value
        {"\xEF\xBB\xBFkey=v\n", "key=v|"},
        {"; comment\n# comment=1\n\n   \n  ;x=1\nk=v", "k=v|"},
        {"just text\n=value\n k =\n", "k=|"},
        {"path=C:\\a=b\n", "path=C:\\a=b|"},
        {"a=\xC3\x28\nb=\xC3\xA9\n", "b=?|"},                         // malformed UTF-8 drops its line only
        {"a=x\x01y\nb=\xEF\xBF\xBE\nc=\x7F\td\nk\x1B=1\n", "c=??d|"}, // as do characters XML cannot hold
    };
    for (const auto& [text, expected] : rows) {
        std::string entries;
        const UaeConfiguration configuration = UaeConfiguration::parse(text);
        for (const UaeConfiguration::Entry& entry : configuration.entries())
            entries += printable(entry.key) + "=" + printable(entry.value) + "|";
        EXPECT_EQ(entries, expected) << text;
    }
    const UaeConfiguration configuration =
        UaeConfiguration::parse("Chipset=ocs\nchipset=AGA\nempty=x\nempty=\nhardfile2=a\nhardfile2=\nhardfile2=b\n");
    EXPECT_EQ(configuration.value(u"CHIPSET"), u"AGA") << "the last value counts";
    EXPECT_TRUE(configuration.is(u"chipset", u"aga"));
    EXPECT_FALSE(configuration.is(u"missing", u""));
    EXPECT_FALSE(configuration.has(u"empty")) << "the last value, empty, counts as absent";
    EXPECT_EQ(configuration.values(u"HardFile2"), (std::vector<std::u16string_view>{u"a", u"b"}));
}

std::string shown(const std::optional<std::int32_t>& number) { return number ? std::to_string(*number) : "-"; }

// Each row: a value, then what boolean() gives with the default true and with false, then number().
TEST(UaeConfiguration, ReadsBooleansAndNumbers) {
    const std::pair<const char*, const char*> rows[] = {
        {"true", "11-"},  {"YES", "11-"}, {"1", "111"}, {"-3", "11-3"}, {"12mb", "1112"},
        {"false", "00-"}, {"No", "00-"},  {"0", "000"}, {"on", "00-"},  {"", "10-"}, // "": absent, the default
    };
    for (const auto& [value, expected] : rows) {
        const UaeConfiguration c = UaeConfiguration::parse(std::string("k=") + value);
        EXPECT_EQ(std::to_string(c.boolean(u"k", true)) + std::to_string(c.boolean(u"k", false)) +
                      shown(c.number(u"k")),
                  expected)
            << value;
    }
}

TEST(DriveLines, ReadsHardFileAndFolderLines) {
    const std::pair<std::u16string_view, const char*> hard_files[] = {
        // read-only|device|path|sectors|surfaces|reserved|block size|boot priority|file system|controller
        {u"rw,DH0:C:\\Games\\work.hdf,32,1,2,512,0,,uae0", "0|DH0|C:\\Games\\work.hdf|32|1|2|512|0||uae0"},
        {u"ro,DH1:hdf\\data.hdf,0,0,0,512,-128,C:\\L\\FastFileSystem,ide1,0,extra",
         "1|DH1|hdf\\data.hdf|0|0|0|512|-128|C:\\L\\FastFileSystem|ide1"},
        {u"rw,DH2:\"C:\\My, Games\\x.hdf\",32,x", "0|DH2|C:\\My, Games\\x.hdf|32|-|-|-|-||"},
        {u"RO,DH3:d.hdf", "1|DH3|d.hdf|-|-|-|-|-||"},
        {u"rw,C:\\no-device.hdf,32", "0|C|\\no-device.hdf|32|-|-|-|-||"},
        {u"rw,DH0", "none"},
        {u"rw,DH0:,32", "none"},
        {u"", "none"},
    };
    for (const auto& [value, expected] : hard_files) {
        const std::optional<HardfileLine> l = read_hardfile_line(value);
        EXPECT_EQ(!l ? "none"
                     : std::to_string(l->is_read_only) + "|" + printable(l->device_name) + "|" + printable(l->path) +
                           "|" + shown(l->sectors) + "|" + shown(l->surfaces) + "|" + shown(l->reserved) + "|" +
                           shown(l->block_size) + "|" + shown(l->boot_priority) + "|" + printable(l->file_system) +
                           "|" + printable(l->controller),
                  expected)
            << printable(value);
    }
    const std::pair<std::u16string_view, const char*> folders[] = {
        // read-only|device|volume|path|boot priority
        {u"rw,DH0:System:C:\\Amiga\\System,5", "0|DH0|System|C:\\Amiga\\System|5"},
        {u"ro,DH1::Work,", "1|DH1||Work|-"},
        {u"rw,DH2:Name:\"C:\\a,b\",-1,more", "0|DH2|Name|C:\\a,b|-1"},
        {u"rw,DH0:System", "none"},
        {u"rw,DH0:System:", "none"},
    };
    for (const auto& [value, expected] : folders) {
        const std::optional<FolderLine> l = read_folder_line(value);
        EXPECT_EQ(!l ? "none"
                     : std::to_string(l->is_read_only) + "|" + printable(l->device_name) + "|" +
                           printable(l->volume_name) + "|" + printable(l->path) + "|" + shown(l->boot_priority),
                  expected)
            << printable(value);
    }
}

// Files as the stand-in file system knows them; every ROM question is recorded.
struct StandInFiles {
    std::map<std::u16string, std::uint32_t, std::less<>> attributes{
        {u"C:\\Games\\Disk1.adf", platform::kAttributeReadOnly},
        {u"D:\\Floppies\\Disk2.adf", 0x20},
        {u"D:\\Work", platform::kAttributeDirectory},
        {u"E:\\Drives\\Data", platform::kAttributeDirectory},
        {u"E:\\Drives\\Plain", 0x20}};
    std::map<std::u16string, std::u16string, std::less<>> roms{
        {u"D:\\Roms\\kick31.rom", u"310-a1200"}, {u"C:\\Amiga\\Configurations\\Roms\\kick31.rom", u"310-a600"}};
    std::string rom_questions; // "path on model;" each

    ImportFileSystem file_system() {
        return {
            .attributes = [this](std::u16string_view path) -> std::optional<std::uint32_t> {
                const auto found = attributes.find(path);
                return found == attributes.end() ? std::nullopt : std::optional(found->second);
            },
            .system_rom = [this](std::u16string_view path, std::u16string_view model) -> std::optional<std::u16string> {
                rom_questions += printable(path) + " on " + printable(model) + ";";
                const auto found = roms.find(path);
                return found == roms.end() ? std::nullopt : std::optional(found->second);
            }};
    }
};

// The children of one section of the document, without indentation or line ends; each
// peripheral shown as "kind[attributes]", each compatibility switch as "~switch".
std::string section(const std::string& xml, const std::string& name) {
    const std::string open = "\t\t\t<" + name + ">\r\n";
    const std::size_t begin = xml.find(open), end = xml.find("\t\t\t</" + name + ">\r\n");
    std::string children;
    for (std::size_t at = begin + open.size(); begin != std::string::npos && at < end; at = xml.find('\n', at) + 1)
        children += xml.substr(at + 4, xml.find('\r', at) - at - 4);
    children = std::regex_replace(children, std::regex("<peripheral ?([^>]*)>([^<]*)</peripheral>"), "$2[$1]");
    return std::regex_replace(children, std::regex("<compatibility>([^<]*)</compatibility>"), "~$1");
}

// Each row: a configuration, the section of the document it is written to (Description,
// Configuration, Media), and that section's children. What the whole files below show is not
// repeated here.
TEST(ConfigurationImport, WritesEachSetting) {
    const struct {
        char section;
        const char *uae, *expected;
    } rows[] = {
        {'D', "config_description=Fish & <Chips>", "<text priority=\"1\">Fish &amp; &lt;Chips&gt;</text>"},
        {'D', "config_description=", ""},
        {'C', "chipset_compatible=A500\nbogomem_size=2", "<system>a-2000</system><ram type=\"slow\">524288</ram>"},
        {'C', "chipset_compatible=A500\nbogomem_size=1", "<system>a-500</system><ram type=\"slow\">262144</ram>"},
        {'C', "chipset_compatible=a500+", "<system>a-500plus</system>"},
        {'C', "chipset_compatible=A4000", "<system>a-4000</system>"},
        {'C', "chipset_compatible=CDTV", "<system>a-cdtv</system>"},
        {'C', "chipset_compatible=A5000", ""},
        {'C', "a3000mem_size=0\nfastmem_size=4", "<ram type=\"fast\">4194304</ram>"},
        {'C', "z3mem_size=64\nz3mem2_size=32\nz3mem3_size=0\nz3mem4_size=128", "<ram type=\"z3\">234881024</ram>"},
        {'C', "z3mem_size=2048\nz3mem2_size=2048", "<ram type=\"z3\">4294967296</ram>"},
        {'C', "chipmem_size=0\nbogomem_size=-2\nfastmem_size=lots", ""},
        {'C', "ntsc=maybe", "<video>pal</video>"},
        {'C', "ntsc=", ""},
        {'C', "chipset_compatible=CD32\nfloppy0type=0\nfloppy3type=2",
         "<system>a-cd32</system>floppy[unit=\"0\" type=\"dd\"]floppy[unit=\"3\" type=\"dd\"]"},
        {'C', "cpu_type=68EC020\ncpu_speed=15", "cpu[type=\"68ec020\" speed=\"real\"]"},
        {'C', "cpu_type=68ec020/68881", "cpu[type=\"68ec020\"]fpu[type=\"68881\"]"},
        {'C', "cpu_type=68040\ncpu_model=68060\nmmu_model=68ec040", "cpu[type=\"68060\"]"},
        {'C', "cpu_type=68040\nmmu_model=68ec040\nfpu_model=68040", "cpu[type=\"68EC040\"]"},
        {'C', "cpu_type=68040", "cpu[type=\"68LC040\"]"},
        {'C', "cpu_type=68030\nfpu_model=68881", "fpu[type=\"68881\"]"},
        {'C', "cachesize=1024\ncompfpu=false", "jit[memory=\"1048576\" fpu=\"false\"]"},
        {'C', "cpuboard_type=CyberStormPPC\ncpuboardmem1_size=128\nuaeboard=full+indirect",
         "ppc[memory=\"134217728\" mode=\"exclusive\" type=\"cyberstorm\"]"},
        {'C', "cpuboard_type=cyberstormppc\nuaeboard=full", "ppc[type=\"cyberstorm\"]"},
        {'C', "cpuboard_type=Blizzard1230IV\ncpuboardmem1_size=128", ""},
        {'C', "gfxcard_size=16\ngfxcard_type=ZorroIII", "rtg[type=\"synthetic\" memory=\"16777216\"]"},
        {'C', "a2091_rom_file=x.rom\na4091_rom_file=y.rom\nscsi=true", "scsi[type=\"a4091\"]"},
        {'C', "a2091_rom_file=x.rom", "scsi[type=\"a590\"]"},
        {'C', "scsi=true", "scsi[type=\"synthetic\"]"},
        {'C', "fm801_pci=true\nes1370_pci=true", "audio[type=\"fm801\"]"},
        {'C', "a2065=slirp_inbound\nne2000_pci=slirp", "network[type=\"a2065\"]"},
        {'C', "win32.map_drives_auto=true\nwin32.map_cd_drives=1\nwin32.map_net_drives=yes",
         "automount-network[]automount-optical[]automount-removable[]"},
        {'C', "gfx_lores_mode=filtered", "filter-interpolation[]"},
        {'C', "chipset_compatible=A600\nrtc=msm6242b\nchipmem_size=2",
         "<system>a-600</system><ram type=\"chip\">1048576</ram>a-601[memory=\"1048576\"]"},
        {'C', "chipset_compatible=A1200\nrtc=MSM6242B\nfloppy0sound=0\nfloppy1sound=0\nfloppy2sound=0",
         "<system>a-1200</system>"},
        {'C', "win32.parallel_port=LPT1\nparallel_postscript_emulation=true", "parallel[mode=\"native\"]"},
        {'C',
         "win32.parallel_port=LPT1\nparallel_matrix_emulation=epson_matrix_48pin\nparallel_postscript_emulation=1\n"
         "parallel_postscript_detection=1",
         "parallel[mode=\"epsonq\"]"},
        {'C', "win32.serial_port=COM1", "serial[mode=\"native\"]"},
        {'C',
         "gfx_max_vertical=lores\ngfx_max_horizontal=lores\ncollision_level=sprites\nimmediate_blits=true\n"
         "cpu_compatible=false",
         "~flexible-blitter-immediate~flexible-cpu-compatibility~flexible-sprite-collisions-spritesonly"
         "~flexible-maxhorizontal-nohires~flexible-maxvertical-nointerlace"},
        {'C', "gfx_filter_autoscale=manual\ngfx_center_horizontal_position=300\ngfx_width=352\ngfx_height=270", ""},
        {'C',
         "gfx_filter_autoscale=manual\ngfx_center_horizontal_position=-1000\ngfx_center_vertical_position=40\n"
         "gfx_width=352\ngfx_height=270",
         ""},
        {'C', "joyport0=none\njoyport1=none", "input-empty[unit=\"0\"]"},
        {'D', "joyport0=none\njoyport1=none", ""},
        {'C', "joyport0=Logitech USB Optical Mouse", ""},
        {'C', "joyport1=Wireless Gamepad F710", "input-joystick[unit=\"1\"]"},
        {'C', "joyport0=joy0\njoyport0mode=wheelmouse\njoyport1=kbd1\njoyport1mode=gamepad",
         "input-gamepad[unit=\"1\"]"},
        {'D', "joyport0=joy0\njoyport0mode=wheelmouse\njoyport1=kbd1\njoyport1mode=gamepad", ""},
        {'C', "chipset_compatible=CD32\njoyport0=joy0\njoyport0mode=cd32joy",
         "<system>a-cd32</system>input-joypad[unit=\"0\"]"},
        {'C', "chipset_compatible=CDTV\njoyport0=mouse", "<system>a-cdtv</system>input-mouse[unit=\"0\"]"},
        {'C', "joyport3=joy3\njoyport3mode=cd32joy",
         "input-multitap[type=\"parallel\"]input-joypad[unit=\"1\" multitap=\"true\"]"},
        {'M',
         "win32.floppy_path=D:\\Floppies\\\nfloppy0=C:\\Games\\Disk1.adf\nfloppy2=Disk2.adf\nfloppy3=\\\\nas\\X.adf",
         "<floppy root=\"absolute\" priority=\"1\" readonly=\"true\">C:\\Games\\Disk1.adf</floppy>"
         "<floppy root=\"absolute\" priority=\"2\">D:\\Floppies\\Disk2.adf</floppy>"
         "<floppy root=\"absolute\" priority=\"3\">\\\\nas\\X.adf</floppy>"},
        {'M', "floppy1=Disk3.adf",
         "<floppy root=\"absolute\" priority=\"1\">C:\\Amiga\\Configurations\\Disk3.adf</floppy>"},
        {'M',
         "win32.hardfile_path=E:\\Drives\nfilesystem2=ro,DH1:Data:Data,-5\nhardfile2=broken\n"
         "hardfile2=ro,DH2:games.hdf,0,0,0,512,-128,ffs,ide1\nfilesystem2=rw,DH4:Plain:Plain,0\n"
         "filesystem2=rw,DH5:Work:D:\\Work",
         "<harddrive root=\"absolute\" priority=\"1\" readonly=\"true\" devicename=\"DH2\" sectors=\"0\" "
         "surfaces=\"0\" reserved=\"0\" blocksize=\"512\" bootpriority=\"-128\" filesystem=\"ffs-130\" "
         "controller=\"ide1\">E:\\Drives\\games.hdf</harddrive><harddrive root=\"absolute\" priority=\"2\" "
         "readonly=\"true\" devicename=\"DH1\" volumename=\"Data\" bootpriority=\"-5\">E:\\Drives\\Data</harddrive>"
         "<harddrive root=\"absolute\" priority=\"3\" devicename=\"DH5\" volumename=\"Work\">D:\\Work</harddrive>"},
        {'M', "win32.cd_path=CD\ncdimage0=\"My, Game.iso\"",
         "<cd root=\"absolute\" priority=\"1\" readonly=\"true\">C:\\Amiga\\Configurations\\CD\\My, Game.iso</cd>"},
        // The system ROM relative to win32.rom_path, absolute, or relative to a relative folder.
        {'C', "chipset_compatible=A1200\nwin32.rom_path=D:\\Roms\\\nkickstart_rom_file=kick31.rom",
         "<system>a-1200</system><rom type=\"system\">310-a1200</rom>"},
        {'C', "win32.rom_path=E:\\\nkickstart_rom_file=D:\\Roms\\kick31.rom", "<rom type=\"system\">310-a1200</rom>"},
        {'C', "win32.rom_path=Roms\nkickstart_rom_file=kick31.rom", "<rom type=\"system\">310-a600</rom>"},
        {'C', "kickstart_rom_file=D:\\Roms\\other.rom", ""},
    };
    StandInFiles files;
    for (const auto& row : rows) {
        std::string xml;
        EXPECT_EQ(
            build_catalog(UaeConfiguration::parse(row.uae), u"C:\\Amiga\\Configurations", files.file_system(), xml),
            status::ok);
        const char* section_name = row.section == 'D' ? "description" : row.section == 'C' ? "configuration" : "media";
        EXPECT_EQ(section(xml, section_name), row.expected) << row.uae;
    }
    EXPECT_EQ(files.rom_questions, "D:\\Roms\\kick31.rom on a-1200;D:\\Roms\\kick31.rom on ;"
                                   "C:\\Amiga\\Configurations\\Roms\\kick31.rom on ;D:\\Roms\\other.rom on ;");
}

// Whole configuration files: the .uae text and the expected document hold "@FOLDER@" where
// the test's folder goes; the files that a configuration names are made in that folder ("\"
// at the end: a folder, "!" at the start: read-only).
TEST(ConfigurationImport, ImportsWholeConfigurationFiles) {
    const std::pair<const char*, std::vector<std::pair<std::u16string_view, std::string>>> configurations[] = {
        {"a500",
         {{u"Kickstarts\\kick13.rom", rom_image(262'144, 0xc4f0f55f)},
          {u"Floppies\\Workbench13.adf", "disk"},
          {u"!Floppies\\Extras13.adf", "disk"}}},
        {"a1200",
         {{u"Kickstarts\\kick31-a1200.rom", byte_swapped(rom_image(524'288, 0x1483a091))},
          {u"HardDrives\\System.hdf", "hdf"},
          {u"HardDrives\\Games.hdf", "hdf"},
          {u"Work\\", ""}}},
        {"a4000",
         {{u"Kickstarts\\kick32-a4000.rom", rom_image(524'288, 0x9bb8fc93)},
          {u"HardDrives\\A4000.hdf", "hdf"},
          {u"CD\\AmigaOS3.2.iso", "iso"}}},
        {"cd32", {{u"Kickstarts\\cd32.rom", rom_image(1'048'576, 0xf5d4f3c8)}, {u"CD\\Game.cue", "cue"}}},
    };
    for (const auto& [name, files] : configurations) {
        SCOPED_TRACE(name);
        test::TempFolder folder;
        std::vector<std::u16string> read_only;
        for (const auto& [file_name, content] : files) {
            const std::u16string_view file = file_name.substr(file_name.starts_with(u'!') ? 1 : 0);
            if (file.ends_with(u'\\'))
                folder.create_folder(file.substr(0, file.size() - 1));
            else
                folder.create_file(file, content);
            if (file != file_name) read_only.push_back(folder.path(file));
        }
        for (const std::u16string& path : read_only)
            ASSERT_EQ(platform::set_file_attributes(path, platform::kAttributeReadOnly), 0u);
        const auto data_file = [&](std::u16string_view extension) {
            std::string text = test::read_file(
                test::to_fs_path(test::test_data_path(u"uae\\" + utf16(name) + std::u16string(extension))));
            const std::string path = printable(folder.path());
            for (std::size_t at; (at = text.find("@FOLDER@")) != std::string::npos;) text.replace(at, 8, path);
            return text;
        };
        const std::string uae = data_file(u".uae"), expected = data_file(u".xml");
        ASSERT_FALSE(uae.empty() || expected.empty());
        folder.create_file(u"test.uae", uae);
        std::string xml;
        EXPECT_EQ(import_emulator_configuration(folder.path(u"test.uae"), xml), status::ok);
        EXPECT_EQ(xml, expected);
        for (const std::u16string& path : read_only) platform::set_file_attributes(path, 0);
    }
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

std::string identified(const std::string& file, std::span<const KickstartRom> table) {
    const KickstartRom* rom = identify_rom_image(std::as_bytes(std::span(file)), table);
    return rom == nullptr ? "none" : printable(rom->id);
}

TEST(KickstartRoms, RecognisesImagesInTheirStoredForms) {
    constexpr std::array<KickstartRom, 3> table{
        KickstartRom{.image_bytes = 8'192, .crc32 = 0x11111111, .id = u"small"},
        KickstartRom{.image_bytes = 65'536, .crc32 = 0x22222222, .id = u"middle"},
        KickstartRom{.image_bytes = 262'144, .crc32 = 0x33333333, .id = u"large"}};
    const std::string small = rom_image(8'192, 0x11111111), other = rom_image(8'192, 0x44444444, 7);
    std::string changed = small;
    changed[100] ^= 1;
    const std::pair<std::string, const char*> rows[] = {
        {small, "small"},
        {byte_swapped(small), "small"},
        {small + small, "small"},
        {rom_image(65'536, 0x22222222), "middle"},
        {rom_image(262'144, 0x33333333) + std::string(17'408, 'b'), "large"}, // the SuperKickstart bonus
        {changed, "none"},
        {small + '\0', "none"},
        {small + other, "none"},
        {rom_image(262'144, 0x55555555) + std::string(17'408, 'b'), "none"},
        {"", "none"},
    };
    for (const auto& [file, id] : rows) EXPECT_EQ(identified(file, table), id) << file.size();
}

TEST(KickstartRoms, TheTableIsWellFormedAndTheCheckerRefusesMalformedOnes) {
    EXPECT_TRUE(is_well_formed_rom_table(known_kickstart_roms()));
    const KickstartRom good{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a1200"};
    const std::pair<std::array<KickstartRom, 2>, bool> rows[] = {
        {{good, {.image_bytes = 524'288, .crc32 = 2, .id = u"x"}}, true},
        {{good, {.image_bytes = 262'144, .crc32 = 1, .id = u"x"}}, true},  // the same CRC at another size
        {{good, {.image_bytes = 524'288, .crc32 = 1, .id = u"x"}}, false}, // the same size and CRC twice
        {{good, {.image_bytes = 524'289, .crc32 = 2, .id = u"x"}}, false}, // a size ROMs never have
        {{good, {.image_bytes = 262'144, .crc32 = 2, .id = u""}}, false},
    };
    for (const auto& [table, is_well_formed] : rows) EXPECT_EQ(is_well_formed_rom_table(table), is_well_formed);
    // Of two ids, the one that the model offers, else the preferred one.
    const KickstartRom a600_first{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a600", .other_id = u"310-a500"};
    const KickstartRom a500_first{.image_bytes = 524'288, .crc32 = 1, .id = u"310-a500", .other_id = u"310-a600"};
    EXPECT_EQ(rom_id_for_model(a600_first, u"a-500"), u"310-a600");
    EXPECT_EQ(rom_id_for_model(a500_first, u"A-600"), u"310-a600");
    EXPECT_EQ(rom_id_for_model(a500_first, u"a-4000"), u"310-a500");
    EXPECT_EQ(rom_id_for_model({.image_bytes = 8'192, .crc32 = 1, .id = u"3x0-a500"}, u"a-600"), u"3x0-a500");
}

// Images forged to the size and CRC-32 that the ROM reference list gives; the whole files above
// show four more.
TEST(KickstartRoms, RecognisesSystemRomFilesWithTheRealTable) {
    test::TempFolder folder;
    const struct {
        std::u16string_view name;
        std::string content;
        std::u16string_view model;
        std::optional<std::u16string> id;
    } rows[] = {
        {u"kick31-a500.rom", rom_image(524'288, 0xfc24ae0d), u"a-500", u"310-a600"},
        {u"kick205.rom", rom_image(524'288, 0x43b0df7b), u"a-600", u"205-a600"},
        {u"boot.rom", rom_image(65'536, 0x0b1ad2d0), u"a-1000", u"amiga-boot-a1000"},
        {u"cd32-extension.rom", rom_image(524'288, 0x87746be2), u"a-cd32", std::nullopt},
        {u"unknown.rom", rom_image(524'288, 0x12345678), u"a-500", std::nullopt},
        {u"too-large.rom", std::string(kMaxRomFileBytes + 2, '\0'), u"a-500", std::nullopt},
    };
    for (const auto& row : rows) {
        folder.create_file(row.name, row.content);
        EXPECT_EQ(recognise_system_rom(folder.path(row.name), row.model), row.id) << printable(row.name);
    }
    EXPECT_EQ(recognise_system_rom(folder.path(u"missing.rom"), u"a-500"), std::nullopt);
}

} // namespace
} // namespace kq::content
