#pragma once
// Reads a file-association record as a host would, checking its layout on the way (cbSize 72,
// the padding after it zero, the seven strings back to back right after the header in field
// order), and the record that the content library describes for each type.

#include "content/file_associations.h"
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
    std::array<std::u16string*, 7> texts() {
        return {&extension,      &type_name,   &extension_description, &long_description,
                &filter_pattern, &filter_name, &icon_location};
    }
};

// The record's contents, or nullopt with `error` naming the layout rule it breaks.
inline std::optional<FileAssociationView> read_file_association_record(const KQFileAssociation* record,
                                                                       std::string& error) {
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
    const kq_char* pointers[] = {record->extension,       record->typeName,      record->extensionDescription,
                                 record->longDescription, record->filterPattern, record->filterName,
                                 record->iconLocation};
    const std::byte* cursor = base + sizeof(KQFileAssociation);
    for (std::size_t field = 0; field < 7; ++field) {
        if (reinterpret_cast<const std::byte*>(pointers[field]) != cursor) {
            error = "string " + std::to_string(field) + " does not follow the previous one";
            return std::nullopt;
        }
        const auto* text = reinterpret_cast<const char16_t*>(pointers[field]);
        view.texts()[field]->assign(text, std::char_traits<char16_t>::length(text));
        cursor += (view.texts()[field]->size() + 1) * sizeof(char16_t);
    }
    view.formula_bytes = static_cast<std::size_t>(cursor - base);
    return view;
}

// The record that the content library describes for type `index` of a module at `module_path`.
inline FileAssociationView english_view(std::uint32_t index, std::u16string_view module_path) {
    const std::optional<content::FileAssociationTexts> texts = content::file_association(index, module_path);
    if (!texts) return {};
    FileAssociationView view{texts->extension,        texts->type_name,      texts->extension_description,
                             texts->long_description, texts->filter_pattern, texts->filter_name,
                             texts->icon_location,    texts->category,       texts->flags};
    view.formula_bytes = 72;
    for (const std::u16string* text : view.texts()) view.formula_bytes += (text->size() + 1) * sizeof(char16_t);
    return view;
}

// The view as GoogleTest shows it in a failed comparison.
inline std::ostream& operator<<(std::ostream& out, FileAssociationView view) {
    for (const std::u16string* text : view.texts()) out << '"' << printable(*text) << "\" ";
    return out << "category " << view.category << " flags " << view.flags << " bytes " << view.formula_bytes;
}

} // namespace kq::test
