#pragma once

#include "views/UCursor.h"
#include "views/UView.h"

namespace qorl {

/// An area that shows a cursor while the mouse is over it and nothing in front of it wants the hover. It
/// stands behind the view that it was made for.
class UCursorView : public UView {
    QORL_CLASS(UCursorView, UView)

public:
    /// Null shows the one that is shown anyway.
    UCursorView(const CmRect& frame, Ref<UCursor> cursor);

    bool mouseEnter(CmPoint point) override;
    bool mouseOver(CmPoint point) override;

    UCursor* getCursor() const { return cursor_.get(); }

protected:
    ~UCursorView() override;

private:
    Ref<UCursor> cursor_;
};

} // namespace qorl
