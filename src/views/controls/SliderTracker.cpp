#include "views/controls/SliderTracker.h"

#include "platform/PlatformEvents.h"
#include "views/controls/UControl.h"

#include <algorithm>
#include <cmath>

namespace qorl {

namespace {

constexpr float slowRampStep = 0.0033333332F;
constexpr float fastRampFactor = 3;
constexpr int64_t firstRampInterval = 500;
constexpr int64_t rampInterval = 50;
/// A handle smaller than this can't be hit, so that every press counts.
constexpr int32_t smallestHandle = 5;
/// The ramp leaves at least this much around the handle.
constexpr int32_t rampReach = 9;
constexpr float fineFactor = 10;

constinit SliderMode globalMode = SliderMode::jump;

} // namespace

SliderMode getGlobalSliderMode() {
    return globalMode;
}

void setGlobalSliderMode(SliderMode mode) {
    globalMode = mode == SliderMode::standard ? SliderMode::jump : mode;
}

void SliderTracker::setTrack(const CmRect& track, int32_t handleSize, int32_t borderSize) {
    track_ = track;
    handleSize_ = std::clamp(handleSize, 0, std::max(0, has(vertical) ? track.height() : track.width()));
    borderSize_ = borderSize;
}

int32_t SliderTracker::trackLength() const {
    const int32_t extent = has(vertical) ? track_.height() : track_.width();
    return std::max(1, extent - handleSize_);
}

bool SliderTracker::isTurned() const {
    return has(turnsReversedKind) && owner_.getValueObject()->getKind() == Binding::ValueKind::reversedNumber;
}

float SliderTracker::turned(float position) const {
    return has(inverts) != isTurned() ? 1 - position : position;
}

float SliderTracker::positionOfValue() const {
    return turned(owner_.getNormalized());
}

CmRect SliderTracker::handleRectAt(float position) const {
    const float share = std::clamp(has(vertical) ? 1 - position : position, 0.0F, 1.0F);
    const auto offset = static_cast<int32_t>(std::lround(share * static_cast<float>(trackLength())));
    CmRect handle = track_;
    if (has(vertical)) {
        handle.top += offset;
        handle.bottom = handle.top + handleSize_;
    } else {
        handle.left += offset;
        handle.right = handle.left + handleSize_;
    }
    return handle;
}

CmPoint SliderTracker::shifted(CmPoint point, int32_t by) const {
    return has(vertical) ? point.moved(0, by) : point.moved(by, 0);
}

SliderMode SliderTracker::modeOfPress(CmPoint point) const {
    const SliderMode mode = styleMode_ == SliderMode::standard ? globalMode : styleMode_;
    if (!has(hasBorder))
        return mode;
    const CmRect inner = has(vertical) ? track_.grown(0, -borderSize_) : track_.grown(-borderSize_, 0);
    return inner.contains(point) ? SliderMode::jump : mode;
}

void SliderTracker::rememberDefault() {
    Binding::Value* value = owner_.getValueObject();
    int32_t standard = 0;
    const int64_t range = int64_t{value->getMax()} - value->getMin();
    hasDefault_ = range > 0 && value->getDefault(standard);
    if (hasDefault_)
        defaultPosition_ =
            turned(static_cast<float>(int64_t{standard} - value->getMin()) / static_cast<float>(range));
}

SliderTracker::Press SliderTracker::press(CmPoint point, uint32_t modifiers) {
    if (tracking_ || !owner_.getValueObject()->bound()->isEnabled())
        return Press::consumed;
    const CmRect handle = handleRect();
    const int32_t handleStart = along(handle.origin());
    onHandle_ = handle.contains(point);
    if (has(isMouseTransparent) && !onHandle_)
        return Press::unhandled;
    mode_ = modeOfPress(point);
    const bool ctrl = (modifiers & platform::ctrl) != 0;
    if (mode_ == SliderMode::touch && !onHandle_ && handleSize_ >= smallestHandle && !ctrl)
        return Press::consumed;

    relativeShift_ = 0;
    if (mode_ == SliderMode::relative && !onHandle_) {
        relativeShift_ = handleStart + handleSize_ / 2 - along(point);
        onHandle_ = true;
    } else if (mode_ == SliderMode::relative) {
        mode_ = SliderMode::touch;
    }
    const CmPoint effective = shifted(point, relativeShift_);
    grabOffset_ = onHandle_ ? along(effective) - handleStart : handleSize_ / 2;
    lastPoint_ = effective;
    position_ = lastPosition_ = fineAnchor_ = positionOfValue();
    rememberDefault();
    rampActive_ = mode_ == SliderMode::ramp && !ctrl && !onHandle_ &&
                  !handle
                       .grown(std::max(0, (rampReach - handle.width() + 1) / 2),
                              std::max(0, (rampReach - handle.height() + 1) / 2))
                       .contains(point);
    tracking_ = true;
    edited_ = retain(owner_.getValueObject());
    edited_->beginEdit();
    if (rampActive_)
        beginRamp(point);
    return Press::tracking;
}

void SliderTracker::beginRamp(CmPoint point) {
    const CmPoint handle = handleRect().origin();
    const bool mouseIsLower = has(vertical) ? point.y > handle.y : point.x < handle.x;
    const float sign = mouseIsLower ? -1.0F : 1.0F;
    const int64_t range = int64_t{owner_.getControlMax()} - owner_.getControlMin();
    const float least = range > 0 ? 1.0F / static_cast<float>(range) : 0;
    rampStep_ = sign * std::max(slowRampStep, least);
    rampStepFast_ = sign * std::max(slowRampStep * fastRampFactor, least);
    rampInterval_ = firstRampInterval;
    firstRamp_ = true;
}

float SliderTracker::positionUnder(CmPoint point, uint32_t modifiers, int32_t pixelsFurther) const {
    const int32_t place = along(point) + pixelsFurther - grabOffset_ - trackStart();
    float position = static_cast<float>(place) / static_cast<float>(trackLength());
    if (has(vertical))
        position = 1 - position;
    if (modifiers & platform::shift)
        position = (position - fineAnchor_) / fineFactor + fineAnchor_;
    return std::clamp(position, 0.0F, 1.0F);
}

float SliderTracker::snapToDefault(float position, CmPoint point, uint32_t modifiers) const {
    if (!hasDefault_)
        return position;
    const float further = positionUnder(point, modifiers, 1);
    const auto [low, high] = std::minmax(position, further);
    return defaultPosition_ >= low && defaultPosition_ <= high ? defaultPosition_ : position;
}

void SliderTracker::move(CmPoint point, uint32_t modifiers) {
    if (!tracking_ || rampActive_)
        return;
    point = shifted(point, relativeShift_);
    if (onHandle_ && along(point) == along(lastPoint_))
        return;
    lastPoint_ = point;
    float position = positionUnder(point, modifiers, 0);
    if (!(modifiers & platform::shift))
        fineAnchor_ = position;
    position = snapToDefault(position, point, modifiers);
    if (position != lastPosition_)
        setPosition(position);
}

void SliderTracker::setPosition(float position) {
    // What the owner shows by now is another value, which nobody has begun to edit.
    if (owner_.getValueObject() != edited_.get())
        return;
    position_ = lastPosition_ = position;
    owner_.setNormalizedValue(turned(position), true);
}

bool SliderTracker::rampHasArrived(CmPoint point) const {
    const CmRect handle = handleRectAt(position_);
    const int32_t start = along(handle.origin());
    const int32_t end = start + handleSize_;
    const bool movesToEnd = has(vertical) ? rampStep_ < 0 : rampStep_ > 0;
    return movesToEnd ? end >= along(point) : start <= along(point);
}

void SliderTracker::endRamp(CmPoint point) {
    rampActive_ = false;
    // The mouse has the handle from here on, wherever in a step of the value the two have met.
    onHandle_ = true;
    lastPoint_ = point;
    grabOffset_ = along(point) - along(handleRectAt(position_).origin());
}

void SliderTracker::tick(CmPoint point, uint32_t modifiers, int64_t now) {
    if (!isRamping() || (!firstRamp_ && now - rampLast_ < rampInterval_))
        return;
    if (rampHasArrived(point)) {
        endRamp(point);
        return;
    }
    const float step = modifiers == platform::shift ? rampStep_ : rampStepFast_;
    setPosition(std::clamp(position_ + step, 0.0F, 1.0F));
    rampLast_ = now;
    if (firstRamp_)
        firstRamp_ = false;
    else
        rampInterval_ = rampInterval;
}

void SliderTracker::release() {
    if (!tracking_)
        return;
    tracking_ = rampActive_ = false;
    const Ref<Binding::Value> edited = std::move(edited_);
    edited->endEdit(true);
}

} // namespace qorl
