#pragma once
// Reads a file-association record as a host would, checking its layout on the way (cbSize 72,
// the padding after it zero, the seven strings back to back right after the header in field
// order), and the English texts that each type's record must carry.

#include "kq_amiga.h"
#include "tests/support/printable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace kq::test {

struct FileAssociationView {
    std::u16string extension, type_name, extension_description, long_description, filter_pattern, filter_name,
        icon_location;
    std::uint32_t category = 0, flags = 0;
    // What the layout gives: 72 + 2 × (length + 1) per string.
    std::size_t formula_bytes = 0;

    friend bool operator==(const FileAssociationView&, const FileAssociationView&) = default;
};

// The record's contents, or nullopt with `error` naming the layout rule it breaks.
inline std::optional<FileAssociationView> read_file_association_record(const KQFileAssociation* record,
                                                                       std::string& error) {
    error.clear();
    if (record == nullptr) {
        error = "no record";
        return std::nullopt;
    }
    const auto* base = reinterpret_cast<const std::byte*>(record);
    std::uint32_t padding = 1;
    std::memcpy(&padding, base + 4, sizeof padding);
    if (record->cbSize != 72 || padding != 0) {
        error = "the header does not start with cbSize 72 and four zero bytes";
        return std::nullopt;
    }
    FileAssociationView view{.category = record->category, .flags = record->flags};
    const struct {
        const kq_char* pointer;
        std::u16string* text;
        const char* name;
    } fields[] = {
        {record->extension, &view.extension, "extension"},
        {record->typeName, &view.type_name, "type name"},
        {record->extensionDescription, &view.extension_description, "extension description"},
        {record->longDescription, &view.long_description, "long description"},
        {record->filterPattern, &view.filter_pattern, "filter pattern"},
        {record->filterName, &view.filter_name, "filter name"},
        {record->iconLocation, &view.icon_location, "icon location"},
    };
    const std::byte* cursor = base + sizeof(KQFileAssociation);
    for (const auto& field : fields) {
        if (reinterpret_cast<const std::byte*>(field.pointer) != cursor) {
            error = std::string(field.name) + " does not follow the previous string";
            return std::nullopt;
        }
        const auto* text = reinterpret_cast<const char16_t*>(field.pointer);
        field.text->assign(text, std::char_traits<char16_t>::length(text));
        cursor += (field.text->size() + 1) * sizeof(char16_t);
    }
    view.formula_bytes = static_cast<std::size_t>(cursor - base);
    return view;
}

// What each type's record carries with the module's English string table; the icon location is
// the module's path followed by `icon_suffix`, or empty when the suffix is.
struct EnglishFileAssociation {
    std::u16string_view extension, type_name, extension_description, long_description, filter_name, icon_suffix;
    std::uint32_t category, flags;
};

inline constexpr std::array<EnglishFileAssociation, 10> kEnglishFileAssociations{{
    {u"adf", u"Amiga Floppy Disk Image", u".adf Amiga Floppy Disk Image",
     u"ADF is an open Amiga floppy disk image format introduced with the first emulation applications. It is not "
     u"compressed by itself, and supports very few copy protection schemes. It is a simple and robust format that "
     u"is widely supported, and can be compressed well in KQ9 packages and by the file system.",
     u"Amiga Floppy Disk Images (*.adf)", u",-144", 0, 3},
    {u"adz", u"Amiga Floppy Disk Image", u".adz Amiga Floppy Disk Image",
     u"ADZ is a compressed version of the ADF format. These files occupy less space than ADF files, but are not as "
     u"widely supported.",
     u"GZip-compressed ADF Images (*.adz)", u",-144", 0, 3},
    {u"cue", u"", u"", u"", u"CD-ROM Index Files (*.cue)", u"", 2, 0},
    {u"dms", u"Amiga Floppy Disk Image", u".dms Amiga Floppy Disk Image",
     u"DMS (the Disk Masher System) is a proprietary Amiga disk archiving format that was widely used to store and "
     u"distribute disk images before emulation became widespread. It supports built-in compression, and a few copy "
     u"protection schemes. DMS is supported well on original Amiga systems, but remains less popular than ADF in "
     u"the emulation community.",
     u"Amiga DMS Images (*.dms)", u",-144", 0, 3},
    {u"hdf", u"Amiga Hard Disk Image", u".hdf Amiga Hard Disk Image",
     u"HDF is an open Amiga hard disk image format. It is a simple and robust format that is widely supported, and "
     u"can be compressed well in KQ9 packages and by the file system.",
     u"Amiga Hard Disk Images (*.hdf)", u",-163", 1, 3},
    {u"hdz", u"Amiga Hard Disk Image", u".hdz Amiga Hard Disk Image",
     u"HDZ is a compressed version of the HDF format. These files occupy less space than HDF files, but are not as "
     u"widely supported.",
     u"GZip-compressed HDF Images (*.hdz)", u",-163", 1, 3},
    {u"ipf", u"Amiga Floppy Disk Image", u".ipf SPS Interchangeable Preservation Format",
     u"IPF (Interchangeable Preservation Format) is a proprietary media archiving format maintained by the Software "
     u"Preservation Society. It offers excellent support for copy-protected disk images.",
     u"SPS IPF Images (*.ipf)", u",-144", 0, 0},
    {u"iso", u"", u"", u"", u"CD-ROM Images (*.iso)", u"", 2, 0},
    {u"scp", u"Amiga Floppy Disk Image", u".scp SuperCard Pro Flux Image",
     u"SCP is an open media archiving format, originally designed to store SuperCard Pro flux data. It offers "
     u"excellent support for copy-protected disk images.",
     u"SCP Images (*.scp)", u",-144", 0, 3},
    {u"uae", u"UAE Configuration File", u".uae UAE Configuration File",
     u"UAE configuration files contain emulation settings and reference media files.",
     u"WinUAE Configuration Files (*.uae)", u",-144", 0, 7},
}};

// The record that `expected` describes for a module at `module_path`.
inline FileAssociationView english_view(const EnglishFileAssociation& expected, std::u16string_view module_path) {
    FileAssociationView view{.extension = std::u16string(expected.extension),
                             .type_name = std::u16string(expected.type_name),
                             .extension_description = std::u16string(expected.extension_description),
                             .long_description = std::u16string(expected.long_description),
                             .filter_pattern = u"*." + std::u16string(expected.extension),
                             .filter_name = std::u16string(expected.filter_name),
                             .icon_location = {},
                             .category = expected.category,
                             .flags = expected.flags};
    if (!expected.icon_suffix.empty())
        view.icon_location = std::u16string(module_path) + std::u16string(expected.icon_suffix);
    view.formula_bytes = 72;
    for (const std::u16string* text :
         {&view.extension, &view.type_name, &view.extension_description, &view.long_description, &view.filter_pattern,
          &view.filter_name, &view.icon_location})
        view.formula_bytes += (text->size() + 1) * sizeof(char16_t);
    return view;
}

// The view as GoogleTest shows it in a failed comparison.
inline std::ostream& operator<<(std::ostream& out, const FileAssociationView& view) {
    out << '"' << printable(view.extension) << "\" type \"" << printable(view.type_name) << "\" description \""
        << printable(view.extension_description) << "\" long \"" << printable(view.long_description) << "\" pattern \""
        << printable(view.filter_pattern) << "\" filter \"" << printable(view.filter_name) << "\" icon \""
        << printable(view.icon_location) << "\" category " << view.category << " flags " << view.flags << " bytes "
        << view.formula_bytes;
    return out;
}

} // namespace kq::test
