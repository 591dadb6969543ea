#pragma once
// Where the image readers and writers take their bytes from and put them: files in the
// module, memory in tests and fuzz targets.

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kq::media {

class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Up to buffer.size() bytes: the count read (0 at the end), or nullopt on failure.
    virtual std::optional<std::size_t> read(std::span<std::byte> buffer) = 0;
    // Moves to a byte offset from the start (past the end: reads then return 0).
    virtual bool seek(std::uint64_t offset) = 0;
};

class ByteSink {
public:
    virtual ~ByteSink() = default;
    // The count written (less than asked when the medium is full), or nullopt on failure.
    virtual std::optional<std::size_t> write(std::span<const std::byte> bytes) = 0;
    virtual bool flush() { return true; }
    // False for a sink that keeps parts of an image and takes them as they come: inflating then
    // skips the checksum, which such a pass, stopped early, would never get to compare.
    virtual bool wants_checksum() const { return true; }
};

class FileSource final : public ByteSource {
public:
    explicit FileSource(platform::File& file) : file_(file) {}
    std::optional<std::size_t> read(std::span<std::byte> buffer) override { return file_.read(buffer); }
    bool seek(std::uint64_t offset) override { return file_.seek(offset); }

private:
    platform::File& file_;
};

class FileSink final : public ByteSink {
public:
    explicit FileSink(platform::File& file) : file_(file) {}
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override { return file_.write(bytes); }
    bool flush() override { return file_.flush(); }

private:
    platform::File& file_;
};

class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const std::byte> bytes) : bytes_(bytes) {}
    std::optional<std::size_t> read(std::span<std::byte> buffer) override;
    bool seek(std::uint64_t offset) override;

private:
    std::span<const std::byte> bytes_;
    std::size_t position_ = 0;
};

// Collects what is written, up to an optional limit (a "full disk").
class MemorySink final : public ByteSink {
public:
    explicit MemorySink(std::size_t limit = static_cast<std::size_t>(-1)) : limit_(limit) {}
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override;
    const std::vector<std::byte>& bytes() const { return bytes_; }

private:
    std::size_t limit_;
    std::vector<std::byte> bytes_;
};

} // namespace kq::media
