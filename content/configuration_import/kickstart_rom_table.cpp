// The Kickstart images that the importer recognises: image size and CRC-32 of the plain
// (unencrypted, not byte-swapped) image, from the team's ROM reference list. Several images
// share an id (revisions, patched or relocated copies, CD32 dumps with the extension joined).
//
// Two ids name the 3.1 (40.63) and the 3.1.4/3.2.x A500 images: "310-a500" / "310-a600" and
// "3x0-a500" / "3x0-a600". The A600 ids come first: every model that offers these images lists
// them under the A600 id, and manifests rewrite "310-a500" to "310-a600" anyway.

#include "content/configuration_import/kickstart_roms.h"

namespace kq::content {
namespace {

constexpr std::uint32_t k8K = 8'192, k64K = 65'536, k256K = 262'144, k512K = 524'288, k1M = 1'048'576;

constexpr std::array kKnownRoms{
    KickstartRom{.image_bytes = k256K, .crc32 = 0x428a9a4b, .id = u"070"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0x299790ff, .id = u"100"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0xd060572a, .id = u"110-ntsc"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0xec86dae2, .id = u"110-pal"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0xa6ce1636, .id = u"120"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0xc4f0f55f, .id = u"130"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0xe0f37258, .id = u"130-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xbc0ec13f, .id = u"140-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xc3bdb240, .id = u"204"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x234a7233, .id = u"204-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x83028fb5, .id = u"205-a600"}, // 37.299
    KickstartRom{.image_bytes = k512K, .crc32 = 0x64466c2a, .id = u"205-a600"}, // 37.300
    KickstartRom{.image_bytes = k512K, .crc32 = 0x43b0df7b, .id = u"205-a600"}, // 37.350
    KickstartRom{.image_bytes = k512K, .crc32 = 0x6c9b07d2, .id = u"300-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x9e6ac152, .id = u"300-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xfc24ae0d, .id = u"310-a600", .other_id = u"310-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x88136ca9, .id = u"310-a600", .other_id = u"310-a500"}, // ReKick
    KickstartRom{.image_bytes = k512K, .crc32 = 0x1483a091, .id = u"310-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xefb239cc, .id = u"310-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xd6bae334, .id = u"310-a4000"}, // 40.68
    KickstartRom{.image_bytes = k512K, .crc32 = 0x43b6dd22, .id = u"310-a4000"}, // 40.68, patched
    KickstartRom{.image_bytes = k512K, .crc32 = 0x2b4566f1, .id = u"310-a4000"}, // 40.70
    KickstartRom{.image_bytes = k512K, .crc32 = 0x75932c3a, .id = u"310-a4000t"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x1e62d4a5, .id = u"310-cd32"},
    KickstartRom{.image_bytes = k1M, .crc32 = 0xf5d4f3c8, .id = u"310-cd32"}, // extension joined
    KickstartRom{.image_bytes = k1M, .crc32 = 0xa4fbc94a, .id = u"310-cd32"}, // raw chip dump
    KickstartRom{.image_bytes = k512K, .crc32 = 0x87746be2, .id = u"310-cd32-ext", .role = RomRole::extension},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x261339f8, .id = u"320-walker"},
    KickstartRom{.image_bytes = k8K, .crc32 = 0x62f11c04, .id = u"amiga-boot-a1000"},
    KickstartRom{.image_bytes = k64K, .crc32 = 0x0b1ad2d0, .id = u"amiga-boot-a1000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x8484f426, .id = u"logica-dialoga-200"},
    KickstartRom{.image_bytes = k256K, .crc32 = 0x42baa124, .id = u"130-cdtv-ext", .role = RomRole::extension},
    KickstartRom{.image_bytes = k256K, .crc32 = 0x30b54232, .id = u"230-cdtv-ext", .role = RomRole::extension},
    // 3.1.4 (46.143): first release and revision.
    KickstartRom{.image_bytes = k512K, .crc32 = 0xd52b52fd, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x568f8786, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xc25939ac, .id = u"3x0-a500"}, // the A2000 image
    KickstartRom{.image_bytes = k512K, .crc32 = 0xf17fa97f, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xb87506a7, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x50c3529c, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xba35f8eb, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xd47e18fd, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x1b84cb33, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x75a2b2a5, .id = u"3x0-a4000t"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xd6d0ef3e, .id = u"3x0-a4000t"},
    // 3.2 (47.96).
    KickstartRom{.image_bytes = k512K, .crc32 = 0x8173d7b6, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xbd1ff75e, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xf3af46cc, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x9bb8fc93, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x9188a509, .id = u"3x0-a4000t"},
    // 3.2.1 (47.102).
    KickstartRom{.image_bytes = k512K, .crc32 = 0x4f078456, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x2b653371, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x0078f607, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xf3ced3b8, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xaf3452ec, .id = u"3x0-a4000t"},
    // 3.2.2 (47.111).
    KickstartRom{.image_bytes = k512K, .crc32 = 0xe4458462, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x5c40328a, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x46335b57, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x4bea9798, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x36bbcd8a, .id = u"3x0-a4000t"},
    // 3.2.3 (47.115).
    KickstartRom{.image_bytes = k512K, .crc32 = 0xe1f50b0b, .id = u"3x0-a600", .other_id = u"3x0-a500"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xb18d3b67, .id = u"3x0-a1200"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x74c0b23f, .id = u"3x0-a3000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0xb6a4698e, .id = u"3x0-a4000"},
    KickstartRom{.image_bytes = k512K, .crc32 = 0x588a5e6d, .id = u"3x0-a4000t"},
};
static_assert(is_well_formed_rom_table(kKnownRoms));
static_assert(kKnownRoms.size() == 64); // every row of the reference list

} // namespace

std::span<const KickstartRom> known_kickstart_roms() { return kKnownRoms; }

} // namespace kq::content
