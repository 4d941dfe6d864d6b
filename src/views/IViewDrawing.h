#pragma once

#include <qorl/FInterface.h>
#include <qorl/Geometry.h>
#include <qorl/Ref.h>

namespace qorl {

class RenderTarget;
class UScheme;

/// One block of drawing on a view. The caller fills `updateRect`; opening fills the rest.
struct DrawContext {
    /// What has to be drawn anew, in client coordinates of the view.
    CmRect updateRect;
    Ref<RenderTarget> target;
    /// Place of the view's client origin in the target.
    CmPoint origin;
    /// Nothing outside of this may change, in client coordinates of the view. Empty: nothing can be drawn.
    CmRect clip;
};

/// How devices are opened on a view.
class IViewDrawing : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{7A35E0F9-46BC-4D18-93C2-F80E1B6D52A4}");

    /// The scheme from which drawing on this view takes its colours, metrics and fonts.
    virtual UScheme* getStyleSource() = 0;
    /// Hands `target` over to the view, which draws on it from now on, as does everything below; null goes
    /// back to the parent's.
    virtual void setRenderTarget(RenderTarget* target) = 0;
    /// The same; the caller keeps its reference.
    virtual void setRenderTargetShared(RenderTarget* target) = 0;
    /// Finds target, origin and clip. False when nothing can be drawn.
    virtual bool beginDraw(DrawContext& context) = 0;
    /// The same with the clip cut to `updateRect`.
    virtual bool beginDrawClipped(DrawContext& context) = 0;

protected:
    ~IViewDrawing() = default;
};

} // namespace qorl
