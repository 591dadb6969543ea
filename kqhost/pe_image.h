#pragma once
// Reads the export and import tables of a module that the loader has mapped: what a host
// sees of a DLL without trusting its own description of itself.

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kqhost {

struct PeExport {
    std::uint32_t ordinal;
    std::string name; // empty for an export by ordinal only
    const void* address;
};

// Every export of `module` in ordinal order; empty when the image has no export table.
std::vector<PeExport> list_exports(HMODULE module);
// The names of the DLLs that `module` imports from, in table order.
std::vector<std::string> list_imported_dlls(HMODULE module);

} // namespace kqhost
