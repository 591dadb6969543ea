#pragma once
// Empty media: blank, formatted floppy images for the emulator, copied from the templates
// installed in "Tessary" beside the module into a private folder of their own in the
// temporary folder ("AEM1A2B.tmp"), their root block stamped with the local time of the call.
// The path lives until free_empty_medium deletes the file and its folder.

#include "module/status.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kq::media {

struct EmptyMediumTemplate {
    std::u16string_view file_name;
    std::uint32_t root_offset; // the root block's byte offset
};

// By kind: 0 double density (880 KB), 1 high density (1,760 KB).
inline constexpr std::array<EmptyMediumTemplate, 2> kEmptyMediumTemplates = {{
    {u"a-dd-ofs-empty.adf", 0x6E000},
    {u"a-hd-ofs-empty.adf", 0xDC000},
}};

// The template's path: the module's folder + "\Tessary\" + its name.
std::u16string empty_medium_template_path(const EmptyMediumTemplate& medium);

// Makes an empty medium of `kind` (only its low byte counts) and returns its path through
// `path`; with a null `path`, only checks that the template is there. Failures: E_INVALIDARG
// (must_be_zero not 0, a kind other than 0 or 1), HRESULT_FROM_WIN32(ERROR_NOT_FOUND) (no template),
// HRESULT_FROM_WIN32(ERROR_BUFFER_OVERFLOW) (path too long), or the system's error making the folder or the copy,
// after which nothing is left behind. The dates are stamped when they can be; a failure there
// leaves the template's dates.
HResult make_empty_medium(std::uint32_t must_be_zero, std::uint32_t kind, std::u16string* path);

// Deletes the medium's file and then its folder (which goes only when it is empty).
void free_empty_medium(std::u16string_view path);

} // namespace kq::media
