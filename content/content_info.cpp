#include "content/content_info.h"

#include "common/integer_text.h"
#include "common/windows_path.h"
#include "content/content_lines.h"
#include "content/content_texts.h"
#include "content/device_name_allocator.h"
#include "content/drive_paths.h"
#include "content/list_join.h"
#include "module/message_format.h"
#include "platform/files.h"
#include "platform/volumes.h"

#include <algorithm>
#include <vector>

namespace kq::content {
namespace {

// The first device entry of a record whose disk is configured but not mounted in the guest.
constexpr std::u16string_view kNotMounted = u":nomount:";
// Boot priorities at or below this keep a disk out of the guest's mount list.
constexpr std::int32_t kHighestUnmountedBootPriority = -129;

// Adds a line to the summary, after an LF unless it is the first text.
void append_line(std::u16string& text, std::u16string_view line) {
    if (!text.empty()) text += kLineSeparator;
    text += line;
}

// The path without a leading ":prefix:" (a path whose prefix never ends is kept whole).
std::u16string_view without_prefix(std::u16string_view path) {
    if (path.empty() || path[0] != u':') return path;
    const std::size_t end = path.find(u':', 1);
    return end == std::u16string_view::npos ? path : path.substr(end + 1);
}

// A drive's parent reference "X:\.." stands for the drive root itself.
std::u16string_view without_parent_of_root(std::u16string_view path) {
    if (path.size() == 5 && is_full_drive_root(path.substr(0, 3)) && path.substr(3) == u"..") return path.substr(0, 3);
    return path;
}

bool is_folder(std::uint32_t attributes) { return (attributes & platform::kAttributeDirectory) != 0; }

struct DiskSummary {
    std::vector<std::u16string> volumes;
    std::vector<std::u16string> devices;
    std::u16string kind;
};

// A disk that no record describes: a file, a folder or a host drive, as the file system sees
// it; nullopt when it does not exist.
std::optional<DiskSummary> describe_unrecorded_disk(std::u16string_view path, DeviceNameAllocator& allocator) {
    path = without_parent_of_root(path);
    const std::optional<std::uint32_t> attributes = path_attributes(path);
    if (!attributes) return std::nullopt;
    DiskSummary disk;
    disk.kind = content_text(is_folder(*attributes) ? strings::kind_mounted_directory : strings::kind_hardfile);
    bool is_removable = false;
    if (is_full_drive_root(path)) {
        std::u16string label = platform::volume_label(path);
        if (!label.empty()) {
            disk.volumes.push_back(std::move(label));
            disk.kind = content_text(strings::kind_mounted_drive);
        }
        // A removable drive's medium may change while the guest runs: it is not mounted.
        is_removable = platform::is_removable_drive(path);
    }
    if (disk.volumes.empty()) disk.volumes.emplace_back(path);
    if (!is_removable) disk.devices.push_back(allocator.take_new_name());
    return disk;
}

DiskSummary describe_recorded_disk(const MountRecord& record, DeviceNameAllocator& allocator) {
    DiskSummary disk{.volumes = list_entries(record.volumes), .devices = {}, .kind = std::u16string(record.kind)};
    const std::vector<std::u16string> devices = list_entries(record.devices);
    if (!devices.empty() && devices.front() == kNotMounted) {
        disk.devices.push_back(content_text(strings::not_available));
    } else if (devices.empty()) {
        disk.devices.push_back(allocator.take_new_name());
    } else {
        for (const std::u16string& device : devices) disk.devices.push_back(allocator.reserve(device));
    }
    return disk;
}

// One line of the configuration summary; nullopt when a text could not be formatted.
std::optional<std::u16string> summary_line(std::u16string_view name, const DiskSummary& disk, bool is_short) {
    const std::u16string volumes = join_list(disk.volumes, Quoting::double_quotes);
    const std::u16string devices = join_list(disk.devices, Quoting::none);
    if (!is_short) {
        const std::u16string disks =
            content_text(disk.volumes.size() >= 2 ? strings::hard_disks_template : strings::one_hard_disk_template);
        const MessageArgument arguments[] = {std::u16string_view(volumes)};
        const std::optional<std::u16string> described = format_message(disks, arguments);
        if (!described) return std::nullopt;
        std::u16string line(name);
        line += kFieldSeparator;
        line += *described;
        return line;
    }
    std::u16string line = volumes;
    if (!devices.empty() || !disk.kind.empty()) {
        line += u" (";
        line += devices;
        if (!devices.empty() && !disk.kind.empty()) line += u", ";
        line += disk.kind;
        line += u')';
    }
    return line;
}

std::optional<std::u16string> configuration_summary(std::u16string_view list, std::u16string_view records,
                                                    bool is_short) {
    DeviceNameAllocator allocator;
    std::u16string text;
    for (const std::u16string_view entry : split(list, kLineSeparator)) {
        const std::u16string_view path = without_prefix(field_of(entry, 1));
        if (path.empty()) continue;
        DiskSummary disk;
        if (!is_device_path(path)) { // a directly attached disk has neither volumes nor devices
            if (const std::optional<MountRecord> record = find_mount_record(records, path)) {
                disk = describe_recorded_disk(*record, allocator);
            } else if (std::optional<DiskSummary> found = describe_unrecorded_disk(path, allocator)) {
                disk = std::move(*found);
            } else {
                continue; // neither configured by the host nor there
            }
        }
        const std::optional<std::u16string> line = summary_line(field_of(entry, 0), disk, is_short);
        if (!line) return std::nullopt;
        append_line(text, *line);
    }
    return text;
}

// A number of a runtime line, read with the base its prefix gives; `absent` when the key is
// missing or holds no number.
std::int32_t number_value(std::u16string_view line, std::u16string_view key, std::int32_t absent) {
    const std::optional<std::u16string_view> value = key_value(line, key);
    if (!value) return absent;
    return read_integer_prefix(*value, 0).value_or(absent);
}

// A size or count of a runtime line; negative values count as not given.
std::uint32_t count_value(std::u16string_view line, std::u16string_view key) {
    return static_cast<std::uint32_t>(std::max(number_value(line, key, 0), 0));
}

// The last element of a folder's path, its trailing separators ignored.
std::u16string_view folder_name(std::u16string_view path) { return file_name_of(without_trailing_separators(path)); }

// The mount record of a running guest's file or folder disk; nullopt when it does not exist.
std::optional<std::u16string> runtime_disk_record(std::u16string_view line, std::u16string_view path,
                                                  const MediumNameReaders& readers) {
    const std::optional<std::uint32_t> attributes = path_attributes(path);
    if (!attributes) return std::nullopt;
    std::u16string device(key_value(line, u"devicename").value_or(u""));
    std::u16string volume(key_value(line, u"volumename").value_or(u""));
    const bool is_mounted = number_value(line, u"bootpriority", 0) > kHighestUnmountedBootPriority;
    if (!is_mounted) device = kNotMounted;
    if (!is_folder(*attributes)) {
        const media::HardDiskGeometry geometry{.block_size = count_value(line, u"blocksize"),
                                               .sectors = count_value(line, u"sectors"),
                                               .surfaces = count_value(line, u"surfaces"),
                                               .reserved = number_value(line, u"reserved", -1)};
        if (const std::optional<media::HardDiskNames> stored = readers.hard_disk_names(path, geometry)) {
            if (is_mounted && !stored->device_name.empty()) device = stored->device_name;
            if (!stored->volume_name.empty()) volume = stored->volume_name;
        }
    } else if (volume.empty()) {
        volume = folder_name(path);
    }
    std::u16string record(path);
    for (const std::u16string_view next : {std::u16string_view(device), std::u16string_view(volume)}) {
        record += kFieldSeparator;
        record += next;
    }
    record += kFieldSeparator;
    record += content_text(is_folder(*attributes) ? strings::kind_mounted_directory : strings::kind_hardfile);
    return record;
}

// The mount record of a directly attached disk; nullopt when the line names no product.
std::optional<std::u16string> runtime_device_record(std::u16string_view line, std::u16string_view path) {
    const std::u16string_view vendor = key_value(line, u"vendor-id").value_or(u"");
    const std::u16string_view product = key_value(line, u"product-id").value_or(u"");
    if (product.empty()) return std::nullopt;
    std::u16string record(path);
    record += kFieldSeparator;
    record += kFieldSeparator;
    if (!vendor.empty()) {
        record += vendor;
        record += u' ';
    }
    record += product;
    record += kFieldSeparator;
    record += content_text(strings::direct_attached_disk);
    return record;
}

std::u16string runtime_summary(std::u16string_view lines, const MediumNameReaders& readers) {
    std::u16string text;
    for (const std::u16string_view line : split(lines, kLineSeparator)) {
        const std::u16string_view path = line.substr(0, line.find(kFieldSeparator));
        const std::optional<std::u16string> record =
            is_device_path(path) ? runtime_device_record(line, path) : runtime_disk_record(line, path, readers);
        if (record) append_line(text, *record);
    }
    return text;
}

} // namespace

std::optional<std::u16string> content_info_text(std::u16string_view list, std::u16string_view records,
                                                std::uint32_t flags, const MediumNameReaders& readers) {
    if (flags & kContentInfoRuntime) return runtime_summary(records, readers);
    return configuration_summary(list, records, (flags & kContentInfoShort) != 0);
}

} // namespace kq::content
