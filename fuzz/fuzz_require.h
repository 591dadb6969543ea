#pragma once
// What a fuzz target checks besides memory safety: a property that must hold for every input.
// A failed check aborts, which libFuzzer reports as a crash with the input that caused it.

#include <cstdlib>

namespace kq::fuzz {

inline void require(bool condition) {
    if (!condition) std::abort();
}

} // namespace kq::fuzz
