#pragma once
// The values of the keys that attach hard drives, one key per drive:
//   hardfile2=ACCESS,DEVICE:PATH,SECTORS,SURFACES,RESERVED,BLOCKSIZE,BOOTPRI,FILESYSTEM,CONTROLLER...
//   filesystem2=ACCESS,DEVICE:VOLUME:PATH,BOOTPRI...
// ACCESS is "rw" or "ro". Fields are separated by commas; a comma between double quotes
// belongs to its field, and the quotes themselves are dropped. PATH may hold a colon of its own
// ("DH0:C:\Games\work.hdf"), so DEVICE ends at the first colon and VOLUME at the second. Fields
// after the listed ones are ignored; a missing or empty field is absent.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kq::content {

// The comma-separated fields of a value, quotes removed.
std::vector<std::u16string> split_fields(std::u16string_view value);

struct HardfileLine {
    bool is_read_only = false;
    std::u16string device_name;
    std::u16string path;
    // Absent when missing or not a number.
    std::optional<std::int32_t> sectors, surfaces, reserved, block_size, boot_priority;
    std::u16string file_system; // the file-system handler's file, empty when none
    std::u16string controller;  // "uae0", "ide0", "scsi2" ...
};

struct FolderLine {
    bool is_read_only = false;
    std::u16string device_name;
    std::u16string volume_name;
    std::u16string path;
    std::optional<std::int32_t> boot_priority;
};

// nullopt when the value has no "DEVICE:" before an image path.
std::optional<HardfileLine> read_hardfile_line(std::u16string_view value);
// nullopt when the value has no "DEVICE:VOLUME:" before a folder path.
std::optional<FolderLine> read_folder_line(std::u16string_view value);

} // namespace kq::content
