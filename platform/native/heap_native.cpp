#include "platform/heap.h"

#include <cstdlib>

namespace kq::platform {

void* heap_allocate_zeroed(Heap, std::size_t bytes) noexcept { return std::calloc(bytes == 0 ? 1 : bytes, 1); }

void heap_free(Heap, void* block) noexcept { std::free(block); }

} // namespace kq::platform
