#pragma once

#include "foundation/messages/UTimer.h"
#include "views/controls/SliderTracker.h"
#include "views/controls/UControl.h"

#include <memory>

namespace qorl {

class UColor;
class UDrawDevice;

/// The parts of a slider that may have colours of their own.
enum class SliderPart {
    track,  ///< The groove.
    filled, ///< What of the groove lies below the value.
    strip,  ///< The strip of light, by the style, along the groove.
    handle,
    count,
};

/// A handle on a track. The value grows upward or to the right.
///
/// By its style a strip of light runs in the groove from an end, or from the middle, to the handle.
class USlider : public UControl {
    QORL_CLASS(USlider, UControl)

public:
    USlider(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    void setStyle(uint32_t style) override;
    bool drawContent(const CmRect& rect) override;
    bool mouseDown(CmPoint point) override;
    bool mouseUp(CmPoint point) override;
    bool mouseOver(CmPoint point) override;
    bool keyDown(const UKeyCode& key) override;
    int32_t handleMessage(FMessage* message) override;
    void sizeChanged(const CmRect& oldClientRect) override;
    void detached(UView* parent) override;
    /// Something else took the captured mouse: the gesture ends where it is.
    void mouseCaptureLost() override;
    AccessibleRole getAccessibleRole() const override { return AccessibleRole::slider; }

    bool isVertical() const;
    /// The scheme's until then. A second value that is a colour goes before the one of the strip.
    void setPartColor(SliderPart part, const UColor& color);
    /// A side of 0 leaves that to the slider.
    void setHandleSize(CmSize size);

protected:
    ~USlider() override;

    /// Along the track, in pixels, unless `setHandleSize` says another one.
    virtual int32_t getHandleSize() const;
    virtual void drawTrack(UDrawDevice& device, const CmRect& track);
    virtual void drawHandle(UDrawDevice& device, const CmRect& handle);
    /// To be called when the handle's size changed.
    void layoutTrack();

private:
    /// What few sliders have.
    struct Look;

    Look& look();
    const UColor* getPartColor(SliderPart part) const;
    bool getStripColor(UColor& color) const;
    float stripStart() const;
    CmRect shownHandle() const;
    CmRect grooveBetween(float from, float to) const;
    void drawStrips(UDrawDevice& device);
    void drawHandleColor(UDrawDevice& device, const CmRect& handle);
    uint32_t trackerOptions() const;
    CmRect trackRect() const;
    /// By its style, a small slider shown reversed: the wheel alone goes the other way.
    bool turnsWheel() const;
    void runMessageLoop();
    void stepRamp();
    void endGesture();

    SliderTracker tracker_;
    Ref<UTimer> rampTimer_;
    std::unique_ptr<Look> look_;
};

} // namespace qorl
