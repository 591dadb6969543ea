#pragma once
// The two system allocators from which records and strings handed to the host come. The host
// frees local-heap blocks with LocalFree (through the matching KQFree* export) and global-heap
// blocks with GlobalFree, so a block must come from the heap that its release expects.

#include <cstddef>
#include <utility>

namespace kq::platform {

enum class Heap { local, global };

// A zero-filled block of `bytes` bytes from `heap`; nullptr when the heap has no room.
void* heap_allocate_zeroed(Heap heap, std::size_t bytes) noexcept;
// Frees a block of `heap`; nullptr is ignored.
void heap_free(Heap heap, void* block) noexcept;

// Owns one heap block until it is released to the host.
class HeapBlock {
public:
    HeapBlock() = default;
    static HeapBlock allocate_zeroed(Heap heap, std::size_t bytes) noexcept {
        return HeapBlock(heap, heap_allocate_zeroed(heap, bytes));
    }
    HeapBlock(HeapBlock&& other) noexcept : heap_(other.heap_), block_(std::exchange(other.block_, nullptr)) {}
    HeapBlock& operator=(HeapBlock&& other) noexcept {
        if (this != &other) {
            heap_free(heap_, block_);
            heap_ = other.heap_;
            block_ = std::exchange(other.block_, nullptr);
        }
        return *this;
    }
    HeapBlock(const HeapBlock&) = delete;
    HeapBlock& operator=(const HeapBlock&) = delete;
    ~HeapBlock() { heap_free(heap_, block_); }

    explicit operator bool() const noexcept { return block_ != nullptr; }
    std::byte* data() const noexcept { return static_cast<std::byte*>(block_); }
    // Gives up ownership, for a block that is handed to the host.
    void* release() noexcept { return std::exchange(block_, nullptr); }

private:
    HeapBlock(Heap heap, void* block) noexcept : heap_(heap), block_(block) {}
    Heap heap_ = Heap::local;
    void* block_ = nullptr;
};

} // namespace kq::platform
