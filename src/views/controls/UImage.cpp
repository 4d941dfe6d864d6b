#include "views/controls/UImage.h"

#include "graphics/UBitmap.h"
#include "views/ViewDevice.h"

#include <algorithm>

namespace qorl {

UImage::UImage(const CmRect& frame, Ref<UBitmap> bitmap, uint32_t style)
    : UView(frame), bitmap_(std::move(bitmap)), style_(style) {
    if (bitmap_ && frame.isEmpty())
        setFrame(CmRect::ofSize(frame.origin(), bitmap_->getSize()), false);
}

UImage::~UImage() = default;

void UImage::setBitmap(Ref<UBitmap> bitmap) {
    bitmap_ = std::move(bitmap);
    invalidateAll();
}

CmRect UImage::imageRect() const {
    const CmRect bounds = getClientBounds();
    const CmSize own = bitmap_->getSize();
    if (!(style_ & (scale | keepAspect)))
        return CmRect::ofSize({}, {style_ & hrepeat ? bounds.width() : own.width,
                                   style_ & vrepeat ? bounds.height() : own.height});
    if (!(style_ & keepAspect))
        return bounds;
    const double factor = std::min(double(bounds.width()) / own.width, double(bounds.height()) / own.height);
    const CmSize fitted{static_cast<int32_t>(own.width * factor), static_cast<int32_t>(own.height * factor)};
    return CmRect::ofSize({(bounds.width() - fitted.width) / 2, (bounds.height() - fitted.height) / 2},
                          fitted);
}

bool UImage::drawContent(const CmRect& rect) {
    if (!bitmap_ || !bitmap_->isValid())
        return true;
    ViewDevice device(*this, rect);
    const CmRect target = imageRect();
    const CmSize own = bitmap_->getSize();
    const CmSize tile{style_ & hrepeat ? own.width : target.width(),
                      style_ & vrepeat ? own.height : target.height()};
    if (style_ & (hrepeat | vrepeat))
        bitmap_->drawTiled(device, CmRect::ofSize({}, own), target, tile, 1.0, Interpolation::linear);
    else
        device.drawBitmap(bitmap_.get(), target);
    return true;
}

void UImage::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    if (!bitmap_ || (style_ != 0 && getSubViewCount() > 0)) {
        UView::resizeToFit(extraWidth, extraHeight);
        return;
    }
    fitTo(bitmap_->getSize(), extraWidth, extraHeight);
}

} // namespace qorl
