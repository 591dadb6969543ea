// Unpacking DMS archives: the stages on their own, the samples of every mode (also encrypted
// here with keys of the test's choosing) to the images that xdms writes, where cylinders go,
// the archives that are refused, and damaged copies of the samples, which must fail with a
// status (or give an image that passes every record's checksum) and never write past 80
// cylinders.

#include "media/dms/dms_canonical_code.h"
#include "media/dms/dms_checks.h"
#include "media/dms/dms_rle.h"
#include "tests/media/dms/dms_test_support.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

namespace kq::test::dms {
namespace {

using media::DmsError;

constexpr std::size_t kDD = 11264;

Bytes from_hex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    return bytes;
}

TEST(DmsStages, ChecksRunLengthsAndCanonicalCodes) {
    const Bytes banner = from_hex("4d61646520776974682061646632646d73");  // "Made with adf2dms", as rle_small holds it
    EXPECT_EQ(media::dms::crc16(from_hex("313233343536373839")), 0xBB3D); // "123456789"
    EXPECT_EQ(media::dms::crc16(banner), 0x248A);
    EXPECT_EQ(media::dms::checksum(banner), 0x0614);
    // Input, room, output (nullptr: refused): runs past the end, input too short, a mark without
    // its count, a run without its byte, a long run without its low count.
    const std::tuple<const char*, std::size_t, const char*> runs[] = {
        {"419000", 2, "4190"},       {"9003aa42", 4, "aaaaaa42"}, {"90ff7a0005", 5, "7a7a7a7a7a"},
        {"4142434445", 3, "414243"}, {"9004aa", 3, nullptr},      {"90ff7a0100", 255, nullptr},
        {"4142", 3, nullptr},        {"4190", 3, nullptr},        {"419003", 3, nullptr},
        {"90ff7a00", 3, nullptr}};
    for (const auto& [in, size, expected] : runs) {
        Bytes out(size, 0xEE);
        EXPECT_EQ(media::dms::unpack_rle(from_hex(in), out), expected != nullptr) << in;
        EXPECT_TRUE(expected == nullptr || out == from_hex(expected)) << in;
    }
    media::dms::CanonicalCode code;
    ASSERT_TRUE(code.build(Bytes{3, 1, 3, 2}));      // codes 110, 0, 111, 10
    Bytes stream = from_hex("6f000000000000000000"); // 0 110 111 10 0, then zeros (and padding)
    media::dms::BitReader bits{std::span(stream).first(2)};
    for (const unsigned expected : {1u, 0u, 2u, 3u, 1u, 1u}) EXPECT_EQ(code.decode(bits), expected);
    Bytes chain; // lengths 1..31, and a second 31: the last code is 31 ones
    for (std::uint8_t length = 1; length <= 31; ++length) chain.push_back(length);
    chain.push_back(31);
    ASSERT_TRUE(code.build(chain));
    Bytes ones = from_hex("ffffffff0000000000000000");
    media::dms::BitReader long_bits{std::span(ones).first(4)};
    EXPECT_EQ(code.decode(long_bits), 31);
    EXPECT_EQ(long_bits.get(1), 1u);
    code.set_single(7);
    EXPECT_EQ(code.decode(long_bits), 7); // no bits taken
    EXPECT_EQ(long_bits.get(2), 0u);      // past the data: zeros
    for (const Bytes& lengths : {Bytes{1, 1, 1}, Bytes{1, 2}, Bytes{1}, Bytes{0, 0}, Bytes{1, 32, 1}})
        EXPECT_FALSE(code.build(lengths)) << lengths.size(); // over-full, incomplete, empty, too long
}

// Every sample, as it is and encrypted here with a first key of the test's choosing (every mode
// as the first disk record, a banner before it and a FILEID.DIZ in clear in rle_small, the
// lowest and highest keys), gives the image that xdms writes.
TEST(DmsSamples, EveryModePlainAndEncrypted) {
    const std::uint16_t keys[] = {0xFFFF, 0x6CF9, 0x779A, 0x8818, 0x288D, 0x25B1, 0x0000, 0xBACC, 0x1234};
    for (std::size_t i = 0; i < samples().size(); ++i) {
        const Sample& sample = samples()[i];
        const Unpacked plain = unpack(read_sample(sample.name));
        ASSERT_EQ(plain.error, DmsError::none) << sample.name;
        ASSERT_EQ(plain.image.size(), sample.image_bytes) << sample.name;
        EXPECT_EQ(crc32_of(plain.image), sample.crc32) << sample.name;
        EXPECT_EQ(crc32_of(unpack(encrypted(read_sample(sample.name), keys[i])).image), sample.crc32) << sample.name;
    }
    // A password-protected sample opens without its password; damaged (its CRCs made right), no
    // key unpacks its first cylinder, and nothing is written.
    Bytes archive = read_sample("test_C1_heavy2_pwd.dms");
    EXPECT_EQ(crc32_of(unpack(archive).image), sample_named("test_C1_heavy2.dms").crc32);
    const std::size_t first = record_offsets(archive).front();
    archive[first + 60] ^= 0x01;
    fix_record_crcs(archive, first);
    const Unpacked damaged = unpack(archive);
    EXPECT_EQ(damaged.error, DmsError::checksum);
    EXPECT_TRUE(damaged.image.empty());
    // From file to file.
    const TempFolder folder;
    const std::u16string path = (data_folder() / "rle_small.dms").u16string();
    EXPECT_EQ(media::unpack_dms_file(path, folder.path(u"disk.adf")), DmsError::none);
    const std::string written = read_file(folder.native(u"disk.adf"));
    EXPECT_EQ(crc32_of(Bytes(written.begin(), written.end())), samples()[0].crc32);
    EXPECT_EQ(media::unpack_dms_file(folder.path(u"missing.dms"), folder.path(u"out.adf")), DmsError::input_unopened);
    EXPECT_EQ(media::unpack_dms_file(path, folder.path(u"no folder\\out.adf")), DmsError::output_uncreated);
}

// Archives put together from records of the stored sample, where every record stands alone,
// and header fields changed (CRCs made right).
TEST(DmsRecords, PlacementOrderAndRefusals) {
    const Bytes none = read_sample("test_C1_none.dms");
    const std::vector<std::size_t> at = record_offsets(none);
    const auto archive = [&](std::initializer_list<std::size_t> cylinders, std::string_view tail = {}) {
        Bytes bytes(none.begin(), none.begin() + 56);
        for (const std::size_t n : cylinders)
            bytes.insert(bytes.end(), none.begin() + at[n], none.begin() + at[n] + 20 + kDD);
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        return bytes;
    };
    // The image ends with the last cylinder given; those passed over are zeros.
    const Unpacked gaps = unpack(archive({3, 7}, "text after the last record"));
    ASSERT_EQ(gaps.error, DmsError::none);
    Bytes expected(8 * kDD);
    const Bytes image = unpack(none).image;
    for (const std::size_t n : {3, 7}) std::copy_n(image.begin() + n * kDD, kDD, expected.begin() + n * kDD);
    EXPECT_TRUE(gaps.image == expected);
    const std::tuple<Bytes, DmsError, std::size_t> cases[] = {
        // the status, the cylinders written
        {archive({0, 2, 1}), DmsError::track_order, 3},
        {archive({0, 1, 1}), DmsError::track_order, 2},
        {archive({}), DmsError::no_tracks, 0},
        {archive({}, "text after the header"), DmsError::no_tracks, 0},
        {archive({0}, std::string_view("TR\0\1", 4)), DmsError::record_header, 1}};
    for (const auto& [bytes, error, written] : cases) {
        const Unpacked result = unpack(bytes);
        EXPECT_EQ(result.error, error) << bytes.size();
        EXPECT_EQ(result.image.size(), written * kDD) << bytes.size();
    }
    const Bytes heavy = read_sample("test_C1_heavy2.dms");
    const std::size_t first = record_offsets(heavy).front();
    // Encrypted, yet no key unpacks the first record; a PC disk; a single file; high density with
    // double-density records; mode 7; heavy without codes yet; heavy without run lengths, but
    // lengths for them.
    const std::tuple<std::size_t, unsigned, DmsError> refused[] = {{10, 0x0002, DmsError::checksum},
                                                                   {10, 0x0020, DmsError::not_a_disk},
                                                                   {50, 7, DmsError::not_a_disk},
                                                                   {10, 0x0010, DmsError::bad_record},
                                                                   {first + 12, 0x0707, DmsError::bad_record},
                                                                   {first + 12, 0x0506, DmsError::corrupt_data},
                                                                   {first + 12, 0x0306, DmsError::bad_record}};
    for (const auto& [field, value, error] : refused) {
        Bytes bytes = heavy;
        put16(bytes, field, value);
        fix_header_crc(bytes);
        fix_record_header_crc(bytes, first);
        const Unpacked result = unpack(bytes);
        EXPECT_EQ(result.error, error) << field << " " << value;
        EXPECT_TRUE(result.image.empty()) << field << " " << value;
    }
    media::MemorySource source(std::as_bytes(std::span(heavy)));
    media::MemorySink full(100000);
    EXPECT_EQ(media::unpack_dms(source, full), DmsError::write_failed);
    struct FailingSource final : media::ByteSource {
        std::optional<std::size_t> read(std::span<std::byte>) override { return std::nullopt; }
        bool seek(std::uint64_t) override { return false; }
    } failing;
    EXPECT_EQ(media::unpack_dms(failing, full), DmsError::read_failed);
}

// Whether the records before `index` hold a cylinder (not only a banner or FILEID.DIZ).
bool cylinders_before(const Bytes& archive, const std::vector<std::size_t>& at, std::size_t index) {
    return std::any_of(at.begin(), at.begin() + static_cast<std::ptrdiff_t>(index),
                       [&](std::size_t record) { return be16(archive, record + 2) < 80; });
}

// What every damaged archive keeps to: a status it may give, whole cylinders, no more than 80;
// every cylinder of an image that is refused or cut short is the sample's or zeros (passed
// over), and every one of an accepted image has the sum that its record promised (a 16-bit sum
// misses some damage).
void expect_sane(const Unpacked& result, const std::vector<DmsError>& errors, const Sample& sample,
                 const std::string& what) {
    static std::vector<Bytes> images(samples().size());
    Bytes& image = images[static_cast<std::size_t>(&sample - samples().data())];
    if (image.empty()) image = unpack(read_sample(sample.name)).image;
    EXPECT_NE(std::find(errors.begin(), errors.end(), result.error), errors.end()) << what;
    EXPECT_LE(result.image.size(), 80 * sample.cylinder_bytes) << what;
    EXPECT_EQ(result.image.size() % sample.cylinder_bytes, 0u) << what;
    const bool accepted = result.error == DmsError::none && result.image.size() == image.size();
    for (std::size_t at = 0; at < result.image.size() && at < image.size(); at += sample.cylinder_bytes) {
        const auto ours = std::span(result.image).subspan(at, sample.cylinder_bytes);
        const auto theirs = std::span(image).subspan(at, sample.cylinder_bytes);
        EXPECT_TRUE(accepted ? media::dms::checksum(ours) == media::dms::checksum(theirs)
                             : std::ranges::equal(ours, theirs) || std::ranges::count(ours, 0) == std::ssize(ours))
            << what << " at " << at;
    }
}

// Flipped bits: in the file header, refused; in a record header, its CRC fails (a flipped "TR"
// ends the archive there); in the stored data, its CRC fails; behind a CRC made right, the
// decoders meet them.
TEST(DmsDamage, FlippedBits) {
    const Bytes small = read_sample("rle_small.dms");
    for (std::size_t bit = 0; bit < 56 * 8; ++bit) {
        Bytes archive = small;
        archive[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
        expect_sane(unpack(archive), {bit < 32 ? DmsError::not_dms : DmsError::header_crc}, samples()[0], "header");
    }
    std::mt19937 random(7);
    for (const Sample& sample : samples()) {
        const Bytes original = read_sample(sample.name);
        const std::vector<std::size_t> at = record_offsets(original);
        for (int round = 0; round < 8; ++round) {
            const std::size_t index = random() % at.size(), record = at[index], in_header = random() % 20;
            const auto bit = static_cast<std::uint8_t>(1u << (random() % 8));
            const std::string what = std::string(sample.name).append(" record ").append(std::to_string(index));
            Bytes archive = original;
            archive[record + in_header] ^= bit;
            expect_sane(unpack(archive),
                        {in_header >= 2                          ? DmsError::record_header
                         : cylinders_before(original, at, index) ? DmsError::none
                                                                 : DmsError::no_tracks},
                        sample, what);
            if (be16(original, record + 6) == 0) continue;
            archive = original;
            archive[record + 20 + random() % be16(original, record + 6)] ^= bit;
            expect_sane(unpack(archive), {DmsError::record_data}, sample, what);
            fix_record_crcs(archive, record);
            expect_sane(unpack(archive),
                        {DmsError::none, DmsError::checksum, DmsError::corrupt_data, DmsError::bad_record}, sample,
                        what);
        }
    }
}

// Cut anywhere (rle_small at every length): within 2 bytes of a record's start (or at the end)
// the archive just ends there; elsewhere in a record, a status; in the file header, not_dms.
TEST(DmsDamage, Truncated) {
    for (const char* name : {"rle_small.dms", "test_C1_deep.dms", "test_C1_heavy1.dms"}) {
        const Bytes original = read_sample(name);
        const std::vector<std::size_t> at = record_offsets(original);
        std::vector<std::size_t> cuts = {original.size()};
        for (std::size_t cut = 0; cut < original.size(); cut += original.size() < 4096 ? 1 : original.size() / 40)
            cuts.push_back(cut);
        for (const std::size_t i : {std::size_t{1}, at.size() / 2, at.size() - 1})
            cuts.insert(cuts.end(), {at[i], at[i] + 1, at[i] + 2, at[i] + 19, at[i] + 21});
        for (const std::size_t cut : cuts) {
            const auto records = static_cast<std::size_t>(std::upper_bound(at.begin(), at.end(), cut) - at.begin());
            const bool ends = cut == original.size() || (records > 0 && cut - at[records - 1] < 2);
            const std::size_t kept = records - (cut == original.size() || records == 0 ? 0 : 1);
            const DmsError clean = cylinders_before(original, at, kept) ? DmsError::none : DmsError::no_tracks;
            expect_sane(unpack(Bytes(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(cut))),
                        cut < 56 ? std::vector<DmsError>{DmsError::not_dms}
                        : ends   ? std::vector<DmsError>{clean}
                                 : std::vector<DmsError>{DmsError::record_header, DmsError::record_data},
                        sample_named(name), std::string(name).append(" cut at ").append(std::to_string(cut)));
        }
    }
}

// Lengths that lie (header CRC made right) in the record of cylinder 40 of the quick sample,
// the first of a chain of records that keep the decoders' state. The field (6 packed, 8 first
// stage, 10 unpacked), its value, the statuses it may give.
TEST(DmsDamage, LyingLengths) {
    const Bytes original = read_sample("test_C1_quick.dms");
    const std::size_t record = record_offsets(original)[40];
    const unsigned packed = be16(original, record + 6), stage1 = be16(original, record + 8);
    const std::vector<DmsError> kUndecoded = {DmsError::corrupt_data, DmsError::checksum};
    const std::tuple<std::size_t, unsigned, std::vector<DmsError>> cases[] = {
        {6, packed + 1, {DmsError::record_data}},
        {6, 0, {DmsError::record_data}},
        {6, 0xFFFF, {DmsError::record_data}},
        {10, 11263, {DmsError::bad_record}},
        {10, 22528, {DmsError::bad_record}},
        {10, 1024, kUndecoded}, // skipped as an advert: the chain breaks
        {8, 0, {DmsError::corrupt_data}},
        {8, stage1 - 1, kUndecoded},
        {8, stage1 + 300, kUndecoded},
        {8, 0xFFFF, kUndecoded}};
    for (const auto& [field, value, errors] : cases) {
        Bytes archive = original;
        put16(archive, record + field, value);
        fix_record_header_crc(archive, record);
        expect_sane(unpack(archive), errors, sample_named("test_C1_quick.dms"),
                    std::to_string(field).append(" = ").append(std::to_string(value)));
    }
}

} // namespace
} // namespace kq::test::dms
