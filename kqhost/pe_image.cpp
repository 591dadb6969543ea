#include "kqhost/pe_image.h"

#include <map>

namespace kqhost {
namespace {

// The data directory `index` of a mapped 64-bit image, or nullptr when it is empty.
const IMAGE_DATA_DIRECTORY* data_directory(HMODULE module, unsigned index) {
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (module == nullptr || dos->e_magic != IMAGE_DOS_SIGNATURE) return nullptr;
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    if (nt->Signature != IMAGE_NT_SIGNATURE || nt->OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC ||
        nt->OptionalHeader.NumberOfRvaAndSizes <= index)
        return nullptr;
    const IMAGE_DATA_DIRECTORY* directory = &nt->OptionalHeader.DataDirectory[index];
    return directory->VirtualAddress != 0 && directory->Size != 0 ? directory : nullptr;
}

template <class T>
const T* at(HMODULE module, DWORD rva) {
    return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module) + rva);
}

} // namespace

std::vector<PeExport> list_exports(HMODULE module) {
    std::vector<PeExport> exports;
    const IMAGE_DATA_DIRECTORY* directory = data_directory(module, IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (directory == nullptr) return exports;
    const auto* table = at<IMAGE_EXPORT_DIRECTORY>(module, directory->VirtualAddress);
    const auto* functions = at<DWORD>(module, table->AddressOfFunctions);
    const auto* names = at<DWORD>(module, table->AddressOfNames);
    const auto* name_indexes = at<WORD>(module, table->AddressOfNameOrdinals);

    std::map<DWORD, std::string> name_of_index;
    for (DWORD i = 0; i < table->NumberOfNames; ++i) name_of_index[name_indexes[i]] = at<char>(module, names[i]);
    for (DWORD i = 0; i < table->NumberOfFunctions; ++i) {
        if (functions[i] == 0) continue; // an unused ordinal
        const auto name = name_of_index.find(i);
        exports.push_back({table->Base + i, name == name_of_index.end() ? std::string() : name->second,
                           at<BYTE>(module, functions[i])});
    }
    return exports;
}

std::vector<std::string> list_imported_dlls(HMODULE module) {
    std::vector<std::string> dlls;
    const IMAGE_DATA_DIRECTORY* directory = data_directory(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
    if (directory == nullptr) return dlls;
    for (const auto* entry = at<IMAGE_IMPORT_DESCRIPTOR>(module, directory->VirtualAddress); entry->Name != 0; ++entry)
        dlls.emplace_back(at<char>(module, entry->Name));
    return dlls;
}

} // namespace kqhost
