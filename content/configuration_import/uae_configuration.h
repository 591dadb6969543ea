#pragma once
// An emulator configuration file (".uae"): UTF-8 text, one "key=value" per line.
//   - Lines end in LF, CR LF or CR; a UTF-8 byte-order mark at the start is skipped.
//   - Blanks (space, tab) around keys and values are dropped.
//   - A line whose first character is ";" or "#" is a comment; a line without "=" or with an
//     empty key is ignored, and so is a line that is not valid UTF-8 or that holds a character
//     which no XML document may hold (a control other than TAB, U+FFFE, U+FFFF).
//   - Keys compare without regard to ASCII case. A key may repeat ("hardfile2" once per
//     drive): every occurrence is kept in file order. Where one value is wanted, the last
//     occurrence counts, as it would when the emulator reads the file from top to bottom.
//   - An empty value counts as absent.

#include "content/configuration_import/whole_file.h"
#include "module/status.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kq::content {

// A safety cap, not a limit of the format: an emulator writes a few hundred lines (~20 KiB).
inline constexpr std::size_t kMaxConfigurationBytes = 1u << 20; // 1 MiB
// Status of a configuration file over the cap.
inline constexpr HResult kConfigurationTooLarge = kFileTooLarge;

class UaeConfiguration {
public:
    struct Entry {
        std::u16string key;
        std::u16string value;
    };

    // Reads the text; nothing in it is an error (unusable lines are skipped).
    static UaeConfiguration parse(std::string_view text);

    std::span<const Entry> entries() const { return entries_; }

    // The last value of `key`; nullopt when the key is absent or its last value is empty.
    std::optional<std::u16string_view> value(std::u16string_view key) const;
    // Every non-empty value of `key`, in file order.
    std::vector<std::u16string_view> values(std::u16string_view key) const;
    bool has(std::u16string_view key) const { return value(key).has_value(); }
    // Whether the value equals `expected` without regard to case (an absent key never does).
    bool is(std::u16string_view key, std::u16string_view expected) const;
    // The value read as a decimal integer (digits after it ignored); nullopt when absent or
    // when it does not begin with a number.
    std::optional<std::int32_t> number(std::u16string_view key) const;
    std::int32_t number_or(std::u16string_view key, std::int32_t fallback) const {
        return number(key).value_or(fallback);
    }
    // "true" and "yes" are true, "false" and "no" false (any case); other text is true when it
    // reads as a non-zero number. An absent key gives `fallback`.
    bool boolean(std::u16string_view key, bool fallback) const;

private:
    std::vector<Entry> entries_;
};

// Reads and parses a whole configuration file. The read failure's system error as an HRESULT
// when the file cannot be opened or read (HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) when it does not exist),
// kConfigurationTooLarge when it is over kMaxConfigurationBytes.
HResult read_uae_configuration(std::u16string_view path, UaeConfiguration& out);

} // namespace kq::content
