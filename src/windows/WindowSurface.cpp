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

void WindowSurface::drawingEnds() {
    if (!painting_)
        window_->present(platform::Region(CmRect::ofSize({}, window_->getSize())));
}

} // namespace qorl
