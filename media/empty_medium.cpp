#include "media/empty_medium.h"

#include "common/windows_path.h"
#include "media/amiga_blocks.h"
#include "platform/file_operations.h"
#include "platform/files.h"
#include "platform/module_file.h"

#include <array>

namespace kq::media {
namespace {

constexpr std::u16string_view kTemplateFolder = u"Tessary\\";
constexpr std::u16string_view kFolderPrefix = u"AEM";
constexpr std::uint32_t kNameNumbers = 65536;

// A new folder in the temporary folder named by the system's temporary-name service, trying the
// 16-bit numbers in turn from one taken from the tick count. A folder that cannot be created
// for another reason than its name being taken (a read-only or full disk) ends the search with
// that reason: no other name would fare better.
HResult make_private_folder(std::u16string& folder) {
    const std::optional<std::u16string> temp = platform::temp_folder();
    if (!temp) return status::system_failure();
    const std::uint32_t start = platform::tick_count() & 0xFFFF;
    for (std::uint32_t i = 0; i < kNameNumbers; ++i) {
        const auto number = static_cast<std::uint16_t>((start + i) % kNameNumbers);
        if (number == 0) continue; // would have the system create a file of its own choosing
        const std::optional<std::u16string> name = platform::temp_file_name(*temp, kFolderPrefix, number);
        if (!name) return status::system_failure();
        if (platform::file_attributes(*name)) continue;
        const platform::SystemError error = platform::create_folder(*name);
        if (error == 0) {
            folder = *name;
            return status::ok;
        }
        if (error != platform::system_error::already_exists && error != platform::system_error::file_exists)
            return status::from_win32(error);
    }
    return status::from_win32(platform::system_error::too_many_names);
}

// Sets the root block's dates to now. Any failure leaves the template's dates: not an error.
void stamp_dates(std::u16string_view image, std::uint32_t root_offset) {
    std::optional<platform::File> file = platform::File::open_for_update(image);
    if (!file || !file->seek(root_offset)) return;
    std::array<std::byte, kBlockBytes> root{};
    const std::optional<std::size_t> got = file->read(root);
    if (!got || *got != root.size()) return;
    stamp_root_block(root, amiga_date(platform::local_time_now()));
    if (file->seek(root_offset)) file->write(root);
}

} // namespace

std::u16string empty_medium_template_path(const EmptyMediumTemplate& medium) {
    std::u16string path(folder_of(platform::module_file_path()));
    path += kTemplateFolder;
    path += medium.file_name;
    return path;
}

HResult make_empty_medium(std::uint32_t must_be_zero, std::uint32_t kind, std::u16string* path) {
    const std::uint32_t kind_byte = kind & 0xFF;
    if (must_be_zero != 0 || kind_byte >= kEmptyMediumTemplates.size()) return status::invalid_argument;
    const EmptyMediumTemplate& medium = kEmptyMediumTemplates[kind_byte];
    const std::u16string template_path = empty_medium_template_path(medium);
    if (!platform::file_exists(template_path)) return status::from_win32(platform::system_error::not_found);
    if (path == nullptr) return status::ok;

    std::u16string folder;
    if (const HResult made = make_private_folder(folder); made != status::ok) return made;
    if (folder.size() + 2 + medium.file_name.size() >= platform::kMaxPathChars) {
        platform::remove_folder(folder);
        return status::from_win32(platform::system_error::buffer_overflow);
    }
    std::u16string image = joined_path(folder, medium.file_name);
    if (const platform::SystemError error = platform::copy_file(template_path, image); error != 0) {
        platform::delete_file_robustly(image);
        platform::remove_folder(folder);
        return status::from_win32(error);
    }
    // A template installed read-only must not make a read-only medium.
    if (const std::optional<std::uint32_t> attributes = platform::file_attributes(image);
        attributes && (*attributes & platform::kAttributeReadOnly) != 0)
        platform::set_file_attributes(image, *attributes & ~platform::kAttributeReadOnly);
    stamp_dates(image, medium.root_offset);
    *path = std::move(image);
    return status::ok;
}

void free_empty_medium(std::u16string_view path) {
    platform::delete_file_robustly(path);
    if (const std::optional<std::u16string_view> folder = parent_of(path)) platform::remove_folder(*folder);
}

} // namespace kq::media
