#include "module/host_library_link.h"

#include "common/windows_path.h"
#include "platform/system_error.h"

#include "platform/named_mutex.h"

namespace kq {
namespace {

// The host library's functions. Both use the platform's single 64-bit calling convention.
using ShowErrorMessage2 = HResult (*)(std::uint64_t instance, const char16_t* context, std::uint32_t error_code,
                                      void* parent_window, const char16_t* text, std::uint32_t flags);
using CloseLibrary = HResult (*)(std::uint64_t instance);

} // namespace

HostLibraryLink::HostLibraryLink(std::u16string_view host_folder) {
    if (host_folder.empty()) return;
    library_ = platform::Library::load(joined_path(host_folder, kDataAccessLibraryName));
}

HostLibraryLink::~HostLibraryLink() {
    // The host-library link of the host also has a message-pumping worker thread; this module
    // never gives it one, so there is nothing to stop before the library goes.
    close();
}

template <class Call>
HResult HostLibraryLink::call_locked(const char* function_name, HResult when_not_loaded, Call&& call) {
    std::optional<platform::NamedMutex> mutex = platform::NamedMutex::open(kDataAccessMutexName);
    if (!mutex) return status::failed;
    if (!mutex->acquire()) return status::failed;
    // Ownership is given back on every way out: closing the handle alone would not release it.
    struct Ownership {
        platform::NamedMutex& mutex;
        ~Ownership() { mutex.release(); }
    } ownership{*mutex};
    if (!library_.is_loaded()) return when_not_loaded;
    platform::Library::Procedure function = library_.find(function_name);
    if (function == nullptr) return status::not_implemented;
    return call(function);
}

HResult HostLibraryLink::show_error_message(std::u16string_view context, std::uint32_t error_code, void* parent_window,
                                            std::u16string_view text, std::uint32_t flags) {
    // The host library gets its own copies of the texts, terminated.
    const std::u16string context_copy(context), text_copy(text);
    return call_locked("KQShowErrorMessage2", status::from_win32(platform::system_error::invalid_dll),
                       [&](platform::Library::Procedure function) {
                           return reinterpret_cast<ShowErrorMessage2>(function)(
                               instance_, context_copy.c_str(), error_code, parent_window, text_copy.c_str(), flags);
                       });
}

HResult HostLibraryLink::close() {
    if (instance_ == 0) return status::ok;
    return call_locked(
        "KQCloseLibrary", status::from_win32(platform::system_error::dll_not_found),
        [&](platform::Library::Procedure function) { return reinterpret_cast<CloseLibrary>(function)(instance_); });
}

} // namespace kq
