#include "views/UCursorView.h"

#include "windows/UDesktop.h"

namespace qorl {

UCursorView::UCursorView(const CmRect& frame, Ref<UCursor> cursor)
    : UView(frame), cursor_(std::move(cursor)) {}

UCursorView::~UCursorView() = default;

bool UCursorView::mouseEnter(CmPoint point) {
    UView::mouseEnter(point);
    UDesktop* desktop = UDesktop::instance();
    // Whoever heard of the mouse may have taken the view away.
    if (desktop && cursor_ && getWindow())
        desktop->setCursor(cursor_.get(), this);
    return true;
}

bool UCursorView::mouseOver(CmPoint point) {
    UView::mouseOver(point);
    return cursor_ && isEnabled();
}

} // namespace qorl
