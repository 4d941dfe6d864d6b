#pragma once

#include "windows/UWindow.h"

namespace qorl {

/// A floating window: stays above the document windows and never becomes the main window.
class UPanel : public UWindow {
    QORL_CLASS(UPanel, UWindow)

public:
    UPanel(const CmRect& frame, uint32_t style, const ConstString& title);

    WindowType getWindowType() const override { return WindowType::floating; }
};

} // namespace qorl
