#include "media/extended_adf.h"

#include "common/byte_order.h"
#include "media/mfm_track.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>

namespace kq::media {
namespace {

constexpr std::array<char, 8> kNewerSignature = {'U', 'A', 'E', '-', '1', 'A', 'D', 'F'};
constexpr std::array<char, 8> kOlderSignature = {'U', 'A', 'E', '-', '-', 'A', 'D', 'F'};
constexpr std::size_t kHeaderBytes = 12;
constexpr std::size_t kNewerEntryBytes = 12, kOlderEntryBytes = 4;
constexpr std::uint32_t kOlderTrackCount = 160;
constexpr std::uint32_t kOlderDataOffset = 648; // 8 + 160 × 4
constexpr std::uint32_t kLongTrackBytes = 20000;
constexpr std::uint32_t kInvalidData = platform::system_error::invalid_data;

bool starts_with(std::span<const std::byte> bytes, const std::array<char, 8>& signature) {
    return bytes.size() >= signature.size() && std::memcmp(bytes.data(), signature.data(), signature.size()) == 0;
}

// Reads exactly bytes.size() bytes: 0, the read's system error, or invalid data when the file
// ends first.
HResult read_exactly(ByteSource& source, std::span<std::byte> bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        const std::optional<std::size_t> got = source.read(bytes.subspan(taken));
        if (!got) return status::system_failure();
        if (*got == 0) return status::from_win32(kInvalidData);
        taken += *got;
    }
    return status::ok;
}

// One track's sectors as decoded, in slots for the most sectors a track holds.
struct TrackSlots {
    std::array<std::byte, kHighDensitySectors * kSectorBytes> data{};
    std::bitset<kHighDensitySectors> found;
};

HResult decode_track(ByteSource& source, const ExtendedAdfTrack& track, TrackSlots& slots, bool& high_density) {
    if (track.byte_length == 0) return status::ok; // unformatted
    if (!source.seek(track.offset)) return status::system_failure();
    if (track.type == kTrackTypeRawMfm) {
        std::vector<std::byte> raw(track.byte_length); // at most 16 MiB: the length has 24 bits
        if (const HResult read = read_exactly(source, raw); read != status::ok) return read;
        const MfmTrackSectors sectors = decode_mfm_track(raw, track.bit_length, kHighDensitySectors, slots.data);
        slots.found = sectors.found;
        for (unsigned sector = kDoubleDensitySectors; sector < kHighDensitySectors; ++sector)
            high_density = high_density || sectors.found[sector];
        return status::ok;
    }
    // Decoded sectors in order; a short track fills the sectors that it holds in full.
    const std::size_t bytes = std::min<std::size_t>(track.byte_length, slots.data.size());
    if (const HResult read = read_exactly(source, std::span(slots.data).first(bytes)); read != status::ok) return read;
    for (std::size_t sector = 0; sector < bytes / kSectorBytes; ++sector) slots.found.set(sector);
    high_density = high_density || track.byte_length == kHighDensitySectors * kSectorBytes;
    return status::ok;
}

} // namespace

bool has_extended_adf_signature(std::span<const std::byte> first_bytes) {
    return starts_with(first_bytes, kNewerSignature) || starts_with(first_bytes, kOlderSignature);
}

void ExtendedAdfTable::clear() {
    array_ = platform::HeapBlock();
    track_count_ = 0;
    long_tracks_ = 0;
}

HResult read_extended_adf_table(ByteSource& source, ExtendedAdfTable& table) {
    table.clear();
    std::array<std::byte, kHeaderBytes> header{};
    if (const HResult read = read_exactly(source, header); read != status::ok) return read;
    const bool newer = starts_with(header, kNewerSignature);
    if (!newer && !starts_with(header, kOlderSignature)) return status::from_win32(kInvalidData);

    const std::uint32_t count = newer ? load_be16(&header[10]) : kOlderTrackCount;
    if (count == 0) return status::from_win32(kInvalidData);
    const std::size_t entry_bytes = newer ? kNewerEntryBytes : kOlderEntryBytes;
    std::vector<std::byte> entries(count * entry_bytes);
    if (const HResult read = read_exactly(source, entries); read != status::ok) return read;

    platform::HeapBlock array =
        platform::HeapBlock::allocate_zeroed(platform::Heap::global, count * sizeof(ExtendedAdfTrack));
    if (!array) return status::out_of_memory;
    auto* tracks = reinterpret_cast<ExtendedAdfTrack*>(array.data());
    std::uint32_t offset = newer ? static_cast<std::uint32_t>(kHeaderBytes + entries.size()) : kOlderDataOffset;
    std::uint32_t long_tracks = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::span<const std::byte> entry = std::span(entries).subspan(i * entry_bytes, entry_bytes);
        ExtendedAdfTrack& track = tracks[i];
        if (newer) {
            track = {byte_value(entry.data(), 3), byte_value(entry.data(), 2) + 1, load_be24(&entry[5]),
                     load_be24(&entry[9]), offset};
        } else {
            track = {kTrackTypeDecoded, 1, load_be16(&entry[2]), 0, offset};
        }
        offset += track.byte_length;
        if (track.byte_length > kLongTrackBytes) long_tracks = 1;
    }
    table.array_ = std::move(array);
    table.track_count_ = count;
    table.long_tracks_ = long_tracks;
    return status::ok;
}

HResult ExtendedAdfFile::open(std::u16string_view path, std::optional<ExtendedAdfFile>& out) {
    out.reset();
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return status::system_failure();
    ExtendedAdfFile opened(std::move(*file));
    FileSource source(opened.file_);
    if (const HResult read = read_extended_adf_table(source, opened.table_); read != status::ok) return read;
    out.emplace(std::move(opened));
    return status::ok;
}

HResult decode_extended_adf(ByteSource& source, const ExtendedAdfTable& table, DecodedFloppy& out) {
    out = DecodedFloppy();
    const std::span<const ExtendedAdfTrack> tracks = table.tracks();
    const std::uint32_t count = std::min<std::uint32_t>(table.track_count(), kMaxDecodedTracks);
    std::vector<TrackSlots> slots(count);
    bool high_density = false;
    for (std::uint32_t i = 0; i < count; ++i)
        if (const HResult decoded = decode_track(source, tracks[i], slots[i], high_density); decoded != status::ok)
            return decoded;

    const unsigned sectors = high_density ? kHighDensitySectors : kDoubleDensitySectors;
    const std::size_t track_bytes = sectors * kSectorBytes;
    out.image.resize(count * track_bytes);
    for (std::uint32_t i = 0; i < count; ++i) {
        std::copy_n(slots[i].data.begin(), track_bytes,
                    out.image.begin() + static_cast<std::ptrdiff_t>(i * track_bytes));
        for (unsigned sector = 0; sector < sectors; ++sector) {
            if (!slots[i].found[sector]) {
                ++out.incomplete_tracks;
                break;
            }
        }
    }
    out.sectors_per_track = sectors;
    out.tracks = count;
    out.ignored_tracks = table.track_count() - count;
    return status::ok;
}

} // namespace kq::media
