#include "support/HeadlessShell.h"

#include "commands/UKeyCode.h"
#include "foundation/text/ConstString.h"
#include "platform/Platform.h"
#include "platform/Region.h"
#include "schemes/GlobalSchemes.h"
#include "skin/ValueRegistry.h"
#include "support/GoldenImage.h"
#include "windows/UDocWindow.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace qorl::testing {

namespace {

constexpr CmPoint windowPlace{100, 80};

} // namespace

HeadlessShell::HeadlessShell(platform::HeadlessSettings settings) {
    start(std::move(settings));
}

HeadlessShell::HeadlessShell(Ref<UView> content) : HeadlessShell(Setup{}, std::move(content)) {}

HeadlessShell::HeadlessShell(Setup setup, Ref<UView> content) {
    makeWindow(std::move(setup));
    if (content)
        window_->addSubView(std::move(content));
    open(*window_);
}

HeadlessShell::HeadlessShell(std::string_view content, std::string_view values)
    : HeadlessShell(Setup{}, content, values) {}

HeadlessShell::HeadlessShell(Setup setup, std::string_view content, std::string_view values) {
    const CmSize size = setup.size;
    makeWindow(std::move(setup));
    content_ = buildSkin(size, content, values);
    if (content_)
        window_->addSubView(content_);
    open(*window_);
}

void HeadlessShell::makeWindow(Setup setup) {
    for (platform::HeadlessMonitor& monitor : setup.desktop.monitors)
        monitor.scale = setup.scale;
    start(std::move(setup.desktop));
    window_ = make<UDocWindow>(CmRect::ofSize(windowPlace, setup.size), setup.style, ConstString("Test"));
    target_ = window_;
}

Ref<UView> HeadlessShell::buildSkin(CmSize size, std::string_view content, std::string_view values) {
    GlobalSchemes::resetAll();
    wizard_ = make<UIWizard>();
    controller_ = make<PreviewController>();
    DiagnosticList faults;
    controller_->readValues(values, "values", faults);
    const std::string skin = "<template name=\"Test\" attach=\"all\" size=\"0,0," +
                             std::to_string(size.width) + "," + std::to_string(size.height) + "\">" +
                             std::string(content) + "</template>";
    EXPECT_TRUE(wizard_->loadFromString(skin)) << wizard_->getErrorText();
    Ref<UView> view = wizard_->createView("Test", controller_.get(), nullptr);
    for (const Diagnostic& fault : faults.all())
        ADD_FAILURE() << toText(fault.position) << ": " << fault.text;
    for (const Diagnostic& fault : wizard_->diagnostics())
        ADD_FAILURE() << toText(fault.position) << ": " << fault.text;
    return view;
}

HeadlessShell::~HeadlessShell() {
    if (window_)
        window_->willClose(true);
    settle();
    content_.reset();
    target_.reset();
    window_.reset();
    if (ValueRegistry* registry = ValueRegistry::peek())
        registry->clear();
    wizard_.reset();
    controller_.reset();
    userInterface_.reset();
    platform::stop();
}

void HeadlessShell::start(platform::HeadlessSettings settings) {
    platform_ = new platform::HeadlessDesktop(std::move(settings));
    EXPECT_TRUE(platform::start(platform_)) << "another shell is running";
    userInterface_ = std::make_unique<UserInterface>();
}

void HeadlessShell::scale(double factor) {
    platform::HeadlessMonitor monitor;
    monitor.scale = factor;
    platform_->setMonitors({monitor});
}

void HeadlessShell::open(UWindow& window) {
    EXPECT_TRUE(window.show());
    settle();
}

void HeadlessShell::settle() {
    // What is delivered may post again; a program that never comes to rest is a fault of its own.
    for (int pass = 0; pass < 100; ++pass) {
        loop().flushEvents();
        if (!platform_->hasEvent())
            return;
    }
    ADD_FAILURE() << "events keep coming without an end";
}

void HeadlessShell::advance(int64_t milliseconds) {
    platform_->advance(milliseconds);
    settle();
}

void HeadlessShell::postMove(CmPoint point) {
    platform_->postMouseMove(onScreen(point));
}

void HeadlessShell::postPress(CmPoint point, uint32_t button) {
    postMove(point);
    platform_->postButtonDown(button);
}

void HeadlessShell::postRelease(uint32_t button) {
    platform_->postButtonUp(button);
}

void HeadlessShell::postKey(std::string_view text) {
    UKeyCode key;
    ASSERT_TRUE(UKeyCode::fromText(text, key)) << "no such key: " << text;
    const uint32_t held = platform_->currentModifiers();
    const char16_t character = key.typedCharacter();
    platform_->postModifiers(held | modifiersToPlatform(key.modifiers));
    platform_->postKey(platform::KeyKind::down, character, key.virtualKey);
    platform_->postKey(platform::KeyKind::up, character, key.virtualKey);
    platform_->postModifiers(held);
}

void HeadlessShell::move(CmPoint point) {
    postMove(point);
    settle();
}

void HeadlessShell::press(CmPoint point, uint32_t button) {
    postPress(point, button);
    settle();
}

void HeadlessShell::release(uint32_t button) {
    postRelease(button);
    settle();
}

void HeadlessShell::click(CmPoint point, uint32_t button) {
    // Far from the click before, in time: two of them are never taken for a double click.
    platform_->postPause(1000);
    postPress(point, button);
    postRelease(button);
    advance(1000);
}

void HeadlessShell::clickWhile(CmPoint point, std::function<void()> held) {
    postPress(point);
    platform_->postCall(std::move(held));
    postRelease();
    settle();
}

void HeadlessShell::doubleClick(CmPoint point) {
    platform_->postPause(1000);
    for (int i = 0; i < 2; ++i) {
        postPress(point);
        postRelease();
    }
    advance(1000);
}

void HeadlessShell::drag(CmPoint from, CmPoint to, uint32_t button) {
    postPress(from, button);
    postMove({(from.x + to.x) / 2, (from.y + to.y) / 2});
    postMove(to);
    postRelease(button);
    settle();
}

void HeadlessShell::wheel(CmPoint point, double deltaY, double deltaX) {
    postMove(point);
    platform_->postWheel(deltaX, deltaY);
    settle();
}

void HeadlessShell::key(std::string_view text) {
    postKey(text);
    settle();
}

void HeadlessShell::type(std::string_view text) {
    for (const char16_t unit : ConstString(text).toUtf16()) {
        const uint8_t virtualKey = UKeyCode{unit, 0, 0}.normalised().virtualKey;
        platform_->postKey(platform::KeyKind::down, unit, virtualKey);
        platform_->postKey(platform::KeyKind::up, unit, virtualKey);
    }
    settle();
}

void HeadlessShell::hold(uint32_t modifiers) {
    platform_->postModifiers(modifiers);
    settle();
}

Picture HeadlessShell::screenshot(UWindow& window) {
    settle();
    Picture picture;
    if (!window.getPlatformWindow())
        return picture;
    const platform::PixelSurface surface = window.getPlatformWindow()->getSurface();
    picture.size = {surface.width, surface.height};
    picture.pixels.reserve(static_cast<size_t>(surface.width) * static_cast<size_t>(surface.height));
    for (int32_t y = 0; y < surface.height; ++y)
        picture.pixels.insert(picture.pixels.end(), surface.getRow(y), surface.getRow(y) + surface.width);
    return picture;
}

Picture HeadlessShell::screenshot(UView& view) {
    const Picture whole = screenshot(*view.getWindow());
    const CmRect frame = CmRect::ofSize(view.frameToWindow({}), view.getFrameSize());
    const CmRect device = platform::scaledOutward(frame, view.getWindow()->getScaleFactor())
                              .intersect(CmRect::ofSize({}, whole.size));
    Picture picture{device.size(), {}};
    for (int32_t y = device.top; y < device.bottom; ++y)
        for (int32_t x = device.left; x < device.right; ++x)
            picture.pixels.push_back(whole.at(x, y));
    return picture;
}

Picture HeadlessShell::screenshotPressed(UView& view) {
    const CmSize size = view.getClientSize();
    const CmPoint middle = view.clientToWindow({size.width / 2, size.height / 2});
    Picture picture;
    postPress(middle);
    platform_->postCall([&] {
        picture = screenshot(view);
        postMove({-100, -100});
        postRelease();
    });
    settle();
    return picture;
}

::testing::AssertionResult matchesGolden(const Picture& actual, std::string_view name) {
    const auto bitmap = make<UBitmap>(actual.size);
    const Ref<GraphicsImage> image = bitmap->getPixels(CmRect::ofSize({}, actual.size));
    {
        const PixelLock pixels(*image);
        for (int32_t y = 0; y < actual.size.height; ++y)
            std::copy_n(actual.pixels.data() + size_t(y) * size_t(actual.size.width), actual.size.width,
                        pixels->getRow(y));
    }
    return matchesGolden(*image, name);
}

} // namespace qorl::testing
