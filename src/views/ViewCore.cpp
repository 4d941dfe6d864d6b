#include "views/ViewCore.h"

#include "views/UView.h"
#include "views/ViewRare.h"

#include <cmath>

namespace qorl {

namespace {

constinit uint64_t lastViewId = 0;

/// Documents may ask for any number; the edges made of these still fit.
int32_t rounded(double value) {
    constexpr double farthest = 1 << 29;
    return static_cast<int32_t>(std::lround(std::fmax(-farthest, std::fmin(value, farthest))));
}

} // namespace

CmRect roundedRect(const Geometry::Rect& rect) {
    return CmRect::ofSize({rounded(rect.x), rounded(rect.y)}, {rounded(rect.width), rounded(rect.height)});
}

void ViewItem::place(const Geometry::Rect& frame, bool visible) {
    const Ref<UView> keep = retain(&view_);
    if (visible != view_.isShown())
        visible ? view_.show() : view_.hide();
    // The view rounds what it stores; the fractions are kept for the next layout.
    if (view_.setFrame(roundedRect(frame), view_.isShown()))
        setFrame(frame);
}

ViewCore::ViewCore(UView& view) : viewId(++lastViewId), item(view) {}

ViewCore::~ViewCore() = default;

} // namespace qorl
