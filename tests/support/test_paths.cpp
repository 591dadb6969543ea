#include "tests/support/test_paths.h"

#include "module/host_library_link.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace kq::test {
namespace {

std::u16string hosts_root() {
#ifdef _WIN32
    // The hosts lie beside the test program, under "hosts".
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::u16string folder(reinterpret_cast<const char16_t*>(path), length);
    return folder.substr(0, folder.rfind(u'\\')) + u"\\hosts";
#else
    const std::string root = KQ_TEST_HOSTS_DIR;
    return std::u16string(root.begin(), root.end());
#endif
}

} // namespace

std::u16string host_folder(std::u16string_view name) { return hosts_root() + u"\\" + std::u16string(name); }

std::u16string test_data_path(std::u16string_view relative) {
    const std::string root = KQ_TEST_DATA_DIR;
    std::u16string path(root.begin(), root.end());
    path += u'\\';
    path += relative;
#ifdef _WIN32
    for (char16_t& c : path)
        if (c == u'/') c = u'\\';
    path.insert(0, u"Z:");
#endif
    return path;
}

std::u16string data_access_library(std::u16string_view name) {
    return host_folder(name) + u"\\" + std::u16string(kDataAccessLibraryName);
}

} // namespace kq::test
