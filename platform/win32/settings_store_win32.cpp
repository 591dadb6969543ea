#include "platform/settings_store.h"

#include <windows.h>

#include <string>

namespace kq::platform {
namespace {

// Registry names need their terminator.
std::wstring terminated(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

class OpenKey {
public:
    OpenKey(std::u16string_view key, REGSAM access, bool create) {
        const std::wstring path = terminated(key);
        error_ = create
                     ? RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, access, nullptr, &key_, nullptr)
                     : RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, access, &key_);
        if (error_ != ERROR_SUCCESS) key_ = nullptr;
    }
    ~OpenKey() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    HKEY get() const { return key_; }
    LSTATUS error() const { return error_; }

private:
    HKEY key_ = nullptr;
    LSTATUS error_ = ERROR_SUCCESS;
};

std::optional<std::u16string> read_string(HKEY root, std::u16string_view key, std::u16string_view name) {
    const std::wstring key_path = terminated(key), value_name = terminated(name);
    constexpr DWORD kTypes = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    for (;;) { // the value may grow between the size query and the read
        DWORD size = 0;
        if (RegGetValueW(root, key_path.c_str(), value_name.c_str(), kTypes, nullptr, nullptr, &size) != ERROR_SUCCESS)
            return std::nullopt;
        std::wstring value(size / sizeof(wchar_t) + 1, L'\0');
        size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
        const LSTATUS read =
            RegGetValueW(root, key_path.c_str(), value_name.c_str(), kTypes, nullptr, value.data(), &size);
        if (read == ERROR_MORE_DATA) continue;
        if (read != ERROR_SUCCESS) return std::nullopt;
        value.resize(wcsnlen(value.c_str(), value.size()));
        return std::u16string(value.begin(), value.end());
    }
}

} // namespace

std::optional<std::uint32_t> read_setting_dword(std::u16string_view key, std::u16string_view name) {
    DWORD value = 0, size = sizeof value;
    if (RegGetValueW(HKEY_CURRENT_USER, terminated(key).c_str(), terminated(name).c_str(), RRF_RT_REG_DWORD, nullptr,
                     &value, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

std::optional<std::u16string> read_setting_string(std::u16string_view key, std::u16string_view name) {
    return read_string(HKEY_CURRENT_USER, key, name);
}

std::optional<std::u16string> read_machine_setting_string(std::u16string_view key, std::u16string_view name) {
    return read_string(HKEY_LOCAL_MACHINE, key, name);
}

SystemError write_setting_dword(std::u16string_view key, std::u16string_view name, std::uint32_t value) {
    const OpenKey open(key, KEY_SET_VALUE, true);
    if (open.get() == nullptr) return static_cast<SystemError>(open.error());
    const DWORD data = value;
    return static_cast<SystemError>(RegSetValueExW(open.get(), terminated(name).c_str(), 0, REG_DWORD,
                                                   reinterpret_cast<const BYTE*>(&data), sizeof data));
}

SystemError write_setting_string(std::u16string_view key, std::u16string_view name, std::u16string_view value) {
    const OpenKey open(key, KEY_SET_VALUE, true);
    if (open.get() == nullptr) return static_cast<SystemError>(open.error());
    const std::wstring data = terminated(value);
    return static_cast<SystemError>(RegSetValueExW(open.get(), terminated(name).c_str(), 0, REG_SZ,
                                                   reinterpret_cast<const BYTE*>(data.c_str()),
                                                   static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t))));
}

SystemError delete_setting(std::u16string_view key, std::u16string_view name) {
    const OpenKey open(key, KEY_SET_VALUE, false);
    if (open.get() == nullptr)
        return open.error() == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : static_cast<SystemError>(open.error());
    const LSTATUS deleted = RegDeleteValueW(open.get(), terminated(name).c_str());
    return deleted == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : static_cast<SystemError>(deleted);
}

std::optional<std::vector<std::uint8_t>> read_setting_binary(std::u16string_view key, std::u16string_view name) {
    const std::wstring key_path = terminated(key), value_name = terminated(name);
    for (;;) {
        DWORD size = 0;
        if (RegGetValueW(HKEY_CURRENT_USER, key_path.c_str(), value_name.c_str(), RRF_RT_REG_BINARY, nullptr, nullptr,
                         &size) != ERROR_SUCCESS)
            return std::nullopt;
        std::vector<std::uint8_t> value(size);
        const LSTATUS read = RegGetValueW(HKEY_CURRENT_USER, key_path.c_str(), value_name.c_str(), RRF_RT_REG_BINARY,
                                          nullptr, value.data(), &size);
        if (read == ERROR_MORE_DATA) continue;
        if (read != ERROR_SUCCESS) return std::nullopt;
        value.resize(size);
        return value;
    }
}

SystemError write_setting_binary(std::u16string_view key, std::u16string_view name,
                                 const std::vector<std::uint8_t>& value) {
    const OpenKey open(key, KEY_SET_VALUE, true);
    if (open.get() == nullptr) return static_cast<SystemError>(open.error());
    return static_cast<SystemError>(RegSetValueExW(open.get(), terminated(name).c_str(), 0, REG_BINARY, value.data(),
                                                   static_cast<DWORD>(value.size())));
}

bool setting_key_exists(std::u16string_view key) { return OpenKey(key, KEY_READ, false).get() != nullptr; }

std::vector<std::u16string> list_setting_subkeys(std::u16string_view key) {
    std::vector<std::u16string> names;
    const OpenKey open(key, KEY_ENUMERATE_SUB_KEYS, false);
    if (open.get() == nullptr) return names;
    for (DWORD index = 0;; ++index) {
        wchar_t name[256]; // the longest key name the registry allows, and its NUL
        DWORD length = 256;
        const LSTATUS found = RegEnumKeyExW(open.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (found == ERROR_NO_MORE_ITEMS) break;
        if (found != ERROR_SUCCESS) continue;
        names.emplace_back(reinterpret_cast<const char16_t*>(name), length);
    }
    return names;
}

SystemError copy_setting_tree(std::u16string_view from, std::u16string_view to) {
    const OpenKey source(from, KEY_READ, false);
    if (source.get() == nullptr) return static_cast<SystemError>(source.error());
    const OpenKey target(to, KEY_ALL_ACCESS, true);
    if (target.get() == nullptr) return static_cast<SystemError>(target.error());
    return static_cast<SystemError>(RegCopyTreeW(source.get(), nullptr, target.get()));
}

SystemError delete_setting_tree(std::u16string_view key) {
    const LSTATUS deleted = RegDeleteTreeW(HKEY_CURRENT_USER, terminated(key).c_str());
    return deleted == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : static_cast<SystemError>(deleted);
}

} // namespace kq::platform
