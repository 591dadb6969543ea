#include "media/dms/dms_key_search.h"

#include "media/amiga_blocks.h"
#include "media/dms/dms_checks.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

namespace kq::media::dms {
namespace {

// Puts back what a try of the record's mode wrote into the decoder state: the window from the
// mode's position after a reset on, as far as the record's first stage and a match running past
// its end reach (nothing, for a heavy try whose codes did not read), and the mode's own state.
void clear_after_try(DecoderState& state, const RecordHeader& header, const DeepTree& fresh_deep) {
    // The mode's window size and its position after a reset.
    unsigned window_bytes = 0, start = 0;
    switch (header.mode) {
    case kModeQuick: std::tie(window_bytes, start) = std::pair(kQuickWindowBytes, LzWindow::kQuickStart); break;
    case kModeMedium: std::tie(window_bytes, start) = std::pair(kMediumWindowBytes, LzWindow::kMediumStart); break;
    case kModeDeep: std::tie(window_bytes, start) = std::pair(kDeepWindowBytes, LzWindow::kDeepStart); break;
    case kModeHeavy1:
    case kModeHeavy2:
        if (!state.heavy.has_codes) return;
        window_bytes = (header.mode == kModeHeavy1 ? kHeavy1 : kHeavy2).window_bytes;
        start = LzWindow::kHeavyStart;
        break;
    default: return; // the stored and simple modes keep no state
    }
    const std::size_t written = std::min<std::size_t>(window_bytes, std::size_t{header.stage1} + kLongestMatch);
    const std::size_t first_part = std::min<std::size_t>(written, window_bytes - start);
    std::memset(state.window.bytes.data() + start, 0, first_part);
    std::memset(state.window.bytes.data(), 0, written - first_part);
    state.window.reset_positions();
    if (header.mode == kModeDeep) state.deep = fresh_deep;
    state.heavy.has_codes = false;
    state.heavy.last_distance = 0;
}

// How much a record's output looks like the start of an Amiga floppy (2 bootable, 1 a DOS type,
// 0 anything else); only cylinder 0 holds the boot block.
int boot_block_rank(const RecordHeader& header, std::span<const std::uint8_t> cylinder) {
    if (header.number != 0 || cylinder.size() < 2 * kBlockBytes) return 0;
    if (cylinder[0] != 'D' || cylinder[1] != 'O' || cylinder[2] != 'S') return 0;
    return boot_checksum_valid(std::as_bytes(cylinder.first<2 * kBlockBytes>())) ? 2 : 1;
}

} // namespace

std::optional<std::uint16_t> find_record_key(const RecordHeader& header, std::span<const std::uint8_t> stored,
                                             const KeyRange& keys, KeySearchSpace& space) {
    const std::size_t size = std::min(stored.size(), space.reference.size());
    Cipher reference(keys.lowest.key());
    for (std::size_t i = 0; i < size; ++i) {
        space.reference[i] = static_cast<std::uint8_t>(stored[i] ^ reference.key());
        reference.set_key(reference.next(stored[i]));
        space.reference_keys[i] = reference.key();
    }
    std::copy_n(space.reference.begin(), size, space.trial.begin());
    std::fill_n(space.trial.begin() + static_cast<std::ptrdiff_t>(size), kBitReaderPadding, std::uint8_t{0});
    space.state.reset();
    space.state.heavy = HeavyState{};
    space.fresh_deep.reset();
    const std::span<const std::uint8_t> trial = std::span(space.trial).first(size);

    // The bytes of one key's try: its own until its key meets the reference's, from there on the
    // reference's. Returns how many are its own, for putting the reference's back.
    const auto decrypt_try = [&](std::uint16_t key) {
        Cipher cipher(key);
        std::size_t own = 0;
        while (own < size && cipher.key() != (own == 0 ? keys.lowest.key() : space.reference_keys[own - 1])) {
            space.trial[own] = static_cast<std::uint8_t>(stored[own] ^ cipher.key());
            cipher.set_key(cipher.next(stored[own]));
            ++own;
        }
        return own;
    };
    // A stored record's checksum changes only with the bytes that a key decrypts differently.
    const bool is_stored = header.mode == kModeNone && size >= header.unpacked;
    const std::uint32_t reference_sum = is_stored ? checksum(trial.first(header.unpacked)) : 0;
    const auto passes = [&](std::size_t own) {
        if (!is_stored) return unpacks_to_checksum(header, trial, space.state, space.stage1);
        std::uint32_t sum = reference_sum;
        for (std::size_t i = 0; i < std::min<std::size_t>(own, header.unpacked); ++i)
            sum += space.trial[i] - space.reference[i];
        return static_cast<std::uint16_t>(sum) == header.checksum;
    };
    std::vector<std::uint16_t> passing;
    for (unsigned key = keys.lowest.key(); key <= keys.highest.key(); ++key) {
        const std::size_t own = decrypt_try(static_cast<std::uint16_t>(key));
        if (passes(own)) passing.push_back(static_cast<std::uint16_t>(key));
        clear_after_try(space.state, header, space.fresh_deep);
        std::copy_n(space.reference.begin(), own, space.trial.begin());
    }
    if (passing.size() <= 1) return passing.empty() ? std::nullopt : std::optional(passing.front());

    // Several keys: the best-looking first cylinder, the lowest key among equals.
    const std::span<std::uint8_t> record = std::span(space.record).first(header.unpacked);
    std::optional<std::uint16_t> best;
    int best_rank = -1;
    for (const std::uint16_t key : passing) {
        const std::size_t own = decrypt_try(key);
        const DmsError error = unpack_record(header, trial, space.state, space.stage1, record);
        clear_after_try(space.state, header, space.fresh_deep);
        std::copy_n(space.reference.begin(), own, space.trial.begin());
        const int rank = error == DmsError::none ? boot_block_rank(header, record) : -1;
        if (rank > best_rank) best = key, best_rank = rank;
    }
    return best;
}

} // namespace kq::media::dms
