#include "media/dms/dms_key_search.h"

#include "media/amiga_blocks.h"
#include "media/dms/dms_bit_reader.h"
#include "media/dms/dms_checks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace kq::media::dms {
namespace {

constexpr unsigned kKeysPerBlock = 1024;
constexpr unsigned kMostThreads = 16;

// The record decrypted with the lowest key, and the key after each of its bytes: every try
// starts from these and changes only its own first bytes.
struct Reference {
    Reference(std::span<const std::uint8_t> stored_bytes, std::uint16_t key)
        : stored(stored_bytes.first(std::min(stored_bytes.size(), kMaxRecordBytes))), first_key(key) {
        Cipher cipher(key);
        for (std::size_t i = 0; i < stored.size(); ++i) {
            plain[i] = static_cast<std::uint8_t>(stored[i] ^ cipher.key());
            cipher.set_key(cipher.next(stored[i]));
            keys_after[i] = cipher.key();
        }
    }
    std::span<const std::uint8_t> stored;
    std::uint16_t first_key;
    std::array<std::uint8_t, kMaxRecordBytes> plain{};
    std::array<std::uint16_t, kMaxRecordBytes> keys_after{};
};

// One thread's tries: the bytes of the try (the reference's, with the key's own first bytes),
// and a decoder state kept as a reset leaves it between tries.
class Tries {
public:
    Tries(const RecordHeader& header, const Reference& reference) : header_(header), reference_(reference) {
        const std::size_t size = reference.stored.size();
        std::copy_n(reference.plain.begin(), size, bytes_.begin());
        trial_ = std::span(bytes_).first(size); // the zeros after it are the bit reader's padding
        state_.heavy = HeavyState{};
        fresh_deep_.reset();
        if (header.mode == kModeNone && size >= header.unpacked) {
            is_stored_ = true;
            reference_sum_ = checksum(trial_.first(header.unpacked));
        }
    }

    bool passes(std::uint16_t key) {
        const std::size_t own = decrypt(key);
        bool passes = false;
        if (is_stored_) {
            // A stored record's checksum changes only with the bytes that the key decrypts
            // differently.
            std::uint32_t sum = reference_sum_;
            for (std::size_t i = 0; i < std::min<std::size_t>(own, header_.unpacked); ++i)
                sum += bytes_[i] - reference_.plain[i];
            passes = static_cast<std::uint16_t>(sum) == header_.checksum;
        } else {
            passes = unpacks_to_checksum(header_, trial_, state_, stage1_);
        }
        undo(own);
        return passes;
    }

    DmsError unpack(std::uint16_t key, std::span<std::uint8_t> record) {
        const std::size_t own = decrypt(key);
        const DmsError error = unpack_record(header_, trial_, state_, stage1_, record);
        undo(own);
        return error;
    }

private:
    // The key's own bytes, until its key meets the reference's: their count.
    std::size_t decrypt(std::uint16_t key) {
        Cipher cipher(key);
        const std::span<const std::uint8_t> stored = reference_.stored;
        std::size_t own = 0;
        while (own < stored.size() &&
               cipher.key() != (own == 0 ? reference_.first_key : reference_.keys_after[own - 1])) {
            bytes_[own] = static_cast<std::uint8_t>(stored[own] ^ cipher.key());
            cipher.set_key(cipher.next(stored[own]));
            ++own;
        }
        return own;
    }

    // Puts back the reference's bytes and what the try wrote into the decoder state: the window
    // from the mode's position after a reset on, as far as the record's first stage and a match
    // running past its end reach (nothing, for a heavy try whose codes did not read), and the
    // mode's own state.
    void undo(std::size_t own) {
        std::copy_n(reference_.plain.begin(), own, bytes_.begin());
        unsigned window_bytes = 0, start = 0;
        switch (header_.mode) {
        case kModeQuick: std::tie(window_bytes, start) = std::pair(kQuickWindowBytes, LzWindow::kQuickStart); break;
        case kModeMedium: std::tie(window_bytes, start) = std::pair(kMediumWindowBytes, LzWindow::kMediumStart); break;
        case kModeDeep: std::tie(window_bytes, start) = std::pair(kDeepWindowBytes, LzWindow::kDeepStart); break;
        case kModeHeavy1:
        case kModeHeavy2:
            if (!state_.heavy.has_codes) return;
            window_bytes = (header_.mode == kModeHeavy1 ? kHeavy1 : kHeavy2).window_bytes;
            start = LzWindow::kHeavyStart;
            break;
        default: return; // the stored and simple modes keep no state
        }
        const std::size_t written = std::min<std::size_t>(window_bytes, std::size_t{header_.stage1} + kLongestMatch);
        const std::size_t first_part = std::min<std::size_t>(written, window_bytes - start);
        std::memset(state_.window.bytes.data() + start, 0, first_part);
        std::memset(state_.window.bytes.data(), 0, written - first_part);
        state_.window.reset_positions();
        if (header_.mode == kModeDeep) state_.deep = fresh_deep_; // quicker than building it again
        state_.heavy.has_codes = false;
        state_.heavy.last_distance = 0;
    }

    const RecordHeader& header_;
    const Reference& reference_;
    std::array<std::uint8_t, kMaxRecordBytes + kBitReaderPadding> bytes_{};
    std::span<const std::uint8_t> trial_;
    std::array<std::uint8_t, kMaxRecordBytes> stage1_{};
    DecoderState state_;
    DeepTree fresh_deep_;
    bool is_stored_ = false;
    std::uint32_t reference_sum_ = 0;
};

// How much a record's output looks like the start of an Amiga floppy (2 bootable, 1 a DOS type,
// 0 anything else); only cylinder 0 holds the boot block.
int boot_block_rank(const RecordHeader& header, std::span<const std::uint8_t> cylinder) {
    if (header.number != 0 || cylinder.size() < 2 * kBlockBytes) return 0;
    if (cylinder[0] != 'D' || cylinder[1] != 'O' || cylinder[2] != 'S') return 0;
    return boot_checksum_valid(std::as_bytes(cylinder.first<2 * kBlockBytes>())) ? 2 : 1;
}

} // namespace

std::optional<std::uint16_t> find_record_key(const RecordHeader& header, std::span<const std::uint8_t> stored,
                                             const KeyRange& keys) {
    const auto reference = std::make_unique<Reference>(stored, keys.lowest.key());
    const unsigned first = keys.lowest.key(), count = keys.highest.key() - first + 1u;
    const unsigned blocks = (count + kKeysPerBlock - 1) / kKeysPerBlock;
    std::atomic<unsigned> next_block{0};
    // Each thread takes the next block of keys until none is left: the passing keys it found.
    const auto search = [&] {
        const auto tries = std::make_unique<Tries>(header, *reference);
        std::vector<std::uint16_t> passing;
        for (unsigned block = next_block++; block < blocks; block = next_block++) {
            const unsigned from = first + block * kKeysPerBlock, to = std::min(from + kKeysPerBlock, first + count);
            for (unsigned key = from; key < to; ++key)
                if (tries->passes(static_cast<std::uint16_t>(key))) passing.push_back(static_cast<std::uint16_t>(key));
        }
        return passing;
    };
    std::vector<std::future<std::vector<std::uint16_t>>> helpers;
    const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, std::min(kMostThreads, blocks));
    for (unsigned i = 1; i < threads; ++i) {
        try {
            helpers.push_back(std::async(std::launch::async, search));
        } catch (const std::system_error&) {
            break; // no more threads to be had: the others take the blocks
        }
    }
    std::vector<std::uint16_t> passing = search();
    for (auto& helper : helpers) {
        const std::vector<std::uint16_t> found = helper.get();
        passing.insert(passing.end(), found.begin(), found.end());
    }
    if (passing.size() <= 1) return passing.empty() ? std::nullopt : std::optional(passing.front());

    // Several keys: the best-looking first cylinder, the lowest key among equals.
    std::sort(passing.begin(), passing.end());
    const auto tries = std::make_unique<Tries>(header, *reference);
    std::vector<std::uint8_t> record(header.unpacked);
    std::optional<std::uint16_t> best;
    int best_rank = -1;
    for (const std::uint16_t key : passing) {
        const int rank = tries->unpack(key, record) == DmsError::none ? boot_block_rank(header, record) : -1;
        if (rank > best_rank) {
            best = key;
            best_rank = rank;
        }
    }
    return best;
}

} // namespace kq::media::dms
