#pragma once
// What the native build lets a test set or observe in place of the operating system.

#include <optional>
#include <string>
#include <vector>

namespace kq::platform::native {

// The path that module_file_path() reports (the native build has no module file of its own).
void set_module_file_path(std::u16string path);

struct ShownMessageBox {
    void* parent_window;
    std::u16string text;
    std::u16string caption;
    unsigned flags;
};
// The message boxes "shown" since the last call, oldest first.
std::vector<ShownMessageBox> take_shown_message_boxes();

// Windows paths (with "\" between elements) name POSIX paths with "/" instead.
std::string to_posix_path(std::u16string_view windows_path);

// Empties the in-memory settings store.
void clear_settings();

// The devices that the device functions report.
struct DeviceLists {
    std::vector<std::u16string> printers;
    std::vector<std::u16string> com_port_friendly_names;
    std::vector<std::u16string> dos_devices; // names such as "COM1"
    std::vector<std::u16string> midi_inputs;
    std::vector<std::u16string> midi_outputs;
};
void set_devices(DeviceLists lists);

// The host's Caps Lock toggle state.
void set_caps_lock(bool on);

// The temporary folder that temp_folder() reports (empty: $TMPDIR or /tmp).
void set_temp_folder(std::u16string folder);
// The Program Files and Common Files folders (none unless set).
void set_program_files_folders(std::optional<std::u16string> program_files, std::optional<std::u16string> common_files);

// A string value that read_machine_setting_string reports (nullopt removes it).
void set_machine_setting_string(std::u16string key, std::u16string name, std::optional<std::u16string> value);

// The drive roots that the volume functions report (none unless set); a root is named by its
// letter and colon ("E:\"), without regard to case.
struct DriveRoot {
    std::u16string root;
    std::u16string label;
    bool is_removable = false;
};
void set_drive_roots(std::vector<DriveRoot> roots);

} // namespace kq::platform::native
