#pragma once

#include "platform/DesktopBase.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Keyboard.h"
#include "platform/x11/X11Pointer.h"
#include "platform/x11/X11Settings.h"
#include "platform/x11/X11Wheel.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace qorl::platform {

class X11Window;

/// The desktop of an X server.
///
/// One scale factor holds for the whole screen: logical screen coordinates are device pixels divided by it.
/// Popups are active without having the server's input focus, so that the window that they belong to keeps
/// its looks; keys are handed on to them, and the mouse is grabbed so that presses elsewhere are heard.
class X11Desktop : public DesktopBase {
public:
    /// Null, with one line in `error`, when the server cannot be used.
    static std::unique_ptr<DesktopServices> create(const std::string& display, std::string& error);
    ~X11Desktop() override;

    std::string_view getName() const override { return "x11"; }
    Ref<PlatformWindow> createWindow(const WindowDescription& description,
                                     PlatformWindowClient& client) override;

    uint32_t currentModifiers() const override;
    uint32_t currentMouseButtons() const override;
    uint32_t eventModifiers() const override { return keyboard_.getModifiers(); }
    uint32_t eventMouseButtons() const override { return eventButtons_; }
    CmPoint getMousePosition() const override;
    void setMousePosition(CmPoint screen) override;

    WaitResult waitForEvent(int64_t milliseconds) override;
    int64_t getTicks() const override;
    void sleep(int64_t milliseconds) override;

    int32_t monitorCount() const override { return static_cast<int32_t>(monitors_.size()); }
    bool getMonitorRect(int32_t index, MonitorArea area, CmRect& rect) const override;
    std::string getMonitorName(int32_t index) const override;
    double getMonitorScale(int32_t) const override { return scale_; }

    Ref<PlatformCursor> createCursor(CursorShape shape) override { return pointers_.create(shape); }
    Ref<PlatformCursor> createPictureCursor(const PixelSurface& picture, CmPoint hotSpot) override {
        return pointers_.create(picture, hotSpot);
    }
    bool getSystemColor(SystemColor which, uint32_t& color) const override;
    Appearance getAppearance() const override { return settings_.getLook().appearance; }

    // For the windows

    X11Connection& getConnection() { return *connection_; }
    double getScale() const { return scale_; }
    uint32_t getLastTime() const { return lastTime_; }
    uint32_t getWindowEventMask() const;
    void selectPointerEvents(xcb_window_t window);
    CmPoint toDevicePoint(CmPoint logical) const;
    CmPoint toLogicalPoint(CmPoint device) const;
    CmSize toLogicalSize(CmSize device) const;
    /// Where a window's client area begins on the root window, in device pixels.
    CmPoint getOriginOf(xcb_window_t window) const;
    void requestFocus(X11Window& window);
    void activatePopup(X11Window& window);
    /// Grabs or frees the mouse as the capture and the open popup ask for.
    void updateGrab();
    /// The size of `window` changed; if the user drags its border, tells it so until the button goes up.
    void trackSizing(X11Window& window);

protected:
    bool hasNativeEvent() override;
    bool dispatchNativeEvent() override;
    void nativeSetCapture(WindowBase* window) override;
    void nativeSetCursor() override;
    void forget(WindowBase& window) override;
    void nativeFlush() override;
    WindowBase* chooseNextActive(WindowBase& gone) override;

private:
    struct Monitor {
        std::string name;
        CmRect bounds; ///< logical
        CmRect work;
    };

    /// What a pointer event of either protocol says.
    struct Pointer {
        CmPoint client; ///< device pixels in the window of the event
        CmPoint root;   ///< device pixels
        uint32_t state = 0;
        uint32_t time = 0;
    };

    class SizeTracker;

    explicit X11Desktop(std::unique_ptr<X11Connection> connection);

    void readMonitors();
    void lookChanged();
    xcb_cursor_t getShownCursor();
    X11Reply<xcb_query_pointer_reply_t> queryPointer() const;

    void pullEvents();
    X11Window* findWindow(xcb_window_t id) const;
    int64_t toTicks(uint32_t serverTime);
    void dispatch(const xcb_generic_event_t& event);
    void dispatchInput2(const xcb_generic_event_t& event);
    void dispatchKey(const xcb_generic_event_t& event);
    void dispatchCrossing(const xcb_generic_event_t& event);
    void dispatchFocus(const xcb_generic_event_t& event);
    void dispatchMessage(const xcb_client_message_event_t& message);
    void dispatchRoot(const xcb_generic_event_t& event);

    void movePointer(X11Window* window, const Pointer& pointer);
    void pressButton(X11Window* window, uint32_t number, const Pointer& pointer);
    void releaseButton(X11Window* window, uint32_t number, const Pointer& pointer);
    void turnWheel(X11Window* window, WheelDistance distance, const Pointer& pointer);
    void updateHover(X11Window* under, const Pointer& pointer);
    void sendMouse(X11Window* event, X11Window* target, MouseKind kind, uint32_t buttons,
                   const Pointer& pointer);
    X11Window* findTarget(X11Window* window) const;
    CmPoint toClient(const X11Window* event, const X11Window& target, const Pointer& pointer) const;
    void believeFocusLost();
    void focusChanged(X11Window* window);

    std::unique_ptr<X11Connection> connection_;
    X11Keyboard keyboard_;
    X11Settings settings_;
    X11Wheel wheel_;
    X11Pointers pointers_;
    double scale_;
    int64_t start_;
    std::vector<Monitor> monitors_;
    std::deque<X11Reply<xcb_generic_event_t>> events_;
    std::vector<X11Window*> x11Windows_;
    Ref<PlatformCursor> hiddenCursor_;
    std::unique_ptr<SizeTracker> sizeTracker_;

    X11Window* focused_ = nullptr; ///< has the server's input focus
    bool isFocusLost_ = false;     ///< and whether a loss waits to be believed
    X11Window* hover_ = nullptr;
    X11Window* grabber_ = nullptr;
    bool isPressed_ = false;
    uint32_t eventButtons_ = noButton; ///< with the last event of the pointer
    uint32_t lastTime_ = 0;
    int64_t timeOffset_ = 0;
    bool isTimeKnown_ = false;
    bool isConnectionLost_ = false;
};

} // namespace qorl::platform
