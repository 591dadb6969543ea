// Reads arbitrary bytes as a CUE sheet. Every name it lets through must stay inside the
// sheet's folder (no "..", no drive, not rooted) and end with its file name, which is the last
// element of its path.

#include "fuzz/fuzz_require.h"
#include "media/cue_sheet.h"

#include <string_view>

using kq::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<kq::media::CueDataFile> files;
    const auto error = kq::media::read_cue_sheet(std::string_view(reinterpret_cast<const char*>(data), size), files);
    require(error == kq::media::CueError::none || files.empty());
    for (const kq::media::CueDataFile& file : files) {
        const std::u16string path = u"\\" + file.relative_path + u"\\";
        require(!file.relative_path.empty() && file.relative_path.front() != u'\\');
        require(path.find_first_of(u":/") == std::u16string::npos && path.find(u"\\..\\") == std::u16string::npos);
        require(!file.file_name.empty() && file.file_name.find(u'\\') == std::u16string::npos);
        require(path.ends_with(u"\\" + file.file_name + u"\\"));
    }
    return 0;
}
