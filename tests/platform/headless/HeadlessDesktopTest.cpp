#include "platform/headless/HeadlessDesktop.h"

#include "platform/Platform.h"
#include "support/HeadlessScene.h"

#include <gtest/gtest.h>
#include <utility>

namespace qorl::platform {
namespace {

using test::WindowRecorder;

/// Milliseconds since the desktop began.
int64_t elapsed(HeadlessDesktop& desktop) {
    return desktop.getTicks() - HeadlessDesktop::firstTick;
}

/// Writes down the ticks at which a timer came.
class Ticker : public TimerClient {
public:
    explicit Ticker(HeadlessDesktop& desktop) : desktop_(desktop) {}

    void timerElapsed(TimerId) override {
        times.push_back(elapsed(desktop_));
        if (onTick)
            onTick();
    }

    std::vector<int64_t> times;
    std::function<void()> onTick;

private:
    HeadlessDesktop& desktop_;
};

class OneHeadlessWindow : public HeadlessDesktopTest {
protected:
    Ref<PlatformWindow> window = open({0, 0, 100, 100}, a);
};

/// The first on the left.
class TwoHeadlessWindows : public HeadlessDesktopTest {
protected:
    Ref<PlatformWindow> first = open({0, 0, 100, 100}, a);
    Ref<PlatformWindow> second = open({100, 0, 200, 100}, b);
};

TEST_F(TwoHeadlessWindows, TellsAWindowOfTheMouseInOrder) {
    desktop.postMouseMove({10, 20});
    desktop.postMouseMove({150, 20});
    desktop.postButtonDown(leftButton);
    desktop.postMouseMove({50, 20});
    desktop.postButtonUp(leftButton);
    desktop.processEvents();

    EXPECT_EQ(takeLog(),
              "a enter 10,20 b0 m0; a move 10,20 b0 m0; a leave 150,20 b0 m0; b enter 50,20 b0 m0; "
              "b move 50,20 b0 m0; b down 50,20 b1 m0; b move -50,20 b1 m0; b up -50,20 b1 m0; "
              "b leave -50,20 b0 m0; a enter 50,20 b0 m0");
}

TEST_F(TwoHeadlessWindows, SendsEverythingToTheWindowThatCaptures) {
    desktop.setCapture(*first);

    desktop.postMouseMove({150, 10});
    desktop.postWheel(0, 1);
    EXPECT_EQ(hear(), "a move 150,10 b0 m0; a wheel 150,10 0 1");

    desktop.setCapture(*second);
    EXPECT_EQ(takeLog(), "a capture lost");
    second->hide();
    EXPECT_TRUE(!log.empty() && log.front() == "b capture lost") << takeLog();
    EXPECT_FALSE(desktop.isCapturing());
}

TEST_F(TwoHeadlessWindows, FreesTheMouseOfAWindowThatIsDisabled) {
    desktop.postMouseMove({10, 10});
    desktop.postButtonDown(leftButton);
    desktop.processEvents();
    desktop.setCapture(*first);
    log.clear();
    first->enable(false);
    EXPECT_EQ(takeLog(), "a capture lost");
    desktop.postButtonUp(leftButton);
    desktop.postMouseMove({150, 10});
    EXPECT_EQ(hear(), "a leave 150,10 b0 m0; b enter 50,10 b0 m0; b move 50,10 b0 m0");
}

TEST_F(OneHeadlessWindow, LetsTimersAndPaintsHaveTheirTurnBetweenSlowInputs) {
    a.isLoggingPaint = true;
    a.isLoggingMoves = false;
    Ticker ticker(desktop);
    ticker.onTick = [&] { log.push_back("tick"); };
    a.onMouse = [&](const MouseEvent& event) {
        log.push_back(event.kind == MouseKind::enter ? "enter" : "move");
        window->invalidate({0, 0, 10, 10});
        desktop.sleep(15);
    };
    desktop.postMouseMove({1, 1});
    desktop.processEvents();
    log.clear();
    const TimerId timer = desktop.startTimer(10, ticker);
    for (int32_t x = 2; x < 6; ++x)
        desktop.postMouseMove({x, 1});
    EXPECT_EQ(hear(), "move; move; tick; move; move; a paint 0,0 10x10; tick");
    desktop.stopTimer(timer);
}

TEST_F(OneHeadlessWindow, CarriesModifiersIntoEveryEvent) {
    a.isLoggingMoves = false;
    desktop.postMouseMove({5, 5});
    desktop.postModifiers(shift | ctrl);
    postClick(rightButton);
    desktop.postKey(KeyKind::down, u'Z', Key::characterKeyOffset + 'Z');
    desktop.postModifiers(noModifier);
    desktop.postKey(KeyKind::up, 0, Key::characterKeyOffset + 'Z');
    EXPECT_EQ(hear(), "a down 5,5 b4 m3; a up 5,5 b4 m3; a key down v170 c90 m3; a key up v170 c0 m0");
    EXPECT_EQ(desktop.currentModifiers(), 0U);
}

TEST_F(HeadlessDesktopTest, SaysWhetherTheMainWindowChanged) {
    auto document = open({0, 0, 100, 100}, a);
    auto panel = desktop.createWindow(describe({0, 100, 50, 150}, WindowKind::floating, document.get()), b);
    log.clear();

    panel->show(ShowState::normal, showDefault);
    EXPECT_EQ(takeLog(), "a deactivated; b activated");
    EXPECT_EQ(document->getActivationState(), PlatformWindow::Activation::childActive);

    desktop.postActivation(nullptr);
    EXPECT_EQ(hear(), "b deactivated; a deactivated main");

    desktop.postActivation(panel.get());
    EXPECT_EQ(hear(), "a activated main; b activated");

    panel->close(CloseMode::normal);
    EXPECT_EQ(takeLog(), "a activated") << "the owner takes over";
}

TEST_F(HeadlessDesktopTest, ClosesOwnedWindowsFirstAndCallsNobodyAfterwards) {
    auto document = open({0, 0, 100, 100}, a);
    auto panel = open({0, 0, 50, 50}, b, WindowKind::floating, document.get());
    desktop.setCapture(*panel);
    document->invalidate({0, 0, 10, 10});
    desktop.postClosePress(*panel);

    document->close(CloseMode::normal);
    EXPECT_EQ(hear(), "b owner closed");
    EXPECT_FALSE(desktop.isCapturing());
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(panel->getSurface().isEmpty());
    panel->show(ShowState::normal, showDefault);
    panel->setPositionSize({5, 5}, {5, 5});
    EXPECT_EQ(desktop.windowAt({10, 10}), nullptr);
}

TEST_F(HeadlessDesktopTest, BlocksWhatAModalWindowDoesNotOwn) {
    auto document = open({0, 0, 100, 100}, a);
    auto dialog = open({10, 10, 60, 60}, b, WindowKind::modal, document.get());
    WindowRecorder c;
    auto inner = desktop.createWindow(describe({20, 20, 30, 30}, WindowKind::floating, dialog.get()), c);

    EXPECT_TRUE(desktop.isModalBlocking(*document));
    EXPECT_FALSE(desktop.isModalBlocking(*dialog));
    EXPECT_FALSE(desktop.isModalBlocking(*inner));

    desktop.postMouseMove({90, 90});
    postClick();
    desktop.processEvents();
    EXPECT_EQ(desktop.getActiveWindow(), dialog.get()) << "a blocked window must not come to the front";
    dialog->hide();
    EXPECT_FALSE(desktop.isModalBlocking(*document));
}

TEST_F(HeadlessDesktopTest, GivesAPressBesideEverythingToTheOpenPopup) {
    auto document = open({0, 0, 100, 100}, a);
    auto popup = open({20, 20, 40, 40}, b, WindowKind::popup, document.get());
    b.isLoggingMoves = false;
    desktop.postMouseMove({500, 500});
    postClick();
    EXPECT_EQ(hear(), "b down 480,480 b1 m0; b up 480,480 b1 m0");
}

TEST_F(OneHeadlessWindow, ADisabledWindowHearsNoInput) {
    window->enable(false);
    desktop.postMouseMove({5, 5});
    postClick();
    desktop.postWheel(0, 1);
    desktop.postKey(KeyKind::down, u'x', 0);
    desktop.postClosePress(*window);
    EXPECT_EQ(hear(), "");
}

TEST_F(HeadlessDesktopTest, PaintsOnlyWhatIsInvalidAndOnlyOutOfThePump) {
    auto window = open({0, 0, 300, 300}, a);
    auto* headless = static_cast<HeadlessWindow*>(window.get());
    headless->takePresented();
    a.painted.clear();

    window->invalidate({10, 10, 20, 20});
    window->invalidate({15, 15, 40, 20});
    window->invalidate({290, 290, 400, 400});
    window->invalidate({50, 50, 50, 80});
    EXPECT_TRUE(a.painted.isEmpty());
    desktop.processEvents();

    Region expected({10, 10, 20, 20});
    expected.add(CmRect{15, 15, 40, 20});
    expected.add(CmRect{290, 290, 300, 300});
    EXPECT_EQ(a.painted, expected);
    EXPECT_EQ(headless->takePresented(), expected);
}

TEST_F(OneHeadlessWindow, UpdatePaintsAtOnceButNeverWithinAPaint) {
    a.isLoggingPaint = true;
    bool isFirst = true;
    a.onPaint = [&] {
        if (!std::exchange(isFirst, false))
            return;
        window->invalidate({1, 1, 2, 2});
        window->update();
        log.emplace_back("first paint done");
    };
    window->invalidate({0, 0, 50, 50});
    window->update();
    EXPECT_EQ(takeLog(), "a paint 0,0 50x50; first paint done");
    EXPECT_EQ(hear(), "a paint 1,1 1x1") << "what became invalid within a paint is painted later";
}

TEST_F(HeadlessDesktopTest, ADrawnPixelStaysUntilItIsPaintedAgain) {
    auto window = open({0, 0, 60, 40}, a);
    a.color = 0xFF00FF00;
    window->invalidate({10, 10, 20, 20});
    desktop.processEvents();
    const PixelSurface surface = window->getSurface();
    EXPECT_EQ(surface.getRow(10)[10], 0xFF00FF00U);
    EXPECT_EQ(surface.getRow(19)[19], 0xFF00FF00U);
    EXPECT_EQ(surface.getRow(20)[20], 0xFF2060A0U);
    EXPECT_EQ(surface.getRow(10)[9], 0xFF2060A0U);
}

TEST_F(HeadlessDesktopTest, ScrollsPixelsAndTheirInvalidRegion) {
    const struct {
        const char* name;
        CmPoint delta;
        CmRect uncovered;
        CmPoint mark; ///< where the pixel at 20,20 goes
    } cases[] = {
        {"down", {0, 5}, {10, 10, 50, 15}, {20, 25}},       {"up", {0, -5}, {10, 45, 50, 50}, {20, 15}},
        {"right", {5, 0}, {10, 10, 15, 50}, {25, 20}},      {"left", {-5, 0}, {45, 10, 50, 50}, {15, 20}},
        {"away", {0, 1 << 30}, {10, 10, 50, 50}, {20, 20}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WindowRecorder client;
        auto window = open({0, 0, 60, 60}, client);
        window->getSurface().getRow(20)[20] = 0xFFFFFFFF;
        client.painted.clear();
        window->invalidate({30, 30, 31, 31});

        window->scrollRect({10, 10, 50, 50}, c.delta);
        EXPECT_EQ(window->getSurface().getRow(c.mark.y)[c.mark.x], 0xFFFFFFFFU);
        desktop.processEvents();
        Region expected(c.uncovered);
        expected.add(CmRect{30, 30, 31, 31}.moved(c.delta));
        expected.intersect(CmRect{10, 10, 50, 50});
        EXPECT_EQ(client.painted, expected);
    }
}

std::vector<HeadlessMonitor> sideBySide(double leftScale, double rightScale) {
    return {{"left", {0, 0, 1000, 800}, {0, 30, 1000, 800}, leftScale},
            {"right", {1000, 0, 2000, 800}, {1000, 0, 2000, 800}, rightScale}};
}

TEST_F(HeadlessDesktopTest, InAProgramThatKnowsOneScaleAllWindowsHaveThatOfTheMainMonitor) {
    desktop.setMonitors(sideBySide(1.25, 1.5));
    for (const DpiAwareness awareness : {DpiAwareness::none, DpiAwareness::monitor, DpiAwareness::system}) {
        setDpiAwareness(awareness);
        const auto window = open({1200, 100, 1301, 201}, a);
        EXPECT_EQ(window->getScaleFactor(), awareness == DpiAwareness::system ? 1.25 : 1.5);
    }
    setDpiAwareness(DpiAwareness::none);
}

TEST_F(HeadlessDesktopTest, AWindowThatMovesToAnotherMonitorChangesItsScale) {
    desktop.setMonitors(sideBySide(1, 1.5));
    auto window = open({100, 100, 301, 201}, a);
    EXPECT_EQ(window->getSurface().width, 201);

    window->setPositionSize({1200, 100}, {201, 101});
    EXPECT_EQ(takeLog(), "a moved 1200,100; a scale 1.5");
    EXPECT_EQ(window->getSurface().width, 302);
    EXPECT_EQ(window->getSurface().height, 152);
    EXPECT_EQ(window->getSurface().scale, 1.5);
    EXPECT_EQ(window->getSize(), (CmSize{201, 101}));
    a.painted.clear();
    desktop.processEvents();
    EXPECT_TRUE(a.painted.contains(CmRect{0, 0, 201, 101}));
}

HeadlessMonitor scaled(double scale) {
    HeadlessMonitor monitor;
    monitor.scale = scale;
    return monitor;
}

TEST_F(HeadlessDesktopTest, DevicePixelsOfTheMouseDivideBackToItsPlace) {
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        SCOPED_TRACE(scale);
        desktop.setMonitors({scaled(scale)});
        WindowRecorder client;
        auto window = open({7, 3, 407, 303}, client);
        for (int32_t x = 0; x < 50; ++x) {
            client.onMouse = [&](const MouseEvent& event) {
                EXPECT_EQ(static_cast<int32_t>(event.position.x / scale), x);
            };
            desktop.postMouseMove({7 + x, 3});
            desktop.processEvents();
        }
    }
}

TEST_F(HeadlessDesktopTest, FractionalScalePresentsEveryPixelThatWasPainted) {
    desktop.setMonitors({scaled(1.5)});
    auto window = open({0, 0, 100, 100}, a);
    auto* headless = static_cast<HeadlessWindow*>(window.get());
    headless->takePresented();
    a.painted.clear();
    window->invalidate({1, 1, 3, 3});
    desktop.processEvents();
    EXPECT_TRUE(a.painted.contains(CmRect{1, 1, 3, 3}));
    EXPECT_TRUE(headless->takePresented().contains(CmRect{1, 1, 5, 5})) << "device pixels 1.5 to 4.5";
}

TEST_F(HeadlessDesktopTest, MaximizesIntoTheWorkAreaAndComesBack) {
    HeadlessMonitor monitor{"one", {0, 0, 1000, 800}, {0, 30, 1000, 800}, 1.0};
    desktop.setMonitors({monitor});
    auto window = open({10, 50, 210, 250}, a);

    window->setShowState(ShowState::maximized);
    EXPECT_EQ(takeLog(), "a moved 0,30; a sized 1000x770; a maximized");
    window->setShowState(ShowState::minimized);
    EXPECT_EQ(takeLog(), "a minimized; a deactivated main");
    window->setShowState(ShowState::maximized);
    takeLog();
    window->setPlacement({20, 60, 120, 160});
    EXPECT_EQ(takeLog(), "") << "a maximized window stays where it is";
    CmRect placement;
    window->getPlacement(placement);
    EXPECT_EQ(test::toText(placement), "20,60 100x100");
    window->setShowState(ShowState::normal);
    EXPECT_EQ(takeLog(), "a moved 20,60; a sized 100x100; a restored");
}

TEST_F(OneHeadlessWindow, KeepsSizesWithinTheLimits) {
    window->setLimits(LimitKind::minimum, {80, 20});
    window->setLimits(LimitKind::maximum, {150, 150});
    window->setPositionSize({0, 0}, {10, 400});
    EXPECT_EQ(takeLog(), "a sized 80x150");
    desktop.postUserSize(*window, {1000, 5});
    EXPECT_EQ(hear(), "a tracking started; a sized 150x20; a tracking ended");
}

TEST_F(HeadlessDesktopTest, RefusesSurfacesThatNoMemoryHolds) {
    auto window = open({0, 0, 30000, 30000}, a);
    EXPECT_TRUE(window->getSurface().isEmpty());
    EXPECT_TRUE(a.painted.isEmpty());
    window->setPositionSize({0, 0}, {10, 10});
    desktop.processEvents();
    EXPECT_FALSE(a.painted.isEmpty());
}

TEST_F(HeadlessDesktopTest, TimersRunInVirtualTime) {
    Ticker fast(desktop);
    Ticker slow(desktop);
    desktop.startTimer(30, fast);
    const TimerId slowTimer = desktop.startTimer(50, slow);
    desktop.advance(100);
    EXPECT_EQ(fast.times, (std::vector<int64_t>{30, 60, 90}));
    EXPECT_EQ(slow.times, (std::vector<int64_t>{50, 100}));
    desktop.stopTimer(slowTimer);
    desktop.advance(200);
    EXPECT_EQ(slow.times.size(), 2U);
    EXPECT_EQ(elapsed(desktop), 300);
}

TEST_F(HeadlessDesktopTest, ATimerMayStopItselfAndOthersWhileItRuns) {
    Ticker first(desktop);
    Ticker second(desktop);
    TimerId firstTimer = noTimer;
    const TimerId secondTimer = desktop.startTimer(10, second);
    first.onTick = [&] {
        desktop.stopTimer(firstTimer);
        desktop.stopTimer(secondTimer);
    };
    firstTimer = desktop.startTimer(5, first);
    desktop.advance(100);
    EXPECT_EQ(first.times, (std::vector<int64_t>{5}));
    EXPECT_TRUE(second.times.empty());
}

TEST_F(OneHeadlessWindow, ATimerThatIsAlwaysDueDoesNotStarveThePaint) {
    Ticker busy(desktop);
    busy.onTick = [&] { desktop.sleep(5); };
    desktop.startTimer(1, busy);
    a.painted.clear();
    window->invalidate({0, 0, 1, 1});
    for (int i = 0; i < 3; ++i)
        desktop.dispatchEvent();
    EXPECT_FALSE(a.painted.isEmpty());
}

TEST_F(HeadlessDesktopTest, WaitsJumpTheClockToWhatComesNext) {
    EXPECT_EQ(desktop.waitForEvent(40), WaitResult::timeout);
    EXPECT_EQ(elapsed(desktop), 40);
    Ticker ticker(desktop);
    const TimerId timer = desktop.startTimer(25, ticker);
    EXPECT_EQ(desktop.waitForEvent(1000), WaitResult::event);
    EXPECT_EQ(elapsed(desktop), 65);
    EXPECT_TRUE(desktop.dispatchEvent());
    desktop.stopTimer(timer);

    desktop.wakeUp();
    EXPECT_EQ(desktop.waitForEvent(-1), WaitResult::wakeUp);
    EXPECT_EQ(desktop.waitForEvent(-1), WaitResult::exhausted);
}

TEST_F(HeadlessDesktopTest, APauseHoldsTheQueueBackButNotTheTimers) {
    std::vector<int64_t> called;
    Ticker ticker(desktop);
    desktop.startTimer(10, ticker);
    desktop.postPause(35);
    desktop.postCall([&] { called.push_back(elapsed(desktop)); });
    desktop.advance(60);
    EXPECT_EQ(called, (std::vector<int64_t>{35}));
    EXPECT_EQ(ticker.times, (std::vector<int64_t>{10, 20, 30, 40, 50, 60}));
}

TEST_F(OneHeadlessWindow, ALoopWithinAnEventSeesTheNextEvent) {
    a.isLoggingMoves = false;
    bool isUp = false;
    a.onMouse = [&](const MouseEvent& event) {
        isUp |= event.kind == MouseKind::up;
        if (event.kind != MouseKind::down)
            return;
        desktop.setCapture(*window);
        while (!isUp && desktop.isCapturing())
            if (!desktop.dispatchEvent())
                desktop.waitForEvent(-1);
        log.emplace_back("loop ended");
        desktop.releaseCapture();
    };
    desktop.postMouseMove({5, 5});
    postClick();
    EXPECT_EQ(hear(), "a down 5,5 b1 m0; a up 5,5 b1 m0; loop ended");

    desktop.postButtonDown(leftButton);
    isUp = false;
    EXPECT_EQ(hear(), "a down 5,5 b1 m0; a capture lost; loop ended")
        << "nothing is left that could end the loop";
}

/// Feeds one call after the other, and counts lost captures.
class Script : public HeadlessFeeder {
public:
    bool feed(HeadlessDesktop& desktop) override {
        if (steps.empty())
            return false;
        desktop.postCall(steps.front());
        steps.pop_front();
        return true;
    }
    void captureStarved() override { ++starved; }

    std::deque<std::function<void()>> steps;
    int starved = 0;
};

TEST_F(OneHeadlessWindow, AsksForTheNextStepOnlyWhenAllElseIsDone) {
    a.isLoggingPaint = true;
    Script script;
    desktop.setFeeder(&script);
    script.steps = {[&] { window->invalidate({0, 0, 5, 5}); }, [&] { log.emplace_back("second step"); }};
    while (desktop.waitForEvent(-1) == WaitResult::event)
        desktop.dispatchEvent();
    EXPECT_EQ(takeLog(), "a paint 0,0 5x5; second step");
    desktop.setFeeder(nullptr);
}

TEST_F(OneHeadlessWindow, TimersDoNotKeepACaptureForEver) {
    Script script;
    desktop.setFeeder(&script);
    Ticker idle(desktop);
    const TimerId timer = desktop.startTimer(50, idle);
    desktop.setCapture(*window);
    const int64_t start = desktop.getTicks();
    for (int i = 0; i < 10'000 && desktop.isCapturing(); ++i)
        if (!desktop.dispatchEvent())
            desktop.waitForEvent(-1);
    EXPECT_EQ(script.starved, 1);
    EXPECT_EQ(takeLog(), "a capture lost");
    EXPECT_LE(desktop.getTicks() - start, HeadlessDesktop::starvationLimit);
    desktop.stopTimer(timer);
    desktop.setFeeder(nullptr);
}

/// Draws no tip; writes down when one would show.
class TipLog : public TipPresenter {
public:
    explicit TipLog(std::vector<std::string>& log) : log_(log) {}
    void showTip(PlatformWindow&, const CmRect& rect, std::u16string_view text, CmPoint) override {
        log_.push_back("tip " + test::toText(rect) + " " + std::string(text.begin(), text.end()));
    }
    void hideTip() override { log_.emplace_back("tip hidden"); }

private:
    std::vector<std::string>& log_;
};

TEST_F(OneHeadlessWindow, ShowsAPlainTipWhereTheMouseRests) {
    a.isLoggingMoves = false;
    TipLog tips(log);
    desktop.setTipPresenter(&tips);
    desktop.postMouseMove({10, 10});
    window->setToolTip({0, 0, 20, 20}, u"Gain");
    desktop.advance(499);
    EXPECT_EQ(takeLog(), "");
    desktop.advance(1);
    EXPECT_EQ(takeLog(), "tip 0,0 20x20 Gain");
    desktop.postButtonDown(leftButton);
    EXPECT_EQ(hear(), "tip hidden; a down 10,10 b1 m0");

    window->setToolTip({50, 50, 60, 60}, u"elsewhere");
    desktop.advance(2000);
    EXPECT_EQ(takeLog(), "") << "the mouse is not in the rect";
    window->setToolTip({0, 0, 20, 20}, u"gone");
    window->close(CloseMode::normal);
    desktop.advance(2000);
    EXPECT_EQ(takeLog(), "");
    desktop.setTipPresenter(nullptr);
}

TEST_F(HeadlessDesktopTest, MonitorsAnswerForPlacesOutsideOfThem) {
    desktop.setMonitors(sideBySide(1, 2));
    EXPECT_EQ(desktop.monitorAt({999, 10}), 0);
    EXPECT_EQ(desktop.monitorAt({1000, 10}), 1);
    EXPECT_EQ(desktop.monitorAt({5000, -10}), 1);
    EXPECT_EQ(desktop.monitorAt({-5000, 10}), 0);
    CmRect rect{1, 2, 3, 4};
    EXPECT_FALSE(desktop.getMonitorRect(2, MonitorArea::whole, rect));
    EXPECT_FALSE(desktop.getMonitorRect(-1, MonitorArea::whole, rect));
    EXPECT_EQ(test::toText(rect), "1,2 2x2");
    EXPECT_EQ(desktop.getMonitorName(1), "right");
    EXPECT_EQ(desktop.getMonitorName(2), "");
}

TEST_F(HeadlessDesktopTest, WindowsThatOutliveTheDesktopAreEmptyShells) {
    Ref<PlatformWindow> window;
    WindowRecorder client;
    {
        HeadlessDesktop brief;
        window = brief.createWindow(describe({0, 0, 10, 10}), client);
        window->show(ShowState::normal, showDefault);
        client.take();
    }
    window->invalidate({0, 0, 5, 5});
    window->update();
    window->activate();
    window->hide();
    EXPECT_EQ(window->getActivationState(), PlatformWindow::Activation::inactive);
    EXPECT_EQ(client.take(), "");
}

} // namespace
} // namespace qorl::platform
