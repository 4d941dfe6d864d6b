#include "views/controls/UFrame.h"

#include "schemes/UScheme.h"
#include "views/ViewDevice.h"

namespace qorl {

UFrame::UFrame(const CmRect& frame, const ConstString& title, int32_t kind, const UColor& color,
               int32_t radius, int32_t penWidth)
    : UView(frame, title), color_(color), kind_(kind), radius_(radius), penWidth_(penWidth) {}

void UFrame::selectPen(UDrawDevice& device, CmRect& bounds) const {
    switch (kind_) {
    case FrameKind::frameOval:
    case FrameKind::frameRoundRect:
    case FrameKind::frameRect: {
        device.setPen(UPen(color_, penWidth_));
        const int32_t inset = penWidth_ > 1 ? penWidth_ / 2 + penWidth_ % 2 : 0;
        bounds = bounds.grown(-inset, -inset);
        break;
    }
    case FrameKind::frameDottedRect: device.setPen(UPen(color_, penWidth_, UPen::Kind::dotted)); break;
    case FrameKind::separator:
    case FrameKind::menuArrow: device.setPen(UPen(color_)); break;
    default: break;
    }
}

bool UFrame::drawContent(const CmRect& rect) {
    if (kind_ <= invisible)
        return true;
    ViewDevice device(*this, rect);
    CmRect bounds = getClientBounds();
    device.setBrushColor(color_);
    selectPen(device, bounds);
    const UScheme::FrameRadius radius(radius_);
    getScheme()->drawFrame(device, bounds, kind_, getTitle());
    return true;
}

bool UFrame::mouseDown(CmPoint point) {
    return UView::mouseDown(point) || kind_ == mouseDownTrue;
}

Result UFrame::wheelHook(WheelEvent& event) {
    return kind_ == wheelMoveTrue ? Result::ok : UView::wheelHook(event);
}

AccessibleRole UFrame::getAccessibleRole() const {
    if (kind_ == FrameKind::separator)
        return AccessibleRole::separator;
    return hasTitle() ? AccessibleRole::group : AccessibleRole::none;
}

} // namespace qorl
