#pragma once

#include "layout/Item.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <memory>

namespace qorl {

class UView;
struct ViewRare;

/// Place and extent each to the nearest whole number.
CmRect roundedRect(const Geometry::Rect& rect);

/// The item of a view.
class ViewItem final : public App::Layout::Item {
public:
    explicit ViewItem(UView& view) : view_(view) {}

    UView& view() const { return view_; }
    static UView& viewOf(Item& item) { return static_cast<ViewItem&>(item).view_; }

    void place(const Geometry::Rect& frame, bool visible) override;

private:
    UView& view_;
};

/// Identity and geometry of one view, in one block with it. The rects are the item's, rounded.
struct ViewCore {
    explicit ViewCore(UView& view);
    ~ViewCore();

    /// Never used again; the first view has 1.
    uint64_t viewId;
    ViewItem item;
    /// Null until the view gets its first listener, handler or render target.
    std::unique_ptr<ViewRare> rare;
    CmRect clientRect; ///< Relative to the frame's top left corner.
    CmRect frameRect;  ///< In the client space of the parent.
};

} // namespace qorl
