#include "media/dms/dms_canonical_code.h"

namespace kq::media::dms {

bool CanonicalCode::build(std::span<const std::uint8_t> lengths) {
    if (lengths.size() > kMaxSymbols) return false;
    count_.fill(0);
    for (const std::uint8_t length : lengths) {
        if (length > kMaxLength) return false;
        ++count_[length];
    }
    count_[0] = 0;
    // Complete: the codes' shares of the code space (2^-length each) add up to exactly 1.
    std::uint64_t space = 0;
    for (unsigned length = 1; length <= kMaxLength; ++length)
        space += std::uint64_t{count_[length]} << (kMaxLength - length);
    if (space != std::uint64_t{1} << kMaxLength) return false;

    std::uint64_t code = 0;
    unsigned offset = 0;
    for (unsigned length = 1; length <= kMaxLength; ++length) {
        first_[length] = static_cast<std::uint32_t>(code);
        offset_[length] = static_cast<std::uint16_t>(offset);
        code = (code + count_[length]) << 1;
        offset += count_[length];
    }
    std::array<std::uint16_t, kMaxLength + 1> next = offset_;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
        if (lengths[symbol] != 0) sorted_[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);

    lookup_.fill(0);
    for (unsigned length = 1; length <= kLookupBits; ++length) {
        for (unsigned i = 0; i < count_[length]; ++i) {
            const unsigned symbol = sorted_[offset_[length] + i];
            const unsigned shift = kLookupBits - length;
            const unsigned start = (first_[length] + i) << shift;
            const auto entry = static_cast<std::uint16_t>(length << kLengthShift | symbol);
            for (unsigned j = 0; j < (1u << shift); ++j) lookup_[start + j] = entry;
        }
    }
    single_ = false;
    return true;
}

void CanonicalCode::set_single(std::uint16_t symbol) {
    single_ = true;
    single_symbol_ = symbol;
}

std::uint16_t CanonicalCode::decode_long(BitReader& bits) const {
    for (unsigned length = kLookupBits + 1; length <= kMaxLength; ++length) {
        const std::uint32_t index = bits.peek(length) - first_[length];
        if (index < count_[length]) {
            bits.skip(length);
            return sorted_[offset_[length] + index];
        }
    }
    return 0; // not reached: a complete code matches every bit pattern
}

} // namespace kq::media::dms
