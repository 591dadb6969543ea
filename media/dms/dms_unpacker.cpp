#include "media/dms/dms_unpacker.h"

#include "media/compression/input_buffer.h"
#include "media/dms/dms_archive.h"
#include "media/dms/dms_checks.h"
#include "media/dms/dms_cipher.h"
#include "media/dms/dms_key_search.h"
#include "media/dms/dms_record.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>

namespace kq::media {
namespace {

using namespace dms;

constexpr std::uint32_t kCylinders = 80;
constexpr std::uint32_t kDoubleDensityCylinderBytes = 2 * 11 * 512;
constexpr std::uint32_t kHighDensityCylinderBytes = 2 * 22 * 512;
// Records numbered 80 and up are FILEID.DIZ text and banners; records of cylinders that
// unpack to 2048 bytes or fewer are advertising boot blocks. None of them is unpacked.
constexpr std::uint32_t kMaxExtraBytes = 2048;

// Cylinders are collected and handed to the sink this many bytes at a time (8 double-density
// cylinders, 4 high-density ones).
constexpr std::size_t kOutputBytes = 4 * kHighDensityCylinderBytes;

// Everything that one unpacking needs, allocated once.
struct Workspace {
    std::array<std::uint8_t, kMaxRecordBytes + kBitReaderPadding> packed{};
    std::array<std::uint8_t, kMaxRecordBytes> stage1{};
    std::array<std::uint8_t, kOutputBytes> output{};
    DecoderState state;
};

// A source whose exceptions become read failures.
class GuardedSource final : public ByteSource {
public:
    explicit GuardedSource(ByteSource& source) : source_(source) {}
    std::optional<std::size_t> read(std::span<std::byte> buffer) override {
        try {
            return source_.read(buffer);
        } catch (...) {
            return std::nullopt;
        }
    }
    bool seek(std::uint64_t offset) override {
        try {
            return source_.seek(offset);
        } catch (...) {
            return false;
        }
    }

private:
    ByteSource& source_;
};

// Writes the image in order, cylinder by cylinder through a buffer, and keeps it to 80
// cylinders; the image ends with the last cylinder given. Records are unpacked straight into
// the buffer.
class ImageWriter {
public:
    ImageWriter(ByteSink& sink, std::span<std::uint8_t, kOutputBytes> buffer, std::uint32_t cylinder_bytes)
        : sink_(sink), buffer_(buffer), cylinder_bytes_(cylinder_bytes) {}

    std::uint32_t next_cylinder() const { return next_; }

    // Room for cylinder `number` (not before next_cylinder()), after zeros for the cylinders
    // passed over; empty when writing failed.
    std::span<std::uint8_t> room_for(std::uint32_t number) {
        if (!zeros_to(number)) return {};
        return room();
    }
    // The cylinder in room_for()'s span is complete.
    void commit() {
        used_ += cylinder_bytes_;
        ++next_;
    }
    // Writes what the buffer holds.
    bool hand_on() {
        if (used_ == 0) return true;
        const std::span<const std::byte> bytes = std::as_bytes(buffer_.first(used_));
        used_ = 0;
        try {
            const std::optional<std::size_t> written = sink_.write(bytes);
            return written && *written == bytes.size();
        } catch (...) {
            return false;
        }
    }
    // Everything written (as a file copy leaves it: to the system's cache, not forced to the disk).
    bool finish() { return hand_on(); }

private:
    bool zeros_to(std::uint32_t number) {
        for (; next_ < number; ++next_) {
            const std::span<std::uint8_t> zeros = room();
            if (zeros.empty()) return false;
            std::fill(zeros.begin(), zeros.end(), std::uint8_t{0});
            used_ += cylinder_bytes_;
        }
        return true;
    }
    // The next cylinder's place in the buffer, after writing the buffer out when it is full.
    std::span<std::uint8_t> room() {
        if (next_ >= kCylinders) return {};
        if (used_ + cylinder_bytes_ > buffer_.size() && !hand_on()) return {};
        return buffer_.subspan(used_, cylinder_bytes_);
    }

    ByteSink& sink_;
    std::span<std::uint8_t, kOutputBytes> buffer_;
    std::uint32_t cylinder_bytes_;
    std::size_t used_ = 0;
    std::uint32_t next_ = 0;
};

// The key of an encrypted archive: unknown (a range of keys) until the first disk record gives
// it, then running on from record to record.
class Decryption {
public:
    // Decrypts a record's packed bytes in place (FILEID.DIZ is stored in clear). While the key is
    // not known, the records before the first disk record only narrow the range; the first disk
    // record is searched for it. False when no key unpacks that record.
    bool decrypt(const RecordHeader& record, bool goes_to_disk, std::span<std::uint8_t> packed) {
        if (record.number == kClearRecord) return true;
        if (!cipher_ && !goes_to_disk) {
            unknown_.pass(packed);
            return true;
        }
        if (!cipher_) {
            const std::optional<std::uint16_t> key = find_record_key(record, packed, unknown_);
            if (!key) return false;
            cipher_.emplace(*key);
        }
        cipher_->decrypt(packed);
        return true;
    }

private:
    KeyRange unknown_;
    std::optional<Cipher> cipher_;
};

DmsError read_records(InputBuffer& in, Workspace& workspace, ImageWriter& writer, std::uint32_t cylinder_bytes,
                      Decryption* decryption) {
    for (;;) {
        std::array<std::uint8_t, kRecordHeaderBytes> record_bytes{};
        const std::size_t got = in.read(std::as_writable_bytes(std::span(record_bytes)));
        if (in.failed()) return DmsError::read_failed;
        // Whatever follows the last record (text, zeros, nothing) ends the archive.
        if (!starts_record(std::span(record_bytes).first(got))) return DmsError::none;
        if (got < record_bytes.size()) return DmsError::record_header;
        RecordHeader record;
        if (const DmsError error = read_record_header(record_bytes, record); error != DmsError::none) return error;

        const std::span<std::uint8_t> packed = std::span(workspace.packed).first(record.packed);
        if (in.read(std::as_writable_bytes(packed)) != packed.size())
            return in.failed() ? DmsError::read_failed : DmsError::record_data;
        if (crc16(packed) != record.data_crc) return DmsError::record_data;
        const bool goes_to_disk = record.number < kCylinders && record.unpacked > kMaxExtraBytes;
        if (goes_to_disk && record.unpacked != cylinder_bytes) return DmsError::bad_record;
        if (goes_to_disk && record.number < writer.next_cylinder()) return DmsError::track_order;
        // A key that unpacks the record is its checksum's match: without one, the record is as
        // corrupt as one whose checksum fails.
        if (decryption != nullptr && !decryption->decrypt(record, goes_to_disk, packed)) return DmsError::checksum;
        if (!goes_to_disk) continue;

        std::fill_n(workspace.packed.begin() + record.packed, kBitReaderPadding, std::uint8_t{0});
        const std::span<std::uint8_t> cylinder = writer.room_for(record.number);
        if (cylinder.empty()) return DmsError::write_failed;
        if (const DmsError error = unpack_record(record, packed, workspace.state, workspace.stage1, cylinder);
            error != DmsError::none)
            return error;
        writer.commit();
    }
}

DmsError unpack(ByteSource& archive, ByteSink& image) {
    GuardedSource source(archive);
    InputBuffer in(source);
    const auto workspace = std::make_unique<Workspace>();

    std::array<std::uint8_t, kArchiveHeaderBytes> header_bytes{};
    if (in.read(std::as_writable_bytes(std::span(header_bytes))) != header_bytes.size())
        return in.failed() ? DmsError::read_failed : DmsError::not_dms;
    ArchiveHeader header;
    if (const DmsError error = read_archive_header(header_bytes, header); error != DmsError::none) return error;
    if ((header.info & kInfoPcDisk) != 0 || header.disk_type == kDiskTypeSingleFile) return DmsError::not_a_disk;
    std::optional<Decryption> decryption;
    if ((header.info & kInfoEncrypted) != 0) decryption.emplace();

    const std::uint32_t cylinder_bytes =
        (header.info & kInfoHighDensity) != 0 ? kHighDensityCylinderBytes : kDoubleDensityCylinderBytes;
    ImageWriter writer(image, workspace->output, cylinder_bytes);
    if (const DmsError error =
            read_records(in, *workspace, writer, cylinder_bytes, decryption ? &*decryption : nullptr);
        error != DmsError::none) {
        writer.hand_on(); // the cylinders unpacked before the failure
        return error;
    }
    if (writer.next_cylinder() == 0) return DmsError::no_tracks;
    return writer.finish() ? DmsError::none : DmsError::write_failed;
}

} // namespace

DmsError unpack_dms(ByteSource& archive, ByteSink& image) {
    try {
        return unpack(archive, image);
    } catch (const std::bad_alloc&) {
        return DmsError::out_of_memory;
    }
}

DmsError unpack_dms_file(std::u16string_view archive_path, std::u16string_view image_path) {
    std::optional<platform::File> input = platform::File::open_for_reading(archive_path);
    if (!input) return DmsError::input_unopened;
    std::optional<platform::File> output = platform::File::create(image_path);
    if (!output) return DmsError::output_uncreated;
    FileSource source(*input);
    FileSink sink(*output);
    return unpack_dms(source, sink);
}

} // namespace kq::media
