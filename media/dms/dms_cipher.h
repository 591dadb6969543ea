#pragma once
// The cipher of password-protected archives (info bit 0x02). Each stored byte c is XORed with
// the low byte of a 16-bit key, and the key moves on with the stored byte: key = key / 2 + c.
// The key runs through the records in file order; FILEID.DIZ (record 80) is stored in clear
// and leaves it alone. The password only sets the first key (its CRC-16), so the archive is
// opened without one: the key of the first record that goes to the disk is found by trying
// them (dms_key_search.h), and it runs on from there.
//
// Because the key halves at every step, after n stored bytes it no longer depends on the first
// key by more than 65535 / 2^n: all first keys lead to one contiguous range of keys (the
// update never decreases with the key it starts from), which narrows to one or two keys
// within about 17 bytes.

#include <cstdint>
#include <span>

namespace kq::media::dms {

// The record that is stored in clear.
inline constexpr std::uint32_t kClearRecord = 80;

class Cipher {
public:
    explicit Cipher(std::uint16_t key) : key_(key) {}
    std::uint16_t key() const { return key_; }

    // Decrypts bytes in place.
    void decrypt(std::span<std::uint8_t> bytes) {
        for (std::uint8_t& byte : bytes) {
            const std::uint8_t stored = byte;
            byte = static_cast<std::uint8_t>(stored ^ key_);
            key_ = next(stored);
        }
    }
    // Moves the key over stored bytes that need no decrypting.
    void pass(std::span<const std::uint8_t> stored) {
        for (const std::uint8_t byte : stored) key_ = next(byte);
    }
    // The key after one more stored byte: at most 0x7FFF + 0xFF, so it never wraps.
    std::uint16_t next(std::uint8_t stored) const { return static_cast<std::uint16_t>((key_ >> 1) + stored); }
    void set_key(std::uint16_t key) { key_ = key; }

private:
    std::uint16_t key_;
};

// The keys that the next stored byte may be decrypted with, when the first key is unknown:
// every key at the start of the archive, narrowed by each stored byte passed since.
struct KeyRange {
    Cipher lowest{0}, highest{0xFFFF};
    void pass(std::span<const std::uint8_t> stored) {
        lowest.pass(stored);
        highest.pass(stored);
    }
};

} // namespace kq::media::dms
