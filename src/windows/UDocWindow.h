#pragma once

#include "windows/UWindow.h"

namespace qorl {

/// A document window: listed in the Windows menu, minimized and maximized by itself, the program's main
/// window while it is active.
class UDocWindow : public UWindow {
    QORL_CLASS(UDocWindow, UWindow)

public:
    /// What an empty frame stands for.
    static constexpr CmRect defaultFrame{60, 60, 700, 540};

    UDocWindow(const CmRect& frame, uint32_t style, const ConstString& title);

    WindowType getWindowType() const override { return WindowType::document; }
};

} // namespace qorl
