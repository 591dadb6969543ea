// Commands of disk images: runtime working copies, empty media and medium copies through the
// DLL's exports; the compressed-image containers and DMS archives through the module's media
// code itself.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "media/deflate.h"
#include "media/dms/dms_unpacker.h"
#include "media/inflate.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string>

namespace kqhost {
namespace {

std::u16string_view module_text(const std::wstring& text) {
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

// runtime get IMAGE [ALTERNATE-FOLDER] [--key KEY] [--no-timestamp]
int runtime_get(const Context& context) {
    const auto get = find_export<decltype(KQGetRuntimeMedium)>(context.module, "KQGetRuntimeMedium");
    const std::wstring* image = nullptr;
    const std::wstring* alternate = nullptr;
    std::wstring buffer(MAX_PATH + 1, L'\0');
    uint32_t flags = 0;
    for (std::size_t i = 1; i < context.arguments.size(); ++i) {
        const std::wstring& argument = context.arguments[i];
        if (argument == L"--no-timestamp") {
            flags |= KQ_RUNTIME_MEDIUM_NO_TIMESTAMP;
        } else if (argument == L"--key" && i + 1 < context.arguments.size()) {
            flags |= KQ_RUNTIME_MEDIUM_CALLER_KEY;
            const std::wstring& key = context.arguments[++i];
            std::copy_n(key.begin(), std::min(key.size(), buffer.size() - 1), buffer.begin());
        } else if (image == nullptr) {
            image = &argument;
        } else if (alternate == nullptr) {
            alternate = &argument;
        } else {
            image = nullptr;
            break;
        }
    }
    if (image == nullptr) {
        print_error("usage: kqhost runtime get IMAGE [ALTERNATE-FOLDER] [--key KEY] [--no-timestamp]\n");
        return kExitUsage;
    }
    const kq_status status = get(image->c_str(), alternate != nullptr ? alternate->c_str() : nullptr, buffer.data(),
                                 static_cast<uint32_t>(buffer.size()), flags);
    if (status == KQ_S_OK) {
        print(std::wstring_view(buffer.c_str()));
        print("\n");
    }
    print_status("KQGetRuntimeMedium", status);
    return status == KQ_S_OK || status == KQ_S_FALSE ? kExitOk : kExitFailure;
}

// runtime check COPY
int runtime_check(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost runtime check COPY\n");
        return kExitUsage;
    }
    const auto check = find_export<decltype(KQCheckRuntimeMedium)>(context.module, "KQCheckRuntimeMedium");
    uint32_t changed = 0;
    const kq_status status = check(context.arguments[1].c_str(), &changed);
    if (status == KQ_S_OK) print(changed ? "changed\n" : "unchanged\n");
    print_status("KQCheckRuntimeMedium", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// runtime dismiss COPY [--write-back] [--assume-changed]
int runtime_dismiss(const Context& context) {
    uint32_t flags = 0;
    bool usable = context.arguments.size() >= 2;
    for (std::size_t i = 2; i < context.arguments.size(); ++i) {
        if (context.arguments[i] == L"--write-back") {
            flags |= KQ_RUNTIME_MEDIUM_WRITE_BACK;
        } else if (context.arguments[i] == L"--assume-changed") {
            flags |= KQ_RUNTIME_MEDIUM_ASSUME_CHANGED;
        } else {
            usable = false;
        }
    }
    if (!usable) {
        print_error("usage: kqhost runtime dismiss COPY [--write-back] [--assume-changed]\n");
        return kExitUsage;
    }
    const auto dismiss = find_export<decltype(KQDismissRuntimeMedium)>(context.module, "KQDismissRuntimeMedium");
    const kq_status status = dismiss(context.arguments[1].c_str(), nullptr, flags);
    print_status("KQDismissRuntimeMedium", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

int runtime(const Context& context) {
    if (find_export<decltype(KQGetRuntimeMedium)>(context.module, "KQGetRuntimeMedium") == nullptr ||
        find_export<decltype(KQCheckRuntimeMedium)>(context.module, "KQCheckRuntimeMedium") == nullptr ||
        find_export<decltype(KQDismissRuntimeMedium)>(context.module, "KQDismissRuntimeMedium") == nullptr) {
        print_error("kqhost: the DLL has no runtime-medium exports\n");
        return kExitFailure;
    }
    const std::wstring subcommand = context.arguments.empty() ? L"" : context.arguments[0];
    if (subcommand == L"get") return runtime_get(context);
    if (subcommand == L"check") return runtime_check(context);
    if (subcommand == L"dismiss") return runtime_dismiss(context);
    print_error("usage: kqhost runtime get|check|dismiss ...\n");
    return kExitUsage;
}

int inflate(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost inflate IN OUT\n");
        return kExitUsage;
    }
    const kq::media::InflateError error =
        kq::media::inflate_file(module_text(context.arguments[0]), module_text(context.arguments[1]));
    if (error == kq::media::InflateError::none) return kExitOk;
    char line[80];
    std::snprintf(line, sizeof line, "kqhost: inflating failed with code %u\n", static_cast<unsigned>(error));
    print_error(line);
    return kExitFailure;
}

int deflate(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost deflate IN OUT\n");
        return kExitUsage;
    }
    const kq::HResult status =
        kq::media::deflate_file(module_text(context.arguments[0]), module_text(context.arguments[1]));
    if (status == kq::status::ok) return kExitOk;
    print_status("kqhost: deflating failed", status);
    return kExitFailure;
}

// empty-medium [dd|hd]
int empty_medium(const Context& context) {
    const std::wstring kind = context.arguments.empty() ? L"dd" : context.arguments[0];
    if (context.arguments.size() > 1 || (kind != L"dd" && kind != L"hd")) {
        print_error("usage: kqhost empty-medium [dd|hd]\n");
        return kExitUsage;
    }
    const auto get = find_export<decltype(KQGetEmptyMedium2)>(context.module, "KQGetEmptyMedium2");
    const auto release = find_export<decltype(KQFreeEmptyMedium)>(context.module, "KQFreeEmptyMedium");
    if (get == nullptr || release == nullptr) {
        print_error("kqhost: the DLL has no KQGetEmptyMedium2/KQFreeEmptyMedium\n");
        return kExitFailure;
    }
    kq_char* path = nullptr;
    const kq_status status = get(&path, nullptr, 0, kind == L"hd" ? 1 : 0);
    if (status == KQ_S_OK) {
        const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        LARGE_INTEGER size{};
        if (file != INVALID_HANDLE_VALUE) {
            GetFileSizeEx(file, &size);
            CloseHandle(file);
        }
        print(std::wstring_view(path));
        char line[64];
        std::snprintf(line, sizeof line, " (%lld bytes)\n", static_cast<long long>(size.QuadPart));
        print(line);
        release(path);  // the image and its folder go again
    }
    print_status("KQGetEmptyMedium2", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// copy-medium SOURCE FOLDER [FLAGS]
int copy_medium(const Context& context) {
    if (context.arguments.size() < 2 || context.arguments.size() > 3) {
        print_error("usage: kqhost copy-medium SOURCE FOLDER [FLAGS]\n");
        return kExitUsage;
    }
    const auto copy = find_export<decltype(KQCopyMediumFile)>(context.module, "KQCopyMediumFile");
    if (copy == nullptr) {
        print_error("kqhost: the DLL has no KQCopyMediumFile\n");
        return kExitFailure;
    }
    const uint32_t flags =
        context.arguments.size() == 3 ? static_cast<uint32_t>(std::wcstoul(context.arguments[2].c_str(), nullptr, 0)) : 0;
    wchar_t buffer[MAX_PATH + 1] = {};
    const kq_status status =
        copy(context.arguments[0].c_str(), context.arguments[1].c_str(), flags, buffer, MAX_PATH + 1);
    if (status == KQ_S_OK) {
        print(std::wstring_view(buffer));
        print("\n");
    }
    print_status("KQCopyMediumFile", status);
    return status == KQ_S_OK || status == KQ_S_FALSE ? kExitOk : kExitFailure;
}

int undms(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost undms IN OUT\n");
        return kExitUsage;
    }
    const kq::media::DmsError error =
        kq::media::unpack_dms_file(module_text(context.arguments[0]), module_text(context.arguments[1]));
    if (error == kq::media::DmsError::none) return kExitOk;
    char line[80];
    std::snprintf(line, sizeof line, "kqhost: unpacking failed with code %u\n", static_cast<unsigned>(error));
    print_error(line);
    return kExitFailure;
}

constexpr Command kCommands[] = {
    {L"runtime", "runtime get|check|dismiss",
     "get IMAGE [ALTERNATE-FOLDER] [--key KEY] [--no-timestamp]: make a working copy and print its "
     "path; check COPY: print whether it changed; dismiss COPY [--write-back] [--assume-changed]: "
     "write it back if asked and remove it.",
     true, runtime},
    {L"inflate", "inflate IN OUT", "Inflate a gzip file or the first entry of a ZIP archive into OUT.", false,
     inflate},
    {L"deflate", "deflate IN OUT", "Compress IN into the gzip file OUT, as working copies are written back.",
     false, deflate},
    {L"empty-medium", "empty-medium [dd|hd]",
     "Make an empty floppy image (880 KB or 1,760 KB), print its path and size, and free it again.", true,
     empty_medium},
    {L"copy-medium", "copy-medium SOURCE FOLDER [FLAGS]",
     "Copy a medium file into FOLDER (flags: 1 unpack .adz/.hdz/.dms, 2 no overwrite, 4 unique name, 8 skip "
     "same name) and print the copy's path.",
     true, copy_medium},
    {L"undms", "undms IN OUT", "Unpack a DMS archive into the ADF image OUT.", false, undms},
};

} // namespace

std::span<const Command> media_commands() { return kCommands; }

} // namespace kqhost
