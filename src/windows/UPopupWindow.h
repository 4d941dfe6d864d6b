#pragma once

#include "foundation/messages/UTimer.h"
#include "windows/UWindow.h"

namespace qorl {

/// A window that belongs to what the user is doing right now: an open menu, a tool tip, a floating editor.
/// Flags of the window say which clicks close it.
class UPopupWindow : public UWindow {
    QORL_CLASS(UPopupWindow, UWindow)

public:
    enum PopupFlag : uint32_t {
        lifetimeRunning = 0x10000,
        closesOnOutsideClick = 0x20000, ///< That click goes nowhere else.
        closesOnAnyClick = 0x40000,
        closesAfterClick = 0x80000, ///< Unless the click began to track the mouse.
        toolTipPopup = 0x100000,
        closesOnSecondPress = 0x400000,
        replacesOpenPopup = 0x800000,
    };

    UPopupWindow(const CmRect& frame, uint32_t style, const ConstString& title);

    WindowType getWindowType() const override { return WindowType::popup; }
    UColor getBackgroundColor(const UView* forView) const override;
    bool show() override;
    /// A popup that can be moved by its client, as one that closes on the second press can, closes here.
    bool hide() override;
    void willClose(bool canceled) override;
    bool mouseDown(CmPoint point) override;
    int32_t handleMessage(FMessage* message) override;

    /// Closes by itself after this many milliseconds; less than 1 means never.
    void setLifetime(int32_t milliseconds);
    bool lastClickInside() const { return lastClickInside_; }

protected:
    bool mayClose() override;

private:
    UTimer lifetimeTimer_;
    bool lastClickInside_ = false;
    Ref<UPopupWindow> previousPopup_;
};

} // namespace qorl
