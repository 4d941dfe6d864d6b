#pragma once

#include <cstdint>

namespace qorl::platform {

/// What a window is to the desktop. The numbers are those that windows answer for their type.
enum class WindowKind : int32_t {
    document = 0,
    floating = 1,
    modal = 2,
    popup = 3,
    full = 4,
    overlay = 6,
    child = 7,
    none = 8,
};

/// Bits of a window's style that a platform turns into hints for its desktop. Other bits are ignored here.
namespace WindowStyle {
enum : uint32_t {
    sizable = 0x1,
    maximize = 0x4,
    minimize = 0x8,
    closeButton = 0x10,
    title = 0x40,
    frame = 0x80,
    noActivate = 0x10000,
    transparent = 0x8000000,
};
} // namespace WindowStyle

enum class ShowState : int32_t { normal = 0, minimized = 1, maximized = 2 };

/// Bits of the second argument of `PlatformWindow::show`.
enum ShowFlag : uint32_t { showDefault = 0, showWithoutActivation = 1, showMaximized = 2 };

} // namespace qorl::platform
