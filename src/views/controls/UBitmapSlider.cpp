#include "views/controls/UBitmapSlider.h"

#include "graphics/UBitmap.h"
#include "graphics/UDrawDevice.h"

namespace qorl {

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
