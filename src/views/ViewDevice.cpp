#include "views/ViewDevice.h"

#include "views/RenderTarget.h"
#include "views/UView.h"

namespace qorl {

namespace {

DrawContext opened(UView& view, const CmRect* updateRect) {
    DrawContext context;
    if (updateRect)
        context.updateRect = *updateRect;
    if (!(updateRect ? view.beginDrawClipped(context) : view.beginDraw(context)))
        context.clip = {};
    if (!context.target)
        context.target = make<RenderTarget>();
    return context;
}

} // namespace

ViewDevice::ViewDevice(UView& view) : ViewDevice(view, opened(view, nullptr)) {}

ViewDevice::ViewDevice(UView& view, const CmRect& updateRect) : ViewDevice(view, opened(view, &updateRect)) {}

ViewDevice::ViewDevice(UView& view, const DrawContext& context)
    : UDrawDevice(context.target->getDevice(), context.origin), context_(context), view_(view) {
    limitClip(context.clip);
    if (!context.clip.isEmpty())
        context.target->drawWithin(context.clip.moved(context.origin));
}

} // namespace qorl
