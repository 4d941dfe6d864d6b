#include "persistence/attributes/FAttributes.h"
#include "views/AncestorDependents.h"
#include "views/UView.h"
#include "views/ViewNotices.h"
#include "windows/UDesktop.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <limits>

namespace qorl {

namespace {

int32_t nearestEdge(int64_t edge) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(edge, Limits::min(), Limits::max()));
}

constexpr uint32_t followsResize = viewAttachAll | viewAlwaysSizeChanged;

bool hasAll(uint32_t flags, uint32_t wanted) {
    return (flags & wanted) == wanted;
}

/// Where a subview goes by its attach flags when its parent's client grows.
CmRect attachedFrame(const CmRect& frame, uint32_t flags, CmSize growth) {
    CmRect rect = frame;
    if (flags & viewAttachRight) {
        rect.right += growth.width;
        if (!(flags & viewAttachLeft))
            rect.left += growth.width;
    }
    if (flags & viewAttachBottom) {
        rect.bottom += growth.height;
        if (!(flags & viewAttachTop))
            rect.top += growth.height;
    }
    return rect;
}

/// Both cut to what they share. Unlike `intersect` it keeps the edges when that is nothing.
CmRect cut(const CmRect& a, const CmRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

/// `rect`, in the parent's client space of `view`, as the ancestors leave it, in the same space.
CmRect cutByAncestors(const UView& view, CmRect rect) {
    CmPoint way;
    for (const UView* parent = view.getParent(); parent; parent = parent->getParent()) {
        const CmPoint client = parent->getClientRect().origin();
        const CmPoint frame = parent->getFrameRect().origin();
        rect = cut(rect.moved(client), parent->getClientRect()).moved(frame);
        way = way + client + frame;
    }
    return rect.moved(CmPoint{} - way);
}

void tellAncestorSized(UView& view) {
    forEachAncestorDependent(view, ancestorSize, [](UView& dependent) {
        dependent.ancestorSized();
        tellAncestorSized(dependent);
    });
}

} // namespace

// ---- Frame.

bool UView::setFrame(const CmRect& rect, bool redraw) {
    // Who hears of the change may take the view out of its parent.
    const Ref<UView> keep = retain(this);
    const bool result = applyFrameHook(rect, redraw) || applyFrame(rect, redraw);
    return frameApplied(result, rect, redraw);
}

bool UView::applyFrameHook(const CmRect&, bool) {
    return false;
}

bool UView::frameApplied(bool result, const CmRect&, bool) {
    return result;
}

bool UView::applyFrame(const CmRect& rect, bool redraw) {
    if (hasFlag(viewFrameFrozen))
        return false;
    if (rect == core_.frameRect)
        return true;
    const CmRect oldClient = core_.clientRect;
    const CmPoint oldOrigin = core_.frameRect.origin();
    if (redraw && parent_)
        invalidateFrameChange(rect);
    storeFrame(rect);
    updateClientRect();
    sizeChanged(oldClient);
    if (core_.frameRect.origin() != oldOrigin)
        moved();
    if (hasFlag(ancestorSize.wants | ancestorSize.relays))
        tellAncestorSized(*this);
    return true;
}

void UView::invalidateFrameChange(const CmRect& rect) {
    const CmRect& old = core_.frameRect;
    if (rect.origin() != old.origin()) {
        parent_->invalidate(old);
        parent_->invalidate(rect);
        return;
    }
    // The border right of and below the client moves along, so the strips begin a border earlier.
    if (rect.right != old.right)
        parent_->invalidate({std::min(old.right, rect.right) - (old.width() - core_.clientRect.right + 1),
                             old.top, std::max(old.right, rect.right), std::max(old.bottom, rect.bottom)});
    if (rect.bottom != old.bottom)
        parent_->invalidate({old.left,
                             std::min(old.bottom, rect.bottom) - (old.height() - core_.clientRect.bottom + 1),
                             std::max(old.right, rect.right), std::max(old.bottom, rect.bottom)});
}

void UView::storeFrame(const CmRect& rect) {
    core_.item.setFrame({static_cast<double>(rect.left), static_cast<double>(rect.top),
                         static_cast<double>(rect.width()), static_cast<double>(rect.height())});
    core_.frameRect = rect;
}

void UView::updateClientRect() {
    if (core_.item.hasInsets())
        core_.clientRect = roundedRect(core_.item.clientRect());
    else
        core_.clientRect = {0, 0, core_.frameRect.width(), core_.frameRect.height()};
}

void UView::setClientInsets(const App::Layout::Insets& insets, bool updateNow) {
    core_.item.setInsets(insets);
    if (!updateNow)
        return;
    updateClientRect();
    invalidateFrame();
}

void UView::setClientRect(const CmRect& rect, bool keepFrame) {
    if (rect == core_.clientRect)
        return;
    const Ref<UView> keep = retain(this);
    const CmRect old = core_.clientRect;
    if (!keepFrame) {
        CmRect frame = core_.frameRect;
        frame.right += rect.width() - old.width();
        frame.bottom += rect.height() - old.height();
        setFrame(frame, true);
        return;
    }
    const CmSize frame = core_.frameRect.size();
    core_.item.setInsets({static_cast<double>(rect.left), static_cast<double>(rect.top),
                          static_cast<double>(frame.width) - rect.right,
                          static_cast<double>(frame.height) - rect.bottom});
    updateClientRect();
    sizeChanged(old);
    invalidateFrame();
}

// ---- What follows a change.

void UView::tellDependents(int32_t message) {
    if (hasDependents_)
        changed(message);
    else
        updateDone(message);
}

void UView::sizeChanged(const CmRect& oldClientRect) {
    if (App::Layout::IItemLayout* layout = core_.item.layout()) {
        if (isRealized())
            layout->run(core_.item);
    } else {
        resizeSubViews(oldClientRect, SubViewList::allOf(*this));
    }
    tellDependents(viewSized);
    tellLifecycle(*this, &IViewLifecycleListener::viewSized);
}

void UView::resizeSubViews(const CmRect& oldClientRect, const SubViewList& list) {
    if (hasFlag(viewResizeSuspended))
        return;
    const CmSize growth{core_.clientRect.width() - oldClientRect.width(),
                        core_.clientRect.height() - oldClientRect.height()};
    const bool skipHidden = hasFlag(viewResizeSkipsHidden);
    list.forEach([&](UView& view) {
        const uint32_t flags = view.getViewFlags();
        if (!(flags & followsResize) || (skipHidden && !view.isShown()))
            return;
        const CmRect rect = attachedFrame(view.core_.frameRect, flags, growth);
        if (rect != view.core_.frameRect)
            view.setFrame(rect, view.isShown());
        else if (flags & viewAlwaysSizeChanged)
            retain(&view)->sizeChanged(view.core_.clientRect);
    });
}

void UView::moved() {
    const UDesktop* desktop = UDesktop::instance();
    UWindow* window = desktop ? desktop->windowUnderMouse() : nullptr;
    const UView* hovered = window ? window->getHoverView() : nullptr;
    if (hovered && (hovered == this || isDescendant(hovered)))
        window->refreshHover();
    if (hasFlag(ancestorMove.wants | ancestorMove.relays))
        forEachAncestorDependent(*this, ancestorMove, [](UView& view) { view.moved(); });
    tellDependents(viewMoved);
    tellLifecycle(*this, &IViewLifecycleListener::viewMoved);
}

void UView::ancestorSized() {}

bool UView::subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    return child && child->setFrame(rect, redraw);
}

bool UView::childFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    if (child)
        child->setFrame(rect, redraw);
    return true;
}

// ---- What sizes are possible.

bool UView::canResize() {
    if (App::Layout::IItemLayout* layout = core_.item.layout())
        return core_.item.children().isEmpty() || layout->check(core_.item);
    SubViewIterator walk(*this);
    while (UView* view = walk.next())
        if (!view->canResize())
            return false;
    return true;
}

bool UView::checkSize(CmRect& rect) {
    const CmSize growth{rect.width() - core_.clientRect.width(), rect.height() - core_.clientRect.height()};
    SubViewIterator walk(*this);
    while (UView* view = walk.next())
        if (view->hasFlag(viewAttachAll) && !checkSubViewSize(*view, rect, growth))
            return false;
    return true;
}

bool UView::checkSubViewSize(UView& subView, CmRect& rect, CmSize growth) {
    CmRect proposal = subView.core_.clientRect;
    if (hasAll(subView.viewFlags_, viewAttachLeft | viewAttachRight))
        proposal.right += growth.width;
    if (hasAll(subView.viewFlags_, viewAttachTop | viewAttachBottom))
        proposal.bottom += growth.height;
    if (proposal == subView.core_.clientRect)
        return true;
    const CmSize asked = proposal.size();
    if (subView.checkSize(proposal))
        return true;
    rect.right += proposal.width() - asked.width;
    rect.bottom += proposal.height() - asked.height;
    if (rect.width() < 0 || rect.height() < 0)
        getAttributes().setInteger("ViewSizeContrainsCorrupted", 1);
    return false;
}

void UView::fitTo(CmSize own, int32_t extraWidth, int32_t extraHeight) {
    const CmRect& frame = core_.frameRect;
    const CmSize size{extraWidth < 0 ? frame.width() : own.width + extraWidth,
                      extraHeight < 0 ? frame.height() : own.height + extraHeight};
    const CmRect rect = CmRect::ofSize(frame.origin(), size);
    if (rect == frame)
        return;
    // A parent that arranges its subviews makes room.
    if (parent_)
        parent_->subViewFrameRequest(this, rect, true);
    else
        setFrame(rect, true);
}

void UView::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    const Ref<UView> keep = retain(this);
    if (App::Layout::IItemLayout* layout = core_.item.layout())
        layout->run(core_.item);
    CmRect used;
    bool any = false;
    forEachSubView([&](UView& view) {
        if (!view.isShown())
            return;
        used = any ? used.unite(view.core_.frameRect) : view.core_.frameRect;
        any = true;
    });
    if (!any)
        return;
    CmRect frame = core_.frameRect;
    // A document may place views anywhere.
    if (extraWidth >= 0)
        frame.right = nearestEdge(int64_t{frame.right} - core_.clientRect.width() + used.right + extraWidth);
    if (extraHeight >= 0)
        frame.bottom =
            nearestEdge(int64_t{frame.bottom} - core_.clientRect.height() + used.bottom + extraHeight);
    if (frame == core_.frameRect)
        return;
    const bool wasSuspended = hasFlag(viewResizeSuspended);
    setFlag(viewResizeSuspended, true);
    if (parent_)
        parent_->subViewFrameRequest(this, frame, isVisible());
    else
        setFrame(frame, false);
    setFlag(viewResizeSuspended, wasSuspended);
}

bool UView::requestResize(UView*, int32_t& dx, int32_t& dy) {
    if (hasFlag(viewStopsResizeRequests))
        return true;
    const CmSize asked{dx, dy};
    const CmRect old = core_.frameRect;
    if (!parent_) {
        setFrame({old.left, old.top, old.right + dx, old.bottom + dy}, true);
    } else {
        const Ref<UView> keep = retain(this);
        const Ref<UView> parent = retain(parent_);
        parent->requestResize(this, dx, dy);
        // What the ancestors made room for and the attach rule has not brought here already.
        const CmRect now = core_.frameRect;
        const CmSize left{dx - (now.width() - old.width()), dy - (now.height() - old.height())};
        if (left != CmSize{0, 0} && parent_ == parent)
            parent->childFrameRequest(
                this, {now.left, now.top, now.right + left.width, now.bottom + left.height}, true);
    }
    dx = core_.frameRect.width() - old.width();
    dy = core_.frameRect.height() - old.height();
    return dx == asked.width && dy == asked.height;
}

// ---- Coordinates.

bool UView::hitsClient(CmPoint point) const {
    return core_.clientRect.contains(point);
}

void UView::getWindowOffset(CmPoint& point) const {
    if (!parent_)
        return;
    point = point + clientOrigin();
    parent_->getWindowOffset(point);
}

CmPoint UView::clientToWindow(CmPoint point) const {
    getWindowOffset(point);
    return point;
}

CmPoint UView::windowToClient(CmPoint point) const {
    return point - clientToWindow({});
}

CmPoint UView::clientToScreen(CmPoint point) const {
    const UWindow* window = getWindow();
    return window ? window->clientToScreen(clientToWindow(point)) : point;
}

CmPoint UView::screenToClient(CmPoint point) const {
    const UWindow* window = getWindow();
    return window ? windowToClient(window->screenToClient(point)) : point;
}

bool UView::getVisibleClientRect(CmRect& rect) const {
    rect = cutByAncestors(*this, core_.clientRect.moved(core_.frameRect.origin()))
               .moved(CmPoint{} - clientOrigin());
    return !rect.isEmpty();
}

bool UView::getVisibleFrameRect(CmRect& rect) const {
    rect = cutByAncestors(*this, core_.frameRect).moved(CmPoint{} - clientOrigin());
    return !rect.isEmpty();
}

} // namespace qorl
