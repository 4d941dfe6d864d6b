#pragma once

#include <cstdint>
#include <string_view>

namespace qorl {

/// The colours of a scheme. The order is part of the interface: scripts address them by number.
namespace SchemeColor {
enum Key : int32_t {
    buttonface,
    buttonhilight,
    buttontop,
    buttonbottom,
    buttontop2,
    buttonbottom2,
    frame,
    frametop,
    framebottom,
    frame2,
    frametop2,
    framebottom2,
    datafieldback,
    datafieldfore,
    datafieldforeinactive,
    datafieldtop,
    datafieldbottom,
    windowback,
    dialogback,
    panelback,
    labelcolor,
    labelcolorinactive,
    workarea,
    multipane,
    focus,
    select,
    text,
    textselect,
    listback,
    listfore,
    listselect,
    listselecttext,
    tooltipback,
    tooltipfore,
    menuback,
    hyperlink,
    preferenceheader,
    sortmarker,
    datafieldledback,
    progressbar,
};
constexpr int32_t count = 40;
} // namespace SchemeColor

/// The metrics of a scheme, in logical pixels.
namespace SchemeMetric {
enum Key : int32_t {
    margin,
    buttonheight,
    buttonwidth,
    datafieldheight,
    datafieldwidth,
    datafieldborder,
    scrollbarwidth,
    listrowheight,
    radiobuttonheight,
    checkboxheight,
    texteditframe,
    listboxframe,
    tabheight,
    tabwidth,
    taboverlap,
    columnheaderheight,
    columnheaderspacing,
    expansionboxwidth,
    expansionboxheight,
    dialogInset,
    dialogButtonInsetH,
    dialogButtonInsetV,
    dialogButtonSpacing,
    dialogButtonSizerInset,
};
constexpr int32_t count = 24;
} // namespace SchemeMetric

/// The fonts of a scheme.
namespace SchemeFont {
enum Key : int32_t {
    message,
    label,
    smalllabel,
    tinylabel,
    largelabel,
    data,
    smalldata,
    largedata,
    dataXL,
    monospaced,
    smallmonospaced,
    list,
    tab,
    column,
};
constexpr int32_t count = 14;
} // namespace SchemeFont

/// The frames that `UScheme::drawFrame` draws. Numbers below 0 use only the device's pen or brush.
namespace FrameKind {
enum Kind : int32_t {
    solidRect = -1,
    solidRoundRect = -2,
    solidOval = -3,
    frameRect = -4,
    frameDottedRect = -5,
    frameRoundRect = -6,
    frameOval = -7,
    workArea = 0,
    workAreaWithScrollbars = 1,
    dialogFrame = 2,
    groupFrame = 3,
    buttonFrame = 4,
    pressedFrame = 5,
    pressedFrameFlagged = 6,
    dataField = 7,
    dialogArea = 8,
    buttonArea = 9,
    bevelLine = 10,
    untitledFrame = 11,
    untitledFrame2 = 12,
    topTabSelected = 13,
    topTab = 14,
    bottomTabSelected = 15,
    bottomTab = 16,
    separator = 17,
    menuArrow = 18,
};
} // namespace FrameKind

/// The plain controls that `UScheme::createControl` makes.
namespace ControlKind {
enum Kind : int32_t {
    button = 0,
    helpButton = 1,
    checkBox = 2,
    radioButton = 3,
    scrollBar = 4,
    slider = 5,
    progressBar = 8,
    listBox = 9,
};
constexpr int32_t count = 10;
} // namespace ControlKind

enum class ArrowDirection : int32_t { up = 0, left = 1, right = 2, down = 3 };

/// What a mark shows of a switch.
namespace MarkState {
constexpr uint32_t on = 1;
constexpr uint32_t mixed = 2;
constexpr uint32_t pressed = 4;
constexpr uint32_t disabled = 8;
constexpr uint32_t hovered = 16;
constexpr uint32_t cross = 32; ///< Shows a cross where others show a tick.
} // namespace MarkState

} // namespace qorl
