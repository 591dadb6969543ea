// The stages of DMS unpacking on their own: the CRC-16 and checksum against published values,
// the run-length stage's limits, and heavy's canonical codes (read past the end of their data).

#include "media/dms/dms_canonical_code.h"
#include "media/dms/dms_checks.h"
#include "media/dms/dms_rle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kq::media::dms {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes from_hex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    return bytes;
}
Bytes text(std::string_view s) { return Bytes(s.begin(), s.end()); }

TEST(DmsChecks, PublishedValues) {
    EXPECT_EQ(crc16(text("123456789")), 0xBB3D);
    // rle_small.dms: its header (bytes 4..53), its first record header (0..17) and that
    // record's 17 bytes, with the CRCs and checksum that the headers hold.
    EXPECT_EQ(crc16(from_hex("00000000000001086a13229200000001000007f500005800"
                             "000000000000000000000000000000000000"
                             "0070006f00010001")),
              0x8193);
    EXPECT_EQ(crc16(from_hex("5452ffff000000110011001100000614248a")), 0xE738);
    EXPECT_EQ(crc16(text("Made with adf2dms")), 0x248A);
    EXPECT_EQ(checksum(text("Made with adf2dms")), 0x0614);
}

TEST(DmsStages, RunLengths) {
    const struct {
        const char* in;
        std::size_t size;
        const char* out; // nullptr: refused
    } cases[] = {
        {"419000", 2, "4190"},        {"9003aa42", 4, "aaaaaa42"}, {"90ff7a0005", 5, "7a7a7a7a7a"},
        {"4142434445", 3, "414243"},                        // what is left over is not needed
        {"9004aa", 3, nullptr},                             // a run past the end
        {"90ff7a0100", 255, nullptr}, {"4142", 3, nullptr}, // input too short
        {"4190", 3, nullptr},                               // a mark without its count
        {"419003", 3, nullptr},                             // a run without its byte
        {"90ff7a00", 3, nullptr},                           // a long run without its low count
    };
    for (const auto& c : cases) {
        Bytes out(c.size, 0xEE);
        const bool ok = unpack_rle(from_hex(c.in), out);
        EXPECT_EQ(ok, c.out != nullptr) << c.in;
        if (ok && c.out != nullptr) {
            EXPECT_EQ(out, from_hex(c.out)) << c.in;
        }
    }
}

TEST(DmsStages, CanonicalCodes) {
    CanonicalCode code;
    ASSERT_TRUE(code.build(Bytes{3, 1, 3, 2}));      // codes 110, 0, 111, 10
    Bytes stream = from_hex("6f000000000000000000"); // 0 110 111 10 0, then zeros (and padding)
    BitReader bits{std::span(stream).first(2)};
    for (const unsigned expected : {1u, 0u, 2u, 3u, 1u, 1u}) EXPECT_EQ(code.decode(bits), expected);

    Bytes chain; // lengths 1..31, and a second 31: the last code is 31 ones
    for (std::uint8_t length = 1; length <= 31; ++length) chain.push_back(length);
    chain.push_back(31);
    ASSERT_TRUE(code.build(chain));
    Bytes ones = from_hex("ffffffff0000000000000000");
    BitReader long_bits{std::span(ones).first(4)};
    EXPECT_EQ(code.decode(long_bits), 31);
    EXPECT_EQ(long_bits.get(1), 1u);
    code.set_single(7);
    EXPECT_EQ(code.decode(long_bits), 7); // no bits taken
    EXPECT_EQ(long_bits.get(2), 0u);      // past the data: zeros

    for (const Bytes& lengths : {Bytes{1, 1, 1}, Bytes{1, 2}, Bytes{1}, Bytes{0, 0}, Bytes{1, 32, 1}})
        EXPECT_FALSE(code.build(lengths)) << lengths.size(); // over-full, incomplete, empty, too long
}

} // namespace
} // namespace kq::media::dms
