#include "media/copy_medium.h"

#include "common/windows_path.h"
#include "media/compression/inflate.h"
#include "media/cue_sheet.h"
#include "media/dms/dms_unpacker.h"
#include "media/image_formats.h"
#include "platform/file_operations.h"
#include "platform/files.h"
#include "platform/text_conversion.h"

#include <algorithm>
#include <vector>

namespace kq::media {
namespace {

constexpr int kMaxNameNumber = 999;
constexpr HResult kInvalidData = status::from_win32(platform::system_error::invalid_data);

enum class Conversion { none, inflate, unpack_dms };

bool has_non_ascii(std::u16string_view text) {
    return std::any_of(text.begin(), text.end(), [](char16_t c) { return c > 0x7F; });
}

// With kCopyMediumConvert, the kind of unpacking by the name's extension, and the name after it.
Conversion conversion_of(std::u16string& name) {
    const ImageFormat* format = image_format_of(name);
    if (format == nullptr || !is_packed(*format)) return Conversion::none;
    name = std::u16string(file_name_parts(name).stem) + u'.' + std::u16string(unpacked_extension(*format));
    return format->container == ImageContainer::dms ? Conversion::unpack_dms : Conversion::inflate;
}

void make_writable(std::u16string_view path) {
    const std::optional<std::uint32_t> attributes = platform::file_attributes(path);
    constexpr std::uint32_t kUnwanted = platform::kAttributeReadOnly | platform::kAttributeHidden;
    if (attributes && (*attributes & kUnwanted) != 0) platform::set_file_attributes(path, *attributes & ~kUnwanted);
}

// Copies a file over `to`. When the copy fails (a full disk), a file that it created goes
// again, so that no half-written copy stays; one that was there before is left alone, as it
// may be the source itself.
HResult copy_plain(std::u16string_view from, std::u16string_view to) {
    const bool existed = platform::file_attributes(to).has_value();
    if (const platform::SystemError error = platform::copy_file(from, to); error != 0) {
        if (!existed) platform::delete_file_robustly(to);
        return status::from_win32(error);
    }
    make_writable(to);
    return status::ok;
}

// The data files of a CUE sheet, from the sheet's folder into the target folder. When one
// fails, the copies that this call created go again: a sheet's files come complete or not at
// all.
HResult copy_cue_data_files(std::u16string_view sheet, const std::u16string& target_folder) {
    std::vector<CueDataFile> files;
    switch (read_cue_sheet_file(sheet, files)) {
    case CueError::none: break;
    case CueError::unsafe_name: return status::from_win32(platform::system_error::bad_pathname);
    case CueError::too_large: return kInvalidData;
    case CueError::unreadable: return status::system_failure();
    }
    const std::u16string_view sheet_folder = folder_of(sheet);
    std::vector<std::u16string> created;
    for (const CueDataFile& file : files) {
        std::u16string from(sheet_folder);
        from += file.relative_path;
        std::u16string to = target_folder + file.file_name;
        const bool existed = platform::file_attributes(to).has_value();
        if (const HResult copied = copy_plain(from, to); copied != status::ok) {
            for (const std::u16string& made : created) platform::delete_file_robustly(made);
            return copied;
        }
        if (!existed) created.push_back(std::move(to));
    }
    return status::ok;
}

} // namespace

HResult ascii_safe_path(std::u16string_view path, std::u16string& safe) {
    safe.clear();
    if (!has_non_ascii(path)) {
        safe = path;
        return status::ok;
    }
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(find_path_separator(path, start), path.size());
        const std::u16string_view element = path.substr(start, end - start);
        std::u16string replacement(element);
        if (has_non_ascii(element)) {
            const std::optional<std::u16string> short_name = platform::short_name_of(path.substr(0, end));
            if (!short_name) return status::system_failure();
            if (!short_name->empty()) replacement = *short_name;
        }
        safe += replacement;
        if (end < path.size()) safe += path[end]; // the separator as written
        start = end + 1;
    }
    return status::ok;
}

std::u16string ascii_file_name(std::u16string_view file_name) {
    std::u16string name = platform::best_fit_us_ascii(file_name);
    std::replace(name.begin(), name.end(), u'?', u'_');
    return name;
}

HResult copy_medium_file(std::u16string_view source_path, std::u16string_view target_folder, std::uint32_t flags,
                         std::u16string& target) {
    target.clear();
    std::u16string source, folder;
    if (const HResult safe = ascii_safe_path(source_path, source); safe != status::ok) return safe;
    if (const HResult safe = ascii_safe_path(target_folder, folder); safe != status::ok) return safe;
    folder = with_trailing_separator(folder);

    if (!has_path_separator(source)) return status::invalid_argument;
    const std::u16string_view source_name = file_name_of(source);
    std::u16string name = ascii_file_name(source_name);
    const Conversion conversion = (flags & kCopyMediumConvert) ? conversion_of(name) : Conversion::none;

    std::u16string path = folder + name;
    if (flags & kCopyMediumUniqueName) {
        const std::optional<std::u16string> free = platform::first_free_file_name(folder, name, kMaxNameNumber);
        if (!free) return status::failed;
        path = folder + *free;
    }
    if ((flags & kCopyMediumSkipSameName) && file_name_of(path) == source_name) return status::nothing_more;
    if (platform::file_attributes(path)) {
        if (flags & kCopyMediumNoOverwrite) return status::from_win32(platform::system_error::file_exists);
        make_writable(path);
        if (const platform::SystemError error = platform::delete_file(path); error != 0)
            return status::from_win32(error);
    }

    HResult result = status::ok;
    switch (conversion) {
    case Conversion::inflate:
        result = inflate_file(source, path) == InflateError::none ? status::ok : kInvalidData;
        break;
    case Conversion::unpack_dms:
        result = unpack_dms_file(source, path) == DmsError::none ? status::ok : kInvalidData;
        break;
    case Conversion::none: {
        result = copy_plain(source, path);
        const ImageFormat* format = image_format_of(source_name);
        if (result == status::ok && format != nullptr && format->container == ImageContainer::cue_sheet) {
            result = copy_cue_data_files(source, folder);
            if (result != status::ok) platform::delete_file_robustly(path); // a sheet without its files
        }
        break;
    }
    }
    if (conversion != Conversion::none) {
        if (result != status::ok) {
            platform::delete_file_robustly(path); // no half-unpacked image is left
            return result;
        }
        make_writable(path);
    }
    if (result != status::ok) return result;
    target = std::move(path);
    return status::ok;
}

} // namespace kq::media
