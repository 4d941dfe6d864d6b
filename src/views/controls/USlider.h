#pragma once

#include "foundation/messages/UTimer.h"
#include "views/controls/SliderTracker.h"
#include "views/controls/UControl.h"

namespace qorl {

class UBitmap;
class UDrawDevice;

/// A handle on a track. The value grows upward or to the right.
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

protected:
    ~USlider() override;

    /// Along the track, in pixels.
    virtual int32_t getHandleSize() const;
    virtual void drawTrack(UDrawDevice& device, const CmRect& track);
    virtual void drawHandle(UDrawDevice& device, const CmRect& handle);
    /// To be called when the handle's size changed.
    void layoutTrack();

private:
    uint32_t trackerOptions() const;
    CmRect trackRect() const;
    bool isShownReversed() const;
    void runMessageLoop();
    void stepRamp();
    void endGesture();

    SliderTracker tracker_;
    Ref<UTimer> rampTimer_;
};

/// A slider drawn from bitmaps: a track behind, a handle in front. Without them it looks like its base.
class UBitmapSlider : public USlider {
    QORL_CLASS(UBitmapSlider, USlider)

public:
    using USlider::USlider;

    /// Either may be null. The handle's size along the track becomes the slider's.
    void setBitmaps(Ref<UBitmap> track, Ref<UBitmap> handle);

protected:
    ~UBitmapSlider() override;

    int32_t getHandleSize() const override;
    void drawTrack(UDrawDevice& device, const CmRect& track) override;
    void drawHandle(UDrawDevice& device, const CmRect& handle) override;

private:
    Ref<UBitmap> trackBitmap_;
    Ref<UBitmap> handleBitmap_;
};

} // namespace qorl
