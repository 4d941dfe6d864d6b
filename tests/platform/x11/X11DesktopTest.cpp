#include "platform/x11/X11Desktop.h"

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "platform/PollSource.h"
#include "platform/x11/X11Window.h"
#include "support/EnvironmentScope.h"
#include "support/WindowRecorder.h"
#include "support/XServer.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace qorl::platform {
namespace {

using test::WindowRecorder;
using test::XServer;
using test::XUser;

constexpr int64_t longestWait = 60'000; // milliseconds, for a busy machine
constexpr uint32_t framed = WindowStyle::sizable | WindowStyle::title | WindowStyle::frame |
                            WindowStyle::closeButton | WindowStyle::minimize | WindowStyle::maximize;

/// A desktop on an X server of its own.
class X11Scene {
public:
    explicit X11Scene(XServer::Manager manager, const char* absent = nullptr)
        : server(manager, absent), user(server.getDisplay()) {
        EXPECT_TRUE(server.isRunning()) << server.getError();
        std::string error;
        std::unique_ptr<DesktopServices> made = X11Desktop::create(server.getDisplay(), error);
        EXPECT_NE(made, nullptr) << error;
        desktop.reset(static_cast<X11Desktop*>(made.release()));
    }

    ~X11Scene() { EXPECT_EQ(server.tellEnd(), ""); }
    X11Scene(const X11Scene&) = delete;
    X11Scene& operator=(const X11Scene&) = delete;

    Ref<PlatformWindow> open(const CmRect& frame, WindowRecorder& client,
                             WindowKind kind = WindowKind::document, PlatformWindow* owner = nullptr,
                             uint32_t style = framed) {
        WindowDescription description;
        description.kind = kind;
        description.style = style;
        description.frame = frame;
        description.owner = owner;
        description.title = u"Test";
        client.painted.clear();
        Ref<PlatformWindow> window = desktop->createWindow(description, client);
        window->show(ShowState::normal, showDefault);
        EXPECT_TRUE(waitFor([&] { return !client.painted.isEmpty(); })) << "never painted";
        EXPECT_TRUE(waitForPixel(window->getPosition() + CmPoint{5, 5}, client.color & 0xFFFFFF));
        return window;
    }

    /// Runs the pump until `isTrue`; false when that never comes.
    bool waitFor(const std::function<bool()>& isTrue) {
        const int64_t end = getMonotonicMilliseconds() + longestWait;
        while (!isTrue()) {
            if (getMonotonicMilliseconds() > end)
                return false;
            if (!desktop->dispatchEvent())
                desktop->waitForEvent(20);
        }
        return true;
    }

    bool waitForPixel(CmPoint logical, uint32_t color) {
        return waitFor([&] { return user.getPixel(desktop->toDevicePoint(logical)) == color; });
    }

    bool waitForLine(WindowRecorder& client, const std::string& line) {
        return waitFor([&] { return client.has(line); });
    }

    bool waitUntilActive(const PlatformWindow& window) {
        return waitFor([&] { return desktop->getActiveWindow() == &window; });
    }

    XServer server;
    XUser user;
    std::unique_ptr<X11Desktop> desktop;
};

/// One with a window, and no manager of windows.
class X11WindowTest : public ::testing::Test, protected X11Scene {
protected:
    X11WindowTest() : X11Scene(XServer::Manager::none), window(open({100, 50, 300, 150}, client)) {}

    using X11Scene::waitForLine;
    bool waitForLine(const std::string& line) { return waitForLine(client, line); }

    WindowRecorder client;
    Ref<PlatformWindow> window;
};

TEST(X11Desktop, PutsOnlyDirtyPixelsOnTheScreen) {
    for (const char* absent : {static_cast<const char*>(nullptr), "MIT-SHM"}) {
        SCOPED_TRACE(absent ? "along the wire" : "shared memory");
        X11Scene scene(XServer::Manager::none, absent);
        WindowRecorder client;
        auto window = scene.open({100, 50, 500, 350}, client);
        EXPECT_EQ(static_cast<X11Window*>(window.get())->usesSharedMemory(), !absent);

        client.color = 0xFF00C000;
        window->invalidate({10, 10, 20, 20});
        EXPECT_TRUE(scene.waitForPixel({110, 60}, 0x00C000));
        EXPECT_TRUE(scene.waitForPixel({119, 69}, 0x00C000));
        EXPECT_EQ(scene.user.getPixel({120, 70}), 0x2060A0U);
        EXPECT_EQ(scene.user.getPixel({109, 59}), 0x2060A0U);

        // Drawn outside of a paint: shows when presented, and survives being covered.
        window->getSurface().getRow(100)[100] = 0xFFFF0000;
        window->present(Region(CmRect{100, 100, 101, 101}));
        EXPECT_TRUE(scene.waitForPixel({200, 150}, 0xFF0000));
        WindowRecorder coverClient;
        coverClient.color = 0xFF111111;
        auto cover = scene.open({190, 140, 210, 160}, coverClient, WindowKind::popup, window.get(), 0);
        cover->close(CloseMode::normal);
        client.painted.clear();
        EXPECT_TRUE(scene.waitForPixel({200, 150}, 0xFF0000));
        EXPECT_TRUE(client.painted.isEmpty()) << "what was covered must come from the surface";
    }
}

TEST_F(X11WindowTest, HearsTheMouseAndItsWheel) {
    user.moveMouse({110, 70});
    ASSERT_TRUE(waitForLine("move 10,20 b0 m0"));
    EXPECT_TRUE(client.has("enter 10,20 b0 m0"));
    EXPECT_EQ(desktop->getMousePosition(), (CmPoint{110, 70}));
    client.isLoggingMoves = false;
    client.take();

    user.pressButton(1);
    user.clickButton(3);
    user.releaseButton(1);
    ASSERT_TRUE(waitForLine("up 10,20 b1 m0"));
    EXPECT_EQ(client.take(), "down 10,20 b1 m0; down 10,20 b4 m0; up 10,20 b4 m0; up 10,20 b1 m0");

    for (const uint8_t wheel : {4, 5, 6, 7}) {
        user.clickButton(wheel);
    }
    ASSERT_TRUE(waitForLine("wheel 10,20 1 0"));
    EXPECT_EQ(client.take(), "wheel 10,20 0 1; wheel 10,20 0 -1; wheel 10,20 -1 0; wheel 10,20 1 0");
}

TEST(X11Desktop, DoesWithoutTheExtensionsThatItUses) {
    for (const char* absent : {"RANDR", "XFIXES", "XInputExtension"}) {
        SCOPED_TRACE(absent);
        X11Scene scene(XServer::Manager::none, absent);
        WindowRecorder client;
        auto window = scene.open({100, 50, 500, 350}, client);
        window->activate();
        ASSERT_TRUE(scene.waitUntilActive(*window));
        CmRect screen;
        EXPECT_TRUE(scene.desktop->getMonitorRect(0, MonitorArea::whole, screen));
        EXPECT_EQ(test::toText(screen), "0,0 1024x768");
        scene.user.moveMouse({110, 70});
        ASSERT_TRUE(scene.waitForLine(client, "move 10,20 b0 m0"));
        client.take();
        client.isLoggingMoves = false;
        for (const uint8_t button : {1, 4}) {
            scene.user.clickButton(button);
        }
        scene.user.typeKey(XKB_KEY_a);
        ASSERT_TRUE(scene.waitForLine(client, "key up v145 c97 m0"));
        EXPECT_EQ(client.take(), "down 10,20 b1 m0; up 10,20 b1 m0; wheel 10,20 0 1; "
                                 "key down v145 c97 m0; key up v145 c97 m0");
    }
}

/// What comes of keys that are pressed one after the other and held, unless they are dead or lock something.
std::string playKeys(X11Scene& scene, WindowRecorder& client, const std::vector<uint32_t>& keys) {
    const auto isTapped = [](uint32_t key) {
        return key == XKB_KEY_dead_circumflex || key == XKB_KEY_Num_Lock;
    };
    for (const uint32_t key : keys) {
        scene.user.pressKey(key);
        if (isTapped(key))
            scene.user.releaseKey(key);
    }
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        if (!isTapped(*key))
            scene.user.releaseKey(*key);
    scene.user.typeKey(XKB_KEY_F1);
    EXPECT_TRUE(scene.waitForLine(client, "key up v40 c0 m0"));
    const std::string heard = client.take();
    return heard.substr(0, heard.find("; key down v40"));
}

struct TypedKeys {
    const char* what;
    const char* layout;
    std::vector<uint32_t> keys;
    const char* heard;
};
const TypedKeys typedKeys[] = {
    {"Shift",
     nullptr,
     {XKB_KEY_Shift_L, XKB_KEY_z},
     "key down v54 c0 m0; key down v170 c90 m1; key up v170 c90 m1; key up v54 c0 m1"},
    {"Ctrl",
     nullptr,
     {XKB_KEY_Control_L, XKB_KEY_1},
     "key down v55 c0 m0; key down v129 c49 m2; key up v129 c49 m2; key up v55 c0 m2"},
    {"Return", nullptr, {XKB_KEY_Return}, "key down v4 c0 m0; key up v4 c0 m0"},
    {"a letter", "de", {XKB_KEY_udiaeresis}, "key down v0 c252 m0; key up v0 c252 m0"},
    {"a third level",
     "de",
     {XKB_KEY_ISO_Level3_Shift, XKB_KEY_q},
     "key down v161 c64 m0; key up v161 c64 m0"},
    {"a dead key", "de", {XKB_KEY_dead_circumflex, XKB_KEY_a}, "key down v145 c226 m0; key up v145 c97 m0"},
    {"two dead keys", "de", {XKB_KEY_dead_circumflex, XKB_KEY_F2}, "key down v41 c0 m0; key up v41 c0 m0"},
    {"Alt",
     "de",
     {XKB_KEY_Alt_L, XKB_KEY_z},
     "key down v56 c0 m0; key down v170 c122 m4; "
     "key up v170 c122 m4; key up v56 c0 m4"},
    {"Meta", "de", {XKB_KEY_Super_L, XKB_KEY_z}, "key down v170 c122 m8; key up v170 c122 m8"},
    {"the pad", "de", {XKB_KEY_KP_End}, "key down v9 c0 m0; key up v9 c0 m0"},
    {"the pad's numbers",
     "de",
     {XKB_KEY_Num_Lock, XKB_KEY_KP_End},
     "key down v52 c0 m0; key up v52 c0 m0; key down v25 c49 m0; key up v25 c49 m0"},
    {"letters of the second layout",
     "ru,us",
     {XKB_KEY_Cyrillic_ef},
     "key down v145 c1092 m0; key up v145 c1092 m0"},
    {"no Latin letters", "ru", {XKB_KEY_Cyrillic_a}, "key down v0 c1072 m0; key up v0 c1072 m0"},
};

TEST(X11Desktop, TypesWhatTheLayoutSaysAlsoWhenThatChanges) {
    const testing::EnvironmentScope locale("LC_ALL", "en_US.UTF-8");
    X11Scene scene(XServer::Manager::none);
    WindowRecorder client;
    auto window = scene.open({100, 50, 300, 150}, client);
    window->activate();
    ASSERT_TRUE(scene.waitUntilActive(*window));
    client.take();
    for (const TypedKeys& c : typedKeys) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(!c.layout || scene.server.setLayout(c.layout));
        EXPECT_EQ(playKeys(scene, client, c.keys), c.heard);
    }
    scene.user.pressKey(XKB_KEY_Cyrillic_a);
    EXPECT_TRUE(scene.waitForLine(client, "key down v0 c1072 m0 again"));
    EXPECT_FALSE(client.has("key up v0 c1072 m0")) << "a key that repeats is held";
}

TEST_F(X11WindowTest, KeepsTheMouseWhileItIsCaptured) {
    user.moveMouse({110, 60});
    ASSERT_TRUE(waitForLine("move 10,10 b0 m0"));
    desktop->setCapture(*window);
    desktop->getMousePosition(); // the server has taken the capture when it answers
    user.moveMouse({600, 500});
    EXPECT_TRUE(waitForLine("move 500,450 b0 m0"));
    EXPECT_FALSE(client.has("leave 500,450 b0 m0"));
    desktop->releaseCapture();
    desktop->getMousePosition();
    user.moveMouse({601, 500});
    EXPECT_TRUE(waitFor([&] { return client.take().find("leave") != std::string::npos; }));
}

TEST_F(X11WindowTest, MeetsAllMovesThatWaitAsTheLastOfThem) {
    user.moveMouse({105, 55});
    ASSERT_TRUE(waitForLine("move 5,5 b0 m0"));
    client.take();
    for (int32_t x = 110; x < 140; ++x)
        user.moveMouse({x, 60});
    user.pressButton(1);
    for (int32_t x = 140; x < 170; ++x)
        user.moveMouse({x, 60});
    user.releaseButton(1);
    ASSERT_TRUE(waitForLine("up 69,10 b1 m0"));
    EXPECT_EQ(client.take(), "move 39,10 b0 m0; down 39,10 b1 m0; move 69,10 b1 m0; up 69,10 b1 m0");
}

TEST_F(X11WindowTest, KnowsTheButtonsAndKeysOfTheEventAtHand) {
    std::string seen;
    client.onMouse = [&](const MouseEvent& event) {
        if (event.kind == MouseKind::down || event.kind == MouseKind::up)
            seen += "b" + std::to_string(desktop->eventMouseButtons()) + " m" +
                    std::to_string(desktop->eventModifiers()) + "; ";
    };
    user.moveMouse({110, 60});
    user.pressKey(XKB_KEY_Shift_L);
    user.pressButton(1);
    user.pressButton(3);
    user.releaseButton(1);
    user.releaseKey(XKB_KEY_Shift_L);
    user.releaseButton(3);
    // All of it is over by now.
    EXPECT_EQ(desktop->currentMouseButtons(), static_cast<uint32_t>(noButton));
    ASSERT_TRUE(waitForLine("up 10,10 b4 m0"));
    EXPECT_EQ(seen, "b1 m1; b5 m1; b4 m1; b0 m0; ");
}

/// Sees to it that an event stands unread in the connection when the desktop has looked for one, and whether
/// the desktop then goes to sleep over it.
class LateEvent : public PollSource {
public:
    explicit LateEvent(X11Scene& scene) : scene_(scene) {}

    int64_t prepare(std::vector<PollEntry>&) override {
        xcb_connection_t* connection = scene_.desktop->getConnection();
        if (!std::exchange(isSent_, true)) {
            scene_.user.moveMouse({120, 70});
            pollfd socket = {xcb_get_file_descriptor(connection), POLLIN, 0};
            EXPECT_EQ(::poll(&socket, 1, static_cast<int>(longestWait)), 1);
            xcb_no_operation(connection); // Something to flush, which reads as well.
        } else if (X11Reply<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection)}) {
            isMissed = true;
        }
        return 0;
    }
    bool check(const PollEntry*, size_t) override { return false; }
    void dispatch() override {}

    bool isMissed = false;

private:
    X11Scene& scene_;
    bool isSent_ = false;
};

TEST_F(X11WindowTest, DoesNotSleepOverAnEventThatWasReadAlready) {
    user.moveMouse({110, 60});
    ASSERT_TRUE(waitForLine("move 10,10 b0 m0"));
    desktop->processEvents();
    LateEvent source(*this);
    desktop->addPollSource(source);
    EXPECT_EQ(desktop->waitForEvent(longestWait), WaitResult::event);
    EXPECT_FALSE(source.isMissed);
    desktop->removePollSource(source);
}

TEST(X11Desktop, GivesKeysAndOutsidePressesToAPopup) {
    X11Scene scene(XServer::Manager::openbox);
    WindowRecorder client;
    WindowRecorder popupClient;
    popupClient.color = 0xFFA02060;
    popupClient.isLoggingMoves = false;
    auto window = scene.open({100, 80, 400, 300}, client);
    window->activate();
    ASSERT_TRUE(scene.waitUntilActive(*window));
    client.take();
    auto popup = scene.open({150, 120, 250, 200}, popupClient, WindowKind::popup, window.get(), 0);
    EXPECT_EQ(client.take(), "deactivated");
    EXPECT_EQ(popupClient.take(), "activated");

    scene.user.typeKey(XKB_KEY_Down);
    ASSERT_TRUE(scene.waitForLine(popupClient, "key up v14 c0 m0"));
    scene.user.click({900, 700});
    ASSERT_TRUE(scene.waitFor([&] { return popupClient.has("up 750,580 b1 m0"); })) << popupClient.take();
    EXPECT_TRUE(popupClient.has("down 750,580 b1 m0"));

    client.take();
    popup->close(CloseMode::normal);
    EXPECT_EQ(client.take(), "activated");
    scene.user.typeKey(XKB_KEY_Up);
    EXPECT_TRUE(scene.waitForLine(client, "key up v12 c0 m0"));
}

TEST(X11Desktop, AgreesWithAWindowManagerOnPlaceSizeAndState) {
    X11Scene scene(XServer::Manager::openbox);
    WindowRecorder client;
    auto window = scene.open({200, 150, 500, 350}, client);
    ASSERT_TRUE(scene.waitFor([&] { return window->getFrameInsets().top > 0; })) << "a framed window";
    EXPECT_TRUE(scene.waitFor([&] {
        return window->getPosition() == CmPoint{200, 150};
    })) << "the position is that of the client area";

    client.take();
    window->setPositionSize({260, 210}, {320, 240});
    EXPECT_TRUE(scene.waitForLine(client, "moved 260,210"));
    EXPECT_TRUE(scene.waitForLine(client, "sized 320x240"));
    EXPECT_TRUE(scene.waitForPixel({579, 449}, 0x2060A0));

    client.take();
    window->setShowState(ShowState::maximized);
    ASSERT_TRUE(scene.waitForLine(client, "maximized"));
    CmRect work;
    scene.desktop->getMonitorRect(0, MonitorArea::work, work);
    EXPECT_TRUE(scene.waitFor([&] { return window->getSize().width == work.width(); }));
    CmRect placement;
    window->getPlacement(placement);
    EXPECT_EQ(test::toText(placement), "260,210 320x240");
    window->setShowState(ShowState::normal);
    ASSERT_TRUE(scene.waitForLine(client, "restored"));
    EXPECT_TRUE(scene.waitFor([&] { return window->getSize() == CmSize{320, 240}; }));

    window->setShowState(ShowState::maximized);
    ASSERT_TRUE(scene.waitFor([&] { return window->getSize().width == work.width(); }));
    window->setPositionSize({250, 190}, {300, 220});
    window->setShowState(ShowState::normal);
    EXPECT_TRUE(scene.waitFor([&] {
        return window->getSize() == CmSize{300, 220} && window->getPosition() == CmPoint{250, 190};
    })) << "it came back to the place from before";
    window->setPositionSize({260, 210}, {320, 240});
    EXPECT_TRUE(scene.waitFor([&] { return window->getSize() == CmSize{320, 240}; }));

    client.take();
    window->setShowState(ShowState::minimized);
    ASSERT_TRUE(scene.waitForLine(client, "minimized"));
    window->activate();
    ASSERT_TRUE(scene.waitForLine(client, "restored"));
    EXPECT_TRUE(scene.waitForPixel({270, 220}, 0x2060A0));

    window->hide();
    EXPECT_TRUE(scene.waitFor([&] { return scene.user.getPixel({270, 220}) != 0x2060A0U; }));
    window->show(ShowState::normal, showDefault);
    EXPECT_TRUE(scene.waitForPixel({270, 220}, 0x2060A0));
}

TEST(X11Desktop, TellsWhichWindowIsActiveAndWhenTheUserAsksToClose) {
    X11Scene scene(XServer::Manager::openbox);
    std::vector<std::string> log;
    WindowRecorder a("a", &log);
    WindowRecorder b("b", &log);
    a.isLoggingMoves = b.isLoggingMoves = false;
    auto first = scene.open({100, 100, 300, 300}, a);
    ASSERT_TRUE(scene.waitUntilActive(*first));
    auto second = scene.open({400, 100, 600, 300}, b);
    ASSERT_TRUE(scene.waitUntilActive(*second));
    log.clear();

    first->activate();
    ASSERT_TRUE(scene.waitUntilActive(*first));
    EXPECT_EQ(a.take(), "b deactivated main; a activated main") << "never both, and never neither in between";

    auto panel = scene.open({100, 400, 200, 500}, b, WindowKind::floating, first.get());
    ASSERT_TRUE(scene.waitUntilActive(*panel));
    EXPECT_TRUE(a.has("a deactivated")) << "the main window stays, but heard: " << a.take();
    EXPECT_EQ(first->getActivationState(), PlatformWindow::Activation::childActive);

    log.clear();
    scene.user.sendToWindow(static_cast<uint32_t>(second->getHandle()), "WM_PROTOCOLS",
                            scene.user.intern("WM_DELETE_WINDOW"), 0);
    ASSERT_TRUE(scene.waitFor([&] { return a.has("b close pressed"); }));
    EXPECT_TRUE(second->isVisible()) << "closing is the window's own decision";
}

TEST_F(X11WindowTest, WritesTheHintsThatDesktopsRead) {
    const auto id = static_cast<uint32_t>(window->getHandle());
    window->setTitle(u"K\u00F6rper \U0001F3B9");
    uint32_t pixels[6] = {0x80402000, 0, 0xFFFFFFFF, 0, 0, 0};
    const PixelSurface icon{reinterpret_cast<uint8_t*>(pixels), 2, 3, 8, 1.0};
    window->setIcon(std::span(&icon, 1));
    window->setOpacity(0.5F);
    desktop->flushAll();
    ASSERT_TRUE(waitFor([&] { return !user.getProperty(id, "_NET_WM_WINDOW_OPACITY").empty(); }));

    EXPECT_EQ(user.getProperty(id, "_NET_WM_NAME"), "K\xC3\xB6rper \xF0\x9F\x8E\xB9");
    const std::string words = user.getProperty(id, "_NET_WM_ICON");
    ASSERT_EQ(words.size(), 8U * 4);
    const auto* values = reinterpret_cast<const uint32_t*>(words.data());
    EXPECT_EQ(values[0], 2U);
    EXPECT_EQ(values[1], 3U);
    EXPECT_EQ(values[2], 0x80804000U) << "icons are not premultiplied";
    EXPECT_EQ(values[4], 0xFFFFFFFFU);
    const std::string protocols = user.getProperty(id, "WM_PROTOCOLS");
    const uint32_t closing = user.intern("WM_DELETE_WINDOW");
    EXPECT_EQ(std::memcmp(protocols.data(), &closing, sizeof closing), 0);
    EXPECT_EQ(user.getProperty(id, "_MOTIF_WM_HINTS").size(), 5U * 4);

    window->setStyleFlag(WindowStyle::sizable, false);
    window->setPositionSize({100, 100}, {250, 120});
    ASSERT_TRUE(waitForLine("sized 250x120"));
    const std::string hints = user.getProperty(id, "WM_NORMAL_HINTS");
    uint32_t least[2] = {};
    ASSERT_GE(hints.size(), 7U * 4);
    std::memcpy(least, hints.data() + 5 * 4, sizeof least);
    EXPECT_EQ(least[0], 250U) << "a manager that goes by the hints would have refused";
    EXPECT_EQ(least[1], 120U);
}

TEST(X11Desktop, FollowsTheDesktopsScale) {
    X11Scene scene(XServer::Manager::openbox);
    WindowRecorder client;
    auto window = scene.open({100, 100, 301, 201}, client);
    CmRect screen;
    ASSERT_TRUE(scene.desktop->getMonitorRect(0, MonitorArea::whole, screen));
    EXPECT_EQ(test::toText(screen), "0,0 1024x768");
    EXPECT_EQ(window->getScaleFactor(), 1.0);
    client.take();

    scene.user.setRootProperty("RESOURCE_MANAGER", "Xft.dpi:\t144\n");
    ASSERT_TRUE(scene.waitForLine(client, "scale 1.5"));
    EXPECT_EQ(window->getSize(), (CmSize{201, 101})) << "the logical size stands";
    EXPECT_TRUE(scene.waitFor([&] {
        const PixelSurface surface = window->getSurface();
        return surface.width == 302 && surface.height == 152 && surface.scale == 1.5;
    }));
    EXPECT_TRUE(scene.waitForPixel({295, 195}, 0x2060A0));
    scene.desktop->getMonitorRect(0, MonitorArea::whole, screen);
    EXPECT_EQ(test::toText(screen), "0,0 682x512");

    scene.user.moveMouse(scene.desktop->toDevicePoint(window->getPosition()) + CmPoint{15, 30});
    EXPECT_TRUE(scene.waitForLine(client, "move 15,30 b0 m0")) << "mouse places are device pixels";
}

TEST_F(X11WindowTest, ShowsPointersOfEveryShape) {
    for (int32_t i = 0; i < cursorShapeCount; ++i) {
        const Ref<PlatformCursor> cursor = desktop->createCursor(static_cast<CursorShape>(i));
        ASSERT_NE(cursor, nullptr) << i;
        desktop->setCursor(cursor.get());
    }
    EXPECT_EQ(desktop->createCursor(static_cast<CursorShape>(cursorShapeCount)), nullptr);
    std::vector<uint32_t> pixels(32 * 32, 0xFF00FF00);
    PixelSurface picture{reinterpret_cast<uint8_t*>(pixels.data()), 32, 32, 128, 1.0};
    const Ref<PlatformCursor> cursor = desktop->createPictureCursor(picture, {3, 3});
    EXPECT_NE(cursor, nullptr);
    desktop->setCursor(cursor.get());
    desktop->showCursor(DesktopServices::CursorVisibility::hidden);
    picture.width = 100'000;
    EXPECT_EQ(desktop->createPictureCursor(picture, {}), nullptr);
    desktop->setCursor(nullptr);
}

TEST_F(X11WindowTest, OutlivesATitleThatNoRequestCanHold) {
    // Three bytes each, so that the cut falls into the middle of one.
    window->setTitle(std::u16string(8'000'000, u'\u20AC'));
    const auto id = static_cast<uint32_t>(window->getHandle());
    desktop->getMousePosition(); // the server has taken the title when it answers
    const std::string title = user.getProperty(id, "_NET_WM_NAME");
    EXPECT_EQ(title.size(), 15'999U);
    EXPECT_EQ(title.substr(title.size() - 3), "\xE2\x82\xAC");
    EXPECT_NE(desktop->waitForEvent(0), WaitResult::exhausted) << "the connection still stands";
}

TEST(X11Desktop, SaysWhichScreenItNeeds) {
    using Case = std::pair<int, const char*>;
    for (const auto& [depth, told] :
         {Case{16, "a depth of 16 in 16 bits"}, {30, "a depth of 30 in 32 bits"}}) {
        XServer server(XServer::Manager::none, nullptr, depth);
        ASSERT_TRUE(server.isRunning()) << server.getError();
        std::string error;
        EXPECT_EQ(X11Desktop::create(server.getDisplay(), error), nullptr);
        EXPECT_NE(error.find(told), std::string::npos) << error;
    }
}

TEST_F(X11WindowTest, SurvivesTheServersEnd) {
    server.kill();
    EXPECT_TRUE(waitFor([&] { return desktop->waitForEvent(-1) == WaitResult::exhausted; }));
    window->invalidate({0, 0, 10, 10});
    desktop->flushAll();
    window->close(CloseMode::normal);
    WindowDescription description;
    EXPECT_EQ(desktop->createWindow(description, client), nullptr);
}

TEST(X11Desktop, StartsAgainAfterItsEnd) {
    const XServer server(XServer::Manager::none);
    ASSERT_TRUE(server.isRunning()) << server.getError();
    const testing::EnvironmentScope display("DISPLAY", server.getDisplay().c_str());
    for (int i = 0; i < 3; ++i) {
        std::string error;
        ASSERT_TRUE(start(Backend::automatic, error)) << error;
        EXPECT_EQ(desktop()->getName(), "x11");
        EXPECT_FALSE(start(Backend::headless, error));
        stop();
        EXPECT_EQ(desktop(), nullptr);
    }
}

} // namespace
} // namespace qorl::platform
