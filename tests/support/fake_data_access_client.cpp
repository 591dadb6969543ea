#include "tests/support/fake_data_access_client.h"

#include "tests/support/test_paths.h"

namespace kq::test {

FakeDataAccess::FakeDataAccess(std::u16string_view host)
    : library_(platform::Library::load(data_access_library(host))) {
    get_log_ = reinterpret_cast<FakeDataAccessGetLogFn>(library_.find("FakeDataAccessGetLog"));
    reset_ = reinterpret_cast<FakeDataAccessResetFn>(library_.find("FakeDataAccessReset"));
}

} // namespace kq::test
