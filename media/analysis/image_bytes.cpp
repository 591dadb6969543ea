#include "media/analysis/image_bytes.h"

#include "media/compression/inflate.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kq::media {
namespace {

// Keeps the bytes of an inflating pass that fall into the wanted pieces, and stops the pass
// (by taking nothing more) once the last of them is complete.
class CaptureSink final : public ByteSink {
public:
    // Pieces are reserved in full, up to this much, so that they do not grow by copying.
    static constexpr std::uint64_t kMostReserved = std::uint64_t{4} << 20;

    CaptureSink(std::span<const ByteRange> wanted, std::vector<std::vector<std::byte>>& pieces)
        : wanted_(wanted), pieces_(pieces) {
        for (const ByteRange& range : wanted) end_ = std::max(end_, range.offset + range.length);
    }
    std::optional<std::size_t> write(std::span<const std::byte> bytes) override {
        if (position_ >= end_) return 0;
        const std::uint64_t start = position_, stop = position_ + bytes.size();
        for (std::size_t i = 0; i < wanted_.size(); ++i) {
            const std::uint64_t from = std::max(start, wanted_[i].offset);
            const std::uint64_t to = std::min(stop, wanted_[i].offset + wanted_[i].length);
            if (from >= to) continue;
            std::vector<std::byte>& piece = pieces_[i];
            if (piece.empty()) piece.reserve(static_cast<std::size_t>(std::min(wanted_[i].length, kMostReserved)));
            piece.insert(piece.end(), bytes.begin() + static_cast<std::ptrdiff_t>(from - start),
                         bytes.begin() + static_cast<std::ptrdiff_t>(to - start));
        }
        position_ = stop;
        return bytes.size();
    }
    bool wants_checksum() const override { return false; }

private:
    std::span<const ByteRange> wanted_;
    std::vector<std::vector<std::byte>>& pieces_;
    std::uint64_t position_ = 0, end_ = 0;
};

} // namespace

bool MemoryImageBytes::read(std::uint64_t offset, std::span<std::byte> out) {
    if (offset > bytes_.size() || out.size() > bytes_.size() - offset) return false;
    std::memcpy(out.data(), bytes_.data() + offset, out.size());
    return true;
}

bool FileImageBytes::read(std::uint64_t offset, std::span<std::byte> out) {
    if (!file_.seek(offset)) return false;
    for (std::size_t taken = 0; taken < out.size();) {
        const std::optional<std::size_t> got = file_.read(out.subspan(taken));
        if (!got || *got == 0) return false;
        taken += *got;
    }
    return true;
}

std::unique_ptr<InflatedImageBytes> InflatedImageBytes::open(std::u16string_view path) {
    const std::optional<CompressedImageHeader> header = read_compressed_image_header(path);
    if (!header) return nullptr;
    auto image = std::make_unique<InflatedImageBytes>(std::u16string(path));
    image->size_ = header->size;
    return image;
}

void InflatedImageBytes::fetch(std::vector<ByteRange> wanted) {
    fetched_ = true;
    std::vector<std::vector<std::byte>> bytes(wanted.size());
    CaptureSink sink(wanted, bytes);
    inflate_file(path_, sink); // stopped early on purpose, or at the image's end, or broken: what came is kept
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (!bytes[i].empty()) pieces_.push_back({wanted[i].offset, std::move(bytes[i])});
}

void InflatedImageBytes::prefetch(std::span<const ByteRange> ranges) {
    std::vector<ByteRange> missing;
    if (!fetched_) missing.push_back({0, kHeadBytes});
    for (const ByteRange& range : ranges) {
        const bool held = std::any_of(pieces_.begin(), pieces_.end(), [&](const Piece& piece) {
            return range.offset >= piece.offset && range.offset + range.length <= piece.offset + piece.bytes.size();
        });
        if (!held) missing.push_back(range);
    }
    if (!missing.empty()) fetch(std::move(missing));
}

bool InflatedImageBytes::read(std::uint64_t offset, std::span<std::byte> out) {
    for (int pass = 0; pass < 2; ++pass) {
        for (const Piece& piece : pieces_) {
            if (offset >= piece.offset && offset + out.size() <= piece.offset + piece.bytes.size()) {
                std::memcpy(out.data(), piece.bytes.data() + (offset - piece.offset), out.size());
                return true;
            }
        }
        if (pass == 0) prefetch(std::array{ByteRange{offset, out.size()}});
    }
    return false;
}

std::unique_ptr<ImageBytes> open_image_bytes(std::u16string_view path, bool compressed) {
    if (compressed) return InflatedImageBytes::open(path);
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return nullptr;
    return std::make_unique<FileImageBytes>(std::move(*file));
}

} // namespace kq::media
