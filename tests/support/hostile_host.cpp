#include "tests/support/hostile_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kq::test {
namespace {

constexpr std::byte kGuard{0xFD};
constexpr std::size_t kGuardBytes = 64;

// The label of the running call, kept outside the heap for the crash note.
char g_current_call[256];

void note_call(const std::string& label) {
    const std::size_t length = std::min(label.size(), sizeof g_current_call - 1);
    std::memcpy(g_current_call, label.data(), length);
    g_current_call[length] = 0;
}

} // namespace

CallArguments::CallArguments(std::string label) : label_(std::move(label)) { note_call(label_); }

CallArguments::~CallArguments() {
    for (const Guarded& item : guarded_) {
        const std::byte* payload = item.storage.data() + item.offset;
        const auto written = [](std::byte value) { return value != kGuard; };
        if (std::any_of(item.storage.data(), payload, written))
            ADD_FAILURE() << label_ << ": written before an argument of " << item.bytes << " bytes";
        if (std::any_of(payload + item.bytes, item.storage.data() + item.storage.size(), written))
            ADD_FAILURE() << label_ << ": written past an argument of " << item.bytes << " bytes";
    }
    for (void* pages : pages_) VirtualFree(pages, 0, MEM_RELEASE);
    note_call("(between calls)");
}

std::byte* CallArguments::guarded(std::size_t bytes) {
    // The payload starts 16-aligned, at least kGuardBytes in; everything around it is guard.
    Guarded item{std::vector<std::byte>(kGuardBytes + 16 + bytes + kGuardBytes, kGuard), 0, bytes};
    const auto misalignment = reinterpret_cast<std::uintptr_t>(item.storage.data() + kGuardBytes) % 16;
    item.offset = kGuardBytes + (16 - misalignment) % 16;
    guarded_.push_back(std::move(item)); // the storage keeps its address when moved
    return guarded_.back().storage.data() + guarded_.back().offset;
}

wchar_t* CallArguments::out_text(std::uint32_t chars) {
    auto* text = reinterpret_cast<wchar_t*>(guarded(std::size_t{chars} * sizeof(wchar_t)));
    std::fill_n(text, chars, kUnwritten);
    return text;
}

void* CallArguments::out_slot(std::uint64_t initial, std::size_t bytes) {
    std::byte* slot = guarded(bytes);
    std::memcpy(slot, &initial, bytes);
    return slot;
}

const void* CallArguments::in_bytes(std::string_view bytes) {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const std::size_t page = info.dwPageSize, data_pages = (bytes.size() + page - 1) / page;
    auto* base = static_cast<std::byte*>(
        VirtualAlloc(nullptr, (data_pages + 1) * page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (base == nullptr) std::abort();
    DWORD old = 0;
    VirtualProtect(base + data_pages * page, page, PAGE_NOACCESS, &old);
    pages_.push_back(base);
    return std::memcpy(base + data_pages * page - bytes.size(), bytes.data(), bytes.size());
}

std::ostream& operator<<(std::ostream& out, const HeapCount& count) {
    return out << count.blocks << " blocks, " << count.bytes << " bytes";
}

HeapCount count_heap_blocks() {
    HANDLE heaps[256];
    const DWORD count = std::min<DWORD>(GetProcessHeaps(256, heaps), 256);
    HeapCount total;
    for (DWORD i = 0; i < count; ++i) {
        if (!HeapLock(heaps[i])) continue;
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) == 0) continue;
            ++total.blocks;
            total.bytes += entry.cbData;
        }
        HeapUnlock(heaps[i]);
    }
    return total;
}

// The blocks taken through the hooks: chains of nodes from a pool in pages of its own, so that
// following an allocation never allocates.
namespace {

struct Node {
    void* address;
    std::size_t bytes;
    Node* next;
};
constexpr std::size_t kBuckets = std::size_t{1} << 16, kNodes = std::size_t{1} << 18;

struct Table {
    SRWLOCK lock = SRWLOCK_INIT;
    Node** buckets = nullptr;
    Node* spare = nullptr; // the pool's unused nodes
    std::size_t blocks = 0, bytes = 0, taken = 0;
    bool overflowed = false;
    void* (*malloc)(std::size_t) = nullptr;
    void* (*calloc)(std::size_t, std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    char* (*strdup)(const char*) = nullptr;
    void (*free)(void*) = nullptr;
};
Table g_table;

Node** bucket_of(const void* address) {
    return &g_table.buckets[(reinterpret_cast<std::uintptr_t>(address) >> 4) % kBuckets];
}

// The link that points at the node of `address`, or at the null that ends its chain.
Node** link_of(const void* address) {
    Node** at = bucket_of(address);
    while (*at != nullptr && (*at)->address != address) at = &(*at)->next;
    return at;
}

void add_block(void* address, std::size_t bytes) {
    if (address == nullptr) return;
    AcquireSRWLockExclusive(&g_table.lock);
    if (Node* node = g_table.spare; node == nullptr) {
        g_table.overflowed = true;
    } else {
        g_table.spare = node->next;
        *node = {address, bytes, *bucket_of(address)};
        *bucket_of(address) = node;
        ++g_table.taken, ++g_table.blocks, g_table.bytes += bytes;
    }
    ReleaseSRWLockExclusive(&g_table.lock);
}

// Forgets a block; false when it was not taken through the hooks.
bool remove_block(void* address) {
    if (address == nullptr) return false;
    AcquireSRWLockExclusive(&g_table.lock);
    Node** at = link_of(address);
    Node* node = *at;
    if (node != nullptr) {
        *at = node->next;
        --g_table.blocks, g_table.bytes -= node->bytes;
        node->next = g_table.spare;
        g_table.spare = node;
    }
    ReleaseSRWLockExclusive(&g_table.lock);
    return node != nullptr;
}

void* counted_malloc(std::size_t bytes) {
    void* block = g_table.malloc(bytes);
    add_block(block, bytes);
    return block;
}

void* counted_calloc(std::size_t count, std::size_t size) {
    void* block = g_table.calloc(count, size);
    add_block(block, count * size);
    return block;
}

void* counted_realloc(void* old_block, std::size_t bytes) {
    // A block taken before the hooks stays uncounted, also when it moves.
    AcquireSRWLockShared(&g_table.lock);
    const bool counted = old_block == nullptr || *link_of(old_block) != nullptr;
    ReleaseSRWLockShared(&g_table.lock);
    void* block = g_table.realloc(old_block, bytes);
    if (block == nullptr && bytes != 0) return nullptr; // the old block stays as it was
    if (counted) {
        remove_block(old_block);
        add_block(block, bytes);
    }
    return block;
}

char* counted_strdup(const char* text) {
    char* copy = g_table.strdup(text);
    if (copy != nullptr) add_block(copy, std::strlen(copy) + 1);
    return copy;
}

void counted_free(void* block) {
    remove_block(block);
    g_table.free(block);
}

} // namespace

CrtAllocationMeter::CrtAllocationMeter(HMODULE module) {
    const std::size_t table_bytes = kBuckets * sizeof(Node*) + kNodes * sizeof(Node);
    g_table.buckets = static_cast<Node**>(VirtualAlloc(nullptr, table_bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    g_table.blocks = g_table.bytes = g_table.taken = 0;
    g_table.overflowed = g_table.buckets == nullptr;
    HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    if (g_table.buckets == nullptr || runtime == nullptr) return;
    auto* nodes = reinterpret_cast<Node*>(g_table.buckets + kBuckets);
    g_table.spare = nullptr;
    for (std::size_t i = 0; i < kNodes; ++i) nodes[i].next = std::exchange(g_table.spare, &nodes[i]);
    const struct {
        const char* name;
        void* replacement;
        void** original;
    } hooks[] = {
        {"malloc", reinterpret_cast<void*>(&counted_malloc), reinterpret_cast<void**>(&g_table.malloc)},
        {"calloc", reinterpret_cast<void*>(&counted_calloc), reinterpret_cast<void**>(&g_table.calloc)},
        {"realloc", reinterpret_cast<void*>(&counted_realloc), reinterpret_cast<void**>(&g_table.realloc)},
        {"_strdup", reinterpret_cast<void*>(&counted_strdup), reinterpret_cast<void**>(&g_table.strdup)},
        {"free", reinterpret_cast<void*>(&counted_free), reinterpret_cast<void**>(&g_table.free)},
    };
    // The originals first, so that no hook runs before every one of them is known.
    for (const auto& hook : hooks) *hook.original = reinterpret_cast<void*>(GetProcAddress(runtime, hook.name));
    auto* base = reinterpret_cast<std::byte*>(module);
    const auto* nt =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) return;
    for (auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         import->Name != 0; ++import) {
        if (_stricmp(reinterpret_cast<const char*>(base + import->Name), "msvcrt.dll") != 0) continue;
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const char* name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData)->Name;
            for (const auto& hook : hooks) {
                if (std::strcmp(name, hook.name) != 0 || *hook.original == nullptr) continue;
                void** address = reinterpret_cast<void**>(&addresses->u1.Function);
                DWORD old = 0;
                VirtualProtect(address, sizeof(void*), PAGE_READWRITE, &old);
                slots_.push_back({address, std::exchange(*address, hook.replacement)});
                VirtualProtect(address, sizeof(void*), old, &old);
            }
        }
    }
}

CrtAllocationMeter::~CrtAllocationMeter() {
    for (const Slot& slot : slots_) {
        DWORD old = 0;
        VirtualProtect(slot.address, sizeof(void*), PAGE_READWRITE, &old);
        *slot.address = slot.original;
        VirtualProtect(slot.address, sizeof(void*), old, &old);
    }
    // Every block went through the runtime's own allocator, so the table can simply go.
    if (g_table.buckets != nullptr) VirtualFree(g_table.buckets, 0, MEM_RELEASE);
    g_table.buckets = nullptr;
}

HeapCount CrtAllocationMeter::outstanding() const {
    AcquireSRWLockShared(&g_table.lock);
    const HeapCount count{g_table.blocks, g_table.bytes};
    ReleaseSRWLockShared(&g_table.lock);
    return count;
}

std::size_t CrtAllocationMeter::taken() const {
    AcquireSRWLockShared(&g_table.lock);
    const std::size_t taken = g_table.taken;
    ReleaseSRWLockShared(&g_table.lock);
    return taken;
}

bool CrtAllocationMeter::kept_up() const { return !g_table.overflowed; }

namespace {

// Errors (severity 3: access violation, stack overflow, heap corruption ...), also the ones the
// process would survive, are noted; the others (C++ exceptions, debug output) are not.
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
