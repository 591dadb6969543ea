#pragma once
// The image formats that the module knows by their file extension, one row each: what kind of
// drive takes them, how their bytes are stored, whether the host may have the emulator write to
// them, and the label that the content analysis gives their conversion. Working copies, medium
// copies, the content analysis, auto-configuration and the file associations all classify a
// path by this table.

#include "common/compare.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace kq::media {

enum class MediumKind { floppy, hard_disk, cd };

// How an image file holds its medium.
enum class ImageContainer {
    plain,     // the bytes are the medium's (an extended ADF is told apart by its signature)
    gzip,      // a gzip member (or the first entry of a ZIP archive) of a plain image
    dms,       // a DMS archive of a floppy
    ipf,       // an IPF image, read through the CAPSImg library
    cue_sheet, // a CUE sheet that names the CD image's data files
    flux,      // flux transitions (SuperCard Pro), which the module does not decode
};

struct ImageFormat {
    std::u16string_view extension; // without its dot, in lower case
    MediumKind kind;
    ImageContainer container;
    bool is_writable;                     // a disk image that the emulator may write to
    std::u16string_view conversion_label; // how the content analysis reads it
};

inline constexpr std::u16string_view kRawFileLabel = u"Raw File";

inline constexpr std::array kImageFormats{
    ImageFormat{u"adf", MediumKind::floppy, ImageContainer::plain, true, kRawFileLabel},
    ImageFormat{u"adz", MediumKind::floppy, ImageContainer::gzip, true, u"ADF from ADZ"},
    ImageFormat{u"cue", MediumKind::cd, ImageContainer::cue_sheet, false, kRawFileLabel},
    ImageFormat{u"dms", MediumKind::floppy, ImageContainer::dms, true, u"ADF from DMS"},
    ImageFormat{u"hdf", MediumKind::hard_disk, ImageContainer::plain, true, kRawFileLabel},
    ImageFormat{u"hdz", MediumKind::hard_disk, ImageContainer::gzip, true, u"HDF from HDZ"},
    ImageFormat{u"ipf", MediumKind::floppy, ImageContainer::ipf, false, u"ADF from IPF"},
    ImageFormat{u"iso", MediumKind::cd, ImageContainer::plain, false, kRawFileLabel},
    ImageFormat{u"scp", MediumKind::floppy, ImageContainer::flux, true, kRawFileLabel},
};

// Whether a format has this extension (without its dot, any letter case).
constexpr bool is_image_extension(std::u16string_view extension) {
    return std::ranges::any_of(
        kImageFormats, [&](const ImageFormat& format) { return equal_ignoring_case(extension, format.extension); });
}

// The format of an extension (without its dot, any letter case); nullptr when none has it.
const ImageFormat* find_image_format(std::u16string_view extension);

// The format of a path by its extension; nullptr for an unknown extension or a path without one.
const ImageFormat* image_format_of(std::u16string_view path);

// Whether the emulator can use the image in a working copy of its own: a plain or gzip-packed
// floppy or hard-disk image (".adf", ".hdf", ".adz", ".hdz").
constexpr bool takes_working_copy(const ImageFormat& format) {
    return format.kind != MediumKind::cd &&
           (format.container == ImageContainer::plain || format.container == ImageContainer::gzip);
}

// Whether copying the image can unpack it into a plain one (".adz", ".hdz", ".dms").
constexpr bool is_packed(const ImageFormat& format) {
    return format.container == ImageContainer::gzip || format.container == ImageContainer::dms;
}

// The extension of the plain image that a packed one unpacks to.
constexpr std::u16string_view unpacked_extension(const ImageFormat& format) {
    return format.kind == MediumKind::hard_disk ? u"hdf" : u"adf";
}

static_assert(std::ranges::adjacent_find(kImageFormats, std::ranges::greater_equal{}, &ImageFormat::extension) ==
                  kImageFormats.end(),
              "one row per extension, in alphabetical order");
static_assert(std::ranges::none_of(kImageFormats,
                                   [](const ImageFormat& format) {
                                       return format.kind == MediumKind::cd &&
                                              (format.is_writable || is_packed(format));
                                   }),
              "CD images are read-only and never packed");

} // namespace kq::media
