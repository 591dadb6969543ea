#pragma once
// Small kq9 manifests built in the tests.

#include <string>
#include <string_view>

namespace kq::test {

// A kq9 manifest whose configuration holds `configuration`.
inline std::string kq9_with_configuration(std::string_view configuration) {
    return "<kq9><application><configuration>" + std::string(configuration) + "</configuration></application></kq9>";
}

} // namespace kq::test
