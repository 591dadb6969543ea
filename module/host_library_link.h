#pragma once
// The link to the host's data-access library, KQDataAccess.dll in the host folder, through
// which an error is shown to the user in the host's own style.
//
// One link serves one report: it is made on the stack, used and destroyed, so the host library
// is never kept loaded. Each call resolves its function by name at that moment (never cached)
// and runs under the machine-wide mutex "KQlayerDataAccessMx", which the host and its other
// components hold around their own calls into the library:
//   the mutex cannot be created or waited for      E_FAIL
//   the library did not load                        HRESULT_FROM_WIN32(ERROR_INVALID_DLL) when showing
//                                                   a message, (ERROR_DLL_NOT_FOUND) when closing
//   the library lacks the function                  E_NOTIMPL
//   otherwise                                       the function's own status
// The mutex is waited for without a time limit: never call through a link while holding
// another lock.
//
// The library's instance handle (its first argument) starts empty; this module never opens an
// instance itself, so a link closes one only when an extension has set it.

#include "module/status.h"
#include "platform/library.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kq {

inline constexpr std::u16string_view kDataAccessLibraryName = u"KQDataAccess.dll";
inline constexpr std::u16string_view kDataAccessMutexName = u"KQlayerDataAccessMx";

class HostLibraryLink {
public:
    // Loads the library from `host_folder`; a failed load (or no folder) leaves the link
    // without a library, which is not itself an error.
    explicit HostLibraryLink(std::u16string_view host_folder);
    // Closes the library instance when one is set, then unloads the library.
    ~HostLibraryLink();
    HostLibraryLink(const HostLibraryLink&) = delete;
    HostLibraryLink& operator=(const HostLibraryLink&) = delete;

    bool is_loaded() const noexcept { return library_.is_loaded(); }
    void set_instance_handle(std::uint64_t instance) noexcept { instance_ = instance; }

    // KQShowErrorMessage2(instance, context, error code, parent window, text, flags).
    HResult show_error_message(std::u16string_view context, std::uint32_t error_code, void* parent_window,
                               std::u16string_view text, std::uint32_t flags);
    // KQCloseLibrary(instance) when an instance handle is set; without one there is nothing to
    // close and the result is S_OK.
    HResult close();

private:
    template <class Call>
    HResult call_locked(const char* function_name, HResult when_not_loaded, Call&& call);

    platform::Library library_;
    std::uint64_t instance_ = 0;
};

} // namespace kq
