#pragma once

#include "platform/WindowStyle.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace qorl {

/// Bits of a window's style word, those of the platform among them. The words with which a skin names them
/// stand in `windowStyleWords`.
enum WindowStyle : uint32_t {
    styleSizable = platform::WindowStyle::sizable,
    styleNoAutoHide = 0x2,
    styleMaximize = platform::WindowStyle::maximize,
    styleMinimize = platform::WindowStyle::minimize,
    styleCloseButton = platform::WindowStyle::closeButton,
    styleMenu = 0x20,
    styleTitle = platform::WindowStyle::title,
    styleFrame = platform::WindowStyle::frame,
    styleTypeFlag = 0x100,
    styleNoErase = 0x200,
    styleFocusNavigation = 0x400,
    styleSizeGrip = 0x800,
    styleRememberSize = 0x1000,
    styleRememberPosition = 0x2000,
    styleRememberViews = 0x4000,
    styleClientMovable = 0x8000,
    styleNoActivate = platform::WindowStyle::noActivate,
    styleCloseOnEnter = 0x20000,
    styleCloseOnEscape = 0x40000,
    styleOverlayFirst = 0x100000,
    styleOverlaySecond = 0x200000,
    styleFollowsMainWindow = 0x4000000,
    styleTransparent = platform::WindowStyle::transparent,
    styleCustomLook = 0x10000000,
    styleHiddenFromMenu = 0x80000000,

    styleCloseWindow = styleCloseOnEnter | styleCloseOnEscape,
    styleWindowPreset = 0xFD,
    stylePanelPreset = 0xD0,
    styleDialogPreset = 0x800F0,
    styleSkinPreset = 0x8200,
    styleModalDialog = 0x804F0,
};

struct WindowStyleWord {
    std::string_view word;
    uint32_t bits;
};

/// The words usable in the attribute "style" of a skin, presets last.
std::span<const WindowStyleWord> windowStyleWords();

/// The kind of a window, which `getWindowType` answers.
using WindowType = platform::WindowKind;

/// The word answered to the property "windowType"; null for a window without a screen life.
const char* windowTypeWord(WindowType type);

/// How a window stands on the screen.
using WindowState = platform::ShowState;

} // namespace qorl
