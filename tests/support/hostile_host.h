#pragma once
// Tools of a host that does not trust the module it calls (Windows only).
//
// - CallArguments hands out the arguments of one call: output buffers and slots between guard
//   bytes, checked when it goes; input texts and bytes that end right before an inaccessible
//   page, so that reading one byte past them faults. Its label names the call in the crash note.
// - count_heap_blocks counts the busy blocks of every heap of the process (the global and local
//   allocators take theirs from the process heap).
// - CrtAllocationMeter counts the blocks that one module holds from the C runtime, which hands
//   small blocks out of larger groups that a heap walk cannot see into. It hooks the module's
//   imports of malloc, calloc, realloc, _strdup and free.
// - CrashNote reports a fatal exception with the label of the call that was running.

#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kq::test {

// What an output text buffer holds where the export did not write.
inline constexpr wchar_t kUnwritten = L'#';

class CallArguments {
public:
    explicit CallArguments(std::string label);
    ~CallArguments(); // checks every guard, then releases everything
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    const std::string& label() const { return label_; }
    wchar_t* out_text(std::size_t chars);                     // kUnwritten between guards
    void* out_slot(std::uint64_t initial, std::size_t bytes); // `initial` between guards
    const void* in_bytes(std::string_view bytes);             // ends where the page ends

private:
    std::byte* guarded(std::size_t bytes);

    std::string label_;
    std::vector<std::pair<std::vector<std::byte>, std::size_t>> guarded_; // storage, payload bytes
    std::vector<void*> pages_;
};

using HeapCount = std::pair<std::size_t, std::size_t>; // blocks, bytes
HeapCount count_heap_blocks();

class CrtAllocationMeter {
public:
    explicit CrtAllocationMeter(HMODULE module); // at most one at a time
    ~CrtAllocationMeter();
    CrtAllocationMeter(const CrtAllocationMeter&) = delete;
    CrtAllocationMeter& operator=(const CrtAllocationMeter&) = delete;

    std::size_t hooked() const { return slots_.size(); }
    HeapCount outstanding() const; // taken through the hooks and not given back
    std::size_t taken() const;     // taken in all

private:
    std::vector<std::pair<void**, void*>> slots_; // hooked import, original function
};

class CrashNote {
public:
    CrashNote();
    ~CrashNote();
    CrashNote(const CrashNote&) = delete;
    CrashNote& operator=(const CrashNote&) = delete;

private:
    void* handler_;
};

} // namespace kq::test
