// Reads arbitrary bytes as a CUE sheet. Every name it lets through must stay inside the
// sheet's folder (no "..", no drive, not rooted) and be the last element of its path.

#include "fuzz/fuzz_require.h"
#include "media/cue_sheet.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace kq::media;

namespace {

using kq::fuzz::require;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<CueDataFile> files;
    const CueError error = read_cue_sheet(std::string_view(reinterpret_cast<const char*>(data), size), files);
    require(error == CueError::none || files.empty());
    for (const CueDataFile& file : files) {
        const std::u16string& path = file.relative_path;
        require(!path.empty() && path.front() != u'\\' && path.find(u':') == std::u16string::npos);
        require(path.find(u'/') == std::u16string::npos);
        require(path.find(u"\\..\\") == std::u16string::npos && path.rfind(u"..\\", 0) != 0 && path != u".." &&
                !(path.size() >= 3 && path.substr(path.size() - 3) == u"\\.."));
        require(!file.file_name.empty() && file.file_name.find(u'\\') == std::u16string::npos);
        require(path.size() >= file.file_name.size() &&
                path.substr(path.size() - file.file_name.size()) == file.file_name);
    }
    return 0;
}
