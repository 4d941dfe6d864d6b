#pragma once

#include "graphics/UColor.h"
#include "views/UView.h"

namespace qorl {

class UDrawDevice;

/// A frame or a plain shape, drawn by the scheme: the view of the element `decor`.
class UFrame : public UView {
    QORL_CLASS(UFrame, UView)

public:
    /// Kinds behind those of `FrameKind`.
    enum Kind : int32_t { invisible = -8, mouseDownTrue = -9, wheelMoveTrue = -10 };

    /// `kind` of `FrameKind` or of the above. `color` fills or strokes the plain shapes.
    UFrame(const CmRect& frame, const ConstString& title, int32_t kind, const UColor& color, int32_t radius,
           int32_t penWidth);

    bool drawContent(const CmRect& rect) override;
    /// A frame of kind `mouseDownTrue` takes every press.
    bool mouseDown(CmPoint point) override;
    /// A frame of kind `wheelMoveTrue` takes every turn of the wheel.
    Result wheelHook(WheelEvent& event) override;
    AccessibleRole getAccessibleRole() const override;

private:
    void selectPen(UDrawDevice& device, CmRect& bounds) const;

    UColor color_;
    int32_t kind_;
    int32_t radius_;
    int32_t penWidth_;
};

} // namespace qorl
