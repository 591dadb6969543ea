#include "content/configuration_import/whole_file.h"

#include "platform/files.h"
#include "platform/system_error.h"

#include <optional>
#include <span>

namespace kq::content {

HResult read_whole_file(std::u16string_view path, std::size_t max_bytes, std::string& out) {
    out.clear();
    std::optional<platform::File> file = platform::File::open_for_reading(path);
    if (!file) return status::system_failure();
    const std::optional<std::uint64_t> size = file->size();
    if (!size) return status::system_failure();
    if (*size > max_bytes) return kFileTooLarge;
    out.resize(static_cast<std::size_t>(*size));
    std::size_t filled = 0;
    while (filled < out.size()) {
        const std::optional<std::size_t> got =
            file->read(std::as_writable_bytes(std::span(out.data() + filled, out.size() - filled)));
        if (!got) {
            out.clear();
            return status::system_failure();
        }
        if (*got == 0) break; // the file shrank since its size was taken
        filled += *got;
    }
    out.resize(filled);
    return status::ok;
}

} // namespace kq::content
