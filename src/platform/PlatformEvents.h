#pragma once

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl::platform {

/// Bits of the word of held modifier keys.
enum Modifier : uint32_t { noModifier = 0, shift = 1, ctrl = 2, alt = 4, meta = 8 };

/// Bits of the word of pressed mouse buttons. Further buttons take the bits from 8 on.
enum Button : uint32_t {
    noButton = 0,
    leftButton = 1,
    middleButton = 2,
    rightButton = 4,
    backButton = 8,
    forwardButton = 16
};

enum class MouseKind : int32_t { move = 0, leave = 1, down = 2, up = 3, enter = 4 };

/// One mouse event of one window.
///
/// `position` counts device pixels from the window's client origin: the receiver divides by the window's
/// scale factor and rounds down. While the mouse is captured it may lie outside. `buttons` holds the button
/// that went down or up for these two kinds, and all pressed buttons for the others.
struct MouseEvent {
    MouseKind kind = MouseKind::move;
    CmPoint position;
    uint32_t modifiers = noModifier;
    uint32_t buttons = noButton;
    int64_t time = 0; ///< ticks of `DesktopServices::getTicks`
};

/// One turn of the wheel, in notches; smooth wheels give fractions. Positive is away from the user, and to
/// the right. `position` as in `MouseEvent`.
struct WheelEvent {
    enum Flag : uint8_t { inverted = 1, invertForHorizontalScroll = 2 };

    CmPoint position;
    double deltaX = 0;
    double deltaY = 0;
    uint8_t flags = 0;
    uint32_t modifiers = noModifier;
    int64_t time = 0;
};

enum class KeyKind : uint8_t { down, up };

/// Rows of the key name table, as `KeyEvent::virtualKey` carries them. Letters and digits are their
/// upper-case character plus `characterKeyOffset`.
namespace Key {
enum : uint8_t {
    none = 0,
    backspace = 1,
    tab = 2,
    clear = 3,
    returnKey = 4,
    pause = 5,
    escape = 6,
    space = 7,
    next = 8,
    end = 9,
    home = 10,
    left = 11,
    up = 12,
    right = 13,
    down = 14,
    pageUp = 15,
    pageDown = 16,
    select = 17,
    print = 18,
    enter = 19,
    printScreen = 20,
    insert = 21,
    del = 22,
    help = 23,
    pad0 = 24,
    padMultiply = 34,
    padAdd = 35,
    padSeparator = 36,
    padSubtract = 37,
    padDecimal = 38,
    padDivide = 39,
    f1 = 40,
    f12 = 51,
    numLock = 52,
    scrollLock = 53,
    shift = 54,
    ctrl = 55,
    alt = 56,
    equals = 57,
    contextMenu = 58,
    play = 59,
    stop = 60,
    previousTrack = 61,
    nextTrack = 62,
    volumeUp = 63,
    volumeDown = 64,
    f13 = 65,
    f19 = 71,
    characterKeyOffset = 80,
};
} // namespace Key

/// A key that went down (again, while it repeats) or up. `character` is what it types with the held modifiers
/// and dead keys, as one unit of UTF-16, 0 if nothing; a text of several units comes as several events, of
/// which only the first has a `virtualKey`.
struct KeyEvent {
    KeyKind kind = KeyKind::down;
    bool isRepeat = false;
    char16_t character = 0;
    uint8_t virtualKey = Key::none;
    uint32_t modifiers = noModifier;
    int64_t time = 0;
};

} // namespace qorl::platform
