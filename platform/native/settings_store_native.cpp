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

using Value = std::variant<std::uint32_t, std::u16string, std::vector<std::uint8_t>>;

struct Key {
    std::u16string name;                    // the last element, as first written
    std::map<std::u16string, Value> values; // by folded value name
};

// Keys by their folded full path; a key's parents exist whenever it does.
struct Store {
    std::mutex lock;
    std::map<std::u16string, Key> keys;

    Key& create(std::u16string_view path) {
        std::size_t end = 0;
        Key* key = nullptr;
        do {
            end = path.find(u'\\', end + 1);
            const std::u16string_view prefix = path.substr(0, end);
            key = &keys[folded(prefix)];
            if (key->name.empty()) key->name = std::u16string(prefix.substr(prefix.rfind(u'\\') + 1));
        } while (end != std::u16string_view::npos);
        return *key;
    }
    Key* find(std::u16string_view path) {
        const auto found = keys.find(folded(path));
        return found == keys.end() ? nullptr : &found->second;
    }
};

Store& store() {
    static Store instance;
    return instance;
}

// HKEY_LOCAL_MACHINE's values, which only tests write.
Store& machine_store() {
    static Store instance;
    return instance;
}

bool is_below(std::u16string_view path, std::u16string_view folded_key) {
    return path.size() > folded_key.size() && path.substr(0, folded_key.size()) == folded_key &&
           path[folded_key.size()] == u'\\';
}

template <class T>
std::optional<T> read(std::u16string_view key, std::u16string_view name, Store& s = store()) {
    std::lock_guard guard(s.lock);
    const Key* found_key = s.find(key);
    if (found_key == nullptr) return std::nullopt;
    const auto found = found_key->values.find(folded(name));
    if (found == found_key->values.end() || !std::holds_alternative<T>(found->second)) return std::nullopt;
    return std::get<T>(found->second);
}

SystemError write(std::u16string_view key, std::u16string_view name, Value value) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    s.create(key).values[folded(name)] = std::move(value);
    return 0;
}

} // namespace

std::optional<std::uint32_t> read_setting_dword(std::u16string_view key, std::u16string_view name) {
    return read<std::uint32_t>(key, name);
}

std::optional<std::u16string> read_setting_string(std::u16string_view key, std::u16string_view name) {
    return read<std::u16string>(key, name);
}

std::optional<std::vector<std::uint8_t>> read_setting_binary(std::u16string_view key, std::u16string_view name) {
    return read<std::vector<std::uint8_t>>(key, name);
}

SystemError write_setting_dword(std::u16string_view key, std::u16string_view name, std::uint32_t value) {
    return write(key, name, value);
}

SystemError write_setting_string(std::u16string_view key, std::u16string_view name, std::u16string_view value) {
    return write(key, name, std::u16string(value));
}

SystemError write_setting_binary(std::u16string_view key, std::u16string_view name,
                                 const std::vector<std::uint8_t>& value) {
    return write(key, name, value);
}

SystemError delete_setting(std::u16string_view key, std::u16string_view name) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    if (Key* found = s.find(key)) found->values.erase(folded(name));
    return 0;
}

bool setting_key_exists(std::u16string_view key) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    return s.find(key) != nullptr;
}

std::vector<std::u16string> list_setting_subkeys(std::u16string_view key) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    const std::u16string parent = folded(key);
    std::vector<std::u16string> names;
    for (const auto& [path, entry] : s.keys)
        if (is_below(path, parent) && path.find(u'\\', parent.size() + 1) == std::u16string::npos)
            names.push_back(entry.name);
    return names;
}

SystemError copy_setting_tree(std::u16string_view from, std::u16string_view to) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    const std::u16string source = folded(from);
    if (s.find(source) == nullptr) return 2; // ERROR_FILE_NOT_FOUND
    std::vector<std::pair<std::u16string, Key>> copies;
    for (const auto& [path, entry] : s.keys)
        if (path == source || is_below(path, source))
            copies.emplace_back(std::u16string(to) + path.substr(source.size()), entry);
    for (auto& [path, entry] : copies) {
        Key& target = s.create(path);
        if (path.size() > to.size()) target.name = entry.name; // below the copy's root: as written
        for (auto& [name, value] : entry.values) target.values[name] = value;
    }
    return 0;
}

SystemError delete_setting_tree(std::u16string_view key) {
    Store& s = store();
    std::lock_guard guard(s.lock);
    const std::u16string target = folded(key);
    std::erase_if(s.keys, [&](const auto& entry) { return entry.first == target || is_below(entry.first, target); });
    return 0;
}

std::optional<std::u16string> read_machine_setting_string(std::u16string_view key, std::u16string_view name) {
    return read<std::u16string>(key, name, machine_store());
}

void native::set_machine_setting_string(std::u16string key, std::u16string name, std::optional<std::u16string> value) {
    Store& s = machine_store();
    std::lock_guard guard(s.lock);
    if (value) {
        s.create(key).values[folded(name)] = std::move(*value);
    } else if (Key* found = s.find(key)) {
        found->values.erase(folded(name));
    }
}

void native::clear_settings() {
    Store& s = store();
    std::lock_guard guard(s.lock);
    s.keys.clear();
}

} // namespace kq::platform
