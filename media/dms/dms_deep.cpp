#include "media/dms/dms_modes.h"
#include "media/dms/dms_prefix_code.h"

#include <algorithm>

namespace kq::media::dms {
namespace {

constexpr unsigned kGapAfterRecord = 60;
constexpr unsigned kFirstMatchSymbol = 256;
constexpr unsigned kMatchLengthBias = 253; // symbol 256 is a match of 3 bytes

} // namespace

// Every symbol a leaf of weight 1, paired up from the bottom; node 626 is the root.
void DeepTree::reset() {
    for (unsigned s = 0; s < kSymbols; ++s) {
        freq_[s] = 1;
        child_[s] = static_cast<std::uint16_t>(s + kNodes);
        parent_[s + kNodes] = static_cast<std::uint16_t>(s);
    }
    for (unsigned n = kSymbols, a = 0; n < kNodes; ++n, a += 2) {
        freq_[n] = static_cast<std::uint16_t>(freq_[a] + freq_[a + 1]);
        child_[n] = static_cast<std::uint16_t>(a);
        parent_[a] = parent_[a + 1] = static_cast<std::uint16_t>(n);
    }
    freq_[kNodes] = 0xFFFF;
    parent_[kRoot] = 0;
    index_weights();
}

void DeepTree::index_weights() {
    for (unsigned n = 0; n < kNodes; ++n)
        if (freq_[n] < kIndexedWeights) last_of_weight_[freq_[n]] = static_cast<std::uint16_t>(n);
}

unsigned DeepTree::decode(BitReader& bits) {
    unsigned node = child_[kRoot];
    while (node < kNodes) {
        bits.ensure(1);
        node = child_[node + bits.peek(1)];
        bits.skip(1);
    }
    const unsigned symbol = node - kNodes;
    update(symbol);
    return symbol;
}

// Adds one to the weight of the symbol's leaf and of every node above it; a node that would
// pass the ones after it trades places with the last of those of its old weight, so that the
// weights stay sorted.
void DeepTree::update(unsigned symbol) {
    if (freq_[kRoot] == kLimit) rebuild();
    unsigned n = parent_[symbol + kNodes];
    do {
        const unsigned old = freq_[n], f = old + 1;
        // The last node of n's weight, where n goes (the weights after n are sorted, and the
        // sentinel above them all ends the search).
        unsigned m = n;
        if (freq_[n + 1] == old)
            m = old < kIndexedWeights ? last_of_weight_[old]
                                      : static_cast<unsigned>(std::lower_bound(freq_.begin() + n + 2, freq_.end(), f) -
                                                              freq_.begin() - 1);
        if (m != n) { // n takes the place of m, whose weight is n's old one
            const unsigned a = child_[n], b = child_[m];
            child_[m] = static_cast<std::uint16_t>(a);
            parent_[a] = static_cast<std::uint16_t>(m);
            if (a < kNodes) parent_[a + 1] = static_cast<std::uint16_t>(m);
            child_[n] = static_cast<std::uint16_t>(b);
            parent_[b] = static_cast<std::uint16_t>(n);
            if (b < kNodes) parent_[b + 1] = static_cast<std::uint16_t>(n);
        }
        freq_[m] = static_cast<std::uint16_t>(f);
        // m left its run of the old weight, of which it was the last, and joins the next.
        if (old < kIndexedWeights) last_of_weight_[old] = static_cast<std::uint16_t>(m - 1);
        if (f < kIndexedWeights && freq_[m + 1] != f) last_of_weight_[f] = static_cast<std::uint16_t>(m);
        n = parent_[m];
    } while (n != 0);
}

// Halves every leaf's weight (rounding up) and builds the tree again from the leaves.
void DeepTree::rebuild() {
    unsigned j = 0;
    for (unsigned i = 0; i < kNodes; ++i) {
        if (child_[i] >= kNodes) {
            freq_[j] = static_cast<std::uint16_t>((freq_[i] + 1) / 2);
            child_[j] = child_[i];
            ++j;
        }
    }
    for (unsigned n = kSymbols, a = 0; n < kNodes; ++n, a += 2) {
        const unsigned f = freq_[a] + freq_[a + 1];
        unsigned k = n;
        while (k > 0 && f < freq_[k - 1]) --k;
        std::copy_backward(freq_.begin() + k, freq_.begin() + n, freq_.begin() + n + 1);
        std::copy_backward(child_.begin() + k, child_.begin() + n, child_.begin() + n + 1);
        freq_[k] = static_cast<std::uint16_t>(f);
        child_[k] = static_cast<std::uint16_t>(a);
    }
    for (unsigned i = 0; i < kNodes; ++i) {
        const unsigned c = child_[i];
        parent_[c] = static_cast<std::uint16_t>(i);
        if (c < kNodes) parent_[c + 1] = static_cast<std::uint16_t>(i);
    }
    index_weights();
}

void unpack_deep(BitReader& bits, LzWindow& window, DeepTree& tree, std::span<std::uint8_t> out) {
    unpack_lz_record(window, kDeepWindowBytes, window.deep, kGapAfterRecord, out, [&](LzOutput& output) {
        const unsigned symbol = tree.decode(bits);
        if (symbol < kFirstMatchSymbol)
            output.literal(static_cast<std::uint8_t>(symbol));
        else
            output.match(read_far_distance(bits), symbol - kMatchLengthBias);
    });
}

} // namespace kq::media::dms
