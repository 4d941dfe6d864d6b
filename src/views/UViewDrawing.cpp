#include "graphics/UBitmap.h"
#include "graphics/UColor.h"
#include "schemes/GlobalSchemes.h"
#include "views/IOverlayStateSink.h"
#include "views/IScrollAware.h"
#include "views/RenderTarget.h"
#include "views/UView.h"
#include "views/ViewRare.h"
#include "windows/UDesktop.h"
#include "windows/URenderWindow.h"
#include "windows/UWindow.h"

#include <algorithm>

namespace qorl {

namespace {

template <typename Face>
Ref<Face> faceOf(UView* view) {
    Ref<Face> face;
    if (view)
        view->queryInterface(Face::iid, face.out());
    return face;
}

/// Another render target on a view for as long as this stands.
class TargetScope {
public:
    TargetScope(UView& view, RenderTarget* target) : view_(view), outer_(view.getRare().renderTarget) {
        view.setRenderTargetShared(target);
    }
    TargetScope(const TargetScope&) = delete;
    TargetScope& operator=(const TargetScope&) = delete;
    ~TargetScope() { view_.setRenderTargetShared(outer_.get()); }

private:
    UView& view_;
    Ref<RenderTarget> outer_;
};

} // namespace

// ---- The walk of a paint.

bool UView::draw(const CmRect& rect) {
    const CmPoint toClient = CmPoint{} - core_.clientRect.origin();
    drawContent(rect.moved(toClient));
    const CmRect client = rect.intersect(core_.clientRect);
    if (!client.isEmpty())
        drawSubViews(client.moved(toClient));
    if (isFocusable()) {
        const UDesktop* desktop = UDesktop::instance();
        drawFocus(desktop && desktop->getFocus() == this);
    }
    if (hasState(stateDrawingEnabled) && hasVisualState())
        drawState();
    return true;
}

bool UView::drawSubViews(const CmRect& rect) {
    SubViewIterator walk(*this);
    while (UView* view = walk.next()) {
        const CmRect frame = view->core_.frameRect;
        if (!view->isShown() || !frame.intersects(rect))
            continue;
        // What asks for its texts while it is drawn may be rebuilt by whoever is asked.
        const Ref<UView> keep = retain(view);
        view->draw(rect.intersect(frame).moved(CmPoint{} - frame.origin()));
    }
    return true;
}

bool UView::drawContent(const CmRect&) {
    return true;
}

void UView::drawFocus(bool focused) {
    const auto isScrollView = [](UView* view) { return view->isTypeOf("UScrollView", true); };
    if (UView* scrollView = findParent(viewsWhere(isScrollView)))
        scrollView->drawFocus(focused);
}

// ---- Looks.

void UView::setHighlighted(bool highlighted) {
    if (highlighted == isHighlighted())
        return;
    setFlag(viewHighlighted, highlighted);
    invalidateAll();
}

bool UView::isHighlighted() const {
    return hasFlag(viewHighlighted);
}

void UView::setMarked(bool marked) {
    if (marked == isMarked())
        return;
    setFlag(viewMarked, marked);
    invalidateFrame();
}

bool UView::isMarked() const {
    return hasFlag(viewMarked);
}

UScheme* UView::getScheme() const {
    return parent_ ? parent_->getScheme() : GlobalSchemes::main();
}

UColor UView::getBackgroundColor(const UView* forView) const {
    if (parent_)
        return parent_->getBackgroundColor(forView);
    const UScheme* scheme = getScheme();
    return scheme ? scheme->getColor(SchemeColor::windowback) : UColor();
}

void UView::drawState() {}

bool UView::getStateRect(CmRect& rect) const {
    rect = getClientBounds();
    return true;
}

void UView::stateDrawn(bool) {}

void UView::stateChanged(StateKind kind) {
    for (UView* view = this; view; view = view->parent_)
        if (const auto sink = faceOf<IOverlayStateSink>(view))
            return sink->viewStateChanged(this, kind);
    invalidateFrame();
}

void UView::beginOverlayDrawing() {}

void UView::endOverlayDrawing() {}

// ---- Requests for a redraw.

bool UView::invalidate(const CmRect& rect) {
    // One walk clips, converts and asks who is shown: a resize comes here for each view that it moves.
    CmRect part = rect.intersect(getClientBounds());
    UView* view = this;
    for (; view->parent_ && !view->isWindow_; view = view->parent_) {
        if (part.isEmpty() || !view->isShown())
            return false;
        part = part.moved(view->clientOrigin()).intersect(view->parent_->getClientBounds());
    }
    UWindow* window = view->getWindow();
    return window && !part.isEmpty() && view->isVisible() && window->invalidate(part);
}

bool UView::invalidateIfVisible(const CmRect& rect) {
    return isVisible() && invalidate(rect);
}

void UView::invalidateFrame() {
    if (parent_)
        parent_->invalidate(core_.frameRect);
}

void UView::redrawVisible() {
    CmRect visible;
    if (getVisibleClientRect(visible))
        invalidateIfVisible(visible);
}

// ---- Scrolling.

bool UView::scrollContent(CmPoint delta, const CmRect& rect) {
    return scrollRect(rect, delta);
}

bool UView::scrollRect(const CmRect& rect, CmPoint delta) {
    if (!parent_)
        return false;
    if (const auto aware = faceOf<IScrollAware>(parent_))
        return aware->scrollRectOf(this, rect, delta);
    if (const auto aware = faceOf<IScrollAware>(parent_->parent_))
        return aware->scrollRectOf(this, rect, delta);
    return parent_->scrollRect(rect.moved(clientOrigin()), delta);
}

// ---- Devices.

bool UView::getRenderTarget(Ref<RenderTarget>& target, CmPoint& offset) {
    if (core_.rare && core_.rare->renderTarget) {
        target = core_.rare->renderTarget;
        return true;
    }
    if (!parent_)
        return false;
    offset = offset + clientOrigin();
    return parent_->getRenderTarget(target, offset);
}

void UView::setRenderTarget(RenderTarget* target) {
    getRare().renderTarget = Ref<RenderTarget>::adopt(target);
}

void UView::setRenderTargetShared(RenderTarget* target) {
    if (target || peekRare())
        getRare().renderTarget = retain(target);
}

bool UView::beginDraw(DrawContext& context) {
    context.origin = {};
    context.clip = {};
    if (!getRenderTarget(context.target, context.origin) || !context.target)
        return false;
    CmRect visible;
    if (!getVisibleClientRect(visible))
        return false;
    context.clip = context.target->getClip().moved(CmPoint{} - context.origin).intersect(visible);
    return !context.clip.isEmpty();
}

bool UView::beginDrawClipped(DrawContext& context) {
    if (!beginDraw(context))
        return false;
    context.clip = context.clip.intersect(context.updateRect);
    return !context.clip.isEmpty();
}

Ref<UBitmap> UView::createSnapshot(bool withSubViews) {
    const Ref<UView> keep = retain(this);
    if (!parent_ && !isAttached() && !getWindow()) {
        // A view that hangs nowhere is laid out and drawn in a window that is never shown.
        auto window = make<URenderWindow>();
        window->addSubView(retain(this));
        window->resizeToFit(0, 0);
        Ref<UBitmap> picture = createSnapshot(withSubViews);
        window->removeSubView(this);
        return picture;
    }
    const CmRect bounds = getClientBounds();
    auto bitmap = make<UBitmap>(bounds.size());
    if (!bitmap->isValid())
        return nullptr;
    const auto target = make<RenderTarget>(bitmap.get(), getWindow());
    const TargetScope scope(*this, target.get());
    drawContent(bounds);
    if (withSubViews)
        drawSubViews(bounds);
    return bitmap;
}

} // namespace qorl
