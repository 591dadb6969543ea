#pragma once
// The test side of the KQDataAccess.dll stand-in: keeps the stand-in of one test host loaded
// for as long as it lives (so that what the stand-in records outlives each host-library link,
// which unloads its library) and reads that record.

#include "module/status.h"
#include "platform/library.h"
#include "tests/support/fake_data_access.h"
#include "tests/support/test_paths.h"

#include <string_view>

namespace kq::test {

class FakeDataAccess {
public:
    explicit FakeDataAccess(std::u16string_view host)
        : library_(platform::Library::load(data_access_library(host))),
          get_log_(reinterpret_cast<FakeDataAccessGetLogFn>(library_.find("FakeDataAccessGetLog"))),
          reset_(reinterpret_cast<FakeDataAccessResetFn>(library_.find("FakeDataAccessReset"))) {}
    bool ready() const { return get_log_ != nullptr && reset_ != nullptr; }
    // Clears the record; the stand-in's functions then return `status_to_return`, each after
    // waiting `hold_ms`.
    void reset(HResult status_to_return = status::ok, std::uint32_t hold_ms = 0) const {
        reset_(status_to_return, hold_ms);
    }
    const FakeDataAccessLog& log() const { return *get_log_(); }
    platform::Library::Procedure find(const char* name) const { return library_.find(name); }

private:
    platform::Library library_;
    FakeDataAccessGetLogFn get_log_;
    FakeDataAccessResetFn reset_;
};

} // namespace kq::test
