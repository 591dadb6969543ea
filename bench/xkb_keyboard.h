#pragma once
// The peer of the keyboard benchmarks: libxkbcommon, the keyboard library of Wayland and X
// clients, with a layout compiled from the system's XKB data and the en_US.UTF-8 compose table
// for dead keys. A key event is handled as a client handles it: on a press the keysym is taken
// and fed to the compose state, and the character comes from the composition or the key; then
// the keyboard state is updated.
//
// For typing, the keyboard also knows which key events type a character: a table built once
// by trying every key under no modifier, Shift, AltGr and both (the first that types a
// character keeps it), then every dead key followed by every key for what is still missing.

#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace kq::bench {

struct XkbDeleter {
    void operator()(xkb_context* p) const { xkb_context_unref(p); }
    void operator()(xkb_keymap* p) const { xkb_keymap_unref(p); }
    void operator()(xkb_state* p) const { xkb_state_unref(p); }
    void operator()(xkb_compose_table* p) const { xkb_compose_table_unref(p); }
    void operator()(xkb_compose_state* p) const { xkb_compose_state_unref(p); }
};
template <class T>
using XkbPointer = std::unique_ptr<T, XkbDeleter>;

struct XkbKeyEvent {
    xkb_keycode_t key;
    bool down;
};

// A keyboard state and a compose state that handle key events as a client does.
class XkbClient {
public:
    XkbClient(xkb_keymap* keymap, xkb_compose_table* compose_table)
        : state_(xkb_state_new(keymap)), compose_(xkb_compose_state_new(compose_table, XKB_COMPOSE_STATE_NO_FLAGS)) {}
    bool ok() const { return state_ && compose_; }

    // Handles one key event; returns the character that a press gives, 0 for none (a modifier,
    // a dead key waiting for its partner, a release).
    char32_t handle(XkbKeyEvent event);
    // Whether a dead key waits for its partner.
    bool composing() const { return xkb_compose_state_get_status(compose_.get()) == XKB_COMPOSE_COMPOSING; }

private:
    XkbPointer<xkb_state> state_;
    XkbPointer<xkb_compose_state> compose_;
};

class XkbKeyboard {
public:
    // A layout and variant of the XKB rules ("us", "intl"); check ok() afterwards.
    XkbKeyboard(const char* layout, const char* variant);
    bool ok() const { return client_ && client_->ok(); }

    // The key of an XKB key name ("AC01"); XKB_KEYCODE_INVALID when there is none.
    xkb_keycode_t key(const char* name) const { return xkb_keymap_key_by_name(keymap_.get(), name); }
    // The keyboard's own client, for the events of a benchmark.
    XkbClient& client() { return *client_; }

    // The key events that type `character` from the state where no key is held; empty when
    // the layout cannot type it. A line feed is typed as Return.
    std::span<const XkbKeyEvent> strokes(char32_t character) const;

private:
    void learn_strokes();

    XkbPointer<xkb_context> context_;
    XkbPointer<xkb_keymap> keymap_;
    XkbPointer<xkb_compose_table> compose_table_;
    std::unique_ptr<XkbClient> client_;
    std::vector<XkbKeyEvent> events_; // every character's strokes, one after another
    struct Span {
        std::uint32_t first, count;
    };
    std::unordered_map<char32_t, Span> strokes_;
};

} // namespace kq::bench
