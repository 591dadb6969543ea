// The version command: the loaded DLL's path and its version resource (VERSIONINFO), read as
// a host or installer reads it, with GetFileVersionInfoW and VerQueryValueW.

#include "kqhost/command.h"
#include "kqhost/console.h"

#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

namespace kqhost {
namespace {

std::string dotted(DWORD high, DWORD low) {
    char text[64];
    std::snprintf(text, sizeof text, "%lu.%lu.%lu.%lu", static_cast<unsigned long>(HIWORD(high)),
                  static_cast<unsigned long>(LOWORD(high)), static_cast<unsigned long>(HIWORD(low)),
                  static_cast<unsigned long>(LOWORD(low)));
    return text;
}

int version(const Context& context) {
    if (!context.arguments.empty()) return kExitUsage;
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(context.module, path, MAX_PATH);
    if (length == 0 || length == MAX_PATH) {
        print_error("kqhost: cannot read the DLL's path\n");
        return kExitFailure;
    }
    print("Module: ");
    print(std::wstring_view(path, length));
    print("\n");

    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path, &ignored);
    std::vector<unsigned char> block(size);
    if (size == 0 || !GetFileVersionInfoW(path, 0, size, block.data())) {
        print_error("kqhost: the DLL has no version resource (error " + std::to_string(GetLastError()) + ")\n");
        return kExitFailure;
    }
    void* value = nullptr;
    UINT value_bytes = 0;
    if (!VerQueryValueW(block.data(), L"\\", &value, &value_bytes) || value_bytes < sizeof(VS_FIXEDFILEINFO)) {
        print_error("kqhost: the version resource has no fixed part\n");
        return kExitFailure;
    }
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    print("Fixed file version: " + dotted(fixed->dwFileVersionMS, fixed->dwFileVersionLS) + "\n");
    print("Fixed product version: " + dotted(fixed->dwProductVersionMS, fixed->dwProductVersionLS) + "\n");

    // The strings of the first language and code page that the resource lists.
    struct Translation {
        WORD language, code_page;
    };
    if (!VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", &value, &value_bytes) ||
        value_bytes < sizeof(Translation)) {
        print_error("kqhost: the version resource lists no language\n");
        return kExitFailure;
    }
    const auto* translation = static_cast<const Translation*>(value);
    wchar_t prefix[40];
    std::swprintf(prefix, 40, L"\\StringFileInfo\\%04x%04x\\", translation->language, translation->code_page);
    int result = kExitOk;
    for (const wchar_t* name : {L"CompanyName", L"FileDescription", L"FileVersion", L"InternalName",
                                L"OriginalFilename", L"ProductName", L"ProductVersion"}) {
        const std::wstring query = prefix + std::wstring(name);
        print(std::wstring_view(name));
        if (VerQueryValueW(block.data(), query.c_str(), &value, &value_bytes) && value_bytes > 0) {
            print(": ");
            print(std::wstring_view(static_cast<const wchar_t*>(value)));
            print("\n");
        } else {
            print(": (missing)\n");
            result = kExitFailure;
        }
    }
    return result;
}

constexpr Command kCommands[] = {
    {L"version", "version",
     "Print the DLL's path and its version resource: the fixed file and product versions and the "
     "strings (GetFileVersionInfoW).",
     true, version},
};

} // namespace

std::span<const Command> version_commands() { return kCommands; }

} // namespace kqhost
