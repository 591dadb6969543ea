// Commands of the drives' content texts: the hard-disk summary and the drive tooltip through
// the DLL's exports. Their texts carry TAB, LF and CR separators, so each text argument can
// come from a UTF-8 file.

#include "kq_amiga.h"
#include "kqhost/command.h"
#include "kqhost/console.h"
#include "kqhost/file_input.h"

#include <cwchar>
#include <optional>
#include <string>
#include <vector>

namespace kqhost {
namespace {

// A text argument: "@FILE" is the UTF-8 file's text, "-" passes no text (a null pointer),
// anything else is the text itself.
struct TextArgument {
    bool is_given = false;
    std::wstring text;
    const wchar_t* pointer() const { return is_given ? text.c_str() : nullptr; }
};

std::optional<TextArgument> text_argument(const std::wstring& argument) {
    if (argument == L"-") return TextArgument{};
    if (argument.size() > 1 && argument[0] == L'@') {
        std::optional<std::wstring> text = read_utf8_file(argument.substr(1));
        if (!text) {
            print_error("kqhost: cannot read " + to_utf8(argument.substr(1)) + "\n");
            return std::nullopt;
        }
        return TextArgument{true, std::move(*text)};
    }
    return TextArgument{true, argument};
}

// A whole decimal (or 0x hexadecimal) number below 2^32.
std::optional<uint32_t> number_argument(const std::wstring& argument) {
    if (argument.empty()) return std::nullopt;
    wchar_t* end = nullptr;
    const unsigned long long value = std::wcstoull(argument.c_str(), &end, 0);
    if (*end != L'\0' || value > 0xFFFFFFFFull) return std::nullopt;
    return static_cast<uint32_t>(value);
}

// Prints the buffer's text and the status; the exit code follows the status.
int print_text_and_status(const char* export_name, kq_status status, const std::vector<wchar_t>& buffer) {
    if (status == KQ_S_OK && buffer[0] != L'\0') {
        print(std::wstring_view(buffer.data()));
        print("\n");
    }
    print_status(export_name, status);
    return status == KQ_S_OK ? kExitOk : kExitFailure;
}

// content-info [--runtime] [--short] [--chars N] LIST RECORDS
int content_info(const Context& context) {
    constexpr const char* kUsage = "usage: kqhost content-info [--runtime] [--short] [--chars N] LIST RECORDS\n";
    uint32_t flags = 0, chars = 4096;
    std::vector<const std::wstring*> texts;
    for (std::size_t i = 0; i < context.arguments.size(); ++i) {
        const std::wstring& argument = context.arguments[i];
        if (argument == L"--runtime") {
            flags |= KQ_CONTENT_INFO_RUNTIME;
        } else if (argument == L"--short") {
            flags |= KQ_CONTENT_INFO_SHORT;
        } else if (argument == L"--chars" && i + 1 < context.arguments.size()) {
            const std::optional<uint32_t> number = number_argument(context.arguments[++i]);
            if (!number || *number == 0) {
                print_error(kUsage);
                return kExitUsage;
            }
            chars = *number;
        } else {
            texts.push_back(&argument);
        }
    }
    if (texts.size() != 2) {
        print_error(kUsage);
        return kExitUsage;
    }
    const auto call = find_export<decltype(KQGetContentInfo)>(context.module, "KQGetContentInfo");
    if (call == nullptr) {
        print_error("kqhost: the DLL has no KQGetContentInfo\n");
        return kExitFailure;
    }
    const std::optional<TextArgument> list = text_argument(*texts[0]), records = text_argument(*texts[1]);
    if (!list || !records) return kExitFailure;
    std::vector<wchar_t> buffer(chars, L'\0');
    const kq_status status =
        call(KQ_DRIVE_HARD_DISK, 0, list->pointer(), records->pointer(), buffer.data(), chars, flags);
    return print_text_and_status("KQGetContentInfo", status, buffer);
}

// The drive type by name or number.
std::optional<uint8_t> drive_type_argument(const std::wstring& argument) {
    const wchar_t* const names[] = {L"floppy", L"hard-disk", L"cd", L"network"};
    for (uint8_t type = 0; type < 4; ++type)
        if (argument == names[type]) return type;
    const std::optional<uint32_t> number = number_argument(argument);
    if (!number || *number > 0xFF) return std::nullopt;
    return static_cast<uint8_t>(*number);
}

// tooltip [--chars N] TYPE INDEX PATH LABEL
int tooltip(const Context& context) {
    constexpr const char* kUsage =
        "usage: kqhost tooltip [--chars N] floppy|hard-disk|cd|network|TYPE INDEX PATH LABEL\n";
    std::span<const std::wstring> arguments = context.arguments;
    uint32_t chars = 1024;
    if (arguments.size() == 6 && arguments[0] == L"--chars") {
        const std::optional<uint32_t> number = number_argument(arguments[1]);
        if (!number || *number == 0) {
            print_error(kUsage);
            return kExitUsage;
        }
        chars = *number;
        arguments = arguments.subspan(2);
    }
    const std::optional<uint8_t> type = arguments.size() == 4 ? drive_type_argument(arguments[0]) : std::nullopt;
    const std::optional<uint32_t> index = arguments.size() == 4 ? number_argument(arguments[1]) : std::nullopt;
    if (!type || !index) {
        print_error(kUsage);
        return kExitUsage;
    }
    const auto call = find_export<decltype(KQGetContentTooltip)>(context.module, "KQGetContentTooltip");
    if (call == nullptr) {
        print_error("kqhost: the DLL has no KQGetContentTooltip\n");
        return kExitFailure;
    }
    const std::optional<TextArgument> path = text_argument(arguments[2]), label = text_argument(arguments[3]);
    if (!path || !label) return kExitFailure;
    std::vector<wchar_t> buffer(chars, L'\0');
    const kq_status status = call(*type, *index, path->pointer(), label->pointer(), buffer.data(), chars);
    return print_text_and_status("KQGetContentTooltip", status, buffer);
}

constexpr Command kCommands[] = {
    {L"content-info", "content-info [OPTIONS] LIST RECORDS",
     "Print the hard-disk summary (--short: one line per disk; --runtime: RECORDS are runtime lines; --chars N: "
     "buffer size, 4096). LIST and RECORDS are each @FILE (UTF-8, LF between lines), - for none, or the text.",
     true, content_info},
    {L"tooltip", "tooltip TYPE INDEX PATH LABEL",
     "Print a drive's tooltip (--chars N first: buffer size, 1024). TYPE: floppy, hard-disk, cd, network or a "
     "number; for a hard disk PATH and LABEL are the list and records. Each is @FILE, - for none, or the text.",
     true, tooltip},
};

} // namespace

std::span<const Command> content_commands() { return kCommands; }

} // namespace kqhost
