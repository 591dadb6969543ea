#include "tests/support/hostile_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace kq::test {
namespace {

constexpr std::byte kGuard{0xFD};
constexpr std::size_t kGuardBytes = 64;

// The label of the newest call, kept outside the heap for the crash note.
char g_current_call[256];

void note_call(const std::string& label) {
    const std::size_t length = std::min(label.size(), sizeof g_current_call - 1);
    std::memcpy(g_current_call, label.data(), length);
    g_current_call[length] = 0;
}

std::size_t page_bytes() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}

} // namespace

CallArguments::CallArguments(std::string label) : label_(std::move(label)) { note_call(label_); }

CallArguments::~CallArguments() {
    for (const Guarded& item : guarded_) {
        const std::byte* begin = item.storage.data();
        const std::byte* payload = begin + item.offset;
        const std::byte* after = payload + item.payload_bytes;
        const std::byte* end = begin + item.storage.size();
        for (const std::byte* at = begin; at < payload; ++at) {
            if (*at != kGuard) {
                ADD_FAILURE() << label_ << ": written " << (payload - at) << " bytes before an argument";
                break;
            }
        }
        for (const std::byte* at = after; at < end; ++at) {
            if (*at != kGuard) {
                ADD_FAILURE() << label_ << ": written " << (at - after) << " bytes past an argument of "
                              << item.payload_bytes << " bytes";
                break;
            }
        }
    }
    for (void* pages : pages_) VirtualFree(pages, 0, MEM_RELEASE);
    note_call("(between calls)");
}

std::byte* CallArguments::guarded(std::size_t payload_bytes) {
    // The payload starts 16-aligned, at least kGuardBytes in; everything around it is guard.
    Guarded item{std::vector<std::byte>(kGuardBytes + 16 + payload_bytes + kGuardBytes, kGuard), 0, payload_bytes};
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

void* CallArguments::at_page_end(std::size_t bytes) {
    const std::size_t page = page_bytes();
    const std::size_t data_pages = (bytes + page - 1) / page;
    const std::size_t total = (data_pages + 1) * page;
    auto* base = static_cast<std::byte*>(VirtualAlloc(nullptr, total, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (base == nullptr) {
        ADD_FAILURE() << label_ << ": no pages for an argument";
        std::abort();
    }
    DWORD old = 0;
    VirtualProtect(base + data_pages * page, page, PAGE_NOACCESS, &old);
    pages_.push_back(base);
    return base + data_pages * page - bytes;
}

const wchar_t* CallArguments::in_text(std::wstring_view text) {
    auto* copy = static_cast<wchar_t*>(at_page_end((text.size() + 1) * sizeof(wchar_t)));
    std::copy(text.begin(), text.end(), copy);
    copy[text.size()] = 0;
    return copy;
}

const char* CallArguments::in_text(std::string_view text) {
    auto* copy = static_cast<char*>(at_page_end(text.size() + 1));
    std::copy(text.begin(), text.end(), copy);
    copy[text.size()] = 0;
    return copy;
}

const std::uint8_t* CallArguments::in_bytes(std::span<const std::uint8_t> bytes) {
    auto* copy = static_cast<std::uint8_t*>(at_page_end(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), copy);
    return copy;
}

bool is_terminated_within(const wchar_t* text, std::uint32_t chars) {
    return std::find(text, text + chars, L'\0') != text + chars;
}

bool is_unwritten(const wchar_t* text, std::uint32_t chars) {
    return std::all_of(text, text + chars, [](wchar_t c) { return c == kUnwritten; });
}

std::ostream& operator<<(std::ostream& out, const HeapCount& count) {
    return out << count.blocks << " blocks, " << count.bytes << " bytes";
}

HeapCount count_heap_blocks() {
    HANDLE heaps[256];
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(std::size(heaps)), heaps);
    HeapCount total;
    for (DWORD i = 0; i < count && i < std::size(heaps); ++i) {
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

// The blocks taken through the hooks: a linear-probing table of addresses and sizes in pages of
// its own, so that following an allocation never allocates.
namespace {

struct Entry {
    void* address;
    std::size_t bytes;
};
constexpr std::size_t kTableEntries = std::size_t{1} << 18;

struct Table {
    SRWLOCK lock = SRWLOCK_INIT;
    Entry* entries = nullptr;
    std::size_t blocks = 0, bytes = 0, taken = 0;
    bool overflowed = false;
    void* (*malloc)(std::size_t) = nullptr;
    void* (*calloc)(std::size_t, std::size_t) = nullptr;
    void* (*realloc)(void*, std::size_t) = nullptr;
    char* (*strdup)(const char*) = nullptr;
    void (*free)(void*) = nullptr;
};
Table g_table;

std::size_t home_of(const void* address) {
    auto key = reinterpret_cast<std::uintptr_t>(address) >> 4;
    key *= 0x9E3779B97F4A7C15ull;
    return static_cast<std::size_t>(key >> 46) & (kTableEntries - 1);
}

void add_block(void* address, std::size_t bytes) {
    if (address == nullptr) return;
    AcquireSRWLockExclusive(&g_table.lock);
    if (g_table.blocks + 1 >= kTableEntries / 2) {
        g_table.overflowed = true;
    } else {
        std::size_t at = home_of(address);
        while (g_table.entries[at].address != nullptr) at = (at + 1) & (kTableEntries - 1);
        g_table.entries[at] = {address, bytes};
        ++g_table.taken;
        ++g_table.blocks;
        g_table.bytes += bytes;
    }
    ReleaseSRWLockExclusive(&g_table.lock);
}

// Forgets a block; false when it was not taken through the hooks.
bool remove_block(void* address) {
    if (address == nullptr) return false;
    AcquireSRWLockExclusive(&g_table.lock);
    std::size_t at = home_of(address);
    while (g_table.entries[at].address != nullptr && g_table.entries[at].address != address)
        at = (at + 1) & (kTableEntries - 1);
    const bool found = g_table.entries[at].address != nullptr;
    if (found) {
        --g_table.blocks;
        g_table.bytes -= g_table.entries[at].bytes;
        g_table.entries[at] = {};
        // Move later entries of the run back into the hole, so that every lookup still finds them.
        std::size_t hole = at;
        for (std::size_t next = (at + 1) & (kTableEntries - 1); g_table.entries[next].address != nullptr;
             next = (next + 1) & (kTableEntries - 1)) {
            const std::size_t home = home_of(g_table.entries[next].address);
            const bool stays = hole <= next ? (hole < home && home <= next) : (hole < home || home <= next);
            if (stays) continue;
            g_table.entries[hole] = g_table.entries[next];
            g_table.entries[next] = {};
            hole = next;
        }
    }
    ReleaseSRWLockExclusive(&g_table.lock);
    return found;
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

bool is_counted(void* address) {
    AcquireSRWLockShared(&g_table.lock);
    std::size_t at = home_of(address);
    while (g_table.entries[at].address != nullptr && g_table.entries[at].address != address)
        at = (at + 1) & (kTableEntries - 1);
    const bool found = g_table.entries[at].address != nullptr;
    ReleaseSRWLockShared(&g_table.lock);
    return found;
}

void* counted_realloc(void* old_block, std::size_t bytes) {
    // A block taken before the hooks stays uncounted, also when it moves.
    const bool was_counted = old_block == nullptr || is_counted(old_block);
    void* block = g_table.realloc(old_block, bytes);
    if (block == nullptr && bytes != 0) return nullptr; // the old block stays as it was
    if (was_counted) {
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

struct Hook {
    const char* name;
    void* replacement;
    void** original;
};

} // namespace

CrtAllocationMeter::CrtAllocationMeter(HMODULE module) {
    g_table.entries = static_cast<Entry*>(
        VirtualAlloc(nullptr, kTableEntries * sizeof(Entry), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    g_table.blocks = g_table.bytes = g_table.taken = 0;
    g_table.overflowed = g_table.entries == nullptr;
    if (g_table.entries == nullptr) return;
    const Hook hooks[] = {
        {"malloc", reinterpret_cast<void*>(&counted_malloc), reinterpret_cast<void**>(&g_table.malloc)},
        {"calloc", reinterpret_cast<void*>(&counted_calloc), reinterpret_cast<void**>(&g_table.calloc)},
        {"realloc", reinterpret_cast<void*>(&counted_realloc), reinterpret_cast<void**>(&g_table.realloc)},
        {"_strdup", reinterpret_cast<void*>(&counted_strdup), reinterpret_cast<void**>(&g_table.strdup)},
        {"free", reinterpret_cast<void*>(&counted_free), reinterpret_cast<void**>(&g_table.free)},
    };
    // The originals first, so that no hook runs before every one of them is known.
    HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    if (runtime == nullptr) return;
    for (const Hook& hook : hooks) *hook.original = reinterpret_cast<void*>(GetProcAddress(runtime, hook.name));

    auto* base = reinterpret_cast<std::byte*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) return;
    for (auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         import->Name != 0; ++import) {
        if (_stricmp(reinterpret_cast<const char*>(base + import->Name), "msvcrt.dll") != 0) continue;
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + import->OriginalFirstThunk);
        auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + import->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            const char* name = reinterpret_cast<const char*>(by_name->Name);
            for (const Hook& hook : hooks) {
                if (std::strcmp(name, hook.name) != 0 || *hook.original == nullptr) continue;
                void** address = reinterpret_cast<void**>(&addresses->u1.Function);
                DWORD old = 0;
                VirtualProtect(address, sizeof(void*), PAGE_READWRITE, &old);
                slots_.push_back({address, *address, hook.name});
                *address = hook.replacement;
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
    if (g_table.entries != nullptr) VirtualFree(g_table.entries, 0, MEM_RELEASE);
    g_table.entries = nullptr;
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

void* CrtAllocationMeter::import_named(const char* name) const {
    for (const Slot& slot : slots_)
        if (std::strcmp(slot.name, name) == 0) return *slot.address;
    return nullptr;
}

namespace {

LONG CALLBACK report_crash(EXCEPTION_POINTERS* exception) {
    switch (exception->ExceptionRecord->ExceptionCode) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_STACK_OVERFLOW:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case STATUS_HEAP_CORRUPTION:
    case STATUS_STACK_BUFFER_OVERRUN:
        std::fprintf(stderr, "\nfatal exception 0x%08lX at %p during: %s\n",
                     static_cast<unsigned long>(exception->ExceptionRecord->ExceptionCode),
                     exception->ExceptionRecord->ExceptionAddress, g_current_call);
        std::fflush(stderr);
        break;
    default: break;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

CrashNote::CrashNote() : handler_(AddVectoredExceptionHandler(1, report_crash)) {}

CrashNote::~CrashNote() {
    if (handler_ != nullptr) RemoveVectoredExceptionHandler(handler_);
}

} // namespace kq::test
