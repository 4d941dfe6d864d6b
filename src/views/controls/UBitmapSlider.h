#pragma once

#include "views/controls/USlider.h"

namespace qorl {

class UBitmap;

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
