#pragma once

#include "windows/UWindow.h"

namespace qorl {

class UControl;

/// A window that keeps input from the others until it is closed. `UDesktop::runModal` opens one and waits.
class UModalDialog : public UWindow {
    QORL_CLASS(UModalDialog, UWindow)

public:
    /// What `runModal` gives for a dialog that was closed without an answer.
    static constexpr int32_t canceledResult = 0;

    /// Centred when it opens. `style` is joined by what every dialog has.
    UModalDialog(const CmRect& frame, uint32_t style, const ConstString& title);

    WindowType getWindowType() const override { return WindowType::modal; }
    bool show() override;
    bool keyDown(const UKeyCode& key) override;
    void viewClosing(UView* view) override;
    /// The default control, where the content asks for no other.
    UView* findFirstFocus() override;
    AccessibleRole getAccessibleRole() const override;

    /// The control that Return presses; at the opening the first one that is marked so, unless one is set.
    /// Not counted, and forgotten when it leaves the window.
    UControl* getDefaultControl() const { return defaultControl_; }
    void setDefaultControl(UControl* control) { defaultControl_ = control; }

    /// Closes the dialog, deferred; `runModal` then gives `result`.
    void endModal(int32_t result);
    int32_t getModalResult() const { return modalResult_; }

protected:
    bool mayClose() override;

private:
    bool pressDefaultControl();

    UControl* defaultControl_ = nullptr;
    int32_t modalResult_ = canceledResult;
};

} // namespace qorl
