#pragma once
// Where the test programs find what the build put beside them.

#include <string>
#include <string_view>

namespace kq::test {

// The folder of a test host: "with-library" holds the complete KQDataAccess.dll stand-in,
// "without-entries" one that lacks the bound functions, "missing" none.
std::u16string host_folder(std::u16string_view name);
// The path of the stand-in library inside host_folder(name).
std::u16string data_access_library(std::u16string_view name);

// A file below the source tree's tests/data (`relative` with "\" between elements), as a
// module path: under Wine through drive Z:, the root of the Linux file system.
std::u16string test_data_path(std::u16string_view relative);

} // namespace kq::test
