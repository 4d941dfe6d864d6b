#include "views/controls/USlider.h"

#include "binding/UColorValue.h"
#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/UScheme.h"
#include "views/Reach.h"
#include "views/ViewDevice.h"
#include "views/controls/ControlStyle.h"
#include "views/controls/PressLoop.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <array>
#include <optional>

namespace qorl {

namespace {

constexpr int32_t drawnHandleSize = 11;
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
    return desktop ? desktop->eventModifiers() : 0;
}

UControl* createSlider(const CmRect& rect, int32_t style, Binding::Value* value, const ConstString& title) {
    return new USlider(rect, title, value, static_cast<uint32_t>(style));
}

const bool sliderRegistered =
    (ControlTable::add(ControlLook::drawn, ControlKind::slider, &createSlider), true);

} // namespace

struct USlider::Look {
    std::array<std::optional<UColor>, static_cast<size_t>(SliderPart::count)> colors;
    CmSize handle;
};

USlider::USlider(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : UControl(frame, title, value, style), tracker_(*this) {
    setFocusable(true);
    USlider::setStyle(style);
}

USlider::~USlider() = default;

bool USlider::isVertical() const {
    return hasStyle(SliderStyle::anyVertical);
}

bool USlider::turnsWheel() const {
    return hasStyle(SliderStyle::anyReversed) && !hasStyle(SliderStyle::noReverse);
}

uint32_t USlider::trackerOptions() const {
    uint32_t options = 0;
    const auto add = [&options](bool on, SliderTracker::Option option) { options |= on ? option : 0U; };
    add(isVertical(), SliderTracker::vertical);
    add(!hasStyle(SliderStyle::noReverse), SliderTracker::turnsReversedKind);
    add(hasStyle(SliderStyle::invert), SliderTracker::inverts);
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
    const int32_t given = !look_ ? 0 : isVertical() ? look_->handle.height : look_->handle.width;
    tracker_.setTrack(trackRect(), given > 0 ? given : getHandleSize(), borderSize);
}

void USlider::sizeChanged(const CmRect& oldClientRect) {
    layoutTrack();
    UControl::sizeChanged(oldClientRect);
}

int32_t USlider::getHandleSize() const {
    return drawnHandleSize;
}

bool USlider::drawContent(const CmRect& rect) {
    layoutTrack();
    ViewDevice device(*this, rect);
    drawTrack(device, trackRect());
    if (look_ || hasStyle(SliderStyle::anyLightStrip))
        drawStrips(device);
    const CmRect handle = shownHandle();
    drawHandle(device, handle);
    if (look_ || hasStyle(SliderStyle::lightStripHandle))
        drawHandleColor(device, handle);
    return true;
}

USlider::Look& USlider::look() {
    if (!look_)
        look_ = std::make_unique<Look>();
    return *look_;
}

void USlider::setPartColor(SliderPart part, const UColor& color) {
    look().colors[static_cast<size_t>(part)] = color;
    update();
}

void USlider::setHandleSize(CmSize size) {
    look().handle = withinReach(size);
    layoutTrack();
    update();
}

const UColor* USlider::getPartColor(SliderPart part) const {
    const auto* color = look_ ? &look_->colors[static_cast<size_t>(part)] : nullptr;
    return color && *color ? &**color : nullptr;
}

bool USlider::getStripColor(UColor& color) const {
    if (!hasStyle(SliderStyle::anyLightStrip))
        return false;
    if (auto* value = cast<UColorValue>(getSecondValue()))
        color = UColor::fromPacked(value->packed());
    else if (const UColor* given = getPartColor(SliderPart::strip))
        color = *given;
    else
        color = getScheme()->getColor(SchemeColor::select);
    return true;
}

/// The place in the range where the strip begins.
float USlider::stripStart() const {
    const int64_t min = getControlMin();
    const int64_t max = getControlMax();
    if (hasStyle(SliderStyle::lightStripAuto) && min < 0 && max > 0)
        return static_cast<float>(-min) / static_cast<float>(max - min);
    if (hasStyle(SliderStyle::lightStripBilinear))
        return 0.5F;
    return hasStyle(SliderStyle::lightStripLinearMax) ? 1 : 0;
}

/// The groove from one place in the range to another; an end of the range is an end of the groove.
CmRect USlider::grooveBetween(float from, float to) const {
    const auto centre = [this](float place) {
        const CmRect handle = tracker_.handleRectFor(place);
        return isVertical() ? (handle.top + handle.bottom) / 2 : (handle.left + handle.right) / 2;
    };
    CmRect part = UScheme::sliderGroove(trackRect(), isVertical());
    int32_t& low = isVertical() ? part.top : part.left;
    int32_t& high = isVertical() ? part.bottom : part.right;
    const int32_t start =
        from <= 0 || from >= 1 ? (centre(from) < centre(1 - from) ? low : high) : centre(from);
    const int32_t end = centre(to);
    low = std::min(start, end);
    high = std::max(start, end);
    return part;
}

void USlider::drawStrips(UDrawDevice& device) {
    if (const UColor* filled = getPartColor(SliderPart::filled)) {
        device.setBrushColor(*filled);
        device.fillRect(grooveBetween(0, getNormalized()));
    }
    if (UColor color; getStripColor(color)) {
        device.setBrushColor(color);
        device.fillRect(grooveBetween(stripStart(), getNormalized()));
    }
}

/// As broad as it is told to be, in the middle of the track.
CmRect USlider::shownHandle() const {
    CmRect handle = tracker_.handleRect();
    if (!look_)
        return handle;
    if (const int32_t breadth = look_->handle.width; isVertical() && breadth > 0) {
        handle.left += (handle.width() - breadth) / 2;
        handle.right = handle.left + breadth;
    } else if (const int32_t height = look_->handle.height; !isVertical() && height > 0) {
        handle.top += (handle.height() - height) / 2;
        handle.bottom = handle.top + height;
    }
    return handle;
}

void USlider::drawHandleColor(UDrawDevice& device, const CmRect& handle) {
    constexpr int32_t edge = 2;
    UColor color;
    if (!hasStyle(SliderStyle::lightStripHandle) || !getStripColor(color)) {
        const UColor* given = getPartColor(SliderPart::handle);
        if (!given)
            return;
        color = *given;
    }
    device.setBrushColor(color);
    device.fillRect(handle.grown(-edge, -edge));
}

void USlider::drawTrack(UDrawDevice& device, const CmRect&) {
    if (hasStyle(SliderStyle::noBackground))
        return;
    if (const UColor* color = getPartColor(SliderPart::track)) {
        device.setBrushColor(*color);
        device.fillRect(UScheme::sliderGroove(trackRect(), isVertical()));
    } else {
        getScheme()->drawSliderTrack(device, trackRect(), isVertical());
    }
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
    // The gesture may be over: who was told of it may have hidden the slider.
    if (!tracker_.isTracking())
        return true;
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
        tracker_.tick(press.point(), desktop->eventModifiers(), desktop->getTicks());
        tracker_.move(press.point(), desktop->eventModifiers());
    }
    if (!press.wasInterrupted())
        tracker_.move(press.point(), desktop->eventModifiers());
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
    const auto keptAlive = retain(this);
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
    tracker_.tick(point, desktop->eventModifiers(), desktop->getTicks());
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
    return stepByWheel(turnsWheel() ? -distance : distance, message->getInt("Inverted") != 0);
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

} // namespace qorl
