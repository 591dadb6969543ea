#pragma once
// The bytes of a medium image as the content analysis reads them: at any offset from a plain
// file or from memory, and from a compressed file without inflating more of it than the
// analysis needs. A compressed file can only be read front to back, so the analysis first says
// which ranges it will read (prefetch), and one inflating pass fetches them all and stops after
// the last. The first pass also keeps the first 64 KiB, where partition tables and floppy boot
// blocks live. Such passes take what comes without the container's checksum: they stop early.

#include "platform/files.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kq::media {

struct ByteRange {
    std::uint64_t offset;
    std::uint64_t length;
};

class ImageBytes {
public:
    virtual ~ImageBytes() = default;
    // The image's size, when it is known without reading it all.
    virtual std::optional<std::uint64_t> size() const = 0;
    // Reads out.size() bytes at `offset`: false when they are not all there.
    virtual bool read(std::uint64_t offset, std::span<std::byte> out) = 0;
    // The ranges that the next reads will want.
    virtual void prefetch(std::span<const ByteRange> ranges) { (void)ranges; }
};

class MemoryImageBytes final : public ImageBytes {
public:
    explicit MemoryImageBytes(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {}
    std::optional<std::uint64_t> size() const override { return bytes_.size(); }
    bool read(std::uint64_t offset, std::span<std::byte> out) override;

private:
    std::vector<std::byte> bytes_;
};

class FileImageBytes final : public ImageBytes {
public:
    explicit FileImageBytes(platform::File file) : file_(std::move(file)) {}
    std::optional<std::uint64_t> size() const override { return file_.size(); }
    bool read(std::uint64_t offset, std::span<std::byte> out) override;

private:
    platform::File file_;
};

// A gzip or ZIP compressed image (".adz", ".hdz").
class InflatedImageBytes final : public ImageBytes {
public:
    static constexpr std::uint64_t kHeadBytes = 64 * 1024;
    // Reads the container's header (nothing is inflated yet); nullptr when the file is not a
    // compressed image.
    static std::unique_ptr<InflatedImageBytes> open(std::u16string_view path);

    // The size that the container states: gzip's trailer (modulo 2^32, so for images under
    // 4 GiB) or the ZIP entry's; nullopt when it is not known.
    std::optional<std::uint64_t> size() const override { return size_; }
    bool read(std::uint64_t offset, std::span<std::byte> out) override;
    void prefetch(std::span<const ByteRange> ranges) override;

    explicit InflatedImageBytes(std::u16string path) : path_(std::move(path)) {}

private:
    struct Piece {
        std::uint64_t offset;
        std::vector<std::byte> bytes;
    };
    // One pass over the image from its start, keeping what overlaps `wanted`.
    void fetch(std::vector<ByteRange> wanted);

    std::u16string path_;
    std::optional<std::uint64_t> size_;
    std::vector<Piece> pieces_; // the first 64 KiB and what was prefetched
    bool fetched_ = false;      // whether a pass has run
};

// Opens an image for reading: compressed when `compressed`, else as a plain file; nullptr
// when it cannot be opened.
std::unique_ptr<ImageBytes> open_image_bytes(std::u16string_view path, bool compressed);

} // namespace kq::media
