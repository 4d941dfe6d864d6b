#pragma once

#include "foundation/FObject.h"
#include "graphics/DrawTarget.h"
#include "platform/PlatformWindow.h"
#include "views/RenderTarget.h"

#include <qorl/Ref.h>

namespace qorl {

/// The pixels of a platform window as something that devices draw on.
///
/// In a paint it stands for the surface that the platform handed over, and the platform shows the result.
/// Outside of one it opens the window's own surface and shows what was drawn of it.
class WindowSurface final : public DrawnListener, public DrawTarget {
    QORL_CLASS(WindowSurface, FObject)
    QORL_FACES(WindowSurface, FObject, DrawTarget)

public:
    explicit WindowSurface(Ref<platform::PlatformWindow> window) : window_(std::move(window)) {}

    /// False when there is nothing to draw on.
    bool beginPaint(const platform::PixelSurface& surface);
    void endPaint() { painting_ = false; }

    GraphicsImage* getTargetImage() override;
    double getScaleFactor() override { return target_.getScaleFactor(); }
    void drawingBegins() override {}
    void drawingEnds() override {}
    void drawn(const platform::Region& region) override { window_->present(region); }

private:
    Ref<platform::PlatformWindow> window_;
    SurfaceTarget target_;
    bool painting_ = false;
};

} // namespace qorl
