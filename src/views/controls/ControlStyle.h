#pragma once

#include <cstdint>

namespace qorl {

/// Bits of the style word that mean the same on every control that knows them.
namespace ControlStyle {
enum : uint32_t {
    immediate = 0x100,
    hideInactive = 0x200,
    rollover = 0x400,
    dimmable = 0x800,
    noDraw = 0x1000,
    modifiedClick = 0x2000,
    doubleClick = 0x4000,
    clickThrough = 0x8000,
    dragTransparent = 0x10000,
    shaped = 0x20000,
    scheme = 0x40000,
    fireCommand = 0x80000,
    respectWidth = 0x200000,
    respectHeight = 0x400000,
    invert = 0x800000,
    offOnRemove = 0x1000000,
    blend = 0x2000000,
    sizable = 0x4000000,
    autoWidth = 0x8000000,
    autoTextColor = 0x10000000,
    allCaps = 0x20000000,
    edit = 0x40000000,
};
} // namespace ControlStyle

/// What a switch does when it is pressed: the low bits of its style word.
enum class SwitchBehaviour : uint32_t {
    push = 0,
    onOff = 1,
    on = 2,
    off = 3,
    button = 4,
    increment = 5,
    decrement = 6,
    menu = 7,
    commandMenu = 8,
    repeat = 9,
    multiple = 10,
    notify = 11,
    postMessage = 12,
};
constexpr uint32_t switchBehaviourMask = 0xF;

/// Bits of the style word of sliders.
namespace SliderStyle {
enum : uint32_t {
    vertical = 0x1,
    verticalSmall = 0x2,
    verticalSmallReversed = 0x4,
    horizontal = 0x8,
    horizontalSmall = 0x10,
    horizontalSmallReversed = 0x20,
    anyVertical = 0x7,
    anyHorizontal = 0x38,
    anyReversed = 0x24,
    noReverse = 0x40,
    jump = 0x80,
    touch = 0x100,
    ramp = 0x200,
    border = 0x400,
    popup = 0x800,
    volume = 0x1000,
    mouseTransparent = 0x2000,
    relative = 0x4000,
    messageLoop = 0x8000,
    lightStripLinear = 0x20000,
    lightStripLinearMax = 0x40000,
    lightStripBilinear = 0x80000,
    lightStripAuto = 0x100000,
    anyLightStrip = 0x1E0000,
    invert = 0x400000,
    noBackground = 0x800000,
    tiled = 0x1000000,
    segments = 0x2000000,
    showValue = 0x4000000,
    lightStripHandle = 0x40000000,
};
} // namespace SliderStyle

/// Bits of the style word of texts and of the controls built on them.
namespace TextStyle {
enum : uint32_t {
    border = 0x1,
    noTitle = 0x2,
    titleRight = 0x4,
    hideInactive = 0x8,
    sizeDisplay = 0x10,
    led = 0x20,
    autoTextColor = 0x40,
    fitString = 0x80,
    fitLeftString = 0x100,
    noNavigation = 0x200,
    transparent = 0x400,
    showDefault = 0x800,
    doubleClick = 0x1000,
    autoTooltip = 0x2000,
    noDraw = 0x4000,
    fitPath = 0x10000,
    rightClick = 0x20000,
    autoWidth = 0x40000,
    immediate = 0x80000,
    alwaysNotify = 0x100000,
};
} // namespace TextStyle

/// Bits of the style word of check boxes.
namespace CheckBoxStyle {
enum : uint32_t { cross = 1, radio = 2, useFont = 4, push = 8 };
} // namespace CheckBoxStyle

/// Where a text stands in its view, as skins write it. No horizontal bit centres, and so does no vertical
/// one.
namespace TextJust {
enum : uint32_t { left = 1, right = 2, top = 0x10, bottom = 0x20, wordWrap = 0x40 };
} // namespace TextJust

} // namespace qorl
