#include "windows/WindowSurface.h"

namespace qorl {

bool WindowSurface::beginPaint(const platform::PixelSurface& surface) {
    painting_ = target_.attach(surface);
    return painting_;
}

GraphicsImage* WindowSurface::getTargetImage() {
    if (!painting_ && !target_.attach(window_->getSurface()))
        return nullptr;
    return target_.getTargetImage();
}

} // namespace qorl
