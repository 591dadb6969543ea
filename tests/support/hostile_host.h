#pragma once
// Tools of a host that does not trust the module it calls (Windows only).
//
// - CallArguments hands out the arguments of one call: output buffers and out-pointer slots
//   between guard bytes, checked when it goes; input texts and bytes that end right before an
//   inaccessible page, so that reading one element past them faults.
// - count_heap_blocks counts the busy blocks of every heap of the process (the global and local
//   allocators take theirs from the process heap).
// - CrtAllocationMeter counts the blocks that one module still holds from the C runtime. It hooks
//   the module's imports of malloc, calloc, realloc, _strdup and free: the runtime hands small
//   blocks out of larger groups that a heap walk cannot see into.
// - CrashNote reports a fatal exception with the label of the call that was running.

#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace kq::test {

// What an output text buffer holds where the export did not write.
inline constexpr wchar_t kUnwritten = L'#';

class CallArguments {
public:
    // `label` names the call in failures and in the crash note.
    explicit CallArguments(std::string label);
    ~CallArguments(); // checks every guard, then releases everything
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    const std::string& label() const { return label_; }

    // `chars` characters of kUnwritten between guards.
    wchar_t* out_text(std::uint32_t chars);
    // `bytes` bytes holding `initial` between guards.
    void* out_slot(std::uint64_t initial, std::size_t bytes);
    // A copy whose last byte is the last one of an accessible page (add the NUL of a text).
    const void* in_bytes(std::string_view bytes);

private:
    struct Guarded {
        std::vector<std::byte> storage;
        std::size_t offset, bytes; // of the payload in the storage
    };
    std::byte* guarded(std::size_t bytes);

    std::string label_;
    std::vector<Guarded> guarded_;
    std::vector<void*> pages_;
};

struct HeapCount {
    std::size_t blocks = 0, bytes = 0;
    bool operator==(const HeapCount&) const = default;
};
std::ostream& operator<<(std::ostream& out, const HeapCount& count);

HeapCount count_heap_blocks();

class CrtAllocationMeter {
public:
    // Hooks the module's imports; at most one meter at a time.
    explicit CrtAllocationMeter(HMODULE module);
    ~CrtAllocationMeter(); // unhooks; blocks still counted stay valid for the runtime's free
    CrtAllocationMeter(const CrtAllocationMeter&) = delete;
    CrtAllocationMeter& operator=(const CrtAllocationMeter&) = delete;

    std::size_t hooked() const { return slots_.size(); }
    // The blocks that the module took through the hooks and has not given back.
    HeapCount outstanding() const;
    // How many blocks it took in all; false from kept_up when it held more than the meter follows.
    std::size_t taken() const;
    bool kept_up() const;

private:
    struct Slot {
        void** address;
        void* original;
    };
    std::vector<Slot> slots_;
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
