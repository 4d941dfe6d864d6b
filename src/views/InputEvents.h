#pragma once

#include "platform/PlatformEvents.h"

#include <qorl/Geometry.h>

#include <cstdint>

namespace qorl {

class UView;

/// What every event record that is handed to listeners begins with. The view may be gone when the record is
/// looked at later; its id is never used again.
struct EventHead {
    UView* view = nullptr;
    uint64_t viewId = 0;
};

/// A press, release or move as the `mouseListeners` of a view hear it. Sizes and position in client
/// coordinates. The words of held keys and buttons are the platform's (`platform::Modifier`,
/// `platform::Button`); key records use other bits (`UKeyCode::Modifier`).
struct MouseEvent {
    EventHead head;
    int32_t clientWidth = 0;
    int32_t clientHeight = 0;
    CmPoint position;
    uint32_t modifiers = platform::noModifier;
    uint32_t buttons = platform::noButton;
    bool isDoubleClick = false;
};

/// A press and a release that the window's click tracker took for one click. `position` in client
/// coordinates.
struct ClickEvent {
    EventHead head;
    CmPoint position;
    uint32_t modifiers = platform::noModifier;
    uint32_t buttons = platform::noButton;
    bool isDoubleClick = false;
};

/// One turn of the wheel. Distances in notches, fractional for smooth wheels; away from the user and to the
/// right are positive.
struct WheelEvent {
    using Flag = platform::WheelEvent::Flag;

    EventHead head;
    bool handled = false;
    uint8_t flags = 0; ///< of `Flag`
    double deltaX = 0;
    double deltaY = 0;
};

} // namespace qorl
