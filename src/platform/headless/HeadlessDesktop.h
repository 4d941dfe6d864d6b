#pragma once

#include "platform/DesktopBase.h"

#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace qorl::platform {

class HeadlessDesktop;
class HeadlessWindow;

/// Brings the next input when the queue of a headless desktop has run dry, such as the steps of a script.
class HeadlessFeeder {
public:
    /// Posts to `desktop` what comes next. False when nothing ever will. Called out of a wait, when neither
    /// an event nor a due timer nor an invalid window is left.
    virtual bool feed(HeadlessDesktop& desktop) = 0;

    /// A loop waited with the mouse captured, and nothing that could end it was left: the capture was taken
    /// away.
    virtual void captureStarved() = 0;

protected:
    ~HeadlessFeeder() = default;
};

struct HeadlessMonitor {
    std::string name = "Headless-1";
    CmRect bounds{0, 0, 1920, 1080}; ///< logical
    CmRect workArea{0, 0, 1920, 1080};
    double scale = 1.0;
};

struct HeadlessSettings {
    std::vector<HeadlessMonitor> monitors = {HeadlessMonitor()}; ///< at least one; the first is the main one
    Appearance appearance = Appearance::light;
};

/// A desktop without a screen: windows in memory, input from a queue, and virtual time.
///
/// Nothing here depends on the machine or its speed: the same posts give the same calls in the same order and
/// the same ticks. Events wait in the queue until a pump takes them, whichever loop it belongs to. When
/// nothing is left to do, a wait asks the feeder, and then jumps the clock to the next timer. A loop that
/// waits with the mouse captured, while neither events nor, for `starvationLimit`, input came, loses the
/// capture.
///
/// All places are logical screen coordinates. Threading: user-interface thread, but for `wakeUp`.
class HeadlessDesktop : public DesktopBase {
public:
    static constexpr int64_t firstTick = 10'000;       ///< ticks of a new desktop
    static constexpr int64_t starvationLimit = 60'000; ///< milliseconds of virtual time

    explicit HeadlessDesktop(HeadlessSettings settings = {});
    ~HeadlessDesktop() override;

    std::string_view getName() const override { return "headless"; }
    Ref<PlatformWindow> createWindow(const WindowDescription& description,
                                     PlatformWindowClient& client) override;

    uint32_t currentModifiers() const override { return modifiers_; }
    uint32_t currentMouseButtons() const override { return buttons_; }
    uint32_t eventModifiers() const override { return modifiers_; }
    uint32_t eventMouseButtons() const override { return buttons_; }
    CmPoint getMousePosition() const override { return mouse_; }
    void setMousePosition(CmPoint screen) override;

    WaitResult waitForEvent(int64_t milliseconds) override;
    int64_t getTicks() const override { return now_; }
    void sleep(int64_t milliseconds) override;

    int32_t monitorCount() const override { return static_cast<int32_t>(settings_.monitors.size()); }
    bool getMonitorRect(int32_t index, MonitorArea area, CmRect& rect) const override;
    std::string getMonitorName(int32_t index) const override;
    double getMonitorScale(int32_t index) const override;

    Ref<PlatformCursor> createCursor(CursorShape shape) override;
    Ref<PlatformCursor> createPictureCursor(const PixelSurface& picture, CmPoint hotSpot) override;
    bool getSystemColor(SystemColor which, uint32_t& color) const override;
    Appearance getAppearance() const override { return settings_.appearance; }

    // Input: each goes to the end of the queue.

    void postMouseMove(CmPoint screen);
    void postButtonDown(uint32_t button);
    void postButtonUp(uint32_t button);
    void postWheel(double deltaX, double deltaY, uint8_t flags = 0);
    void postKey(KeyKind kind, char16_t character, uint8_t virtualKey);

    /// The held modifier keys from here on.
    void postModifiers(uint32_t modifiers);

    /// Whatever else is to happen between two events.
    void postCall(std::function<void()> call);

    /// Keeps what comes behind it back until this much time has passed.
    void postPause(int64_t milliseconds);

    // What a user does to a window, each an event in the queue. Ignored when the window is closed by then.

    void postClosePress(PlatformWindow& window);
    void postUserSize(PlatformWindow& window, CmSize size);
    void postUserMove(PlatformWindow& window, CmPoint position);
    void postShowState(PlatformWindow& window, ShowState state);
    /// Null gives the input to another program.
    void postActivation(PlatformWindow* window);

    // Time and settings

    /// Dispatches everything that happens within this much virtual time, then what is left at its end.
    void advance(int64_t milliseconds);

    /// Not owned; null takes it away.
    void setFeeder(HeadlessFeeder* feeder) { feeder_ = feeder; }
    void setMonitors(std::vector<HeadlessMonitor> monitors);
    void setAppearance(Appearance appearance);

    // What a test looks at

    bool isQueueEmpty() const { return queue_.empty(); }
    /// The shape that the mouse shows; `CursorShape::arrow` unless set, -1 while hidden, -2 for a picture.
    int32_t getShownCursor() const;

    // For the windows

    void activateWindow(WindowBase* window) { setActive(window); }
    void windowMinimized(WindowBase& window);
    double getScaleAt(const CmRect& window) const;

protected:
    bool hasNativeEvent() override;
    bool dispatchNativeEvent() override;
    void nativeSetCapture(WindowBase*) override {}
    void nativeSetCursor() override {}
    void forget(WindowBase& window) override;
    WindowBase* chooseNextActive(WindowBase& gone) override;

private:
    struct Step {
        std::function<void()> run;
        int64_t pause = 0; ///< milliseconds before what follows
    };

    void post(std::function<void()> run);
    int64_t getNextTime() const;
    bool isStarving(int64_t until) const;
    void starve();

    void moveMouse(CmPoint screen);
    void pressButton(uint32_t button);
    void releaseButton(uint32_t button);
    void turnWheel(double deltaX, double deltaY, uint8_t flags);
    void updateHover(WindowBase* under);
    WindowBase* findTarget() const;
    void sendMouse(WindowBase* target, MouseKind kind, uint32_t buttons);

    HeadlessSettings settings_;
    std::deque<Step> queue_;
    HeadlessFeeder* feeder_ = nullptr;
    bool isFeeding_ = false;
    std::atomic<int64_t> now_ = firstTick; ///< any thread may ask for the time
    int64_t pauseEnd_ = firstTick;
    int64_t lastInput_ = firstTick;
    CmPoint mouse_;
    CmPoint eventMouse_; ///< with the last event; `mouse_` may have been set since
    uint32_t buttons_ = noButton;
    uint32_t modifiers_ = noModifier;
    WindowBase* hover_ = nullptr;
    WindowBase* pressed_ = nullptr; ///< hears the mouse from the first press to the last release
};

} // namespace qorl::platform
