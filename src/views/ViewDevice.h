#pragma once

#include "graphics/UDrawDevice.h"
#include "views/IViewDrawing.h"
#include "views/RenderTarget.h"

#include <qorl/Geometry.h>

namespace qorl {

class UView;

/// A draw device in the client coordinates of one view.
///
/// It lives on the stack for one block of drawing: a `drawContent`, or a direct drawing outside of a paint.
/// The clip is what the target and the view's ancestors leave; when that is nothing, all drawing does
/// nothing. While a paint of the window runs, it draws into that paint.
class ViewDevice : public UDrawDevice {
public:
    explicit ViewDevice(UView& view);
    /// Nothing is drawn outside of `updateRect`.
    ViewDevice(UView& view, const CmRect& updateRect);

    UView& getView() const { return view_; }
    /// Place of the view's client origin in the target.
    CmPoint getOrigin() const { return context_.origin; }
    /// What can be drawn on, in client coordinates.
    const CmRect& getLimits() const { return context_.clip; }

private:
    ViewDevice(UView& view, const DrawContext& context);

    DrawContext context_;
    UView& view_;
};

} // namespace qorl
