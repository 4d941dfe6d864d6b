#pragma once

#include "platform/PlatformEvents.h"
#include "platform/x11/X11Connection.h"

#include <bitset>
#include <string>
#include <vector>

struct xkb_compose_state;
struct xkb_compose_table;
struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace qorl::platform {

/// Turns key codes of the X server into key events, by the layout that the server has now.
///
/// The server tells of changes of the keyboard's state and layout by XKB events; all of them must be given to
/// `handleXkbEvent`, or a held Shift is lost when another program grabs the keyboard.
class X11Keyboard {
public:
    explicit X11Keyboard(X11Connection& connection);
    ~X11Keyboard();
    X11Keyboard(const X11Keyboard&) = delete;
    X11Keyboard& operator=(const X11Keyboard&) = delete;

    bool isUsable() const { return state_ != nullptr; }

    void handleXkbEvent(const xcb_generic_event_t& event);

    /// The events that a press of `code` makes: one, or several when a dead key ends in a longer text, or
    /// none while a dead key waits. Times are the caller's to fill.
    std::vector<KeyEvent> press(xcb_keycode_t code);
    std::vector<KeyEvent> release(xcb_keycode_t code);

    /// Forgets held keys and a waiting dead key, as when another program gets the input.
    void reset();

    uint32_t getModifiers() const;

private:
    bool loadKeymap();
    void freeKeymap();
    void selectEvents();
    void startCompose();
    uint8_t toVirtualKey(xcb_keycode_t code) const;
    std::u16string toText(xcb_keycode_t code);

    X11Connection& connection_;
    int32_t device_ = -1;
    xkb_context* context_ = nullptr;
    xkb_keymap* keymap_ = nullptr;
    xkb_state* state_ = nullptr;
    xkb_compose_table* composeTable_ = nullptr;
    xkb_compose_state* compose_ = nullptr;
    bool isComposeTried_ = false;
    std::bitset<256> down_;
};

} // namespace qorl::platform
