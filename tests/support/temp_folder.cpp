#include "tests/support/temp_folder.h"

#include <atomic>
#include <fstream>
#include <iterator>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace kq::test {
namespace {

unsigned long process_id() {
#ifdef _WIN32
    return GetCurrentProcessId();
#else
    return static_cast<unsigned long>(getpid());
#endif
}

} // namespace

TempFolder::TempFolder() {
    static std::atomic<unsigned> counter{0};
    root_ = std::filesystem::temp_directory_path() /
            ("kq-test-" + std::to_string(process_id()) + "-" + std::to_string(counter++));
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
    for (char16_t& c : path)
        if (c == u'\\') c = u'/';
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
    for (char16_t& c : generic)
        if (c == u'\\') c = u'/';
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
