#pragma once

#include "platform/PixelSurface.h"
#include "platform/PlatformCursor.h"
#include "platform/PlatformWindow.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace qorl::platform {

class PollSource;

using TimerId = uint32_t;
constexpr TimerId noTimer = 0;

/// Hears a timer of `DesktopServices::startTimer`.
class TimerClient {
public:
    virtual void timerElapsed(TimerId timer) = 0;

protected:
    ~TimerClient() = default;
};

/// Draws plain tips. The view layer puts one in; without one no plain tip shows.
class TipPresenter {
public:
    /// `rect` in client coordinates of `window`, `mouse` on the screen.
    virtual void showTip(PlatformWindow& window, const CmRect& rect, std::u16string_view text,
                         CmPoint mouse) = 0;
    virtual void hideTip() = 0;

protected:
    ~TipPresenter() = default;
};

/// What `waitForEvent` came back with.
enum class WaitResult : uint8_t {
    event,    ///< `dispatchEvent` has work
    wakeUp,   ///< another thread called `wakeUp`
    timeout,  ///< the time has passed
    exhausted ///< nothing can ever come: no event, no timer and no limit of time, where time is
              ///< virtual, or the desktop itself is lost
};

enum class MonitorArea : uint8_t { whole, work };
enum class Appearance : uint8_t { light, dark };

/// Colours that the user chose for the whole desktop.
enum class SystemColor : uint8_t {
    window,
    windowText,
    button,
    buttonText,
    highlight,
    highlightText,
    disabledText
};

/// The desktop of one process: windows, input state, the event pump, timers and time, monitors, pointers.
///
/// One object a process, from `start` to `stop` of `platform/Platform.h`. Screen coordinates are logical
/// pixels. Threading: user-interface thread (the one that called `start`), but for `wakeUp` and `getTicks`,
/// which other threads call by way of `platform/Platform.h`.
class DesktopServices {
public:
    virtual ~DesktopServices() = default;

    /// "headless" or "x11".
    virtual std::string_view getName() const = 0;

    // Windows

    /// A window, not shown yet, that tells `client` of itself; null when the desktop refuses.
    virtual Ref<PlatformWindow> createWindow(const WindowDescription& description,
                                             PlatformWindowClient& client) = 0;

    /// The topmost visible window of this program at a point of the screen; not counted. Overlays are looked
    /// through, as the mouse goes through them.
    virtual PlatformWindow* windowAt(CmPoint screen) const = 0;
    virtual PlatformWindow* getActiveWindow() const = 0;

    /// True when a visible modal window that neither is `window` nor owns it blocks its input.
    virtual bool isModalBlocking(const PlatformWindow& window) const = 0;

    // Input state

    /// A word of `Modifier`. Fresh from the desktop, not from the event being handled.
    virtual uint32_t currentModifiers() const = 0;
    virtual uint32_t currentMouseButtons() const = 0;
    virtual CmPoint getMousePosition() const = 0;
    virtual void setMousePosition(CmPoint screen) = 0;

    /// The same as they stood with the last input that was dispatched. Gestures go by these: the user may be
    /// further on already, and what comes after will be dispatched too.
    virtual uint32_t eventModifiers() const = 0;
    virtual uint32_t eventMouseButtons() const = 0;

    /// All mouse events go to `window` until the capture is released or lost; an earlier holder hears
    /// `captureLost`.
    virtual void setCapture(PlatformWindow& window) = 0;
    virtual void releaseCapture() = 0;
    virtual bool isCapturing() const = 0;
    virtual PlatformWindow* getCapture() const = 0;

    // Event pump

    /// True when `dispatchEvent` would find something now.
    virtual bool hasEvent() = 0;

    /// Handles one event: an input, then a due timer, then a paint. Input that keeps the others waiting for
    /// longer than a frame lets them have a turn. May be called from within an event. False when there was
    /// none.
    virtual bool dispatchEvent() = 0;

    /// Waits for at most `milliseconds`, without limit if negative. Dispatches nothing.
    virtual WaitResult waitForEvent(int64_t milliseconds) = 0;

    /// Ends a wait of the user-interface thread, or its next one. From any thread.
    virtual void wakeUp() = 0;

    /// Dispatches what there is until nothing is left, at most a second of it.
    virtual void processEvents() = 0;

    /// Paints every window's invalid region now and hands everything to the screen.
    virtual void flushAll() = 0;

    /// `source` is not owned. Adding one twice counts once.
    virtual void addPollSource(PollSource& source) = 0;
    virtual void removePollSource(PollSource& source) = 0;

    // Time

    /// Milliseconds of the user-interface clock, from its start. Never goes back; virtual in the headless
    /// desktop.
    virtual int64_t getTicks() const = 0;

    /// Waits on the user-interface thread without dispatching; passes virtual time where time is virtual.
    virtual void sleep(int64_t milliseconds) = 0;

    /// Calls `client` every `period` milliseconds (at least 1) out of the event pump. Calls that were missed
    /// while the pump did not run are not made up for. `client` is not owned and must stop its timers before
    /// it goes.
    virtual TimerId startTimer(int64_t period, TimerClient& client) = 0;

    /// Safe for an ended or unknown timer and from within `timerElapsed`.
    virtual void stopTimer(TimerId timer) = 0;

    // Monitors

    virtual int32_t monitorCount() const = 0;

    /// False, and `rect` untouched, for an index that is none.
    virtual bool getMonitorRect(int32_t index, MonitorArea area, CmRect& rect) const = 0;

    /// UTF-8; empty for an index that is none.
    virtual std::string getMonitorName(int32_t index) const = 0;
    virtual double getMonitorScale(int32_t index) const = 0;

    /// The monitor at `screen`, or the nearest.
    virtual int32_t monitorAt(CmPoint screen) const = 0;

    // Pointer

    virtual Ref<PlatformCursor> createCursor(CursorShape shape) = 0;

    /// From premultiplied pixels, which are copied; null when the desktop cannot.
    virtual Ref<PlatformCursor> createPictureCursor(const PixelSurface& picture, CmPoint hotSpot) = 0;

    /// Shows `cursor` over all our windows; null is the arrow. A reference is kept while it shows.
    virtual void setCursor(PlatformCursor* cursor) = 0;
    enum class CursorVisibility : uint8_t { hidden, shown };
    virtual void showCursor(CursorVisibility visibility) = 0;

    // Look

    /// False, and `color` (0xAARRGGBB) untouched, when the desktop has no such colour.
    virtual bool getSystemColor(SystemColor which, uint32_t& color) const = 0;
    virtual Appearance getAppearance() const = 0;

    /// Not owned; null takes it away.
    virtual void setTipPresenter(TipPresenter* presenter) = 0;
};

} // namespace qorl::platform
