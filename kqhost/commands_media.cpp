// Commands of disk images: runtime working copies through the DLL's exports, and the
// compressed-image containers through the module's media code itself.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "media/deflate.h"
#include "media/inflate.h"

#include <algorithm>
#include <cstdio>
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
};

} // namespace

std::span<const Command> media_commands() { return kCommands; }

} // namespace kqhost
