#include "content/list_join.h"

#include "content/content_texts.h"

namespace kq::content {

std::u16string join_list(std::span<const std::u16string> entries, Quoting quoting) {
    std::u16string joined;
    if (entries.empty()) return joined;
    std::u16string comma = content_text(strings::list_comma), last = content_text(strings::list_and);
    comma += u' ';
    last += u' ';
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i > 0) joined += i + 1 == entries.size() ? last : comma;
        if (quoting == Quoting::double_quotes) joined += u'"';
        joined += entries[i];
        if (quoting == Quoting::double_quotes) joined += u'"';
    }
    return joined;
}

} // namespace kq::content
