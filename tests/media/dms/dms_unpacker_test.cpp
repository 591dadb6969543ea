// Unpacking DMS archives: the samples of every mode to their known images, where cylinders go,
// the archives that are refused, and damaged copies of the samples, which must fail with a
// status (or give an image that passes every record's checksum) and never write past 80
// cylinders.

#include "media/dms/dms_checks.h"
#include "tests/media/dms/dms_test_support.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace kq::test::dms {
namespace {

using media::DmsError;

constexpr std::size_t kCylinders = 80, kDD = 11264;

bool all_zero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}
bool starts_with(const Bytes& image, std::span<const std::uint8_t> prefix) {
    return prefix.size() <= image.size() && std::equal(prefix.begin(), prefix.end(), image.begin());
}
const Sample& sample_named(std::string_view name) {
    return *std::find_if(samples().begin(), samples().end(), [&](const Sample& s) { return name == s.name; });
}
// The samples unpacked once (checked by the first test), for the tests that damage them.
const Bytes& image_of(const Sample& sample) {
    static std::vector<Bytes> images(samples().size());
    Bytes& image = images[static_cast<std::size_t>(&sample - samples().data())];
    if (image.empty()) image = unpack(read_sample(sample.name)).image;
    return image;
}

TEST(DmsSamples, EveryModeUnpacksToItsImage) {
    for (const Sample& sample : samples()) {
        const Unpacked result = unpack(read_sample(sample.name));
        ASSERT_EQ(result.error, DmsError::none) << sample.name;
        ASSERT_EQ(result.image.size(), sample.image_bytes) << sample.name;
        EXPECT_EQ(sha256(result.image), sample.sha256) << sample.name;
    }
    // The password-protected sample, opened without its password, gives its plain twin's image.
    const Unpacked encrypted = unpack(read_sample("test_C1_heavy2_pwd.dms"));
    ASSERT_EQ(encrypted.error, DmsError::none);
    EXPECT_EQ(sha256(encrypted.image), sample_named("test_C1_heavy2.dms").sha256);
}

// Every sample encrypted here with a first key of the test's choosing comes back byte for byte:
// every mode as the first disk record, a banner before it (whose stored bytes narrow the keys)
// and a FILEID.DIZ in clear (rle_small), the lowest and highest keys.
TEST(DmsEncryption, EveryModeOpensWithoutItsPassword) {
    const struct {
        const char* name;
        std::uint16_t key;
    } rows[] = {
        {"rle_small.dms", 0xFFFF},      {"test_C1_none.dms", 0x6CF9},   {"test_C1_simple.dms", 0x779A},
        {"test_C1_quick.dms", 0x8818},  {"test_C1_medium.dms", 0x288D}, {"test_C1_deep.dms", 0x25B1},
        {"test_C1_heavy1.dms", 0x0000}, {"test_C1_heavy2.dms", 0xBACC}, {"test_C1_ext.dms", 0x1234},
    };
    for (const auto& row : rows) {
        const Unpacked result = unpack(encrypted(read_sample(row.name), row.key));
        ASSERT_EQ(result.error, DmsError::none) << row.name;
        EXPECT_EQ(sha256(result.image), sample_named(row.name).sha256) << row.name;
    }
}

// No key unpacks a damaged first cylinder (its CRCs made right): refused like any record whose
// checksum fails, with nothing written.
TEST(DmsEncryption, DamageIsRefused) {
    for (const char* name : {"test_C1_heavy2_pwd.dms", "test_C1_quick.dms"}) {
        Bytes archive =
            std::string_view(name).ends_with("_pwd.dms") ? read_sample(name) : encrypted(read_sample(name), 0x4242);
        const std::size_t first = record_offsets(archive).front();
        archive[first + 20 + 40] ^= 0x01;
        fix_record_crcs(archive, first);
        const Unpacked result = unpack(archive);
        EXPECT_EQ(result.error, DmsError::checksum) << name;
        EXPECT_TRUE(result.image.empty()) << name;
    }
}

TEST(DmsFiles, FromFileToFile) {
    const TempFolder folder;
    const std::u16string archive = (data_folder() / "test_C1_heavy1.dms").u16string();
    EXPECT_EQ(media::unpack_dms_file(archive, folder.path(u"disk.adf")), DmsError::none);
    const std::string written = read_file(folder.native(u"disk.adf"));
    EXPECT_EQ(sha256(Bytes(written.begin(), written.end())), sample_named("test_C1_heavy1.dms").sha256);
    EXPECT_EQ(media::unpack_dms_file(folder.path(u"missing.dms"), folder.path(u"out.adf")), DmsError::input_unopened);
    EXPECT_EQ(media::unpack_dms_file(archive, folder.path(u"no folder\\out.adf")), DmsError::output_uncreated);
}

// Archives put together from records of the stored sample, where every record stands alone.
TEST(DmsRecords, PlacementAndOrder) {
    const Bytes none = read_sample("test_C1_none.dms");
    const Bytes& image = image_of(sample_named("test_C1_none.dms"));
    const std::vector<std::size_t> at = record_offsets(none);
    const auto archive = [&](std::initializer_list<std::size_t> cylinders, std::string_view tail = {}) {
        Bytes bytes(none.begin(), none.begin() + 56);
        for (const std::size_t n : cylinders)
            bytes.insert(bytes.end(), none.begin() + at[n], none.begin() + at[n] + 20 + kDD);
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        return bytes;
    };
    const Unpacked gaps = unpack(archive({3, 7}, "text after the last record"));
    ASSERT_EQ(gaps.error, DmsError::none);
    // The image ends with the last cylinder given; those passed over are zeros.
    ASSERT_EQ(gaps.image.size(), 8 * kDD);
    for (std::size_t n = 0; n < 8; ++n) {
        const std::span<const std::uint8_t> cylinder = std::span(gaps.image).subspan(n * kDD, kDD);
        EXPECT_TRUE(n == 3 || n == 7 ? std::ranges::equal(cylinder, std::span(image).subspan(n * kDD, kDD))
                                     : all_zero(cylinder))
            << n;
    }
    const struct {
        Bytes archive;
        DmsError error;
        std::size_t written; // cylinders
    } cases[] = {
        {archive({0, 2, 1}), DmsError::track_order, 3},
        {archive({0, 1, 1}), DmsError::track_order, 2},
        {archive({}), DmsError::no_tracks, 0},
        {archive({}, "text after the header"), DmsError::no_tracks, 0},
        {archive({0}, std::string_view("TR\0\1", 4)), DmsError::record_header, 1},
    };
    for (const auto& c : cases) {
        const Unpacked result = unpack(c.archive);
        EXPECT_EQ(result.error, c.error) << c.archive.size();
        EXPECT_EQ(result.image.size(), c.written * kDD) << c.archive.size();
    }
}

// A header field changed (CRC made right): refused before anything is written.
TEST(DmsRecords, RefusedArchives) {
    const Bytes heavy = read_sample("test_C1_heavy2.dms");
    const std::size_t first = record_offsets(heavy).front();
    const struct {
        std::size_t at;
        unsigned value;
        DmsError error;
    } cases[] = {
        {10, 0x0002, DmsError::checksum},             // encrypted, yet no key unpacks the first record
        {10, 0x0020, DmsError::not_a_disk},           // a PC disk
        {50, 7, DmsError::not_a_disk},                // a single file
        {10, 0x0010, DmsError::bad_record},           // high density, with double-density records
        {first + 12, 0x0707, DmsError::bad_record},   // mode 7
        {first + 12, 0x0506, DmsError::corrupt_data}, // heavy without codes yet
        {first + 12, 0x0306, DmsError::bad_record},   // heavy without run lengths, but lengths for them
    };
    for (const auto& c : cases) {
        Bytes archive = heavy;
        put16(archive, c.at, c.value);
        fix_header_crc(archive);
        fix_record_header_crc(archive, first);
        const Unpacked result = unpack(archive);
        EXPECT_EQ(result.error, c.error) << c.at << " " << c.value;
        EXPECT_TRUE(result.image.empty()) << c.at << " " << c.value;
    }
}

TEST(DmsRecords, FullDiskAndFailingReads) {
    const Bytes archive = read_sample("test_C1_quick.dms");
    media::MemorySource source(std::as_bytes(std::span(archive)));
    media::MemorySink full(100000);
    EXPECT_EQ(media::unpack_dms(source, full), DmsError::write_failed);
    struct FailingSource final : media::ByteSource {
        std::optional<std::size_t> read(std::span<std::byte>) override { return std::nullopt; }
        bool seek(std::uint64_t) override { return false; }
    } failing;
    EXPECT_EQ(media::unpack_dms(failing, full), DmsError::read_failed);
}

// The cylinders that the records before `index` fill: up to the highest one.
std::size_t cylinders_before(const Bytes& archive, const std::vector<std::size_t>& at, std::size_t index) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < index; ++i)
        if (const std::size_t n = archive[at[i] + 2] << 8 | archive[at[i] + 3]; n < kCylinders)
            kept = std::max(kept, n + 1);
    return kept;
}

// What every damaged archive keeps to: whole cylinders, no more than 80, and the `intact` ones
// at the start are the sample's.
void expect_sane(const Unpacked& result, const Sample& sample, std::size_t intact, const std::string& what) {
    const Bytes& image = image_of(sample);
    EXPECT_LE(result.image.size(), kCylinders * sample.cylinder_bytes) << what;
    EXPECT_EQ(result.image.size() % sample.cylinder_bytes, 0u) << what;
    EXPECT_TRUE(starts_with(result.image,
                            std::span(image).first(std::min(result.image.size(), intact * sample.cylinder_bytes))))
        << what;
}

// Damaged data that decodes: a 16-bit sum misses some damage (11264 bytes of 0x40 add up to 0
// too), but every cylinder of an accepted image has the sum that its record promised.
void expect_promised_sums(const Unpacked& result, const Sample& sample, const std::string& what) {
    const Bytes& image = image_of(sample);
    if (result.error != DmsError::none) return;
    ASSERT_EQ(result.image.size(), image.size()) << what;
    for (std::size_t at = 0; at < image.size(); at += sample.cylinder_bytes)
        EXPECT_EQ(media::dms::checksum(std::span(result.image).subspan(at, sample.cylinder_bytes)),
                  media::dms::checksum(std::span(image).subspan(at, sample.cylinder_bytes)))
            << what << " at " << at;
}

// An archive that ends (or stops being records) after `kept` cylinders: those and no more.
void expect_ends_there(const Unpacked& result, const Sample& sample, std::size_t kept, const std::string& what) {
    EXPECT_EQ(result.error, kept == 0 ? DmsError::no_tracks : DmsError::none) << what;
    if (kept == 0) return;
    EXPECT_EQ(result.image.size(), kept * sample.cylinder_bytes) << what;
    EXPECT_TRUE(starts_with(result.image, std::span(image_of(sample)).first(kept * sample.cylinder_bytes))) << what;
}

TEST(DmsDamage, FlippedHeaderBits) {
    const Bytes original = read_sample("rle_small.dms");
    for (std::size_t bit = 0; bit < 56 * 8; ++bit) {
        Bytes archive = original;
        archive[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
        const Unpacked result = unpack(archive);
        EXPECT_EQ(result.error, bit < 32 ? DmsError::not_dms : DmsError::header_crc) << bit;
        EXPECT_TRUE(result.image.empty()) << bit;
    }
}

// A flipped bit fails the CRC of the record header or of the stored data (a flipped "TR" ends
// the archive there); flipped data behind a CRC made right reaches the decoders.
TEST(DmsDamage, FlippedRecordBits) {
    std::mt19937 random(7);
    for (const Sample& sample : samples()) {
        const Bytes original = read_sample(sample.name);
        const std::vector<std::size_t> at = record_offsets(original);
        for (int round = 0; round < 8; ++round) {
            const std::size_t index = random() % at.size(), record = at[index], in_header = random() % 20;
            const std::size_t packed = original[record + 6] << 8 | original[record + 7];
            const std::size_t intact = cylinders_before(original, at, index);
            const auto bit = static_cast<std::uint8_t>(1u << (random() % 8));
            const std::string what = std::string(sample.name).append(" record ").append(std::to_string(index));
            Bytes archive = original;
            archive[record + in_header] ^= bit;
            const Unpacked header = unpack(archive);
            expect_sane(header, sample, intact, what);
            if (in_header < 2) {
                expect_ends_there(header, sample, intact, what);
            } else {
                EXPECT_EQ(header.error, DmsError::record_header) << what;
            }
            if (packed == 0) continue;
            archive = original;
            archive[record + 20 + random() % packed] ^= bit;
            const Unpacked data = unpack(archive);
            EXPECT_EQ(data.error, DmsError::record_data) << what;
            expect_sane(data, sample, intact, what);
            fix_record_crcs(archive, record);
            const Unpacked decoded = unpack(archive);
            expect_sane(decoded, sample, intact, what);
            expect_promised_sums(decoded, sample, what);
        }
    }
}

// Cut anywhere: within 2 bytes of a record's start (or at the end) the archive just ends
// there; elsewhere in a record, a status; in the file header, not_dms.
TEST(DmsDamage, Truncated) {
    for (const char* name : {"rle_small.dms", "test_C1_deep.dms", "test_C1_heavy1.dms"}) {
        const Sample& sample = sample_named(name);
        const Bytes original = read_sample(name);
        const std::vector<std::size_t> at = record_offsets(original);
        std::vector<std::size_t> cuts = {0, 55, original.size()};
        for (std::size_t cut = 0; cut < original.size(); cut += original.size() / 40 + 1) cuts.push_back(cut);
        for (const std::size_t i : {std::size_t{0}, std::size_t{1}, at.size() / 2, at.size() - 1})
            cuts.insert(cuts.end(), {at[i], at[i] + 1, at[i] + 2, at[i] + 19, at[i] + 21});
        for (const std::size_t cut : cuts) {
            const Unpacked result =
                unpack(Bytes(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(cut)));
            const std::string what = std::string(name).append(" cut at ").append(std::to_string(cut));
            std::size_t complete = 0; // records before the cut
            while (complete < at.size() && (complete + 1 < at.size() ? at[complete + 1] : original.size()) <= cut)
                ++complete;
            const std::size_t next = complete < at.size() ? at[complete] : original.size();
            expect_sane(result, sample, cylinders_before(original, at, complete), what);
            if (cut < 56) {
                EXPECT_EQ(result.error, DmsError::not_dms) << what;
            } else if (cut - next < 2) {
                expect_ends_there(result, sample, cylinders_before(original, at, complete), what);
            } else {
                EXPECT_TRUE(result.error == DmsError::record_header || result.error == DmsError::record_data) << what;
            }
        }
    }
}

// Lengths that lie (header CRC made right) in the record of cylinder 40 of the quick sample,
// the first of a chain of records that keep the decoders' state.
TEST(DmsDamage, LyingLengths) {
    const Sample& sample = sample_named("test_C1_quick.dms");
    const Bytes original = read_sample(sample.name);
    const std::size_t record = record_offsets(original)[40];
    const unsigned packed = original[record + 6] << 8 | original[record + 7],
                   stage1 = original[record + 8] << 8 | original[record + 9];
    const struct {
        std::size_t field; // 6 packed, 8 first stage, 10 unpacked
        unsigned value;
        std::vector<DmsError> errors;
    } cases[] = {
        {6, packed + 1, {DmsError::record_data}},
        {6, packed - 1, {DmsError::record_data}},
        {6, 0, {DmsError::record_data}},
        {6, 0xFFFF, {DmsError::record_data}},
        {10, 11263, {DmsError::bad_record}},
        {10, 22528, {DmsError::bad_record}},
        {10, 0xFFFF, {DmsError::bad_record}},
        {10, 1024, {DmsError::checksum, DmsError::corrupt_data}}, // skipped as an advert: the chain breaks
        {8, 0, {DmsError::corrupt_data}},
        {8, stage1 - 1, {DmsError::corrupt_data, DmsError::checksum}},
        {8, stage1 + 300, {DmsError::corrupt_data, DmsError::checksum}},
        {8, 0xFFFF, {DmsError::corrupt_data, DmsError::checksum}},
    };
    for (const auto& c : cases) {
        Bytes archive = original;
        put16(archive, record + c.field, c.value);
        fix_record_header_crc(archive, record);
        const Unpacked result = unpack(archive);
        const std::string what = std::to_string(c.field).append(" = ").append(std::to_string(c.value));
        expect_sane(result, sample, 40, what);
        EXPECT_NE(std::find(c.errors.begin(), c.errors.end(), result.error), c.errors.end()) << what;
    }
}

} // namespace
} // namespace kq::test::dms
