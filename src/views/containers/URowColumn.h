#pragma once

#include "views/UView.h"
#include "views/containers/RowColumnLayout.h"

namespace qorl {

/// Stacks its subviews in a row or a column: see `RowColumnLayout`.
class URowColumn : public UView {
    QORL_CLASS(URowColumn, UView)

public:
    /// `style` of `RowColumnStyle`.
    URowColumn(const CmRect& frame, uint32_t style);

    RowColumnLayout& getRowColumnLayout() { return layout_; }
    /// While suspended the children stay where they are put; the end places them.
    void setSuspended(bool suspended);

    bool insertSubView(int32_t index, Ref<UView> view) override;
    Ref<UView> removeSubView(UView* view) override;
    bool childFrameRequest(UView* child, const CmRect& rect, bool redraw) override;
    bool subViewFrameRequest(UView* child, const CmRect& rect, bool redraw) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;
    void resizeSubViews(const CmRect& oldClientRect, const SubViewList& list) override;
    void attached(UView* parent) override;
    void invalidateLayout() override;

private:
    RowColumnLayout layout_;
};

} // namespace qorl
