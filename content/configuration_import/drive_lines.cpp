#include "content/configuration_import/drive_lines.h"

#include "common/compare.h"
#include "common/integer_text.h"
#include "common/trim.h"

namespace kq::content {
namespace {

// Field positions; in a filesystem2 value the boot priority follows the path.
constexpr std::size_t kAccess = 0, kDeviceAndPath = 1, kSectors = 2, kSurfaces = 3, kReserved = 4, kBlockSize = 5,
                      kBootPriority = 6, kFileSystem = 7, kController = 8, kFolderBootPriority = 2;

std::u16string_view field(const std::vector<std::u16string>& fields, std::size_t index) {
    return index < fields.size() ? trim_blanks(std::u16string_view(fields[index])) : std::u16string_view();
}

std::optional<std::int32_t> number_field(const std::vector<std::u16string>& fields, std::size_t index) {
    return read_integer_prefix(field(fields, index), 10);
}

bool is_read_only(const std::vector<std::u16string>& fields) {
    return equal_ignoring_case(field(fields, kAccess), u"ro");
}

// The text before the first colon, and the rest; nullopt without a colon.
std::optional<std::pair<std::u16string_view, std::u16string_view>> split_at_colon(std::u16string_view text) {
    const std::size_t colon = text.find(u':');
    if (colon == std::u16string_view::npos) return std::nullopt;
    return std::pair{text.substr(0, colon), text.substr(colon + 1)};
}

} // namespace

std::vector<std::u16string> split_fields(std::u16string_view value) {
    std::vector<std::u16string> fields(1);
    bool is_quoted = false;
    for (const char16_t c : value) {
        if (c == u'"')
            is_quoted = !is_quoted;
        else if (c == u',' && !is_quoted)
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields;
}

std::optional<HardfileLine> read_hardfile_line(std::u16string_view value) {
    const std::vector<std::u16string> fields = split_fields(value);
    const auto device_path = split_at_colon(field(fields, kDeviceAndPath));
    if (!device_path || device_path->second.empty()) return std::nullopt;
    return HardfileLine{.is_read_only = is_read_only(fields),
                        .device_name = std::u16string(device_path->first),
                        .path = std::u16string(device_path->second),
                        .sectors = number_field(fields, kSectors),
                        .surfaces = number_field(fields, kSurfaces),
                        .reserved = number_field(fields, kReserved),
                        .block_size = number_field(fields, kBlockSize),
                        .boot_priority = number_field(fields, kBootPriority),
                        .file_system = std::u16string(field(fields, kFileSystem)),
                        .controller = std::u16string(field(fields, kController))};
}

std::optional<FolderLine> read_folder_line(std::u16string_view value) {
    const std::vector<std::u16string> fields = split_fields(value);
    const auto device_rest = split_at_colon(field(fields, kDeviceAndPath));
    const auto volume_path = device_rest ? split_at_colon(device_rest->second) : std::nullopt;
    if (!volume_path || volume_path->second.empty()) return std::nullopt;
    return FolderLine{.is_read_only = is_read_only(fields),
                      .device_name = std::u16string(device_rest->first),
                      .volume_name = std::u16string(volume_path->first),
                      .path = std::u16string(volume_path->second),
                      .boot_priority = number_field(fields, kFolderBootPriority)};
}

} // namespace kq::content
