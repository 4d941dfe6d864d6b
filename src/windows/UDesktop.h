#pragma once

#include "views/FocusPolicy.h"
#include "views/UCursor.h"
#include "views/ViewListeners.h"
#include "windows/UWindow.h"

#include <qorl/Ref.h>

#include <cstdint>
#include <span>
#include <vector>

namespace qorl {

class CmStack;
class PlainTipPresenter;
class UModalDialog;
class UPopupWindow;
class UToolTipHandler;

/// Sees the mouse before any view does: tool tips, the inspector. Owned by whoever registers it.
class GlobalMouseObserver {
public:
    /// True ends the press.
    virtual bool mouseDown(UWindow* window, CmPoint point, uint32_t buttons) = 0;
    virtual void mouseMove(UWindow* window, CmPoint point) = 0;
    /// `view` leaves its tree.
    virtual void viewGone(UView* view) = 0;

protected:
    ~GlobalMouseObserver() = default;
};

/// The one object that knows all windows, who has the keyboard, which popup is open and which cursor shows.
///
/// It owns a reference on every open window. It is created before the first window and released after the
/// last, by whoever runs the event loop. Threading: user-interface thread.
class UDesktop : public UWindow {
    QORL_CLASS(UDesktop, UWindow)

public:
    /// While set, windows don't look for a focus of their own, and stored maximising is put off.
    enum DesktopFlag : uint32_t { focusFrozen = 0x20000, restoringLayout = 0x40000 };

    /// Makes the object `instance` answers with, until it is released.
    UDesktop();

    /// Null before the first and after the last `UDesktop`.
    static UDesktop* instance();

    /// Hears that a window's activation ends, before the desktop object does. Set by whoever runs the event
    /// loop; null takes it away.
    using DeactivationHook = bool (*)(UWindow* window);
    static void setDeactivationHook(DeactivationHook hook);

    WindowType getWindowType() const override { return WindowType::none; }

    // Cursor.

    /// Moves the pointer itself.
    void setCursorPosition(CmPoint screenPoint);
    /// Shows `cursor` while `owner` is hovered; null shows the arrow, and the pointer of all bits set is
    /// refused. The owner is not counted: it calls again with nulls, or leaves through
    /// `UWindow::viewClosing`.
    void setCursor(UCursor* cursor, UView* owner);
    UCursor* getCursor() const { return cursor_.get(); }
    UView* getCursorOwner() const { return cursorOwner_; }
    void pushCursor(UCursor* cursor, UView* owner);
    /// False when nothing was pushed.
    bool popCursor();
    bool isWaitCursor() const { return waitCursor_; }
    void setWaitCursor(bool wait);
    void showCursor(bool visible);
    void refreshCursor();

    // Focus.

    /// Gives the keyboard to `view`, in its window; null takes it away. False when the view is in no window.
    bool setFocus(UView* view);
    /// The focus view of the window that has the keyboard.
    UView* getFocus() const { return focusWindow_ ? focusWindow_->getFocusView() : nullptr; }
    /// Lets the focus of `window`, or the focusable view nearest to where its focus last was, have the
    /// keyboard.
    void chooseFocus(UWindow* window);
    /// From the focus view to the next; true when the direction was used.
    bool moveFocus(FocusDirection direction);

    // Windows.

    /// Takes a reference until `unregisterWindow`.
    void registerWindow(UWindow* window);
    void unregisterWindow(UWindow* window);
    /// From back to front.
    std::span<const Ref<UWindow>> windows() const { return windows_; }
    void bringWindowToFront(UWindow* window);
    UWindow* frontWindow(WindowType type) const;
    UWindow* activeWindow() const { return activeWindow_; }
    void windowActivated(UWindow* window, Activation activation);
    /// The front window whose client holds the point.
    UWindow* windowAt(CmPoint screenPoint) const;
    UWindow* windowUnderMouse() const { return windowUnderMouse_; }
    void setWindowUnderMouse(UWindow* window) { windowUnderMouse_ = window; }

    // Popups and modal dialogs.

    UPopupWindow* getOpenPopup() const { return openPopup_; }
    void setOpenPopup(UPopupWindow* popup) { openPopup_ = popup; }
    /// Closes the open popup, deferred.
    void closePopups();
    bool isModal() const { return !modalStack_.empty(); }
    /// Opens `dialog`, runs the event loop until it has closed, and gives the dialog's result. A loop that
    /// ends closes the dialog as canceled.
    int32_t runModal(UModalDialog* dialog);

    /// Watches for tips from its first use on: the application's `init` makes it.
    UToolTipHandler& toolTips();
    void update() override;

    // Observers of the mouse in all windows. Not counted.

    void addMouseObserver(GlobalMouseObserver* observer);
    void removeMouseObserver(GlobalMouseObserver* observer);
    bool tellMouseDown(UWindow* window, CmPoint point, uint32_t buttons);
    void tellMouseMove(UWindow* window, CmPoint point);

    /// Forgets a view or window that goes.
    void viewGone(UView* view);

    bool hasDesktopFlag(uint32_t flag) const { return (desktopFlags_ & flag) != 0; }
    void setDesktopFlag(uint32_t flag, bool on) {
        desktopFlags_ = on ? desktopFlags_ | flag : desktopFlags_ & ~flag;
    }

protected:
    ~UDesktop() override;

private:
    void showPlatformCursor(UCursor* cursor);
    /// The pushed cursors, which stand among the attributes; null before the first push.
    CmStack* cursorStack() const;
    void takeFocusFrom(UWindow* window);
    /// Beside the focus, which is taken from it.
    void forget(const UView* window);
    void releaseAllCaptures();

    std::vector<Ref<UWindow>> windows_;
    std::vector<Ref<UModalDialog>> modalStack_;
    ListenerList<GlobalMouseObserver> mouseObservers_;
    UWindow* focusWindow_ = nullptr;
    UPopupWindow* openPopup_ = nullptr;
    UWindow* windowUnderMouse_ = nullptr;
    UWindow* activeWindow_ = nullptr;
    std::unique_ptr<UToolTipHandler> toolTips_;
    std::unique_ptr<PlainTipPresenter> tipPresenter_;
    Ref<UCursor> cursor_;
    UView* cursorOwner_ = nullptr;
    bool waitCursor_ = false;
    uint32_t desktopFlags_ = 0;
};

} // namespace qorl
