#include "tests/support/temp_folder.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>

#ifdef _WIN32
#include <windows.h>
#define getpid GetCurrentProcessId
#else
#include <unistd.h>
#endif

namespace kq::test {

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    root_ = std::filesystem::temp_directory_path() /
            ("kq-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(root_);
    std::filesystem::create_directories(root_);
    // On Windows "C:\...\Temp\kq-test-..."; natively "/tmp/kq-test-...", onto which the
    // module's "\" joins map as "/".
    path_ = root_.u16string();
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::filesystem::path to_fs_path(std::u16string_view module_path) {
    std::u16string path(module_path);
#ifndef _WIN32
    std::ranges::replace(path, u'\\', u'/');
#endif
    return std::filesystem::path(path);
}

std::string read_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::u16string TempFolder::path(std::u16string_view relative) const { return path_ + u"\\" + std::u16string(relative); }

std::filesystem::path TempFolder::native(std::u16string_view relative) const {
    std::u16string generic(relative);
    std::ranges::replace(generic, u'\\', u'/');
    return root_ / std::filesystem::path(generic);
}

void TempFolder::create_file(std::u16string_view relative, std::string_view content) const {
    const std::filesystem::path file = native(relative);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

void TempFolder::create_folder(std::u16string_view relative) const {
    std::filesystem::create_directories(native(relative));
}

} // namespace kq::test
