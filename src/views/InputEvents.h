#pragma once

#include <cstdint>

#include <qorl/Geometry.h>

namespace qorl {

class UView;

/// Bits of the word of pressed mouse buttons. Further bits of the platform are passed on.
enum MouseButton : uint32_t { noButton = 0, leftButton = 1, middleButton = 2, rightButton = 4 };

/// Bits of the platform's word of held keys, as mouse and wheel events carry it. Key records use other bits
/// (`UKeyCode::Modifier`).
enum HeldKey : uint32_t { heldNone = 0, heldShift = 1, heldCtrl = 2, heldAlt = 4, heldMeta = 8 };

/// The calls by which the platform tells a window of the mouse.
enum class MouseEventKind : int32_t { move = 0, leave = 1, down = 2, up = 3, enter = 4 };

/// One mouse notification of the platform for one window. `position` is in pixels of the window's surface, not yet
/// divided by the scale factor. `time` in milliseconds of the user-interface clock.
struct WindowMouseEvent {
    MouseEventKind kind = MouseEventKind::move;
    CmPoint position;
    uint32_t modifiers = heldNone;
    uint32_t buttons = noButton;
    int64_t time = 0;
};

/// What every event record that is handed to listeners begins with. The view may be gone when the record is looked
/// at later; its id is never used again.
struct EventHead {
    UView* view = nullptr;
    uint64_t viewId = 0;
};

/// A press, release or move as the `mouseListeners` of a view hear it. Sizes and position in client coordinates.
struct MouseEvent {
    EventHead head;
    int32_t clientWidth = 0;
    int32_t clientHeight = 0;
    CmPoint position;
    uint32_t modifiers = heldNone;
    uint32_t buttons = noButton;
    bool isDoubleClick = false;
};

/// A press and a release that the window's click tracker took for one click. `position` in client coordinates.
struct ClickEvent {
    EventHead head;
    CmPoint position;
    uint32_t modifiers = heldNone;
    uint32_t buttons = noButton;
    bool isDoubleClick = false;
};

/// One turn of the wheel. Distances in notches, fractional for smooth wheels; away from the user and to the right
/// are positive.
struct WheelEvent {
    enum Flag : uint8_t { inverted = 1, invertForHorizontalScroll = 2 };

    EventHead head;
    bool handled = false;
    uint8_t flags = 0;
    double deltaX = 0;
    double deltaY = 0;
};

} // namespace qorl
