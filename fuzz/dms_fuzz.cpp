// Unpacks arbitrary bytes as a DMS archive, as they are and once more with every CRC made
// right (so that mutations get past the CRCs to the decoders); encrypted archives too, whose
// seeds carry a banner before the first disk record. Whatever it returns, the image
// never passes 80 cylinders of the largest size and is written in whole cylinders; an archive
// that unpacks without error gives at least one cylinder.

#include "fuzz/fuzz_require.h"
#include "media/dms/dms_checks.h"
#include "media/dms/dms_unpacker.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace kq::media;

namespace {

using kq::fuzz::require;

constexpr std::size_t kDoubleDensityCylinder = 11264, kHighDensityCylinder = 22528;
constexpr std::size_t kMaxImageBytes = 80 * kHighDensityCylinder;

// Counts what it is given and checks every write: whole cylinders (a high-density one is two
// double-density ones), never past the largest image.
class CountingSink final : public ByteSink {
public:
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        require(!bytes.empty() && bytes.size() % kDoubleDensityCylinder == 0);
        total_ += bytes.size();
        require(total_ <= kMaxImageBytes);
        return bytes.size();
    }
    std::size_t total() const { return total_; }

private:
    std::size_t total_ = 0;
};

void put16(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint16_t value) {
    bytes[at] = static_cast<std::uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

// Whether an encrypted archive's keys are narrowed before its first disk record: by a first
// record that does not go to the disk (a banner) of at least 16 stored bytes. Otherwise the
// unpacker tries all 65,536 keys on the first disk record, too slow to fuzz at speed (the unit
// tests cover that search).
bool keys_narrowed(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 56 + 20) return false;
    const unsigned number = bytes[58] << 8 | bytes[59], packed = bytes[62] << 8 | bytes[63],
                   unpacked = bytes[66] << 8 | bytes[67];
    return (number >= 80 || unpacked <= 2048) && packed >= 16;
}

// The file header's CRC and, record by record as the unpacker finds them, the CRCs of the
// packed data (as much of it as there is) and of the record header. An encrypted archive whose
// keys are not narrowed is taken as a plain one.
std::vector<std::uint8_t> with_right_crcs(std::span<const std::uint8_t> input) {
    std::vector<std::uint8_t> bytes(input.begin(), input.end());
    if (bytes.size() < 56) return bytes;
    if (!keys_narrowed(bytes)) bytes[11] &= static_cast<std::uint8_t>(~0x02);
    const std::span<const std::uint8_t> all(bytes);
    put16(bytes, 54, kq::media::dms::crc16(all.subspan(4, 50)));
    for (std::size_t at = 56; at + 20 <= bytes.size() && bytes[at] == 'T' && bytes[at + 1] == 'R';) {
        const std::size_t packed = std::size_t{bytes[at + 6]} << 8 | bytes[at + 7];
        const std::size_t present = std::min(packed, bytes.size() - at - 20);
        put16(bytes, at + 16, kq::media::dms::crc16(all.subspan(at + 20, present)));
        put16(bytes, at + 18, kq::media::dms::crc16(all.subspan(at, 18)));
        at += 20 + packed;
    }
    return bytes;
}

void unpack_and_check(std::span<const std::uint8_t> archive) {
    MemorySource source(std::as_bytes(archive));
    CountingSink sink;
    const DmsError error = unpack_dms(source, sink);
    require(static_cast<std::uint32_t>(error) <= static_cast<std::uint32_t>(DmsError::out_of_memory));
    require(error != DmsError::input_unopened && error != DmsError::output_uncreated); // for files only
    if (error == DmsError::none) require(sink.total() >= kDoubleDensityCylinder);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> input(data, size);
    unpack_and_check(input);
    unpack_and_check(with_right_crcs(input));
    return 0;
}
