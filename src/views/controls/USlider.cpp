#include "views/controls/USlider.h"

#include "foundation/messages/FMessage.h"
#include "graphics/UBitmap.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/PressLoop.h"
#include "windows/UWindow.h"

#include <algorithm>

namespace qorl {

namespace {

constexpr int32_t drawnHandleSize = 11;
constexpr int32_t drawnTrackWidth = 4;
constexpr int32_t borderSize = 8;
/// How often a ramp looks at the clock.
constexpr int32_t rampResolution = 10;
constexpr int32_t pageSteps = 10;

struct StyleMode {
    uint32_t bit;
    SliderMode mode;
};
constexpr StyleMode styleModes[] = {
    {SliderStyle::jump, SliderMode::jump},
    {SliderStyle::touch, SliderMode::touch},
    {SliderStyle::ramp, SliderMode::ramp},
    {SliderStyle::relative, SliderMode::relative},
};

SliderMode modeOfStyle(uint32_t style) {
    for (const StyleMode& entry : styleModes)
        if (style & entry.bit)
            return entry.mode;
    return SliderMode::standard;
}

void repeat(int32_t times, Binding::Value& value, void (Binding::Value::*step)()) {
    for (int32_t i = 0; i < times; ++i)
        (value.*step)();
}

uint32_t heldModifiers() {
    auto* desktop = platform::desktop();
    return desktop ? desktop->currentModifiers() : 0;
}

UControl* createSlider(const CmRect& rect, int32_t style, Binding::Value* value, const ConstString& title) {
    return new USlider(rect, title, value, static_cast<uint32_t>(style));
}

const bool sliderRegistered =
    (ControlTable::add(ControlLook::drawn, ControlKind::slider, &createSlider), true);

} // namespace

USlider::USlider(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : UControl(frame, title, value, style), tracker_(*this) {
    setFocusable(true);
    USlider::setStyle(style);
}

USlider::~USlider() = default;

bool USlider::isVertical() const {
    return hasStyle(SliderStyle::anyVertical);
}

bool USlider::isShownReversed() const {
    return hasStyle(SliderStyle::anyReversed) && !hasStyle(SliderStyle::noReverse);
}

uint32_t USlider::trackerOptions() const {
    uint32_t options = 0;
    const auto add = [&options](bool on, SliderTracker::Option option) { options |= on ? option : 0U; };
    add(isVertical(), SliderTracker::vertical);
    add(!hasStyle(SliderStyle::noReverse), SliderTracker::turnsReversedKind);
    add(hasStyle(SliderStyle::invert) != isShownReversed(), SliderTracker::inverts);
    add(hasStyle(SliderStyle::border), SliderTracker::hasBorder);
    add(hasStyle(SliderStyle::messageLoop), SliderTracker::runsMessageLoop);
    add(hasStyle(SliderStyle::mouseTransparent), SliderTracker::isMouseTransparent);
    return options;
}

void USlider::setStyle(uint32_t style) {
    UControl::setStyle(style);
    tracker_.setOptions(trackerOptions());
    tracker_.setStyleMode(modeOfStyle(style));
    layoutTrack();
    update();
}

CmRect USlider::trackRect() const {
    return getClientBounds();
}

void USlider::layoutTrack() {
    tracker_.setTrack(trackRect(), getHandleSize(), borderSize);
}

void USlider::sizeChanged(const CmRect& oldClientRect) {
    layoutTrack();
    UControl::sizeChanged(oldClientRect);
}

int32_t USlider::getHandleSize() const {
    return drawnHandleSize;
}

bool USlider::drawContent(const CmRect& rect) {
    if (hasStyle(ControlStyle::noDraw))
        return true;
    layoutTrack();
    ViewDevice device(*this, rect);
    drawTrack(device, trackRect());
    drawHandle(device, tracker_.handleRect());
    return true;
}

void USlider::drawTrack(UDrawDevice& device, const CmRect& track) {
    if (hasStyle(SliderStyle::noBackground))
        return;
    CmRect groove = track;
    if (isVertical()) {
        groove.left += (track.width() - drawnTrackWidth) / 2;
        groove.right = groove.left + drawnTrackWidth;
    } else {
        groove.top += (track.height() - drawnTrackWidth) / 2;
        groove.bottom = groove.top + drawnTrackWidth;
    }
    getScheme()->drawSliderTrack(device, groove, isVertical());
}

void USlider::drawHandle(UDrawDevice& device, const CmRect& handle) {
    const uint32_t marks =
        (isEnabled() ? 0 : MarkState::disabled) | (tracker_.isTracking() ? MarkState::pressed : 0);
    getScheme()->drawSliderHandle(device, handle, marks);
}

bool USlider::mouseDown(CmPoint point) {
    const auto keptAlive = retain(this);
    if (UView::mouseDown(point))
        return true;
    layoutTrack();
    const SliderTracker::Press press = tracker_.press(point, heldModifiers());
    if (press != SliderTracker::Press::tracking)
        return press == SliderTracker::Press::consumed;
    notifyTargetOfClick();
    tracker_.move(point, heldModifiers());
    update();
    if (tracker_.has(SliderTracker::runsMessageLoop)) {
        runMessageLoop();
        return true;
    }
    if (UWindow* window = getWindow())
        window->captureMouse(this);
    if (tracker_.isRamping()) {
        rampTimer_ = make<UTimer>(this, rampResolution);
        rampTimer_->start();
        stepRamp();
    }
    return true;
}

void USlider::runMessageLoop() {
    PressLoop press(*this, tracker_.isRamping() ? rampResolution : 0);
    auto* desktop = platform::desktop();
    while (press.next()) {
        tracker_.tick(press.point(), desktop->currentModifiers(), desktop->getTicks());
        tracker_.move(press.point(), desktop->currentModifiers());
    }
    if (!press.wasInterrupted())
        tracker_.move(press.point(), desktop->currentModifiers());
    endGesture();
}

bool USlider::mouseOver(CmPoint point) {
    if (!tracker_.isTracking())
        return UControl::mouseOver(point);
    const auto keptAlive = retain(this);
    tracker_.move(point, heldModifiers());
    return true;
}

bool USlider::mouseUp(CmPoint point) {
    if (!tracker_.isTracking())
        return UControl::mouseUp(point);
    const auto keptAlive = retain(this);
    tracker_.move(point, heldModifiers());
    endGesture();
    return true;
}

void USlider::mouseCaptureLost() {
    endGesture();
}

void USlider::detached(UView* parent) {
    endGesture();
    UControl::detached(parent);
}

void USlider::endGesture() {
    if (rampTimer_)
        rampTimer_->stop();
    rampTimer_.reset();
    if (!tracker_.isTracking())
        return;
    tracker_.release();
    if (UWindow* window = getWindow())
        window->releaseMouse(this);
    update();
}

void USlider::stepRamp() {
    CmPoint point;
    auto* desktop = platform::desktop();
    if (!desktop || !getMousePosition(point))
        return;
    tracker_.tick(point, desktop->currentModifiers(), desktop->getTicks());
    if (!tracker_.isRamping() && rampTimer_)
        rampTimer_->stop();
}

int32_t USlider::handleMessage(FMessage* message) {
    if (message->isNamed("Timer") && rampTimer_ && message->getObject("Timer") == rampTimer_.get()) {
        const auto keptAlive = retain(this);
        stepRamp();
        return handled;
    }
    if (!message->isNamed("Wheel"))
        return UControl::handleMessage(message);
    const bool sideways = message->getInt("Axis") == 2;
    if (sideways && isVertical())
        return notHandled;
    const double distance = message->getFloat("Distance");
    return stepByWheel(isShownReversed() ? -distance : distance, message->getInt("Inverted") == 1);
}

bool USlider::keyDown(const UKeyCode& key) {
    if (key.modifiers != 0 || !isValueEnabled())
        return UControl::keyDown(key);
    Binding::Value& value = *getValueObject();
    const auto keptAlive = retain(&value);
    switch (key.virtualKey) {
    case Key::space: bound()->resetToDefault(); return true;
    case Key::end: bound()->setValueAndPerform(value.getMin()); return true;
    case Key::home: bound()->setValueAndPerform(value.getMax()); return true;
    case Key::left:
    case Key::down: value.decrement(); return true;
    case Key::right:
    case Key::up: value.increment(); return true;
    case Key::pageUp: repeat(pageSteps, value, &Binding::Value::increment); return true;
    case Key::pageDown: repeat(pageSteps, value, &Binding::Value::decrement); return true;
    default: return UControl::keyDown(key);
    }
}

UBitmapSlider::~UBitmapSlider() = default;

void UBitmapSlider::setBitmaps(Ref<UBitmap> track, Ref<UBitmap> handle) {
    trackBitmap_ = std::move(track);
    handleBitmap_ = std::move(handle);
    layoutTrack();
    update();
}

int32_t UBitmapSlider::getHandleSize() const {
    if (!handleBitmap_)
        return USlider::getHandleSize();
    return isVertical() ? handleBitmap_->getHeight() : handleBitmap_->getWidth();
}

void UBitmapSlider::drawTrack(UDrawDevice& device, const CmRect& track) {
    if (!trackBitmap_) {
        USlider::drawTrack(device, track);
        return;
    }
    const CmSize size = trackBitmap_->getSize();
    device.drawBitmapAt(trackBitmap_.get(), {track.left + (track.width() - size.width) / 2,
                                             track.top + (track.height() - size.height) / 2});
}

void UBitmapSlider::drawHandle(UDrawDevice& device, const CmRect& handle) {
    if (!handleBitmap_) {
        USlider::drawHandle(device, handle);
        return;
    }
    const CmSize size = handleBitmap_->getSize();
    const CmPoint place{handle.left + (handle.width() - size.width) / 2,
                        handle.top + (handle.height() - size.height) / 2};
    const Ref<UBitmap> look = isEnabled() ? handleBitmap_ : handleBitmap_->getDesaturated(1, 0.5F);
    device.drawBitmapAt(look.get(), place);
}

} // namespace qorl
