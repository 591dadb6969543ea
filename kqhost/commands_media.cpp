// Commands of disk images: runtime working copies, empty media and medium copies through the
// DLL's exports; the compressed-image containers and DMS archives through the module's media
// code itself.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "kqhost/file_input.h"
#include "media/analysis/medium_analysis.h"
#include "media/compression/deflate.h"
#include "media/compression/inflate.h"
#include "media/dms/dms_unpacker.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string>

namespace kqhost {
namespace {

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

// IN OUT on the module's own code: `convert` turns IN into OUT and gives its failure's code (0
// for none), reported as "kqhost: <what> failed with code <n>". A failure leaves no OUT behind.
template <class Convert>
int convert_file(const Context& context, const char* usage, const char* what, Convert&& convert) {
    if (context.arguments.size() != 2) {
        print_error(usage);
        return kExitUsage;
    }
    return with_output_file(context.arguments[1], [&] {
        const unsigned code = convert(module_text(context.arguments[0]), module_text(context.arguments[1]));
        if (code == 0) return kExitOk;
        char line[80];
        std::snprintf(line, sizeof line, "kqhost: %s failed with code %u\n", what, code);
        print_error(line);
        return kExitFailure;
    });
}

int inflate(const Context& context) {
    return convert_file(context, "usage: kqhost inflate IN OUT\n", "inflating",
                        [](auto in, auto out) { return static_cast<unsigned>(kq::media::inflate_file(in, out)); });
}

int deflate(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost deflate IN OUT\n");
        return kExitUsage;
    }
    return with_output_file(context.arguments[1], [&] {
        const kq::HResult status =
            kq::media::deflate_file(module_text(context.arguments[0]), module_text(context.arguments[1]));
        if (status == kq::status::ok) return kExitOk;
        print_status("kqhost: deflating failed", status);
        return kExitFailure;
    });
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
        release(path); // the image and its folder go again
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
    const uint32_t flags = context.arguments.size() == 3
                               ? static_cast<uint32_t>(std::wcstoul(context.arguments[2].c_str(), nullptr, 0))
                               : 0;
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
    return convert_file(context, "usage: kqhost undms IN OUT\n", "unpacking",
                        [](auto in, auto out) { return static_cast<unsigned>(kq::media::unpack_dms_file(in, out)); });
}

// volume-name IMAGE
int volume_name(const Context& context) {
    if (context.arguments.size() != 1) {
        print_error("usage: kqhost volume-name IMAGE\n");
        return kExitUsage;
    }
    const auto get = find_export<decltype(KQGetVolumeName)>(context.module, "KQGetVolumeName");
    if (get == nullptr) {
        print_error("kqhost: the DLL has no KQGetVolumeName\n");
        return kExitFailure;
    }
    wchar_t name[256] = {};
    const kq_status status = get(context.arguments[0].c_str(), name, 256);
    if (status == KQ_S_OK) {
        print(std::wstring_view(name));
        print("\n");
    }
    print_status("KQGetVolumeName", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

std::string date_text(std::optional<kq::platform::FileTime> time) {
    if (!time) return "none";
    FILETIME file_time{static_cast<DWORD>(*time), static_cast<DWORD>(*time >> 32)};
    SYSTEMTIME date{};
    if (!FileTimeToSystemTime(&file_time, &date)) return "invalid";
    char text[40];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", date.wYear, date.wMonth, date.wDay, date.wHour,
                  date.wMinute, date.wSecond);
    return text;
}

// analyse IMAGE: the content analysis, through the module's media code itself
int analyse(const Context& context) {
    if (context.arguments.size() != 1) {
        print_error("usage: kqhost analyse IMAGE\n");
        return kExitUsage;
    }
    kq::media::MediumAnalysis analysis;
    const kq::media::AnalysisFailure failure = kq::media::analyse_medium(module_text(context.arguments[0]), analysis);
    if (failure != kq::media::AnalysisFailure::none) {
        char line[80];
        std::snprintf(line, sizeof line, "kqhost: the image cannot be analysed (code %u)\n",
                      static_cast<unsigned>(failure));
        print_error(line);
        return kExitFailure;
    }
    static constexpr const char* kKinds[] = {"floppy", "hard disk", "CD"};
    char line[160];
    std::snprintf(line, sizeof line, "kind: %s\nclass: %u\n", kKinds[static_cast<int>(analysis.kind)],
                  static_cast<unsigned>(analysis.analysis_class));
    print(line);
    print("volume: ");
    print(
        std::wstring_view(reinterpret_cast<const wchar_t*>(analysis.volume_name.data()), analysis.volume_name.size()));
    print("\ndate: " + date_text(analysis.date) + "\nlabel: ");
    print(std::wstring(analysis.conversion_label.begin(), analysis.conversion_label.end()));
    print("\n");
    for (const kq::media::PartitionFacts& partition : analysis.partitions) {
        print("partition: ");
        print(std::wstring(partition.device_name.begin(), partition.device_name.end()));
        print(" \"");
        print(std::wstring(partition.volume_name.begin(), partition.volume_name.end()));
        print(partition.bootable ? "\" bootable, " : "\" not bootable, ");
        print("created " + date_text(partition.created) + "\n");
    }
    return kExitOk;
}

// boot-tag MANIFEST ROOT
int boot_tag(const Context& context) {
    if (context.arguments.size() != 2) {
        print_error("usage: kqhost boot-tag MANIFEST ROOT\n");
        return kExitUsage;
    }
    const auto resolve = find_export<decltype(KQBootTag)>(context.module, "KQBootTag");
    if (resolve == nullptr) {
        print_error("kqhost: the DLL has no KQBootTag\n");
        return kExitFailure;
    }
    const std::optional<std::string> manifest = read_file_bytes(context.arguments[0]);
    if (!manifest) {
        print_error("kqhost: cannot read " + to_utf8(context.arguments[0]) + "\n");
        return kExitFailure;
    }
    kq_char* path = nullptr;
    const kq_status status = resolve(manifest->c_str(), context.arguments[1].c_str(), 0, &path);
    if (path != nullptr) {
        print(std::wstring_view(path));
        print("\n");
        GlobalFree(path);
    }
    print_status("KQBootTag", status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// device-command CATEGORY INDEX [MODEL]
int device_command(const Context& context) {
    if (context.arguments.size() < 2 || context.arguments.size() > 3) {
        print_error("usage: kqhost device-command CATEGORY INDEX [MODEL]\n");
        return kExitUsage;
    }
    const auto get = find_export<decltype(KQGetDeviceCommand)>(context.module, "KQGetDeviceCommand");
    const auto release = find_export<decltype(KQFreeDeviceCommand)>(context.module, "KQFreeDeviceCommand");
    if (get == nullptr || release == nullptr) {
        print_error("kqhost: the DLL has no KQGetDeviceCommand/KQFreeDeviceCommand\n");
        return kExitFailure;
    }
    const auto category = static_cast<uint32_t>(std::wcstoul(context.arguments[0].c_str(), nullptr, 0));
    const auto index = static_cast<uint32_t>(std::wcstoul(context.arguments[1].c_str(), nullptr, 0));
    KQDeviceCommand* command = nullptr;
    const kq_status status =
        get(index, category, 0, 0, context.arguments.size() == 3 ? context.arguments[2].c_str() : nullptr, &command);
    if (command != nullptr) {
        // The display name, then after a TAB the keys that give the command (when it has some).
        const std::wstring_view shown(command->name);
        const std::size_t tab = shown.find(L'\t');
        std::wstring text = L"name: ";
        text += shown.substr(0, tab);
        if (tab != std::wstring_view::npos) {
            text += L"\nkeys: ";
            text += shown.substr(tab + 1);
        }
        text += L"\ncommand: ";
        text += command->command;
        text += L"\n";
        print(text);
        release(command);
    }
    print_status("KQGetDeviceCommand", status);
    return status == KQ_S_OK || status == KQ_S_FALSE ? kExitOk : kExitFailure;
}

constexpr Command kCommands[] = {
    {L"runtime", "runtime get|check|dismiss",
     "get IMAGE [ALTERNATE-FOLDER] [--key KEY] [--no-timestamp]: make a working copy and print its "
     "path; check COPY: print whether it changed; dismiss COPY [--write-back] [--assume-changed]: "
     "write it back if asked and remove it.",
     true, runtime},
    {L"inflate", "inflate IN OUT", "Inflate a gzip file or the first entry of a ZIP archive into OUT.", false, inflate},
    {L"deflate", "deflate IN OUT", "Compress IN into the gzip file OUT, as working copies are written back.", false,
     deflate},
    {L"empty-medium", "empty-medium [dd|hd]",
     "Make an empty floppy image (880 KB or 1,760 KB), print its path and size, and free it again.", true,
     empty_medium},
    {L"copy-medium", "copy-medium SOURCE FOLDER [FLAGS]",
     "Copy a medium file into FOLDER (flags: 1 unpack .adz/.hdz/.dms, 2 no overwrite, 4 unique name, 8 skip "
     "same name) and print the copy's path.",
     true, copy_medium},
    {L"undms", "undms IN OUT", "Unpack a DMS archive into the ADF image OUT.", false, undms},
    {L"volume-name", "volume-name IMAGE", "Print the volume name stored in a disk or CD image.", true, volume_name},
    {L"analyse", "analyse IMAGE",
     "Print what the content analysis reads from an image: kind, boot class, volume name, date, conversion "
     "label and partitions.",
     false, analyse},
    {L"boot-tag", "boot-tag MANIFEST ROOT", "Resolve a package's boot tag against the shared data root.", true,
     boot_tag},
    {L"device-command", "device-command CATEGORY INDEX [MODEL]",
     "Print a device command (category 2: CDTV buttons, 7: keyboard) with its raw-key script.", true, device_command},
};

} // namespace

std::span<const Command> media_commands() { return kCommands; }

} // namespace kqhost
