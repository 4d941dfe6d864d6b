#pragma once

#include "commands/UKeyCode.h"
#include "platform/PlatformWindow.h"
#include "views/InputEvents.h"
#include "views/UView.h"
#include "windows/WindowListeners.h"
#include "windows/WindowStyle.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace qorl {

class FMessage;
class WindowPlatformSide;
struct WindowCore;

/// The root of a view tree that can stand on a screen.
///
/// A window is created with a frame and a style, filled with views, and opened by `show`; from then on the
/// desktop owns a reference, and the platform calls back with paints, input, moves and sizes. `closeDeferred`
/// ends it: a window never closes inside its own message dispatch, and once closed it is not opened again.
/// Sizes and positions may be set in every state; without a platform window they are only stored.
///
/// Frame coordinates of a window are screen coordinates; the client is the surface that its views fill.
/// Threading: user-interface thread.
class UWindow : public UView {
    QORL_CLASS(UWindow, UView)

public:
    /// `windowFlags` bits.
    enum WindowFlag : uint32_t {
        painting = 0x1,
        restoreMaximized = 0x4,
        hostsMenuBar = 0x8,
        collectingUpdates = 0x10,
        stateApplied = 0x20,
        ownBackground = 0x40,
        clientDragged = 0x80,
        opened = 0x100,
        opening = 0x200,
        closed = 0x400,
        inSizeTracking = 0x800,
        firstFrontList = 0x1000,
        secondFrontList = 0x2000,
        withoutStateStore = 0x4000,
    };

    /// `frame` is the client's rect on the screen. `style` from `WindowStyle`.
    UWindow(const CmRect& frame, uint32_t style, const ConstString& title);

    // The published table, behind the operations of UView.

    virtual WindowType getWindowType() const;
    /// What a list of windows shows for this one, and whether it shows it.
    virtual void getListTitle(String& title) const;
    virtual bool isListed() const;
    /// Paints what is invalid now instead of with the platform's next paint event.
    virtual void update();
    /// Asks the child windows, the controller ("MsgCloseRequest") and `canClose`; closes when none refuses.
    /// False when refused, and while they are being asked already: only children that agreed are closed.
    virtual bool closeRequest();
    virtual bool canClose();
    /// Closes without asking. The window may be gone afterwards unless the caller holds a reference.
    virtual void willClose(bool canceled);
    virtual void setMinimized(bool minimized);
    virtual void setMaximized(bool maximized);
    /// Top left of the client, on the screen.
    virtual void setPosition(CmPoint position);
    virtual CmPoint getPosition() const;
    virtual void setSize(CmSize clientSize);
    virtual CmSize getSize() const;
    /// Limits of the client. A number of 0 or less keeps the old limit.
    virtual void setSizeLimits(CmSize smallest, CmSize largest);
    virtual void getSizeLimits(CmSize& smallest, CmSize& largest) const;
    virtual void center();
    virtual CmPoint clientToScreen(CmPoint point) const;
    virtual CmPoint screenToClient(CmPoint point) const;
    virtual CmPoint frameToScreen(CmPoint point) const;
    /// Brings the window to the front and gives it the keyboard.
    virtual void activate();
    using UView::activate;
    virtual bool isActive() const;
    enum class Activation : uint8_t { gained, lost };
    virtual void setBackgroundColor(const UColor& color);
    /// 0 invisible to 1 opaque; cut to that range.
    virtual void setOpacity(float opacity);
    /// The view that has the keyboard while this window has it; null when there is none. `UDesktop::setFocus`
    /// also brings the keyboard to the window.
    UView* getFocusView() override;
    virtual void setFocusView(UView* view);

    // Opening and closing.

    bool show() override;
    bool hide() override;
    bool isOpen() const;
    enum class CloseReason : uint8_t { closed, canceled };
    /// Posts the close, so that it happens when the present dispatch is over. It may still be refused.
    void closeDeferred(CloseReason reason = CloseReason::closed);
    /// `hook` runs once, at the close.
    void addCloseHook(std::function<void(UWindow*)> hook);

    // Relations.

    CmObject* getController() const { return controller_.get(); }
    /// Who hears the "Msg…" notifications. Null is allowed.
    void setController(CmObject* controller);
    CmObject* getFocusController() const;
    /// Hears keys (by `IFocusDelegate`) and "Interpret" first; the window's own controller counts as null.
    void setControllerFocus(CmObject* controller);
    UWindow* getParentWindow() const;
    /// Takes over a reference; `child` closes with this window. Nothing for null and for what this window is
    /// or stands below.
    void addChildWindow(Ref<UWindow> child);
    /// `child` stays open, if it is.
    Ref<UWindow> removeChildWindow(UWindow* child);
    std::span<const Ref<UWindow>> childWindows() const;
    void addWindowListener(WindowListener* listener);
    void removeWindowListener(WindowListener* listener);
    void addPaintListener(WindowPaintListener* listener);
    void removePaintListener(WindowPaintListener* listener);
    void addPrePaintListener(WindowPaintListener* listener);
    void removePrePaintListener(WindowPaintListener* listener);
    /// Null while the window is not open.
    platform::PlatformWindow* getPlatformWindow() const;
    /// Drops hover, mouse, focus, cursor and tool tip of a view that leaves the tree with all below it.
    virtual void viewClosing(UView* view);
    /// Who should have the keyboard first, before anybody chose. Null leaves it to the desktop.
    virtual UView* findFirstFocus();
    void registerDirectPaintView(UView* view);
    void unregisterDirectPaintView(UView* view);

    // Properties.

    uint32_t getStyle() const;
    bool hasStyle(uint32_t bits) const { return (getStyle() & bits) == bits; }
    uint32_t windowFlags() const { return windowFlags_; }
    bool hasWindowFlag(uint32_t flag) const { return (windowFlags_ & flag) != 0; }
    void setWindowFlag(uint32_t flag, bool on) {
        windowFlags_ = on ? windowFlags_ | flag : windowFlags_ & ~flag;
    }
    WindowState getWindowState() const;
    float getOpacity() const;
    double getScaleFactor() const;
    void setScheme(UScheme* scheme);
    void setHelpIdentifier(const ConstString& id);
    /// Between the two, positions and sizes are kept and applied once at the end.
    void beginCollectUpdates();
    void endCollectUpdates();

    // State.

    /// Names the section of the defaults in which place and size are kept between runs.
    void setStateName(const ConstString& name, int32_t version);
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// Draws the invalid `region`, given in client coordinates, for the platform. What was drawn is added to
    /// `drawn` unless it is null.
    void paint(const platform::PixelSurface& surface, const platform::Region& region,
               platform::Region* drawn);

    // Input, as the views see it.

    /// Disabled, or behind a modal dialog.
    bool isInputBlocked() const;
    UView* getHoverView() const;
    /// Until the button is released, moves reach `view` as `mouseOver` and the release as its `mouseUp`,
    /// wherever the mouse is. With several buttons it is the release of the last. For a view of this window
    /// that is being pressed (a view outside it, or taken out meanwhile, is refused); whoever held the mouse
    /// before hears `mouseCaptureLost`.
    void captureMouse(UView* view);
    void releaseMouse(UView* view);
    UView* getMouseCapture() const;
    /// The mouse was taken away: whoever held it hears of it.
    void captureLost();
    /// Looks again at what lies under a resting mouse, since views moved.
    void refreshHover();
    void updateHover(CmPoint point);
    /// The last known place of the mouse, in client coordinates; false, with `point` untouched, when it is
    /// not over the window.
    bool getMouseLocation(CmPoint& point) const;
    bool isDoubleClick() const;
    CmPoint focusPoint() const;

    /// Buttons of the press that is being handled; outside of one, those that were down with the last event.
    uint32_t pressedButtons() const;
    /// "Hit", "Escape", "Fore", "Back", "Left", "Right", "Up", "Down": what the category "Focus" of commands
    /// does. False for any other word and when nothing came of it.
    bool focusCommand(std::string_view command);

    // Overrides of UView.

    bool draw(const CmRect& rect) override;
    bool drawSubViews(const CmRect& rect) override;
    bool drawContent(const CmRect& rect) override;
    bool invalidate(const CmRect& rect) override;
    bool isVisible() const override;
    bool isRealized() const override;
    UScheme* getScheme() const override;
    UColor getBackgroundColor(const UView* forView) const override;
    bool mouseDown(CmPoint point) override;
    bool getMousePosition(CmPoint& point) const override;
    bool isMouseDown() const override;
    void setEnabled(bool enabled) override;
    bool keyDown(const UKeyCode& key) override;
    const char* getHelpIdentifier() const override;
    void setTitle(const ConstString& title) override;
    bool applyFrameHook(const CmRect& rect, bool redraw) override;
    /// The window follows its content.
    bool subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) override;
    bool scrollRect(const CmRect& rect, CmPoint delta) override;
    UWindow* getWindow() const override;
    bool getRenderTarget(Ref<RenderTarget>& target, CmPoint& offset) override;
    void getWindowOffset(CmPoint& point) const override;
    int32_t handleMessage(FMessage* message) override;
    AccessibleRole getAccessibleRole() const override;

protected:
    ~UWindow() override;

    WindowCore& core() const { return *core_; }
    /// Takes hold with the next opening.
    void setStyle(uint32_t style);
    /// Asks whoever may refuse a close, each once.
    virtual bool mayClose();
    virtual void prePaint(const platform::Region& region);
    virtual void postPaint();
    /// Sends `name` with "Window" to the controller. 0 without one.
    int32_t tellController(const char* name);
    int32_t tellController(FMessage& message);

private:
    friend class WindowPlatformSide;

    // Calls of the platform side.

    bool mouseEvent(const platform::MouseEvent& event);
    bool wheelEvent(const platform::WheelEvent& event);
    bool keyEvent(const platform::KeyEvent& event);
    void sized(const CmRect& clientOnScreen);
    enum class SizeTracking : uint8_t { started, ended };
    void sizeTracking(SizeTracking phase);
    void activationChanged(Activation activation, platform::PlatformWindowClient::MainWindow mainWindow);
    void stateChangedTo(WindowState state);
    void userColorsChanged();

    // Steps of the operations.

    bool open();
    bool prepareToOpen();
    bool createPlatformWindow();
    void placeForOpening();
    void showOnPlatform();
    void restoreStoredState();
    void storeStateAtClose();
    void restoreLook(FAttributes& stored);
    void storeViews(FAttributes& attributes);
    /// Where the window is, or shall be, when it is neither minimized nor maximized.
    CmRect normalFrame() const;
    void restorePlace(const FAttributes& stored, std::string_view positionKey);
    void changeState(WindowState state);
    void tellState(const char* message, bool on);
    bool closeByKey(const UKeyCode& key);
    bool pressRight(CmPoint point);
    void beginClientDrag(CmPoint point);
    Ref<UWindow> takeChildWindow(UWindow* child);
    bool mouseMoved(CmPoint point);
    void mouseLeft();
    bool mousePressed(CmPoint point, const platform::MouseEvent& event);
    bool mouseReleased(CmPoint point, const platform::MouseEvent& event);
    bool sendClick(CmPoint point, uint32_t modifiers);
    bool isStillHovered(CmPoint point);
    void findHoverView(CmPoint point);
    void setHoverView(UView* view, CmPoint point);
    void followMainWindow(bool isMain);
    UView* contentView() const;

    uint32_t windowFlags_ = 0;
    Ref<CmObject> controller_;
    std::unique_ptr<WindowCore> core_;
    bool closing_ = false; ///< Whether somebody is being asked about it just now.
};

} // namespace qorl
