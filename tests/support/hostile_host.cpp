#include "tests/support/hostile_host.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kq::test {
namespace {

constexpr std::byte kGuard{0xFD};
constexpr std::size_t kGuardBytes = 64;
char g_current_call[256]; // the label of the running call, outside the heap for the crash note

std::size_t payload_offset(const std::byte* storage) {
    return kGuardBytes + (16 - reinterpret_cast<std::uintptr_t>(storage) % 16) % 16;
}

void note_call(const std::string& label) {
    *std::copy_n(label.begin(), std::min(label.size(), sizeof g_current_call - 1), g_current_call) = 0;
}

} // namespace

CallArguments::CallArguments(std::string label) : label_(std::move(label)) { note_call(label_); }

CallArguments::~CallArguments() {
    for (const auto& [storage, bytes] : guarded_) {
        const auto guard_changed = [](std::byte value) { return value != kGuard; };
        const std::byte* payload = storage.data() + payload_offset(storage.data());
        EXPECT_TRUE(std::none_of(storage.data(), payload, guard_changed)) << label_ << ": written before an argument";
        EXPECT_TRUE(std::none_of(payload + bytes, storage.data() + storage.size(), guard_changed))
            << label_ << ": written past an argument of " << bytes << " bytes";
    }
    for (void* pages : pages_) VirtualFree(pages, 0, MEM_RELEASE);
    note_call("(between calls)");
}

std::byte* CallArguments::guarded(std::size_t bytes) {
    // The payload starts 16-aligned, at least kGuardBytes in; everything around it is guard.
    guarded_.emplace_back(std::vector<std::byte>(kGuardBytes + 16 + bytes + kGuardBytes, kGuard), bytes);
    return guarded_.back().first.data() + payload_offset(guarded_.back().first.data());
}

wchar_t* CallArguments::out_text(std::size_t chars) {
    return std::fill_n(reinterpret_cast<wchar_t*>(guarded(chars * sizeof(wchar_t))), chars, kUnwritten) - chars;
}

void* CallArguments::out_slot(std::uint64_t initial, std::size_t bytes) {
    return std::memcpy(guarded(bytes), &initial, bytes);
}

const void* CallArguments::in_bytes(std::string_view bytes) {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const std::size_t page = info.dwPageSize, data_pages = (bytes.size() + page - 1) / page;
    auto* base = static_cast<std::byte*>(VirtualAlloc(nullptr, (data_pages + 1) * page, MEM_COMMIT, PAGE_READWRITE));
    DWORD old = 0;
    if (base == nullptr || !VirtualProtect(base + data_pages * page, page, PAGE_NOACCESS, &old)) std::abort();
    pages_.push_back(base);
    return std::memcpy(base + data_pages * page - bytes.size(), bytes.data(), bytes.size());
}

HeapCount count_heap_blocks() {
    HANDLE heaps[256];
    const DWORD count = std::min<DWORD>(GetProcessHeaps(256, heaps), 256);
    HeapCount total;
    for (DWORD i = 0; i < count && HeapLock(heaps[i]); ++i) {
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
            ++total.first;
            total.second += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return total;
}

// What the module took through the hooks and gave back, counted without allocating.
namespace {

struct Counts {
    std::atomic<std::int64_t> blocks, bytes, taken;
    void* (*malloc)(std::size_t);
    void* (*calloc)(std::size_t, std::size_t);
    void* (*realloc)(void*, std::size_t);
    char* (*strdup)(const char*);
    void (*free)(void*);
} g_counts;

void* counted(void* block, std::size_t bytes) {
    if (block == nullptr) return nullptr;
    ++g_counts.blocks;
    ++g_counts.taken;
    g_counts.bytes += bytes;
    return block;
}
void* counted_malloc(std::size_t bytes) { return counted(g_counts.malloc(bytes), bytes); }
void* counted_calloc(std::size_t count, std::size_t size) {
    return counted(g_counts.calloc(count, size), count * size);
}
char* counted_strdup(const char* text) {
    return static_cast<char*>(counted(g_counts.strdup(text), std::strlen(text) + 1));
}
void uncounted(void* block, std::size_t bytes) {
    if (block == nullptr) return;
    --g_counts.blocks;
    g_counts.bytes -= bytes;
}
void counted_free(void* block) {
    uncounted(block, block ? _msize(block) : 0);
    g_counts.free(block);
}
void* counted_realloc(void* old_block, std::size_t bytes) {
    const std::size_t old_bytes = old_block ? _msize(old_block) : 0;
    void* block = g_counts.realloc(old_block, bytes);
    if (block == nullptr && bytes != 0) return nullptr; // the old block stays as it was
    uncounted(old_block, old_bytes);
    return counted(block, bytes);
}

// Puts `value` into an import slot, which the loader left read-only.
void patch(void** slot, void* value) {
    DWORD old = 0;
    VirtualProtect(slot, sizeof(void*), PAGE_READWRITE, &old);
    *slot = value;
    VirtualProtect(slot, sizeof(void*), old, &old);
}

} // namespace

CrtAllocationMeter::CrtAllocationMeter(HMODULE module) {
    HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    g_counts.blocks = g_counts.bytes = g_counts.taken = 0;
    const struct {
        const char* name;
        void* replacement;
        void** original;
    } hooks[] = {
        {"malloc", reinterpret_cast<void*>(&counted_malloc), reinterpret_cast<void**>(&g_counts.malloc)},
        {"calloc", reinterpret_cast<void*>(&counted_calloc), reinterpret_cast<void**>(&g_counts.calloc)},
        {"realloc", reinterpret_cast<void*>(&counted_realloc), reinterpret_cast<void**>(&g_counts.realloc)},
        {"_strdup", reinterpret_cast<void*>(&counted_strdup), reinterpret_cast<void**>(&g_counts.strdup)},
        {"free", reinterpret_cast<void*>(&counted_free), reinterpret_cast<void**>(&g_counts.free)},
    };
    // The originals first, so that no hook runs before every one of them is known.
    for (const auto& hook : hooks) *hook.original = reinterpret_cast<void*>(GetProcAddress(runtime, hook.name));
    auto* base = reinterpret_cast<std::byte*>(module);
    const auto* nt =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         directory.VirtualAddress != 0 && import->Name != 0; ++import) {
        if (_stricmp(reinterpret_cast<const char*>(base + import->Name), "msvcrt.dll") != 0) continue;
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const char* name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData)->Name;
            for (const auto& hook : hooks) {
                if (std::strcmp(name, hook.name) != 0 || *hook.original == nullptr) continue;
                void** address = reinterpret_cast<void**>(&addresses->u1.Function);
                slots_.emplace_back(address, *address);
                patch(address, hook.replacement);
            }
        }
    }
}

CrtAllocationMeter::~CrtAllocationMeter() {
    for (const auto& [slot, original] : slots_) patch(slot, original);
}

HeapCount CrtAllocationMeter::outstanding() const {
    return {std::size_t(g_counts.blocks), std::size_t(g_counts.bytes)};
}

std::size_t CrtAllocationMeter::taken() const { return g_counts.taken; }

namespace {

// Errors (severity 3: access violation, stack overflow, heap corruption ...) are noted, also the
// ones the process would survive; C++ exceptions and debug output are not.
LONG CALLBACK report_crash(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if ((code & 0xF0000000u) != 0xC0000000u) return EXCEPTION_CONTINUE_SEARCH;
    std::fprintf(stderr, "\nfatal exception 0x%08lX at %p during: %s\n", static_cast<unsigned long>(code),
                 exception->ExceptionRecord->ExceptionAddress, g_current_call);
    std::fflush(stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

CrashNote::CrashNote() : handler_(AddVectoredExceptionHandler(1, report_crash)) {}

CrashNote::~CrashNote() {
    if (handler_ != nullptr) RemoveVectoredExceptionHandler(handler_);
}

} // namespace kq::test
