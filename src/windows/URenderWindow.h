#pragma once

#include "windows/UWindow.h"

namespace qorl {

/// A window that is never shown: a tree in it can be laid out and drawn off screen, before any platform
/// window exists.
class URenderWindow : public UWindow {
    QORL_CLASS(URenderWindow, UWindow)

public:
    explicit URenderWindow(const CmRect& frame = {}, uint32_t style = 0);

    WindowType getWindowType() const override { return WindowType::none; }
    /// Layouts run as on a screen.
    bool isRealized() const override { return true; }
    /// Off screen, every view counts as visible as far as its own flags go.
    bool isVisible() const override { return true; }
    /// Nothing to open.
    bool show() override { return false; }
};

} // namespace qorl
