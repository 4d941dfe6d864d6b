#pragma once

#include "platform/PlatformEvents.h"

#include <cstdint>
#include <xcb/xcb.h>

namespace qorl::platform {

/// Held keys out of the state that the server sends with events: the third and fourth free modifiers are Alt
/// and the logo key on every layout in use.
constexpr uint32_t toModifiers(uint32_t state) {
    uint32_t held = noModifier;
    if (state & XCB_MOD_MASK_SHIFT)
        held |= shift;
    if (state & XCB_MOD_MASK_CONTROL)
        held |= ctrl;
    if (state & XCB_MOD_MASK_1)
        held |= alt;
    if (state & XCB_MOD_MASK_4)
        held |= meta;
    return held;
}

/// Pressed buttons out of the same state, which knows the first three and the wheel.
constexpr uint32_t toButtons(uint32_t state) {
    uint32_t pressed = noButton;
    if (state & XCB_BUTTON_MASK_1)
        pressed |= leftButton;
    if (state & XCB_BUTTON_MASK_2)
        pressed |= middleButton;
    if (state & XCB_BUTTON_MASK_3)
        pressed |= rightButton;
    return pressed;
}

} // namespace qorl::platform
