#pragma once
// Tools of a host that does not trust the module it calls (Windows only): arguments that an
// export must not overrun, meters of what the process holds, and a note of the call that was
// running when the process died.
//
// - CallArguments hands out the arguments of one call: output buffers and out-pointer slots
//   between guard bytes, checked when it goes; input texts and bytes that end right before an
//   inaccessible page, so that reading one element past them faults.
// - HeapMeter counts the busy blocks and bytes of every heap of the process (the global and
//   local allocators take theirs from the process heap).
// - CrtAllocationMeter counts the blocks that one module still holds from the C runtime's
//   allocator. It hooks the module's imports of malloc, calloc, realloc, _strdup and free; the
//   runtime's heap hands small blocks out of larger groups that a heap walk cannot see into.

#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
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
    // One T, set to `initial`, between guards.
    template <class T>
    T* out_slot(T initial) {
        std::byte* at = guarded(sizeof(T));
        std::memcpy(at, &initial, sizeof(T));
        return reinterpret_cast<T*>(at);
    }
    // Copies whose last element (the NUL of a text) is the last one of an accessible page.
    const wchar_t* in_text(std::wstring_view text);
    const char* in_text(std::string_view text);
    const std::uint8_t* in_bytes(std::span<const std::uint8_t> bytes);

private:
    struct Guarded {
        std::vector<std::byte> storage;
        std::size_t offset; // of the payload in the storage
        std::size_t payload_bytes;
    };
    std::byte* guarded(std::size_t payload_bytes);
    void* at_page_end(std::size_t bytes);

    std::string label_;
    std::vector<Guarded> guarded_;
    std::vector<void*> pages_;
};

// True when `text` ends with a NUL within its `chars` characters.
bool is_terminated_within(const wchar_t* text, std::uint32_t chars);
// True when all `chars` characters are still kUnwritten.
bool is_unwritten(const wchar_t* text, std::uint32_t chars);

struct HeapCount {
    std::size_t blocks = 0;
    std::size_t bytes = 0;
    bool operator==(const HeapCount&) const = default;
};
std::ostream& operator<<(std::ostream& out, const HeapCount& count);

// The busy blocks of every heap of the process.
HeapCount count_heap_blocks();

class CrtAllocationMeter {
public:
    // Hooks the module's imports; at most one meter at a time.
    explicit CrtAllocationMeter(HMODULE module);
    ~CrtAllocationMeter(); // unhooks; blocks still counted stay valid for the runtime's free
    CrtAllocationMeter(const CrtAllocationMeter&) = delete;
    CrtAllocationMeter& operator=(const CrtAllocationMeter&) = delete;

    // How many imports were hooked (0 when the module imports none of them).
    int hooked() const { return static_cast<int>(slots_.size()); }
    // The blocks that the module took through the hooks and has not given back.
    HeapCount outstanding() const;
    // How many blocks the module took through the hooks in all.
    std::size_t taken() const;
    // False when more blocks were outstanding at once than the meter can follow.
    bool kept_up() const;
    // The hooked import `name`, as the module calls it (for the meter's own test).
    void* import_named(const char* name) const;

private:
    struct Slot {
        void** address;
        void* original;
        const char* name;
    };
    std::vector<Slot> slots_;
};

// While one exists, a fatal exception (access violation, stack overflow, heap corruption) is
// reported with the label of the newest CallArguments before the process goes down.
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
