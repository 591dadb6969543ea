#include "platform/settings_store.h"
#include "platform/native/native_controls.h"

#include "common/compare.h"

#include <map>
#include <mutex>
#include <variant>

namespace kq::platform {
namespace {

// Names fold to lower case, so that they compare as the registry compares them.
std::u16string folded(std::u16string_view name) {
    std::u16string out(name);
    for (char16_t& c : out) c = ascii_lower(c);
    return out;
}

using Value = std::variant<std::uint32_t, std::u16string>;

struct Store {
    std::mutex lock;
    std::map<std::u16string, std::map<std::u16string, Value>> keys;  // folded key -> values
};

Store& store() {
    static Store instance;
    return instance;
}

template <class T>
std::optional<T> read(std::u16string_view key, std::u16string_view name) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    const auto found_key = s.keys.find(folded(key));
    if (found_key == s.keys.end()) return std::nullopt;
    const auto found = found_key->second.find(folded(name));
    if (found == found_key->second.end() || !std::holds_alternative<T>(found->second)) return std::nullopt;
    return std::get<T>(found->second);
}

SystemError write(std::u16string_view key, std::u16string_view name, Value value) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    s.keys[folded(key)][folded(name)] = std::move(value);
    return 0;
}

} // namespace

std::optional<std::uint32_t> read_setting_dword(std::u16string_view key, std::u16string_view name) {
    return read<std::uint32_t>(key, name);
}

std::optional<std::u16string> read_setting_string(std::u16string_view key, std::u16string_view name) {
    return read<std::u16string>(key, name);
}

SystemError write_setting_dword(std::u16string_view key, std::u16string_view name, std::uint32_t value) {
    return write(key, name, value);
}

SystemError write_setting_string(std::u16string_view key, std::u16string_view name,
                                 std::u16string_view value) {
    return write(key, name, std::u16string(value));
}

SystemError delete_setting(std::u16string_view key, std::u16string_view name) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    const auto found_key = s.keys.find(folded(key));
    if (found_key != s.keys.end()) found_key->second.erase(folded(name));
    return 0;
}

void native::clear_settings() {
    Store& s = store();
    std::lock_guard guard(s.lock);
    s.keys.clear();
}

} // namespace kq::platform
