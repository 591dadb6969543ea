#include "common/wildcard.h"

#include "common/compare.h"

namespace kq {

bool wildcard_match(std::u16string_view pattern, std::u16string_view name) {
    // Greedy matching with one remembered star: linear in practice, never exponential.
    std::size_t p = 0, n = 0;
    std::size_t star = std::u16string_view::npos, resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || ascii_lower(pattern[p]) == ascii_lower(name[n]))) {
            ++p;
            ++n;
        } else if (star != std::u16string_view::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') ++p;
    return p == pattern.size();
}

} // namespace kq
