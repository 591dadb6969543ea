#pragma once
// A fresh folder in the temporary folder for one test, removed with everything in it at the
// end. Paths are given and returned the way the module takes them: Windows paths with "\"
// (the native build maps "\" to "/").

#include <filesystem>
#include <string>
#include <string_view>

namespace kq::test {

// A module path (Windows form) as a path for the test's own file access.
std::filesystem::path to_fs_path(std::u16string_view module_path);
// A file's whole content; empty when it cannot be read.
std::string read_file(const std::filesystem::path& path);

class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The folder itself, as a module path (no trailing backslash).
    const std::u16string& path() const { return path_; }
    // `relative` (with "\" between elements) below the folder, as a module path.
    std::u16string path(std::u16string_view relative) const;
    // Creates a file below the folder (and its parent folders) holding `content`.
    void create_file(std::u16string_view relative, std::string_view content = {}) const;
    void create_folder(std::u16string_view relative) const;
    std::filesystem::path native(std::u16string_view relative) const;

private:
    std::filesystem::path root_;
    std::u16string path_;
};

} // namespace kq::test
