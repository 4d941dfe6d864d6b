#pragma once

#include "platform/DesktopServices.h"
#include "platform/Poller.h"
#include "platform/TimerQueue.h"
#include "platform/WindowBase.h"

#include <string>
#include <vector>

namespace qorl::platform {

/// What the desktops of all back ends share: the windows in their order, activation, capture, the order of
/// the event pump, timers, poll sources, the pointer and plain tips.
class DesktopBase : public DesktopServices, private TimerClient {
public:
    ~DesktopBase() override;

    PlatformWindow* windowAt(CmPoint screen) const override;
    PlatformWindow* getActiveWindow() const override { return active_; }
    bool isModalBlocking(const PlatformWindow& window) const override;

    void setCapture(PlatformWindow& window) override;
    void releaseCapture() override;
    bool isCapturing() const override { return capture_ != nullptr; }
    PlatformWindow* getCapture() const override { return capture_; }

    bool hasEvent() override;
    bool dispatchEvent() override;
    void wakeUp() override { poller_.wakeUp(); }
    void processEvents() override;
    void flushAll() override;
    void addPollSource(PollSource& source) override;
    void removePollSource(PollSource& source) override;

    TimerId startTimer(int64_t period, TimerClient& client) override;
    void stopTimer(TimerId timer) override;

    int32_t monitorAt(CmPoint screen) const override;

    void setCursor(PlatformCursor* cursor) override;
    void showCursor(CursorVisibility visibility) override;
    void setTipPresenter(TipPresenter* presenter) override;

    // For the windows

    void windowShown(WindowBase& window);
    void windowHidden(WindowBase& window);
    void windowDisabled(WindowBase& window);
    void windowClosed(WindowBase& window);
    void closeOwnedWindows(WindowBase& owner);
    void raiseInOrder(WindowBase& window);
    void setTip(WindowBase& window, const CmRect& rect, std::u16string_view text);
    void hideTip();
    WindowBase* getActive() const { return active_; }

    /// All windows that are not closed, the topmost last. Valid until one is made, raised or closed.
    const std::vector<WindowBase*>& getWindows() const { return windows_; }
    /// The same for a walk in which they may close.
    std::vector<Ref<WindowBase>> keepWindows() const;

protected:
    DesktopBase() = default;

    /// For the end of every creation; the window is in the order from then on.
    void windowCreated(WindowBase& window) { windows_.push_back(&window); }

    /// Makes `window` the active one, or none, and tells both sides: the one that was active, the main window
    /// if the program lost it, then the new ones.
    void setActive(WindowBase* window);

    /// Ends the capture and tells its holder.
    void loseCapture();
    WindowBase* getCaptureWindow() const { return capture_; }

    /// The topmost visible popup that takes clicks from everywhere; null without one.
    WindowBase* getOpenPopup() const;

    /// Asks the poll sources, and `extra` with them, and waits for at most `milliseconds` of real time.
    void poll(std::vector<PollEntry>& extra, int64_t milliseconds);

    /// Closes what is left. A back end calls it first in its destructor, while it can still reach its
    /// desktop.
    void closeAllWindows();

    PlatformCursor* getCursor() const { return cursor_.get(); }
    bool isCursorShown() const { return isCursorShown_; }

    virtual bool hasNativeEvent() = 0;
    virtual bool dispatchNativeEvent() = 0;
    virtual void nativeSetCapture(WindowBase* window) = 0; ///< null releases
    virtual void nativeSetCursor() = 0;
    /// The window is closing: whoever knows it by its address forgets it, since another may come to have it.
    virtual void forget(WindowBase& window) = 0;

    /// Who gets the input when the active window `gone` hides or closes, as far as this program decides it.
    virtual WindowBase* chooseNextActive(WindowBase& gone) = 0;
    virtual void nativeFlush() {}

    TimerQueue timers_;
    Poller poller_;

private:
    void timerElapsed(TimerId timer) override;
    void stopTipTimer();
    bool dispatchInput();
    bool dispatchTimerOrPaint();
    bool dispatchPaint();
    bool dispatchSource();
    bool needsPaint() const;

    std::vector<WindowBase*> windows_;
    std::vector<PollSource*> sources_;
    PollSource* readySource_ = nullptr;
    WindowBase* active_ = nullptr;
    WindowBase* main_ = nullptr; ///< the main window, or the one to become it again with the program
    bool isMainActive_ = false;
    WindowBase* capture_ = nullptr;
    bool wasTimerLast_ = false;
    int64_t inputSince_ = TimerQueue::never; ///< ticks; when input began to keep the others waiting
    Ref<PlatformCursor> cursor_;
    bool isCursorShown_ = true;

    TipPresenter* tipPresenter_ = nullptr;
    WindowBase* tipWindow_ = nullptr;
    CmRect tipRect_;
    std::u16string tipText_;
    TimerId tipTimer_ = noTimer;
    bool isTipShown_ = false;
};

} // namespace qorl::platform
