#pragma once

#include "application/UserInterface.h"
#include "foundation/Cast.h"
#include "platform/headless/HeadlessDesktop.h"
#include "skin/PreviewController.h"
#include "skin/UIWizard.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string_view>
#include <vector>

namespace qorl::testing {

/// The pixels of a window or view as a user saw them, in device pixels; a copy.
struct Picture {
    CmSize size;
    std::vector<uint32_t> pixels; ///< 0xAARRGGBB, premultiplied

    uint32_t at(int32_t x, int32_t y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x)];
    }
    friend bool operator==(const Picture& a, const Picture& b) {
        return a.size == b.size && a.pixels == b.pixels;
    }
};

/// A whole program on the headless platform: desktop, event loop, messenger, scheme, and one window with the
/// views under test. Input goes the way of a user's: into the platform's queue, through the pump, down the
/// window.
///
///     HeadlessShell shell{make<MyView>(CmRect{0, 0, 200, 20})};
///     shell.drag({140, 10}, {100, 10});
///     EXPECT_EQ(shell.screenshot().at(100, 10), 0xFFFF0000);
///
/// Points are in client coordinates of `target`, the shell's own window at first. Every gesture is over when
/// its operation returns: events were dispatched, posted messages and deferred changes delivered, dirty
/// regions painted. One shell at a time.
class HeadlessShell {
public:
    struct Setup {
        CmSize size{400, 300};
        double scale = 1.0;
        uint32_t style = 0xFD;
        platform::HeadlessSettings desktop = {};
    };

    /// A bare desktop: no window yet.
    explicit HeadlessShell(platform::HeadlessSettings settings);
    /// A document window with the given client and `content` in it, opened and painted.
    explicit HeadlessShell(Ref<UView> content = {});
    HeadlessShell(Setup setup, Ref<UView> content);
    /// A window with the views of a skin: `content` is what stands in a template of the window's size. Its
    /// values are those of `values`, in lines of `PreviewController::readValues`, and from 0 to 100 what else
    /// the skin asks for.
    explicit HeadlessShell(std::string_view content, std::string_view values = {});
    HeadlessShell(Setup setup, std::string_view content, std::string_view values = {});
    ~HeadlessShell();
    HeadlessShell(const HeadlessShell&) = delete;

    platform::HeadlessDesktop& platform() { return *platform_; }
    UDesktop& desktop() { return userInterface_->desktop(); }
    EventLoop& loop() { return userInterface_->loop(); }
    UWindow& window() { return *window_; }
    /// The values of a shell that was made from a skin.
    PreviewController& controller() { return *controller_; }
    Binding::Value& value(const char* name) { return *controller_->getValue(name); }
    /// The view of the template.
    UView& content() { return *content_; }
    /// The view for an element of `content`, counted from 0 as they stand there.
    template <class T = UView>
    T& view(int32_t index) {
        auto* found = cast<T>(content_->getSubView(index));
        if (!found)
            ADD_FAILURE() << "no such view in the skin: " << index;
        return *found;
    }
    /// Puts the desktop onto one monitor of another scale.
    void scale(double factor);
    /// Opens a further window and waits until it is painted.
    void open(UWindow& window);
    /// The window that points are counted from, here on.
    void aim(UWindow& window) { target_ = retain(&window); }

    // Gestures.

    void move(CmPoint point);
    void press(CmPoint point, uint32_t button = platform::leftButton);
    void release(uint32_t button = platform::leftButton);
    void click(CmPoint point, uint32_t button = platform::leftButton);
    /// A click in which `held` runs while the button is down, in a nested loop too.
    void clickWhile(CmPoint point, std::function<void()> held);
    /// Two clicks, fast enough to count as a double one.
    void doubleClick(CmPoint point);
    /// Press, two moves, release.
    void drag(CmPoint from, CmPoint to, uint32_t button = platform::leftButton);
    void wheel(CmPoint point, double deltaY, double deltaX = 0);
    /// "Ctrl+Shift+Z", "Tab", "a": pressed and released.
    void key(std::string_view text);
    void type(std::string_view text);
    /// A word of `platform::Modifier`, until the next call.
    void hold(uint32_t modifiers);
    /// Passes virtual time.
    void advance(int64_t milliseconds);
    /// Runs until nothing is left to do now.
    void settle();

    /// Puts the events of a gesture into the queue only, so that a nested loop can take them.
    void postMove(CmPoint point);
    void postPress(CmPoint point, uint32_t button = platform::leftButton);
    void postRelease(uint32_t button = platform::leftButton);
    void postKey(std::string_view text);

    Picture screenshot() { return screenshot(*target_); }
    Picture screenshot(UWindow& window);
    Picture screenshot(UView& view);
    /// What `view` looks like while the left button is held on its middle; the button is let go outside.
    Picture screenshotPressed(UView& view);

private:
    void start(platform::HeadlessSettings settings);
    void makeWindow(Setup setup);
    Ref<UView> buildSkin(CmSize size, std::string_view content, std::string_view values);
    CmPoint onScreen(CmPoint point) const { return target_->clientToScreen(point); }

    platform::HeadlessDesktop* platform_ = nullptr;
    std::unique_ptr<UserInterface> userInterface_;
    Ref<UWindow> window_;
    Ref<UWindow> target_;
    Ref<UIWizard> wizard_;
    Ref<PreviewController> controller_;
    Ref<UView> content_;
};

/// Compares with a picture in tests/golden: see `matchesGolden` for bitmaps.
::testing::AssertionResult matchesGolden(const Picture& actual, std::string_view name);

} // namespace qorl::testing
