#include "bench/xkb_keyboard.h"

#include <array>

namespace kq::bench {
namespace {

// The modifier keys tried for every key, fewest first: none, Shift, AltGr, both.
constexpr std::array<std::array<const char*, 2>, 4> kModifierSets{{{}, {"LFSH"}, {"RALT"}, {"LFSH", "RALT"}}};

} // namespace

XkbKeyboard::XkbKeyboard(const char* layout, const char* variant) {
    context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!context_) return;
    const xkb_rule_names names{"evdev", "pc105", layout, variant, nullptr};
    keymap_.reset(xkb_keymap_new_from_names(context_.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap_) return;
    compose_table_.reset(
        xkb_compose_table_new_from_locale(context_.get(), "en_US.UTF-8", XKB_COMPOSE_COMPILE_NO_FLAGS));
    if (!compose_table_) return;
    learn_strokes();
    client_ = std::make_unique<XkbClient>(keymap_.get(), compose_table_.get());
}

char32_t XkbClient::handle(XkbKeyEvent event) {
    char32_t character = 0;
    if (event.down) {
        const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_.get(), event.key);
        const bool fed = xkb_compose_state_feed(compose_.get(), symbol) == XKB_COMPOSE_FEED_ACCEPTED;
        switch (fed ? xkb_compose_state_get_status(compose_.get()) : XKB_COMPOSE_NOTHING) {
        case XKB_COMPOSE_NOTHING: character = xkb_state_key_get_utf32(state_.get(), event.key); break;
        case XKB_COMPOSE_COMPOSING: break;
        case XKB_COMPOSE_COMPOSED:
            character = xkb_keysym_to_utf32(xkb_compose_state_get_one_sym(compose_.get()));
            xkb_compose_state_reset(compose_.get());
            break;
        case XKB_COMPOSE_CANCELLED: xkb_compose_state_reset(compose_.get()); break;
        }
    }
    xkb_state_update_key(state_.get(), event.key, event.down ? XKB_KEY_DOWN : XKB_KEY_UP);
    return character;
}

std::span<const XkbKeyEvent> XkbKeyboard::strokes(char32_t character) const {
    const auto found = strokes_.find(character == U'\n' ? U'\r' : character);
    if (found == strokes_.end()) return {};
    return std::span(events_).subspan(found->second.first, found->second.count);
}

void XkbKeyboard::learn_strokes() {
    // Runs key events through a fresh client: the characters they give, and whether a dead key
    // waits at the end.
    const auto type = [&](std::span<const XkbKeyEvent> first, std::span<const XkbKeyEvent> second) {
        XkbClient client(keymap_.get(), compose_table_.get());
        std::u32string characters;
        for (const auto events : {first, second})
            for (const XkbKeyEvent event : events)
                if (const char32_t character = client.handle(event); character != 0) characters += character;
        return std::pair(characters, client.composing());
    };
    const auto learn = [&](const std::u32string& characters, std::span<const XkbKeyEvent> first,
                           std::span<const XkbKeyEvent> second) {
        if (characters.size() != 1 || strokes_.count(characters[0]) != 0) return;
        strokes_[characters[0]] = {static_cast<std::uint32_t>(events_.size()),
                                   static_cast<std::uint32_t>(first.size() + second.size())};
        events_.insert(events_.end(), first.begin(), first.end());
        events_.insert(events_.end(), second.begin(), second.end());
    };

    // Every key under every set of modifiers: modifiers pressed, the key pressed and released,
    // modifiers released.
    std::vector<std::vector<XkbKeyEvent>> direct, dead;
    const xkb_keycode_t lowest = xkb_keymap_min_keycode(keymap_.get()), highest = xkb_keymap_max_keycode(keymap_.get());
    for (const auto& modifiers : kModifierSets) {
        std::vector<xkb_keycode_t> held;
        for (const char* name : modifiers)
            if (name != nullptr && key(name) != XKB_KEYCODE_INVALID) held.push_back(key(name));
        for (xkb_keycode_t code = lowest; code <= highest; ++code) {
            std::vector<XkbKeyEvent> events;
            for (const xkb_keycode_t modifier : held) events.push_back({modifier, true});
            events.push_back({code, true});
            events.push_back({code, false});
            for (auto modifier = held.rbegin(); modifier != held.rend(); ++modifier)
                events.push_back({*modifier, false});
            const auto [characters, composing] = type(events, {});
            learn(characters, events, {});
            if (characters.size() == 1)
                direct.push_back(std::move(events));
            else if (composing)
                dead.push_back(std::move(events));
        }
    }
    // Every dead key followed by every key.
    for (const auto& first : dead)
        for (const auto& second : direct) learn(type(first, second).first, first, second);
}

} // namespace kq::bench
