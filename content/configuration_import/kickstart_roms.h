#pragma once
// Known Kickstart ROM images, recognised by their size and the CRC-32 of the whole image
// (zlib's CRC). A file is also recognised when it holds a known image
//   - byte-swapped: the two bytes of every 16-bit word exchanged, as burnt into EPROMs;
//   - doubled: twice its size, two identical copies of the image (an overdump);
//   - with the A3000 SuperKickstart "bonus" code after it (279'552 or 526'572 bytes).
// Encrypted images are never recognised by content.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kq::content {

// Image sizes that Kickstart ROMs come in.
inline constexpr std::array<std::uint32_t, 5> kKickstartImageBytes{
    8'192,     // 8 KiB: the A1000 bootstrap
    65'536,    // 64 KiB: the same, dumped with its unused space
    262'144,   // 256 KiB
    524'288,   // 512 KiB
    1'048'576, // 1 MiB: CD32 Kickstart and extension joined
};
// The largest file worth reading: a doubled image of the largest size.
inline constexpr std::uint32_t kMaxRomFileBytes = 2 * 1'048'576;

// A system ROM boots the machine; an extension ROM sits beside it (CD32, CDTV).
enum class RomRole { system, extension };

struct KickstartRom {
    std::uint32_t image_bytes;
    std::uint32_t crc32;
    // One image may go by two ids; the preferred one first (see rom_id_for_model).
    std::u16string_view id;
    std::u16string_view other_id = {};
    RomRole role = RomRole::system;
};

// The known images.
std::span<const KickstartRom> known_kickstart_roms();

// Whether a table is usable: every size one of kKickstartImageBytes, every id non-empty, no
// (size, CRC) pair twice.
constexpr bool is_well_formed_rom_table(std::span<const KickstartRom> table) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        const KickstartRom& rom = table[i];
        bool is_known_size = false;
        for (const std::uint32_t size : kKickstartImageBytes) is_known_size = is_known_size || size == rom.image_bytes;
        if (!is_known_size || rom.id.empty()) return false;
        for (std::size_t j = i + 1; j < table.size(); ++j)
            if (table[j].image_bytes == rom.image_bytes && table[j].crc32 == rom.crc32) return false;
    }
    return true;
}

// The image in `file`, or null when it holds none of the table's images.
const KickstartRom* identify_rom_image(std::span<const std::byte> file, std::span<const KickstartRom> table);

// The id to write for `rom` on `model_id`: of two ids, the one the model offers among its
// selectable ROMs, else the preferred one.
std::u16string_view rom_id_for_model(const KickstartRom& rom, std::u16string_view model_id);

// The system ROM id of the file at `path` for `model_id`; nullopt when the file cannot be
// read, is too large, holds no known image, or holds an extension ROM.
std::optional<std::u16string> recognise_system_rom(std::u16string_view path, std::u16string_view model_id);

} // namespace kq::content
