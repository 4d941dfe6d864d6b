#include "platform/WindowBase.h"

#include "support/HeadlessScene.h"

#include <string_view>
#include <utility>

namespace qorl::platform {
namespace {

using test::WindowRecorder;

using WindowBaseTest = HeadlessDesktopTest;

/// Closes another window as soon as its own becomes active.
class ClosingClient : public WindowRecorder {
public:
    PlatformWindow* closes = nullptr;

    void activated(MainWindow) override {
        if (PlatformWindow* other = std::exchange(closes, nullptr))
            other->close(CloseMode::normal);
    }
};

TEST_F(WindowBaseTest, EndsACloseThatIsMetByAnother) {
    ClosingClient client;
    WindowRecorder c{"c", &log};
    auto owner = open({0, 0, 100, 100}, client);
    auto owned = open({0, 0, 50, 50}, a, WindowKind::floating, owner.get());
    auto inner = open({0, 0, 20, 20}, c, WindowKind::floating, owned.get());
    client.closes = owner.get();
    owned->close(CloseMode::normal);
    EXPECT_TRUE(desktop.getWindows().empty());
    EXPECT_EQ(takeLog(), "c owner closed");
}

TEST_F(WindowBaseTest, MovesAWindowToAnotherOwner) {
    WindowRecorder c{"c", &log};
    auto first = open({0, 0, 100, 100}, a);
    auto second = open({50, 0, 150, 100}, b);
    auto panel = open({0, 0, 50, 50}, c, WindowKind::floating, first.get());
    first->raise();
    panel->setOwner(second.get());
    EXPECT_EQ(desktop.windowAt({60, 60}), first.get()) << "the new owner stays where it is";
    second->raise();
    EXPECT_EQ(desktop.windowAt({10, 10}), panel.get()) << "it stays above its owner";
    second->setOwner(panel.get());
    panel->center();
    EXPECT_EQ(panel->getPosition(), (CmPoint{75, 25})) << "an owner must not be owned by its own window";
    takeLog();
    first->close(CloseMode::normal);
    EXPECT_EQ(takeLog(), "");
    EXPECT_TRUE(panel->isVisible());
    panel->setOwner(nullptr);
    second->close(CloseMode::normal);
    EXPECT_TRUE(panel->isVisible()) << "a window without an owner goes with none";
}

TEST_F(WindowBaseTest, ForgetsAWindowThatClosesUnderTheMouse) {
    auto first = open({0, 0, 100, 100}, a);
    auto second = open({0, 0, 100, 100}, b);
    desktop.postMouseMove({10, 10});
    desktop.postButtonDown(leftButton);
    desktop.processEvents();
    second->close(CloseMode::normal);
    second.reset();
    log.clear();
    desktop.postMouseMove({11, 11});
    desktop.postButtonUp(leftButton);
    EXPECT_EQ(hear(), "a enter 11,11 b1 m0; a move 11,11 b1 m0; a up 11,11 b1 m0");
}

/// Hands its steps on as they come, as the windows of a real desktop do, and tells when it dies.
class BareWindow : public HeadlessWindow {
public:
    BareWindow(HeadlessDesktop& desktop, const WindowDescription& description, PlatformWindowClient& client,
               std::vector<std::string>& log)
        : HeadlessWindow(desktop, description, client), desktop_(desktop), log_(log) {}

protected:
    ~BareWindow() override { log_.push_back("gone"); }
    void nativeShow(ShowState, uint32_t) override {
        desktop_.activateWindow(this);
        log_.push_back("shown");
    }
    void nativeActivate() override {
        desktop_.activateWindow(this);
        log_.push_back("raised");
    }
    void nativeSetShowState(ShowState state) override {
        reportShowState(state);
        log_.push_back("changed");
    }
    void nativeMove(CmPoint position, CmSize size) override {
        reportGeometry(position, size, toDeviceSize(size));
        log_.push_back("moved");
    }

private:
    HeadlessDesktop& desktop_;
    std::vector<std::string>& log_;
};

/// Gives up its window as soon as it hears anything of it.
class FleetingClient : public WindowRecorder {
public:
    Ref<PlatformWindow> window;

    void activated(MainWindow) override { end(); }
    void moved(CmPoint) override { end(); }
    void minimized() override { end(); }

private:
    void end() {
        if (const Ref<PlatformWindow> last = std::move(window))
            last->close(CloseMode::normal);
    }
};

class BareDesktop : public HeadlessDesktop {
public:
    Ref<PlatformWindow> createBare(WindowRecorder& client, std::vector<std::string>& log) {
        auto window = make<BareWindow>(*this, describe({0, 0, 100, 100}), client, log);
        windowCreated(*window);
        return window;
    }
};

TEST(WindowBase, LivesToTheEndOfAnOperationInWhichItIsGivenUp) {
    const struct {
        const char* step;
        void (*act)(PlatformWindow& window);
    } cases[] = {
        {"shown", [](PlatformWindow& window) { window.show(ShowState::normal, showDefault); }},
        {"raised", [](PlatformWindow& window) { window.activate(); }},
        {"changed", [](PlatformWindow& window) { window.setShowState(ShowState::minimized); }},
        {"moved",
         [](PlatformWindow& window) {
             window.setPositionSize({10, 10}, {50, 50});
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.step);
        BareDesktop desktop;
        std::vector<std::string> log;
        FleetingClient client;
        Ref<PlatformWindow> window = desktop.createBare(client, log);
        if (c.step == std::string_view("raised")) {
            window->show(ShowState::normal, showDefault);
            desktop.activateWindow(nullptr);
            log.clear();
        }
        client.window = std::move(window);
        c.act(*client.window);
        EXPECT_EQ(log, (std::vector<std::string>{c.step, "gone"}));
    }
}

} // namespace
} // namespace qorl::platform
