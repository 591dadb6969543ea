#include "content/configuration_import/kickstart_roms.h"

#include "common/compare.h"
#include "content/configuration_import/whole_file.h"
#include "manifest/system_models.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace kq::content {
namespace {

// A3000 SuperKickstart files carry "bonus" code after the ROM: file size, then ROM size.
struct BonusLayout {
    std::uint32_t file_bytes, rom_bytes;
};
constexpr std::array kSuperKickstartLayouts{BonusLayout{279'552, 262'144}, BonusLayout{526'572, 524'288}};

std::uint32_t crc32_of(std::span<const std::byte> bytes) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

std::vector<std::byte> byte_swapped(std::span<const std::byte> bytes) {
    std::vector<std::byte> swapped(bytes.begin(), bytes.end());
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
    return swapped;
}

// The row for an image of exactly these bytes, plain or byte-swapped.
const KickstartRom* find_image(std::span<const std::byte> image, std::span<const KickstartRom> table) {
    const auto same_size = [&](const KickstartRom& rom) { return rom.image_bytes == image.size(); };
    if (std::ranges::none_of(table, same_size)) return nullptr;
    const auto find_crc = [&](std::uint32_t crc) -> const KickstartRom* {
        const auto found =
            std::ranges::find_if(table, [&](const KickstartRom& rom) { return same_size(rom) && rom.crc32 == crc; });
        return found == table.end() ? nullptr : &*found;
    };
    if (const KickstartRom* plain = find_crc(crc32_of(image))) return plain;
    if (image.size() % 2 != 0) return nullptr;
    return find_crc(crc32_of(byte_swapped(image)));
}

} // namespace

const KickstartRom* identify_rom_image(std::span<const std::byte> file, std::span<const KickstartRom> table) {
    if (const KickstartRom* whole = find_image(file, table)) return whole;
    const std::size_t half = file.size() / 2;
    const bool is_doubled = half > 0 && file.size() % 2 == 0 && std::memcmp(file.data(), file.data() + half, half) == 0;
    if (const KickstartRom* copy = is_doubled ? find_image(file.first(half), table) : nullptr) return copy;
    for (const BonusLayout& layout : kSuperKickstartLayouts)
        if (file.size() == layout.file_bytes) return find_image(file.first(layout.rom_bytes), table);
    return nullptr;
}

std::u16string_view rom_id_for_model(const KickstartRom& rom, std::u16string_view model_id) {
    if (rom.other_id.empty()) return rom.id;
    const auto offers = [&](std::u16string_view id) {
        return std::ranges::any_of(manifest::find_model(model_id).selectable_roms,
                                   [&](std::u16string_view offered) { return equal_ignoring_case(offered, id); });
    };
    return offers(rom.id) || !offers(rom.other_id) ? rom.id : rom.other_id;
}

std::optional<std::u16string> recognise_system_rom(std::u16string_view path, std::u16string_view model_id) {
    std::string bytes;
    if (!status::succeeded(read_whole_file(path, kMaxRomFileBytes, bytes))) return std::nullopt;
    const KickstartRom* rom = identify_rom_image(std::as_bytes(std::span(bytes)), known_kickstart_roms());
    if (rom == nullptr || rom->role != RomRole::system) return std::nullopt;
    return std::u16string(rom_id_for_model(*rom, model_id));
}

} // namespace kq::content
