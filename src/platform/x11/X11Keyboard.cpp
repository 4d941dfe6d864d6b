#include "platform/x11/X11Keyboard.h"

#include "platform/System.h"

#include <algorithm>
#include <iterator>

// A field of this C header is named by a keyword of C++.
#define explicit explicitActions
#include <xcb/xkb.h>
#undef explicit

#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace qorl::platform {

namespace {

struct KeyRow {
    xkb_keysym_t symbol;
    uint8_t virtualKey;
};

constexpr KeyRow namedKeys[] = {
    {XKB_KEY_BackSpace, Key::backspace},
    {XKB_KEY_Tab, Key::tab},
    {XKB_KEY_ISO_Left_Tab, Key::tab},
    {XKB_KEY_KP_Tab, Key::tab},
    {XKB_KEY_Clear, Key::clear},
    {XKB_KEY_Return, Key::returnKey},
    {XKB_KEY_Pause, Key::pause},
    {XKB_KEY_Escape, Key::escape},
    {XKB_KEY_space, Key::space},
    {XKB_KEY_KP_Space, Key::space},
    {XKB_KEY_End, Key::end},
    {XKB_KEY_Home, Key::home},
    {XKB_KEY_Left, Key::left},
    {XKB_KEY_Up, Key::up},
    {XKB_KEY_Right, Key::right},
    {XKB_KEY_Down, Key::down},
    {XKB_KEY_Page_Up, Key::pageUp},
    {XKB_KEY_Page_Down, Key::pageDown},
    {XKB_KEY_Select, Key::select},
    {XKB_KEY_KP_Enter, Key::enter},
    {XKB_KEY_Print, Key::printScreen},
    {XKB_KEY_Sys_Req, Key::printScreen},
    {XKB_KEY_Insert, Key::insert},
    {XKB_KEY_Delete, Key::del},
    {XKB_KEY_Help, Key::help},
    {XKB_KEY_KP_End, Key::end},
    {XKB_KEY_KP_Home, Key::home},
    {XKB_KEY_KP_Left, Key::left},
    {XKB_KEY_KP_Up, Key::up},
    {XKB_KEY_KP_Right, Key::right},
    {XKB_KEY_KP_Down, Key::down},
    {XKB_KEY_KP_Page_Up, Key::pageUp},
    {XKB_KEY_KP_Page_Down, Key::pageDown},
    {XKB_KEY_KP_Begin, Key::clear},
    {XKB_KEY_KP_Insert, Key::insert},
    {XKB_KEY_KP_Delete, Key::del},
    {XKB_KEY_KP_Multiply, Key::padMultiply},
    {XKB_KEY_KP_Add, Key::padAdd},
    {XKB_KEY_KP_Separator, Key::padSeparator},
    {XKB_KEY_KP_Subtract, Key::padSubtract},
    {XKB_KEY_KP_Decimal, Key::padDecimal},
    {XKB_KEY_KP_Divide, Key::padDivide},
    {XKB_KEY_KP_Equal, Key::equals},
    {XKB_KEY_Num_Lock, Key::numLock},
    {XKB_KEY_Scroll_Lock, Key::scrollLock},
    {XKB_KEY_Shift_L, Key::shift},
    {XKB_KEY_Shift_R, Key::shift},
    {XKB_KEY_Control_L, Key::ctrl},
    {XKB_KEY_Control_R, Key::ctrl},
    {XKB_KEY_Alt_L, Key::alt},
    {XKB_KEY_Alt_R, Key::alt},
    {XKB_KEY_Meta_L, Key::alt},
    {XKB_KEY_Meta_R, Key::alt},
    {XKB_KEY_Menu, Key::contextMenu},
    {XKB_KEY_XF86AudioPlay, Key::play},
    {XKB_KEY_XF86AudioStop, Key::stop},
    {XKB_KEY_XF86AudioPrev, Key::previousTrack},
    {XKB_KEY_XF86AudioNext, Key::nextTrack},
    {XKB_KEY_XF86AudioRaiseVolume, Key::volumeUp},
    {XKB_KEY_XF86AudioLowerVolume, Key::volumeDown},
};

uint8_t fromRange(xkb_keysym_t symbol, xkb_keysym_t first, xkb_keysym_t last, uint8_t base) {
    return static_cast<uint8_t>(symbol >= first && symbol <= last ? base + (symbol - first) : 0);
}

/// Letters, digits and the keys of the table; `Key::none` for all other symbols.
uint8_t fromSymbol(xkb_keysym_t symbol) {
    constexpr uint8_t offset = Key::characterKeyOffset;
    const uint8_t ranges[] = {
        fromRange(symbol, XKB_KEY_a, XKB_KEY_z, offset + 'A'),
        fromRange(symbol, XKB_KEY_A, XKB_KEY_Z, offset + 'A'),
        fromRange(symbol, XKB_KEY_0, XKB_KEY_9, offset + '0'),
        fromRange(symbol, XKB_KEY_KP_0, XKB_KEY_KP_9, Key::pad0),
        fromRange(symbol, XKB_KEY_F1, XKB_KEY_F12, Key::f1),
        fromRange(symbol, XKB_KEY_F13, XKB_KEY_F19, Key::f13),
    };
    if (const uint8_t key = *std::max_element(std::begin(ranges), std::end(ranges)); key != Key::none)
        return key;
    const auto* row = std::find_if(std::begin(namedKeys), std::end(namedKeys),
                                   [symbol](const KeyRow& candidate) { return candidate.symbol == symbol; });
    return row == std::end(namedKeys) ? static_cast<uint8_t>(Key::none) : row->virtualKey;
}

void append(std::u16string& text, uint32_t character) {
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
        return;
    }
    text += static_cast<char16_t>(0xD7C0 + (character >> 10));
    text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
}

bool isDead(xkb_keysym_t symbol) {
    return (symbol >= XKB_KEY_dead_grave && symbol <= XKB_KEY_dead_longsolidusoverlay) ||
           symbol == XKB_KEY_Multi_key;
}

/// The first symbol of a key at a level of a layout.
xkb_keysym_t symbolAt(xkb_keymap* keymap, xcb_keycode_t code, xkb_layout_index_t layout,
                      xkb_level_index_t level) {
    const xkb_keysym_t* symbols = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap, code, layout, level, &symbols);
    return count == 1 ? symbols[0] : static_cast<xkb_keysym_t>(XKB_KEY_NoSymbol);
}

std::u16string fromUtf8(const std::string& text) {
    std::u16string result;
    for (size_t i = 0; i < text.size();) {
        const auto lead = static_cast<uint8_t>(text[i]);
        const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        uint32_t character = more == 0 ? lead : lead & (0x3F >> more);
        for (int k = 1; k <= more && i + static_cast<size_t>(k) < text.size(); ++k)
            character = character << 6 | (static_cast<uint8_t>(text[i + static_cast<size_t>(k)]) & 0x3F);
        append(result, character);
        i += static_cast<size_t>(more) + 1;
    }
    return result;
}

/// Control characters are told by their virtual keys.
bool isTyped(uint32_t character) {
    return character >= 0x20 && character != 0x7F;
}

} // namespace

X11Keyboard::X11Keyboard(X11Connection& connection) : connection_(connection) {
    context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!context_)
        return;
    device_ = xkb_x11_get_core_keyboard_device_id(connection_);
    if (device_ >= 0 && loadKeymap())
        selectEvents();
}

X11Keyboard::~X11Keyboard() {
    freeKeymap();
    if (compose_)
        xkb_compose_state_unref(compose_);
    if (composeTable_)
        xkb_compose_table_unref(composeTable_);
    if (context_)
        xkb_context_unref(context_);
}

void X11Keyboard::freeKeymap() {
    if (state_)
        xkb_state_unref(state_);
    if (keymap_)
        xkb_keymap_unref(keymap_);
    state_ = nullptr;
    keymap_ = nullptr;
}

bool X11Keyboard::loadKeymap() {
    freeKeymap();
    keymap_ = xkb_x11_keymap_new_from_device(context_, connection_, device_, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (keymap_)
        state_ = xkb_x11_state_new_from_device(keymap_, connection_, device_);
    return state_ != nullptr;
}

void X11Keyboard::selectEvents() {
    constexpr uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr uint16_t parts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                               XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_EXPLICIT_COMPONENTS |
                               XCB_XKB_MAP_PART_KEY_ACTIONS | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                               XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    const auto device = static_cast<xcb_xkb_device_spec_t>(device_);
    xcb_xkb_select_events(connection_, device, events, 0, events, parts, parts, nullptr);
    constexpr uint32_t repeat = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    xcb_discard_reply(connection_,
                      xcb_xkb_per_client_flags(connection_, device, repeat, repeat, 0, 0, 0).sequence);
}

void X11Keyboard::handleXkbEvent(const xcb_generic_event_t& event) {
    // The kind stands where other events have their detail.
    switch (event.pad0) {
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
    case XCB_XKB_MAP_NOTIFY: loadKeymap(); break;
    case XCB_XKB_STATE_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event);
        if (state_ && change.deviceID == device_) {
            xkb_state_update_mask(state_, change.baseMods, change.latchedMods, change.lockedMods,
                                  static_cast<xkb_layout_index_t>(change.baseGroup),
                                  static_cast<xkb_layout_index_t>(change.latchedGroup), change.lockedGroup);
        }
        break;
    }
    default: break;
    }
}

uint8_t X11Keyboard::toVirtualKey(xcb_keycode_t code) const {
    const uint8_t key = fromSymbol(xkb_state_key_get_one_sym(state_, code));
    if (key != Key::none)
        return key;
    // A key is known by its letter or digit whatever Shift makes of it, and, where the layout has neither, by
    // that of the first layout that has.
    const xkb_layout_index_t own = xkb_state_key_get_layout(state_, code);
    const xkb_layout_index_t count = xkb_keymap_num_layouts_for_key(keymap_, code);
    for (xkb_layout_index_t i = 0; i <= count; ++i) {
        const xkb_layout_index_t layout = i == 0 ? own : i - 1;
        for (xkb_level_index_t level = 0; level < 2; ++level) {
            if (const uint8_t found = fromSymbol(symbolAt(keymap_, code, layout, level)); found != Key::none)
                return found;
        }
    }
    return Key::none;
}

void X11Keyboard::startCompose() {
    isComposeTried_ = true;
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (getEnvironment(name, locale) && !locale.empty())
            break;
    }
    composeTable_ = xkb_compose_table_new_from_locale(context_, locale.empty() ? "C" : locale.c_str(),
                                                      XKB_COMPOSE_COMPILE_NO_FLAGS);
    if (composeTable_)
        compose_ = xkb_compose_state_new(composeTable_, XKB_COMPOSE_STATE_NO_FLAGS);
}

std::u16string X11Keyboard::toText(xcb_keycode_t code) {
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_, code);
    // The table takes milliseconds to read: it waits for the first dead key.
    if (isDead(symbol) && !isComposeTried_)
        startCompose();
    if (compose_ && xkb_compose_state_feed(compose_, symbol) == XKB_COMPOSE_FEED_ACCEPTED) {
        switch (xkb_compose_state_get_status(compose_)) {
        case XKB_COMPOSE_COMPOSING: return {};
        case XKB_COMPOSE_CANCELLED: xkb_compose_state_reset(compose_); return {};
        case XKB_COMPOSE_COMPOSED: {
            std::string text(static_cast<size_t>(xkb_compose_state_get_utf8(compose_, nullptr, 0)), '\0');
            xkb_compose_state_get_utf8(compose_, text.data(), text.size() + 1);
            xkb_compose_state_reset(compose_);
            return fromUtf8(text);
        }
        default: break;
        }
    }
    std::u16string text;
    if (const uint32_t character = xkb_keysym_to_utf32(symbol); isTyped(character))
        append(text, character);
    return text;
}

std::vector<KeyEvent> X11Keyboard::press(xcb_keycode_t code) {
    if (!state_)
        return {};
    KeyEvent event;
    event.isRepeat = down_.test(code);
    event.virtualKey = toVirtualKey(code);
    event.modifiers = getModifiers();
    down_.set(code);
    const std::u16string text = toText(code);
    event.character = text.empty() ? u'\0' : text.front();
    if (text.empty() && event.virtualKey == Key::none)
        return {};
    std::vector<KeyEvent> events = {event};
    event.virtualKey = Key::none;
    for (size_t i = 1; i < text.size(); ++i) {
        event.character = text[i];
        events.push_back(event);
    }
    return events;
}

std::vector<KeyEvent> X11Keyboard::release(xcb_keycode_t code) {
    if (!state_)
        return {};
    KeyEvent event;
    event.kind = KeyKind::up;
    event.virtualKey = toVirtualKey(code);
    event.modifiers = getModifiers();
    down_.reset(code);
    const uint32_t character = xkb_keysym_to_utf32(xkb_state_key_get_one_sym(state_, code));
    if (isTyped(character) && character < 0x10000)
        event.character = static_cast<char16_t>(character);
    if (event.character == 0 && event.virtualKey == Key::none)
        return {};
    return {event};
}

void X11Keyboard::reset() {
    down_.reset();
    if (compose_)
        xkb_compose_state_reset(compose_);
}

uint32_t X11Keyboard::getModifiers() const {
    struct Row {
        const char* name;
        uint32_t modifier;
    };
    static constexpr Row rows[] = {{XKB_MOD_NAME_SHIFT, Modifier::shift},
                                   {XKB_MOD_NAME_CTRL, Modifier::ctrl},
                                   {XKB_MOD_NAME_ALT, Modifier::alt},
                                   {XKB_MOD_NAME_LOGO, Modifier::meta}};
    uint32_t held = noModifier;
    for (const Row& row : rows) {
        if (state_ && xkb_state_mod_name_is_active(state_, row.name, XKB_STATE_MODS_EFFECTIVE) == 1)
            held |= row.modifier;
    }
    return held;
}

} // namespace qorl::platform
