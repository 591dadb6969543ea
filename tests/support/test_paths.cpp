#include "tests/support/test_paths.h"

#include "module/host_library_link.h"

#include <algorithm>

#ifdef _WIN32
#include <windows.h>
#endif

namespace kq::test {

std::u16string host_folder(std::u16string_view name) {
#ifdef _WIN32
    // The hosts lie beside the test program, under "hosts".
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::u16string program(reinterpret_cast<const char16_t*>(path), length);
    const std::u16string root = program.substr(0, program.rfind(u'\\')) + u"\\hosts";
#else
    const std::string hosts = KQ_TEST_HOSTS_DIR;
    const std::u16string root(hosts.begin(), hosts.end());
#endif
    return root + u"\\" + std::u16string(name);
}

std::u16string test_data_path(std::u16string_view relative) {
    const std::string root = KQ_TEST_DATA_DIR;
    std::u16string path = std::u16string(root.begin(), root.end()) + u"\\" + std::u16string(relative);
#ifdef _WIN32
    std::ranges::replace(path, u'/', u'\\');
    path.insert(0, u"Z:");
#endif
    return path;
}

std::u16string data_access_library(std::u16string_view name) {
    return host_folder(name) + u"\\" + std::u16string(kDataAccessLibraryName);
}

} // namespace kq::test
