#include "media/runtime_medium.h"

#include "common/integer_text.h"

#include "common/byte_order.h"
#include "common/compare.h"
#include "common/windows_path.h"
#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "media/image_formats.h"
#include "platform/file_operations.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace kq::media {
namespace {

constexpr std::u16string_view kRuntimeSubfolder = u"Quennet\\";
constexpr std::u16string_view kRecordSuffix = u".info";
constexpr std::u16string_view kSideSuffix = u".temp";
constexpr int kSideNameTries = 1000;
// The working copy's path fits a system path with its NUL; the record's may take all of it.
constexpr std::size_t kMaxCopyPathChars = platform::kMaxPathChars - 1, kMaxRecordPathChars = platform::kMaxPathChars;
constexpr std::size_t kRecordTimeBytes = 8;
constexpr std::size_t kMaxRecordPathBytes = platform::kMaxPathChars * sizeof(char16_t);
constexpr HResult kPathTooLong = status::from_win32(platform::system_error::buffer_overflow);
constexpr std::uint32_t kInflaterFailure = 0x80040000u;

// The format of an image that gets a working copy, by its extension; a name needs at least one
// character before the extension's dot. nullptr for every other image.
const ImageFormat* working_copy_format(std::u16string_view path) {
    const ImageFormat* format = image_format_of(path);
    if (format == nullptr || path.size() <= format->extension.size() + 1 || !takes_working_copy(*format))
        return nullptr;
    return format;
}

std::u16string guid_text(const platform::Guid& guid) {
    char text[40];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  static_cast<unsigned>(guid.data1), unsigned{guid.data2}, unsigned{guid.data3},
                  unsigned{guid.data4[0]}, unsigned{guid.data4[1]}, unsigned{guid.data4[2]}, unsigned{guid.data4[3]},
                  unsigned{guid.data4[4]}, unsigned{guid.data4[5]}, unsigned{guid.data4[6]}, unsigned{guid.data4[7]});
    return std::u16string(text, text + kRuntimeKeyChars);
}

// A caller's key becomes part of two file names: exactly a key's length, no path characters and
// no control characters (U+0000 to U+001F), which no Windows file name holds.
bool is_usable_key(std::u16string_view key) {
    return key.size() == kRuntimeKeyChars && key.find_first_of(u"\\/:*?\"<>|") == std::u16string_view::npos &&
           std::ranges::none_of(key, [](char16_t c) { return c < 0x20; });
}

std::optional<platform::FileTime> last_write_time_of(std::u16string_view path, HResult& failure) {
    const std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) {
        failure = status::system_failure();
        return std::nullopt;
    }
    const std::optional<platform::FileTime> time = file->last_write_time();
    if (!time) failure = status::failed;
    return time;
}

HResult write_record(std::u16string_view record_path, platform::FileTime time, std::u16string_view image_path) {
    std::optional<platform::File> record = platform::File::create(record_path);
    if (!record) return status::system_failure();
    std::array<std::byte, kRecordTimeBytes> time_bytes{};
    store_le64(time_bytes.data(), time);
    const std::optional<std::size_t> written_time = record->write(time_bytes);
    if (!written_time || *written_time < time_bytes.size()) return status::system_failure();

    std::vector<std::byte> path_bytes;
    path_bytes.reserve(image_path.size() * 2);
    for (const char16_t c : image_path) {
        path_bytes.push_back(std::byte(c & 0xFF));
        path_bytes.push_back(std::byte(c >> 8));
    }
    // The count written is compared with the path's length in characters, as it always was;
    // on a mismatch the result is the system's error, which after a write that succeeded is
    // none, so only a failed write fails here.
    const std::optional<std::size_t> written_path = record->write(path_bytes);
    if (!written_path) return status::system_failure();
    return status::ok;
}

// Where the record of a working copy is: the copy's name cut after the key, plus ".info".
// nullopt unless the name is a key and a hyphen followed by more.
std::optional<std::u16string> record_path_of(std::u16string_view working_copy) {
    if (!has_path_separator(working_copy)) return std::nullopt;
    const std::u16string_view name = file_name_of(working_copy);
    if (name.size() < kRuntimeKeyChars + 1 || name[kRuntimeKeyChars] != u'-') return std::nullopt;
    std::u16string record(folder_of(working_copy));
    record += name.substr(0, kRuntimeKeyChars);
    record += kRecordSuffix;
    return record;
}

struct Record {
    platform::FileTime time = 0;
    std::u16string image_path;
};

// Reads the record: 0, the system's error opening it, or E_FAIL when it is short.
HResult read_record(std::u16string_view record_path, Record& record, bool with_path) {
    std::optional<platform::File> file = platform::File::open_for_reading(record_path);
    if (!file) return status::system_failure();
    std::array<std::byte, kRecordTimeBytes> time{};
    const std::optional<std::size_t> got_time = file->read(time);
    if (!got_time || *got_time != time.size()) return status::failed;
    record.time = load_le64(time.data());
    if (!with_path) return status::ok;
    std::array<std::byte, kMaxRecordPathBytes> path{};
    const std::optional<std::size_t> got_path = file->read(path);
    if (!got_path || *got_path < 2) return status::failed;
    record.image_path.clear();
    for (std::size_t i = 0; i + 1 < *got_path; i += 2)
        record.image_path.push_back(static_cast<char16_t>(load_le16(&path[i])));
    return status::ok;
}

HResult changed_since_made(std::u16string_view working_copy, const std::u16string& record_path, bool& changed) {
    Record record;
    if (const HResult read = read_record(record_path, record, false); read != status::ok) return read;
    if (record.time == 0) {
        changed = true;
        return status::ok;
    }
    HResult failure = status::ok;
    const std::optional<platform::FileTime> now = last_write_time_of(working_copy, failure);
    if (!now) return failure;
    changed = *now != record.time;
    return status::ok;
}

bool same_drive(std::u16string_view a, std::u16string_view b) {
    return a.size() >= 2 && b.size() >= 2 && a[1] == u':' && b[1] == u':' && ascii_lower(a[0]) == ascii_lower(b[0]);
}

// Replaces the image by the working copy through renames: whether the copy took its place.
// Whatever fails, the image keeps its name or stays at the side name.
bool replace_by_renaming(std::u16string_view working_copy, const std::u16string& image_path) {
    const std::optional<std::u16string> side = free_side_name(image_path);
    if (!side || platform::move_file(image_path, *side) != 0) return false;
    if (platform::move_file(working_copy, image_path) != 0) {
        platform::move_file(*side, image_path);
        return false;
    }
    platform::delete_file_robustly(*side);
    return true;
}

// Writes the new image beside the user's image under a side name and only then puts it in the
// image's place, so that a full disk or a write error never leaves the user's image half
// written: on failure the side file goes and the image is as it was. Without a free side name
// the image is written in place.
template <class WriteTo>
HResult write_beside(const std::u16string& image_path, WriteTo write_to) {
    const std::optional<std::u16string> side = free_side_name(image_path);
    if (!side) return write_to(image_path);
    if (const HResult written = write_to(*side); written != status::ok) {
        platform::delete_file_robustly(*side);
        return written;
    }
    if (const platform::SystemError error = platform::replace_file(*side, image_path); error != 0) {
        platform::delete_file_robustly(*side);
        return status::from_win32(error);
    }
    return status::ok;
}

HResult write_back(std::u16string_view working_copy, const std::u16string& image_path) {
    // A read-only image stays as it is: renaming would get round the attribute, and the
    // refusal keeps copy and record for a later try.
    if (const std::optional<std::uint32_t> attributes = platform::file_attributes(image_path);
        attributes && (*attributes & platform::kAttributeReadOnly) != 0)
        return status::from_win32(platform::system_error::access_denied);
    const ImageFormat* format = working_copy_format(image_path);
    if (format != nullptr && format->container == ImageContainer::gzip)
        return write_beside(image_path,
                            [&](std::u16string_view target) { return deflate_file(working_copy, target, image_path); });
    if (same_drive(working_copy, image_path) && replace_by_renaming(working_copy, image_path)) return status::ok;
    return write_beside(image_path, [&](std::u16string_view target) {
        return status::from_win32(platform::copy_file(working_copy, target));
    });
}

} // namespace

std::optional<std::u16string> free_side_name(std::u16string_view image_path) {
    for (int attempt = 0; attempt < kSideNameTries; ++attempt) {
        std::u16string side(image_path);
        side += kSideSuffix;
        if (attempt > 0) side += decimal_text(attempt);
        if (!platform::file_attributes(side)) return side;
    }
    return std::nullopt;
}

std::optional<std::u16string> runtime_folder() {
    const std::optional<std::u16string> temp = platform::temp_folder();
    if (!temp) return std::nullopt;
    return with_trailing_separator(*temp) + std::u16string(kRuntimeSubfolder);
}

HResult make_runtime_medium(const RuntimeMediumRequest& request, std::u16string& working_copy) {
    const ImageFormat* format = working_copy_format(request.image_path);
    if (format == nullptr) return status::nothing_more;

    const std::optional<std::u16string> folder = runtime_folder();
    if (!folder) return status::failed;
    if (const platform::SystemError error = platform::create_folder_tree(*folder); error != 0)
        return status::from_win32(error);

    std::u16string key;
    if (request.caller_key) {
        if (!is_usable_key(*request.caller_key)) return status::invalid_argument;
        key = *request.caller_key;
    } else {
        const std::optional<platform::Guid> guid = platform::new_guid();
        if (!guid) return status::failed;
        key = guid_text(*guid);
    }

    if (!has_path_separator(request.image_path)) return status::invalid_argument;
    const std::u16string_view file_name = file_name_of(request.image_path);
    if (file_name.size() + folder->size() + 1 + key.size() > kMaxCopyPathChars) return kPathTooLong;
    working_copy = *folder + key + u"-" + std::u16string(file_name);

    std::u16string source(request.image_path);
    if (request.alternate_folder) {
        std::u16string alternate = joined_path(*request.alternate_folder, file_name);
        if (platform::file_exists(alternate)) source = std::move(alternate);
    }

    if (format->container == ImageContainer::gzip) {
        working_copy.back() = u'f';
        if (const InflateError error = inflate_file(source, working_copy); error != InflateError::none)
            return static_cast<HResult>(kInflaterFailure | static_cast<std::uint32_t>(error));
    } else if (const platform::SystemError error = platform::copy_file(source, working_copy); error != 0) {
        return status::failure_from_win32(error);
    }

    platform::FileTime time = 0;
    if (!request.no_timestamp) {
        HResult failure = status::ok;
        const std::optional<platform::FileTime> written = last_write_time_of(working_copy, failure);
        if (!written) return failure;
        time = *written;
    }

    if (folder->size() + key.size() + 1 + kRecordSuffix.size() > kMaxRecordPathChars) return kPathTooLong;
    return write_record(*folder + key + std::u16string(kRecordSuffix), time, request.image_path);
}

HResult check_runtime_medium(std::u16string_view working_copy, bool& changed) {
    changed = false;
    const std::optional<std::u16string> record_path = record_path_of(working_copy);
    if (!record_path) return status::invalid_argument;
    return changed_since_made(working_copy, *record_path, changed);
}

HResult dismiss_runtime_medium(std::u16string_view working_copy, std::uint32_t flags) {
    const std::optional<std::u16string> record_path = record_path_of(working_copy);
    if (!record_path) return status::invalid_argument;
    const bool write_back_wanted = (flags & kRuntimeMediumWriteBack) != 0;
    bool changed = (flags & kRuntimeMediumAssumeChanged) != 0;
    if (!changed && changed_since_made(working_copy, *record_path, changed) != status::ok) changed = false;

    Record record;
    if (const HResult read = read_record(*record_path, record, true); read != status::ok) return read;
    if (write_back_wanted && changed)
        if (const HResult written = write_back(working_copy, record.image_path); written != status::ok) return written;

    if (const std::optional<std::uint32_t> attributes = platform::file_attributes(working_copy);
        attributes && (*attributes & (platform::kAttributeReadOnly | platform::kAttributeHidden)) != 0)
        platform::set_file_attributes(working_copy,
                                      *attributes & ~(platform::kAttributeReadOnly | platform::kAttributeHidden));
    platform::delete_file_robustly(working_copy);
    platform::delete_file_robustly(*record_path);
    return status::ok;
}

} // namespace kq::media
