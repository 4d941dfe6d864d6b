#include "graphics/UDrawDevice.h"
#include "platform/Region.h"
#include "schemes/UScheme.h"
#include "views/ViewDevice.h"
#include "windows/UWindow.h"
#include "windows/WindowCore.h"
#include "windows/WindowSurface.h"

namespace qorl {

namespace {

/// Up to this many pixels a region is drawn as one box: walking the tree once beats walking it for each small
/// rect.
constexpr int64_t smallRegion = 10000;

platform::Region regionToDraw(const platform::Region& dirty) {
    const CmRect bounds = dirty.getBounds();
    if (int64_t{bounds.width()} * bounds.height() < smallRegion)
        return platform::Region(bounds);
    return dirty;
}

} // namespace

bool UWindow::invalidate(const CmRect& rect) {
    if (!core_->platformWindow || hasWindowFlag(opening) || rect.left == rect.right)
        return false;
    core_->platformWindow->invalidate(rect);
    return true;
}

void UWindow::update() {
    if (core_->platformWindow)
        core_->platformWindow->update();
}

void UWindow::paint(const platform::PixelSurface& surface, const platform::Region& region,
                    platform::Region* drawn) {
    // What draws may close the window; the surface stays until the paint is over.
    const Ref<WindowSurface> target = core_->surface;
    if (region.isEmpty() || hasWindowFlag(painting) || !target || !target->beginPaint(surface))
        return;
    setWindowFlag(painting, true);
    const platform::Region toDraw = regionToDraw(region);
    const CmRect bounds = region.getBounds();
    core_->paintTarget = make<RenderTarget>(target.get(), this);
    UDrawDevice& device = core_->paintTarget->getDevice();
    prePaint(region);
    core_->prePaintListeners.tell([&](WindowPaintListener& listener) { listener.windowPaint(this, bounds); });
    for (const CmRect& rect : toDraw.getRects()) {
        if (hasWindowFlag(closed))
            break;
        device.saveState();
        core_->paintTarget->setClip(rect);
        draw(rect);
        device.restoreState();
        if (drawn)
            drawn->add(rect);
    }
    core_->paintListeners.tell([&](WindowPaintListener& listener) { listener.windowPaint(this, bounds); });
    postPaint();
    core_->paintTarget.reset();
    target->endPaint();
    setWindowFlag(painting, false);
}

void UWindow::prePaint(const platform::Region&) {}

void UWindow::postPaint() {}

bool UWindow::getRenderTarget(Ref<RenderTarget>& target, CmPoint& offset) {
    if (UView::getRenderTarget(target, offset))
        return true;
    if (core_->paintTarget) {
        target = core_->paintTarget;
        return true;
    }
    if (!core_->surface || hasWindowFlag(opening))
        return false;
    target = make<RenderTarget>(core_->surface.get(), this, core_->surface);
    return true;
}

bool UWindow::draw(const CmRect& rect) {
    drawContent(rect);
    return drawSubViews(rect);
}

bool UWindow::drawContent(const CmRect& rect) {
    if (hasStyle(styleNoErase) && !hasStyle(styleTransparent))
        return true;
    ViewDevice device(*this, rect);
    const UColor color = getBackgroundColor(this);
    if (hasStyle(styleTransparent) || color.alpha() < 255)
        device.clearRect(rect);
    if (hasStyle(styleNoErase))
        return true;
    device.setBrushColor(color);
    device.fillRect(rect);
    return true;
}

bool UWindow::drawSubViews(const CmRect& rect) {
    for (UView* view : core_->directPaintViews) {
        if (!view->isShown())
            continue;
        const CmRect client = view->getClientBounds().moved(view->clientToWindow({}));
        if (!client.contains(rect))
            continue;
        const Ref<UView> pane = retain(view);
        return pane->drawSubViews(rect.moved(pane->windowToClient({})));
    }
    return UView::drawSubViews(rect);
}

} // namespace qorl
