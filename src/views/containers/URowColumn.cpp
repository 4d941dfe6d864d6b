#include "views/containers/URowColumn.h"

namespace qorl {

URowColumn::URowColumn(const CmRect& frame, uint32_t style) : UView(frame) {
    layout_.style = style;
    arrangesShown_ = true;
}

void URowColumn::setSuspended(bool suspended) {
    layout_.setSuspended(suspended);
    if (!suspended)
        layout_.update(*this);
}

bool URowColumn::insertSubView(int32_t index, Ref<UView> view) {
    const Ref<UView> keep = retain(this);
    if (!UView::insertSubView(index, std::move(view)))
        return false;
    layout_.update(*this);
    return true;
}

Ref<UView> URowColumn::removeSubView(UView* view) {
    const Ref<UView> keep = retain(this);
    Ref<UView> removed = UView::removeSubView(view);
    if (!removed)
        return removed;
    layout_.childRemoved(*removed);
    layout_.update(*this);
    return removed;
}

bool URowColumn::childFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    const Ref<UView> keep = retain(this);
    const bool result = UView::childFrameRequest(child, rect, redraw);
    layout_.childResized(*child);
    layout_.update(*this);
    return result;
}

bool URowColumn::subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) {
    const Ref<UView> keep = retain(this);
    const bool result = UView::subViewFrameRequest(child, rect, redraw);
    layout_.childResized(*child);
    layout_.update(*this);
    return result;
}

void URowColumn::resizeToFit(int32_t extraWidth, int32_t extraHeight) {
    layout_.resizeToFit(*this, extraWidth, extraHeight);
}

void URowColumn::resizeSubViews(const CmRect& oldClientRect, const SubViewList& list) {
    if (!hasFlag(viewResizeSuspended) && !layout_.frameChanged(*this, oldClientRect))
        UView::resizeSubViews(oldClientRect, list);
}

void URowColumn::attached(UView* parent) {
    UView::attached(parent);
    if (layout_.has(RowColumnStyle::fitInParent))
        layout_.update(*this);
}

void URowColumn::invalidateLayout() {
    UView::invalidateLayout();
    layout_.update(*this);
}

} // namespace qorl
