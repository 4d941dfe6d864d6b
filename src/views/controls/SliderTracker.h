#pragma once

#include "binding/Value.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <cstdint>

namespace qorl {

class UControl;

/// How a press on a slider is taken. The numbers are those of the preference "Slider Mode".
enum class SliderMode : int32_t { standard = 0, jump = 1, touch = 2, ramp = 3, relative = 4 };

/// The mode of sliders whose style names none.
SliderMode getGlobalSliderMode();
void setGlobalSliderMode(SliderMode mode);

/// Drives one gesture on a slider: from the press, over the moves and the ramp's steps, to the release.
///
/// Positions run from 0 at the low end of the track to 1; points are in client coordinates of the owner. What
/// turns the mouse round, a reversed kind or `inverts`, turns the handle and the place of the default along.
class SliderTracker {
public:
    enum Option : uint32_t {
        vertical = 1,
        turnsReversedKind = 2,
        inverts = 4,
        hasBorder = 8,
        runsMessageLoop = 16,
        isMouseTransparent = 32,
    };
    /// What a press came to.
    enum class Press { unhandled, consumed, tracking };

    explicit SliderTracker(UControl& owner) : owner_(owner) {}
    SliderTracker(const SliderTracker&) = delete;
    SliderTracker& operator=(const SliderTracker&) = delete;

    void setOptions(uint32_t options) { options_ = options; }
    void setStyleMode(SliderMode mode) { styleMode_ = mode; }
    /// `handleSize` along the track; `borderSize` is the width of the end zones.
    void setTrack(const CmRect& track, int32_t handleSize, int32_t borderSize);
    bool has(Option option) const { return (options_ & option) != 0; }

    /// Where the handle stands for the owner's value.
    CmRect handleRect() const { return handleRectAt(positionOfValue()); }
    /// Where it would stand for a place in the range, 0 to 1.
    CmRect handleRectFor(float normalized) const { return handleRectAt(turned(normalized)); }

    Press press(CmPoint point, uint32_t modifiers);
    void move(CmPoint point, uint32_t modifiers);
    /// The ramp goes on by itself: called by a timer while `isRamping`. `now` in milliseconds.
    void tick(CmPoint point, uint32_t modifiers, int64_t now);
    void release();

    bool isTracking() const { return tracking_; }
    bool isRamping() const { return tracking_ && rampActive_; }

private:
    /// The place on the track for a place in the range, and the other way round.
    float turned(float position) const;
    float positionOfValue() const;
    float positionUnder(CmPoint point, uint32_t modifiers, int32_t pixelsFurther) const;
    float snapToDefault(float position, CmPoint point, uint32_t modifiers) const;
    CmRect handleRectAt(float position) const;
    int32_t along(CmPoint point) const { return has(vertical) ? point.y : point.x; }
    CmPoint shifted(CmPoint point, int32_t by) const;
    int32_t trackStart() const { return has(vertical) ? track_.top : track_.left; }
    int32_t trackLength() const;
    bool isTurned() const;
    SliderMode modeOfPress(CmPoint point) const;
    void rememberDefault();
    void beginRamp(CmPoint point);
    void endRamp(CmPoint point);
    bool rampHasArrived(CmPoint point) const;
    void setPosition(float position);

    UControl& owner_;
    uint32_t options_ = 0;
    SliderMode styleMode_ = SliderMode::standard;
    SliderMode mode_ = SliderMode::jump;
    CmRect track_;
    int32_t handleSize_ = 0;
    int32_t borderSize_ = 0;
    int32_t grabOffset_ = 0;
    int32_t relativeShift_ = 0;
    CmPoint lastPoint_;
    float position_ = 0;
    float lastPosition_ = 0;
    float fineAnchor_ = 0;
    float rampStep_ = 0;
    float rampStepFast_ = 0;
    float defaultPosition_ = 0;
    int64_t rampLast_ = 0;
    int64_t rampInterval_ = 0;
    bool onHandle_ = false;
    bool rampActive_ = false;
    bool firstRamp_ = false;
    bool hasDefault_ = false;
    bool tracking_ = false;
    /// The value that the gesture began on: the owner may get another one meanwhile.
    Ref<Binding::Value> edited_;
};

} // namespace qorl
